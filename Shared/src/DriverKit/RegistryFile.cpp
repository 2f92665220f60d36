// SPDX-License-Identifier: Apache-2.0

#include "DriverKit/RegistryFile.h"

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <memory>
#include <optional>
#include <string_view>
#include <system_error>

#include "Base/Utf8.h"

namespace Utilities {

namespace {

using win32::LSTATUS;

constexpr std::size_t kMaximumFileBytes = std::size_t{1} << 20;
constexpr std::string_view kNumber = "dword:";
constexpr const char16_t* kNoText = u"\xDC00"; // half a surrogate pair

/// An open key: the content of the file at the time of opening, and the prefix of the key's lines.
struct StoredKey {
    std::string content;
    std::string prefix;
};

/// A handle is the address of its key.
StoredKey* keyOf(RegistryHandle handle) {
    return reinterpret_cast<StoredKey*>(handle); // NOLINT(performance-no-int-to-ptr): the interface's type
}

LSTATUS readFile(const std::string& path, std::string& content) {
    std::error_code error;
    const std::filesystem::file_status status = std::filesystem::status(path, error);
    if (status.type() == std::filesystem::file_type::not_found) {
        return ERROR_FILE_NOT_FOUND;
    }
    std::ifstream file;
    if (std::filesystem::is_regular_file(status)) {
        file.open(path, std::ios::binary);
    }
    if (!file.is_open()) {
        return ERROR_ACCESS_DENIED;
    }
    content.resize(kMaximumFileBytes + 1);
    file.read(content.data(), static_cast<std::streamsize>(content.size()));
    content.resize(static_cast<std::size_t>(file.gcount()));
    return file.eof() ? ERROR_SUCCESS : ERROR_ACCESS_DENIED; // too large, or a read error
}

std::string_view trimmed(std::string_view text) {
    constexpr std::string_view kBlanks = " \t\r";
    const std::size_t begin = text.find_first_not_of(kBlanks);
    return begin == std::string_view::npos ? "" : text.substr(begin, text.find_last_not_of(kBlanks) + 1 - begin);
}

/// Calls @p visit with name and text of each value of a key.
template <typename Visit>
void forEachValue(const StoredKey& key, Visit visit) {
    for (std::string_view rest = key.content; !rest.empty();) {
        const std::string_view line = rest.substr(0, rest.find('\n'));
        rest.remove_prefix(std::min(line.size() + 1, rest.size()));
        const std::size_t equals = line.find('=');
        const std::string_view name = trimmed(line.substr(0, equals));
        if (equals != std::string_view::npos && name.substr(0, key.prefix.size()) == key.prefix) {
            visit(name.substr(key.prefix.size()), trimmed(line.substr(equals + 1)));
        }
    }
}

std::u16string utf16(std::string_view text) {
    Base::Utf16Converter converter(std::string{}, kNoText);
    const std::u16string result = converter.from_bytes(text.data(), text.data() + text.size());
    return converter.converted() == text.size() ? result : kNoText;
}

} // namespace

LSTATUS openStoredKey(const std::string& file, const char16_t* path, RegistryHandle* opened) {
    auto key = std::make_unique<StoredKey>();
    key->prefix = Base::toUtf8<Base::Utf16Converter>(path) + '\\';
    if (const LSTATUS status = readFile(file, key->content); status != ERROR_SUCCESS) {
        return status;
    }
    bool found = false;
    forEachValue(*key, [&](std::string_view /*name*/, std::string_view /*text*/) { found = true; });
    if (!found) {
        return ERROR_FILE_NOT_FOUND;
    }
    *opened = reinterpret_cast<RegistryHandle>(key.release());
    return ERROR_SUCCESS;
}

LSTATUS getStoredValue(RegistryHandle key, const char16_t* /*path*/, const char16_t* name, std::uint32_t flags,
                       std::uint32_t* type, void* data, std::uint32_t* size) {
    const std::string wanted = Base::toUtf8<Base::Utf16Converter>(name);
    std::optional<std::string_view> value;
    forEachValue(*keyOf(key), [&](std::string_view candidate, std::string_view text) {
        value = candidate == wanted ? text : value;
    });
    if (!value) {
        return ERROR_FILE_NOT_FOUND;
    }
    if ((flags & RRF_RT_REG_SZ) == 0 || value->substr(0, kNumber.size()) == kNumber) {
        return ERROR_UNSUPPORTED_TYPE;
    }
    if (type != nullptr) {
        *type = REG_SZ;
    }
    const std::u16string text = utf16(*value);
    const std::uint32_t room = *size;
    *size = static_cast<std::uint32_t>(sizeof(char16_t) * (text.size() + 1)); // with the terminating zero
    if (data != nullptr && room < *size) {
        return ERROR_MORE_DATA;
    }
    if (data != nullptr) {
        std::memcpy(data, text.c_str(), *size);
    }
    return ERROR_SUCCESS;
}

LSTATUS closeStoredKey(RegistryHandle key) {
    const std::unique_ptr<StoredKey> closed(keyOf(key));
    return ERROR_SUCCESS;
}

} // namespace Utilities
