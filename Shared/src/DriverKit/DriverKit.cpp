// SPDX-License-Identifier: Apache-2.0

#include "Utilities/DriverKit.h"

#include <algorithm>
#include <cstddef>

#include "Base/Utf8.h"
#include "DriverKit/RegistryApi.h"

namespace {

using namespace Utilities;
using win32::LSTATUS;
using win32::RegistryError;

constexpr const char16_t* kInstalledPrograms = u"SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Uninstall\\";
constexpr const char16_t* kProductCode = u"{7A3D9F20-4B1C-4E8A-9C55-2D61F0B8E3A7}";
constexpr const char16_t* kVersion = u"DisplayVersion";
constexpr std::size_t kCharacterBytes = sizeof(char16_t);

/// The driver kit's key in the list of installed programs, open for the lifetime of the object.
class DriverKitKey {
public:
    DriverKitKey() {
        const std::u16string path = std::u16string(kInstalledPrograms) + kProductCode;
        const LSTATUS status =
            registryApi().RegOpenKeyExW(HKEY_LOCAL_MACHINE, path.c_str(), 0, KEY_READ | KEY_WOW64_32KEY, &m_Key);
        if (status != ERROR_SUCCESS) {
            throw RegistryError("Cannot open registry key: RegOpenKeyEx failed.", status);
        }
    }
    DriverKitKey(const DriverKitKey&) = delete;
    DriverKitKey& operator=(const DriverKitKey&) = delete;
    ~DriverKitKey() { registryApi().RegCloseKey(m_Key); }

    std::u16string readText(const char16_t* name) const {
        std::uint32_t size = 0;
        query(name, nullptr, size);
        std::u16string text(size / kCharacterBytes, u'\0');
        query(name, text.data(), size);
        // The terminating zero is not part of the text.
        const std::size_t characters = size / kCharacterBytes;
        text.resize(std::min(text.size(), characters == 0 ? 0 : characters - 1));
        return text;
    }

private:
    void query(const char16_t* name, void* data, std::uint32_t& size) const {
        const LSTATUS status = registryApi().RegGetValueW(m_Key, u"", name, RRF_RT_REG_SZ, nullptr, data, &size);
        if (status != ERROR_SUCCESS) {
            throw RegistryError("Cannot read string from registry", status);
        }
    }

    RegistryHandle m_Key = 0;
};

} // namespace

std::string getZephVersion() {
    return Base::toUtf8<Base::Utf16Converter>(DriverKitKey().readText(kVersion));
}

bool isZephInstalled() {
    try {
        const DriverKitKey key;
        return true;
    } catch (const RegistryError&) {
        return false;
    }
}
