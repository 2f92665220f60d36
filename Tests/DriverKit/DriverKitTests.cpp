// SPDX-License-Identifier: Apache-2.0

#include "Utilities/DriverKit.h"

#include <algorithm>
#include <filesystem>
#include <stdexcept>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "DriverKit/RegistryApi.h"
#include "DriverKit/RegistryFile.h"
#include "Support/TemporaryFolder.h"

namespace {

using namespace Utilities;
using win32::LSTATUS;
using win32::RegistryError;

const std::string kNotOpen = "Cannot open registry key: RegOpenKeyEx failed.";
const std::string kValueNotRead = "Cannot read string from registry";

/// The result of getZephVersion(), or the status and the text of its failure.
std::string version() {
    try {
        return getZephVersion();
    } catch (const RegistryError& failure) {
        return std::to_string(failure.m_ErrorCode) + " " + failure.what();
    } catch (const std::range_error& failure) {
        return failure.what();
    }
}

/// A registry with results set by a test.
struct Registry {
    LSTATUS open = 0;
    LSTATUS size = 0;
    LSTATUS read = 0;
    std::u16string text;         ///< including its zero
    std::uint32_t announced = 0; ///< bytes
    int opened = 0;
    int closed = 0;
};

Registry registry;
constexpr RegistryHandle kHandle = 7;

LSTATUS openKey(RegistryHandle root, const char16_t* path, std::uint32_t options, std::uint32_t access,
                RegistryHandle* key) {
    EXPECT_EQ(root, HKEY_LOCAL_MACHINE);
    EXPECT_EQ(std::u16string(path), u"SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Uninstall\\"
                                    u"{7A3D9F20-4B1C-4E8A-9C55-2D61F0B8E3A7}");
    EXPECT_EQ(options, 0U);
    EXPECT_EQ(access, 0x20219U);
    if (registry.open == 0) {
        *key = kHandle;
        ++registry.opened;
    }
    return registry.open;
}

LSTATUS getValue(RegistryHandle key, const char16_t* path, const char16_t* name, std::uint32_t flags,
                 std::uint32_t* type, void* data, std::uint32_t* size) {
    EXPECT_EQ(key, kHandle);
    EXPECT_EQ(std::u16string(path), u"");
    EXPECT_EQ(std::u16string(name), u"DisplayVersion");
    EXPECT_EQ(flags, 2U);
    EXPECT_EQ(type, nullptr);
    const auto bytes = static_cast<std::uint32_t>(2 * registry.text.size());
    if (data == nullptr) {
        *size = registry.announced;
        return registry.size;
    }
    EXPECT_EQ(*size, registry.announced);
    std::copy_n(registry.text.data(), std::min(bytes, *size) / 2, static_cast<char16_t*>(data));
    *size = bytes;
    return registry.read;
}

LSTATUS closeKey(RegistryHandle key) {
    EXPECT_EQ(key, kHandle);
    ++registry.closed;
    return 0;
}

TEST(DriverKit, EveryStatusIsReportedAndTheKeyClosed) {
    const RegistryApi api{openKey, getValue, closeKey};
    useRegistryApi(&api);
    const std::u16string two(u"2.0\0", 4);
    struct Row {
        LSTATUS open;
        LSTATUS size;
        LSTATUS read;
        std::u16string text;
        std::uint32_t announced;
        std::string version;
    };
    for (const Row& row : {
             Row{0, 0, 0, two, 8, "2.0"},
             Row{0, 0, 0, two, 40, "2.0"}, // shorter than at the query for its size
             Row{0, 0, 0, std::u16string(1, u'\0'), 2, ""},
             Row{0, 0, 0, u"", 0, ""},
             Row{2, 0, 0, two, 8, "2 " + kNotOpen},
             Row{0, 2, 0, two, 8, "2 " + kValueNotRead},
             Row{0, 0, 234, two, 6, "234 " + kValueNotRead},
         }) {
        registry = Registry{row.open, row.size, row.read, row.text, row.announced};
        EXPECT_EQ(version(), row.version);
        EXPECT_EQ(isZephInstalled(), row.open == 0);
        EXPECT_EQ(registry.opened, row.open == 0 ? 2 : 0);
        EXPECT_EQ(registry.closed, registry.opened);
    }
    for (const std::u16string& half : {std::u16string{u'1', 0xD800}, {0xD800, u'1'}, {0xDC00, 0xD800}}) {
        registry = Registry{0, 0, 0, half + u'\0', 6};
        EXPECT_EQ(version(), "bad conversion");
        EXPECT_EQ(registry.closed, 1);
    }
    useRegistryApi(nullptr);
}

std::string storePath;

TEST(DriverKit, TheRecordIsALineOfAFile) {
    const TestSupport::TemporaryFolder folder;
    storePath = folder.file("drivers.conf");
    const RegistryApi api{[](RegistryHandle /*root*/, const char16_t* path, std::uint32_t /*options*/,
                             std::uint32_t /*access*/,
                             RegistryHandle* key) { return openStoredKey(storePath, path, key); },
                          getStoredValue, closeStoredKey};
    useRegistryApi(&api);
    const std::string key = "SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Uninstall\\"
                            "{7A3D9F20-4B1C-4E8A-9C55-2D61F0B8E3A7}\\";
    const std::string name = key + "DisplayVersion";
    const std::string absent = "2 " + kNotOpen;
    const std::string denied = "5 " + kNotOpen;
    const std::string missing = "2 " + kValueNotRead;
    const std::string badText = "bad conversion";
    EXPECT_EQ(version(), absent);
    EXPECT_FALSE(isZephInstalled());
    std::string large = name + "=1\n";
    large.resize(1 << 20, '#');
    const std::vector<std::pair<std::string, std::string>> rows{
        {name + "=4.5.1.0", "4.5.1.0"},
        {"# kits\r\n" + name + " = 4.5 beta \r\n", "4.5 beta"},
        {name + "=\xC3\xA4\xF0\x9F\x93\xB7 = \"x\"\n", "\xC3\xA4\xF0\x9F\x93\xB7 = \"x\""},
        {name + "=", ""},
        {name + "=1\n" + name + "=2\n" + key + "Other=3", "2"},
        {name + "=dword:00000001", "1630 " + kValueNotRead},
        {key + "=", missing},
        {key + "Display=1\n" + name, missing},
        {name + "=1\xFF", badText},
        {name + "=1\xC3", badText},
        {name + "=1\xED\xA0\x80", badText},
        {"", absent},
        {name, absent},
        {"#" + name + "=1\nWOW6432Node\\" + name + "=1", absent},
        {large, "1"},
        {large + "#", denied},
    };
    for (const auto& [content, expected] : rows) {
        folder.write("drivers.conf", content);
        EXPECT_EQ(version(), expected) << content.substr(0, 200);
        EXPECT_EQ(isZephInstalled(), expected != absent && expected != denied);
    }
    std::filesystem::remove(storePath);
    std::filesystem::create_directory(storePath);
    EXPECT_EQ(version(), denied);
    useRegistryApi(nullptr);
}

} // namespace
