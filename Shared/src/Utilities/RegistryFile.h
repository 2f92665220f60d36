#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace Utilities {

/// One value: its type number and its bytes. Characters are two bytes, the low one first.
struct RegistryValue {
    std::uint32_t type = 0;
    std::vector<unsigned char> data;
};

/// The keys of a registry in its export format ("Windows Registry Editor Version 5.00"), in UTF-16 with a byte order
/// mark or in UTF-8. Lines that are damaged are left out. Names compare without regard to ASCII case.
class RegistryFile {
public:
    using Values = std::map<std::u16string, RegistryValue>;

    /// What the bytes of a file hold; no keys where they are no such export.
    static RegistryFile parse(std::string_view bytes);

    /// The values of a key by name, or null; the path begins with the name of a root.
    const Values* findKey(std::u16string_view path) const;
    /// A value of a key, or null; the nameless value is the empty name.
    static const RegistryValue* findValue(const Values& values, std::u16string_view name);

private:
    std::map<std::u16string, Values> m_Keys; // paths and names in lower case
};

/// A text in which the letters A to Z are small.
std::u16string toLowerCase(std::u16string_view text);

} // namespace Utilities
