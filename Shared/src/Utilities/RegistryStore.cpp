#include "Utilities/RegistryStore.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <map>
#include <memory>
#include <string_view>
#include <system_error>
#include <utility>
#include <vector>

#include "Internal/NeverDestroyed.h"
#include "Utilities/Mutex.h"
#include "Utilities/RegistryFile.h"

namespace Utilities {

namespace {

using win32::LSTATUS;

constexpr std::size_t kMaximumFileBytes = std::size_t{1} << 20;
constexpr std::u16string_view kRoot = u"HKEY_LOCAL_MACHINE\\";
constexpr std::u16string_view kSoftware = u"SOFTWARE\\";
constexpr std::u16string_view k32BitSoftware = u"SOFTWARE\\WOW6432Node\\";
constexpr std::size_t kCharacterBytes = sizeof(char16_t);

/// A key that is open: the registry as it was then, and the path.
struct OpenKey {
    std::shared_ptr<const RegistryFile> file;
    std::u16string path;
};

/// The keys that are open. A handle is never used again.
class OpenKeys {
public:
    RegistryHandle add(OpenKey key) {
        const MutexLock lock(m_Mutex);
        m_Keys.emplace(++m_LastHandle, std::move(key));
        return m_LastHandle;
    }
    /// A key without a file, where the handle is none of an open key.
    OpenKey find(RegistryHandle handle) {
        const MutexLock lock(m_Mutex);
        const auto key = m_Keys.find(handle);
        return key == m_Keys.end() ? OpenKey{} : key->second;
    }
    bool remove(RegistryHandle handle) {
        const MutexLock lock(m_Mutex);
        return m_Keys.erase(handle) != 0;
    }
    std::size_t count() {
        const MutexLock lock(m_Mutex);
        return m_Keys.size();
    }

private:
    Mutex m_Mutex; // guards what follows
    std::map<RegistryHandle, OpenKey> m_Keys QUILL_GUARDED_BY(m_Mutex);
    RegistryHandle m_LastHandle QUILL_GUARDED_BY(m_Mutex) = 0;
};

OpenKeys& openKeys() {
    static Internal::NeverDestroyed<OpenKeys> keys;
    return keys.get();
}

LSTATUS readFile(const std::string& path, std::string& content) {
    std::error_code error;
    const std::filesystem::file_status status = std::filesystem::status(path, error);
    if (status.type() == std::filesystem::file_type::not_found) {
        return RegistryStatus::kFileNotFound;
    }
    std::ifstream file;
    if (std::filesystem::is_regular_file(status)) {
        file.open(path, std::ios::binary);
    }
    if (!file.is_open()) {
        return RegistryStatus::kAccessDenied;
    }
    content.resize(kMaximumFileBytes + 1);
    file.read(content.data(), static_cast<std::streamsize>(content.size()));
    content.resize(static_cast<std::size_t>(file.gcount()));
    return file.eof() ? RegistryStatus::kSuccess : RegistryStatus::kAccessDenied; // too large, or a read error
}

bool startsWith(std::u16string_view text, std::u16string_view lowerCasePrefix) {
    return toLowerCase(text.substr(0, lowerCasePrefix.size())) == toLowerCase(lowerCasePrefix);
}

/// The path under which the 32-bit view finds a key.
std::u16string redirected(std::u16string_view path) {
    if (!startsWith(path, kSoftware) || startsWith(path, k32BitSoftware)) {
        return std::u16string(path);
    }
    return std::u16string(k32BitSoftware).append(path.substr(kSoftware.size()));
}

/// The bytes of a value as they are handed out: a text ends in a zero, whether or not it is stored with it.
std::vector<unsigned char> bytesOf(const RegistryValue& value) {
    std::vector<unsigned char> bytes = value.data;
    if (value.type == RegistryType::kText) {
        bytes.resize(bytes.size() / kCharacterBytes * kCharacterBytes);
        const bool ended = !bytes.empty() && bytes[bytes.size() - 1] == 0 && bytes[bytes.size() - 2] == 0;
        bytes.resize(bytes.size() + (ended ? 0 : kCharacterBytes));
    }
    return bytes;
}

} // namespace

LSTATUS openStoredKey(const std::string& file, RegistryHandle root, const char16_t* path, std::uint32_t access,
                      RegistryHandle* opened) {
    if (root != kLocalMachine) {
        return RegistryStatus::kInvalidHandle;
    }
    std::string content;
    if (const LSTATUS status = readFile(file, content); status != RegistryStatus::kSuccess) {
        return status;
    }
    const bool in32BitView = (access & RegistryAccess::k32BitView) != 0;
    OpenKey key{std::make_shared<const RegistryFile>(RegistryFile::parse(content)), std::u16string(kRoot)};
    key.path += in32BitView ? redirected(path) : std::u16string(path);
    if (key.file->findKey(key.path) == nullptr) {
        return RegistryStatus::kFileNotFound;
    }
    *opened = openKeys().add(std::move(key));
    return RegistryStatus::kSuccess;
}

LSTATUS getStoredValue(RegistryHandle handle, const char16_t* path, const char16_t* name, std::uint32_t flags,
                       std::uint32_t* type, void* data, std::uint32_t* size) {
    OpenKey key = openKeys().find(handle);
    if (!key.file) {
        return RegistryStatus::kInvalidHandle;
    }
    if (const std::u16string_view below(path); !below.empty()) {
        key.path.append(u"\\").append(below);
    }
    const RegistryFile::Values* values = key.file->findKey(key.path);
    const RegistryValue* value = values == nullptr ? nullptr : RegistryFile::findValue(*values, name);
    if (value == nullptr) {
        return RegistryStatus::kFileNotFound;
    }
    if (value->type >= 32 || (flags & 1U << value->type) == 0) {
        return RegistryStatus::kUnsupportedType;
    }
    if (type != nullptr) {
        *type = value->type;
    }
    const std::vector<unsigned char> bytes = bytesOf(*value);
    const std::uint32_t room = *size;
    *size = static_cast<std::uint32_t>(bytes.size());
    if (data == nullptr) {
        return RegistryStatus::kSuccess;
    }
    if (room < bytes.size()) {
        return RegistryStatus::kMoreData;
    }
    std::copy(bytes.begin(), bytes.end(), static_cast<unsigned char*>(data));
    return RegistryStatus::kSuccess;
}

LSTATUS closeStoredKey(RegistryHandle handle) {
    return openKeys().remove(handle) ? RegistryStatus::kSuccess : RegistryStatus::kInvalidHandle;
}

std::size_t countOpenStoredKeys() {
    return openKeys().count();
}

} // namespace Utilities
