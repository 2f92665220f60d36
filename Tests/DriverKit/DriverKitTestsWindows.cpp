// SPDX-License-Identifier: Apache-2.0

// The driver kit's entry in the system's own registry.

#include "Utilities/DriverKit.h"

#include <stdexcept>
#include <string>

#include <gtest/gtest.h>
#include <windows.h>

namespace {

using win32::RegistryError;

constexpr const wchar_t* kEntry = L"SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Uninstall\\"
                                  L"{7A3D9F20-4B1C-4E8A-9C55-2D61F0B8E3A7}";
constexpr const wchar_t* kVersion = L"DisplayVersion";

/// An entry in one view of the registry, removed by the destructor.
class Entry {
public:
    explicit Entry(REGSAM view) : m_View(view) {
        DWORD disposition = 0;
        const LSTATUS status = RegCreateKeyExW(HKEY_LOCAL_MACHINE, kEntry, 0, nullptr, REG_OPTION_VOLATILE,
                                               KEY_ALL_ACCESS | view, nullptr, &m_Key, &disposition);
        if (status != ERROR_SUCCESS || disposition != REG_CREATED_NEW_KEY) {
            throw std::runtime_error("The machine has a driver kit, or its registry cannot be written.");
        }
    }
    Entry(const Entry&) = delete;
    Entry& operator=(const Entry&) = delete;
    ~Entry() {
        RegCloseKey(m_Key);
        RegDeleteKeyExW(HKEY_LOCAL_MACHINE, kEntry, m_View, 0);
    }

    void set(DWORD type, const std::wstring& value) {
        RegSetValueExW(m_Key, kVersion, 0, type, reinterpret_cast<const BYTE*>(value.c_str()),
                       static_cast<DWORD>(type == REG_DWORD ? sizeof(DWORD) : (value.size() + 1) * sizeof(wchar_t)));
    }

private:
    REGSAM m_View;
    HKEY m_Key = nullptr;
};

/// The version, or the status and the text of the failure.
std::string version() {
    try {
        return getZephVersion();
    } catch (const RegistryError& failure) {
        return std::to_string(failure.m_ErrorCode) + " " + failure.what();
    }
}

TEST(DriverKitInTheRegistry, IsThatOfThe32BitViewAlone) {
    ASSERT_FALSE(isZephInstalled());
    EXPECT_EQ(version(), "2 Cannot open registry key: RegOpenKeyEx failed.");
    {
        Entry entry(KEY_WOW64_64KEY);
        entry.set(REG_SZ, L"1.0");
        EXPECT_FALSE(isZephInstalled());
    }
    Entry entry(KEY_WOW64_32KEY);
    EXPECT_TRUE(isZephInstalled());
    EXPECT_EQ(version(), "2 Cannot read string from registry");
    entry.set(REG_DWORD, L"42");
    EXPECT_EQ(version(), "1630 Cannot read string from registry");
    for (const auto& [text, expected] :
         {std::pair<std::wstring, std::string>{L"4.2.1 \u00E4\u4E00\U0001F4F7", u8"4.2.1 \u00E4\u4E00\U0001F4F7"},
          {std::wstring(3000, L'x'), std::string(3000, 'x')},
          {L"", ""}}) {
        entry.set(REG_SZ, text);
        EXPECT_EQ(version(), expected);
    }
}

} // namespace
