#include "Utilities/DriverKit.h"

#include <algorithm>
#include <cctype>
#include <filesystem>

#include <gtest/gtest.h>

#include "Support/TemporaryFolder.h"
#include "Support/Throws.h"
#include "Utilities/RegistryApi.h"
#include "Utilities/RegistryStore.h"

namespace {

using namespace Utilities;
using TestSupport::expectStandard;
using win32::LSTATUS;
using win32::RegistryError;

const std::string kNotOpen = "Cannot open registry key: RegOpenKeyEx failed.";
const std::string kValueNotRead = "Cannot read string from registry";

/// What getZephVersion() gives, or how it fails: its status and its text.
std::string version() {
    try {
        return getZephVersion();
    } catch (const RegistryError& failure) {
        return std::to_string(failure.m_ErrorCode) + " " + failure.what();
    }
}

/// A registry that answers what a test says.
struct Registry {
    LSTATUS open = 0;
    LSTATUS size = 0;
    LSTATUS read = 0;
    std::u16string text;         ///< with its zero
    std::uint32_t announced = 0; ///< bytes
    int opened = 0;
    int closed = 0;
};

Registry registry;
constexpr RegistryHandle kHandle = 7;

LSTATUS openKey(RegistryHandle root, const char16_t* path, std::uint32_t options, std::uint32_t access,
                RegistryHandle* key) {
    EXPECT_EQ(root, kLocalMachine);
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
             Row{0, 0, 0, two, 40, "2.0"}, // shorter than it was when its size was asked for
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
    registry = Registry{0, 0, 0, std::u16string({u'1', 0xD800, 0}), 6};
    expectStandard<std::range_error>(getZephVersion, "bad conversion");
    EXPECT_EQ(registry.closed, 1);
    useRegistryApi(nullptr);
}

const std::string kHeader = "Windows Registry Editor Version 5.00\r\n\r\n";
const std::string kUninstall =
    "Microsoft\\Windows\\CurrentVersion\\Uninstall\\{7A3D9F20-4B1C-4E8A-9C55-2D61F0B8E3A7}]\r\n";
const std::string k64BitKey = "[HKEY_LOCAL_MACHINE\\SOFTWARE\\" + kUninstall;
const std::string kKey = "[HKEY_LOCAL_MACHINE\\SOFTWARE\\WOW6432Node\\" + kUninstall;

std::string storePath;

/// The driver kit's record is a file.
class RegistryStoreTest : public testing::Test {
protected:
    RegistryStoreTest() {
        storePath = m_Folder.file("driverkit.reg");
        useRegistryApi(&m_Api);
    }
    ~RegistryStoreTest() override {
        useRegistryApi(nullptr);
        EXPECT_EQ(countOpenStoredKeys(), 0U);
    }

    std::string versionIn(const std::string& content) {
        m_Folder.write("driverkit.reg", content);
        return version();
    }
    std::string versionOf(const std::string& line) { return versionIn(kHeader + kKey + line + "\r\n"); }

    TestSupport::TemporaryFolder m_Folder;

private:
    RegistryApi m_Api{[](RegistryHandle root, const char16_t* path, std::uint32_t /*options*/, std::uint32_t access,
                         RegistryHandle* key) { return openStoredKey(storePath, root, path, access, key); },
                      getStoredValue, closeStoredKey};
};

TEST_F(RegistryStoreTest, ValuesAreReadInEveryNotation) {
    const std::string missing = "2 " + kValueNotRead;
    const std::string wrongType = "1630 " + kValueNotRead;
    const std::string name = "\"DisplayVersion\"=";
    const std::vector<std::pair<std::string, std::string>> rows{
        {name + "\"4.5.1.0\"", "4.5.1.0"},
        {"  \"dISPLAYvERSION\"=\"1\"  ", "1"},
        {name + "\"a \\\"b\\\" c\\\\d\"", "a \"b\" c\\d"},
        {name + "\"\xC3\xA4\xF0\x9F\x93\xB7\"", "\xC3\xA4\xF0\x9F\x93\xB7"},
        {name + "\"\"", ""},
        {name + "hex(1):32,00,2E,00,30,00,00,00", "2.0"},
        {name + "hex(1):32,00,\\\r\n  2e,00,\\\r\n  30,00", "2.0"}, // the zero is missing
        {name + "hex(1):", ""},
        {name + "\"1\"\r\n" + name + "\"2\"", "2"},
        {name + "dword:00000001", wrongType},
        {name + "hex:32,00", wrongType},
        {name + "hex(2):32,00,00,00", wrongType},
        {name + "hex(40):32,00,00,00", wrongType},
        {"@=\"1\"", missing},
        {"\"Display\"=\"1\"", missing},
        {name + "\"1\" x", missing},
        {name + "\"1\\", missing},
        {name + "\"\xFF\"", missing},
        {name + "dword:123456789", missing},
        {name + "hex(1):3,2x", missing},
        {name + "hex(1):32,00,\\", missing},
        {name + "hex(1):32,00,\\\r\n\"Other\"=\"\"", missing},
        {name + "hex(1", missing},
        {"\"DisplayVersion", missing},
        {"[HKEY_LOCAL_MACHINE\\Other\r\n" + name + "\"1\"", missing}, // belongs to a damaged key
    };
    for (const auto& [line, expected] : rows) {
        EXPECT_EQ(versionOf(line), expected) << line;
        EXPECT_TRUE(isZephInstalled()) << line;
    }
    for (const char* lone : {"00,d8,00,00", "00,d8,31,00", "00,dc,00,d8"}) {
        m_Folder.write("driverkit.reg", kHeader + kKey + name + "hex(1):" + lone);
        expectStandard<std::range_error>(getZephVersion, "bad conversion");
    }
}

TEST_F(RegistryStoreTest, TheKeyIsThatOfThe32BitView) {
    const std::string value = "\"DisplayVersion\"=\"3.1\"\n";
    const std::string absent = "2 " + kNotOpen;
    std::string upperCase = kKey;
    std::transform(upperCase.begin(), upperCase.end(), upperCase.begin(),
                   [](char c) { return static_cast<char>(std::toupper(static_cast<unsigned char>(c))); });
    std::u16string wide;
    for (const char character : "\xFF" + kHeader + kKey + value) {
        wide += character == '\xFF' ? u'\xFEFF' : static_cast<char16_t>(character);
    }
    const std::string utf16(reinterpret_cast<const char*>(wide.data()), 2 * wide.size());
    EXPECT_EQ(versionIn(utf16 + "x"), "3.1") << "as the platform exports it";
    EXPECT_EQ(versionIn("\xEF\xBB\xBF" + kHeader + kKey + value), "3.1");
    EXPECT_EQ(versionIn(kHeader + upperCase + value), "3.1");
    EXPECT_EQ(versionIn(kHeader + k64BitKey + value), absent);
    EXPECT_EQ(versionIn(kHeader + kKey.substr(0, kKey.size() - 3) + "\\Below]\n"), "2 " + kValueNotRead);
    EXPECT_EQ(versionIn(kKey + value), absent) << "no export";
    EXPECT_EQ(versionIn(""), absent);
    EXPECT_EQ(versionIn(kHeader + kKey.substr(0, kKey.size() - 3)), absent);
    RegistryHandle key = 0;
    EXPECT_EQ(openStoredKey(storePath, 0, u"SOFTWARE", 0, &key), RegistryStatus::kInvalidHandle);
    EXPECT_EQ(closeStoredKey(key), RegistryStatus::kInvalidHandle);
}

TEST_F(RegistryStoreTest, AFileThatCannotBeReadDeniesAccess) {
    EXPECT_EQ(version(), "2 " + kNotOpen);
    EXPECT_FALSE(isZephInstalled());
    std::string content = kHeader + kKey + "\"DisplayVersion\"=\"1\"\n";
    constexpr std::size_t kLimit = 1 << 20;
    content.resize(kLimit, '\\');
    EXPECT_EQ(versionIn(content), "1");
    EXPECT_EQ(versionIn(content + "x"), "5 " + kNotOpen);
    std::filesystem::remove(storePath);
    std::filesystem::create_directory(storePath);
    EXPECT_EQ(version(), "5 " + kNotOpen);
}

} // namespace
