#include "Utilities/RegistryFile.h"

#include <algorithm>
#include <cstddef>
#include <optional>
#include <utility>

#include "Internal/NeverDestroyed.h"
#include "Utilities/RegistryApi.h"
#include "Utilities/Utf16.h"

namespace Utilities {

namespace {

using Text = std::u16string_view;
using Lines = std::vector<std::u16string>;

constexpr Text kHeader = u"Windows Registry Editor Version 5.00";
constexpr std::string_view kUtf16Mark = "\xFF\xFE";
constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF";
constexpr Text kBlanks = u" \t\r";
constexpr std::size_t kDigitsOfByte = 2;
constexpr std::size_t kDigitsOfNumber = 8;

template <typename View>
bool takePrefix(View& text, View prefix) {
    const bool found = text.substr(0, prefix.size()) == prefix;
    text.remove_prefix(found ? prefix.size() : 0);
    return found;
}

Text trimmed(Text text) {
    const std::size_t begin = text.find_first_not_of(kBlanks);
    return begin == Text::npos ? Text() : text.substr(begin, text.find_last_not_of(kBlanks) + 1 - begin);
}

/// The pieces between line feeds.
template <typename View, typename Append>
void forEachLine(View text, Append append) {
    while (!text.empty()) {
        const std::size_t end = std::min(text.find('\n'), text.size());
        append(text.substr(0, end));
        text.remove_prefix(std::min(end + 1, text.size()));
    }
}

Lines linesOf(std::string_view bytes) {
    Lines lines;
    if (takePrefix(bytes, kUtf16Mark)) {
        std::u16string text;
        for (std::size_t index = 0; index + 1 < bytes.size(); index += 2) {
            text += static_cast<char16_t>(static_cast<unsigned char>(bytes[index]) |
                                          static_cast<unsigned char>(bytes[index + 1]) << 8);
        }
        forEachLine(Text(text), [&](Text line) { lines.emplace_back(trimmed(line)); });
    } else {
        takePrefix(bytes, kUtf8Mark);
        forEachLine(bytes, [&](std::string_view line) {
            // A line that is no text is an empty one.
            lines.emplace_back(trimmed(utf16FromUtf8(line).value_or(std::u16string())));
        });
    }
    return lines;
}

/// Takes a number of hexadecimal digits off the front; nothing unless there is one to @p maximumDigits of them.
std::optional<std::uint32_t> takeHexadecimal(Text& text, std::size_t maximumDigits) {
    constexpr Text kDigits = u"0123456789abcdef";
    std::uint32_t value = 0;
    std::size_t digits = 0;
    for (; digits < text.size() && digits <= maximumDigits; ++digits) {
        const std::size_t digit = kDigits.find(toLowerCase(text.substr(digits, 1)));
        if (digit == Text::npos) {
            break;
        }
        value = value << 4 | static_cast<std::uint32_t>(digit);
    }
    if (digits == 0 || digits > maximumDigits) {
        return std::nullopt;
    }
    text.remove_prefix(digits);
    return value;
}

/// Takes a text in quotation marks off the front; a quotation mark or backslash in it stands behind a backslash.
std::optional<std::u16string> takeQuoted(Text& text) {
    if (!takePrefix(text, Text(u"\""))) {
        return std::nullopt;
    }
    std::u16string content;
    while (!text.empty() && text.front() != u'"') {
        takePrefix(text, Text(u"\\"));
        if (!text.empty()) {
            content += text.front();
            text.remove_prefix(1);
        }
    }
    return takePrefix(text, Text(u"\"")) ? std::optional(content) : std::nullopt;
}

RegistryValue textValue(const std::u16string& content) {
    RegistryValue value{RegistryType::kText, {}};
    value.data.reserve(2 * content.size() + 2);
    for (std::size_t index = 0; index <= content.size(); ++index) { // the zero that ends it included
        const char16_t character = content.c_str()[index];
        value.data.push_back(static_cast<unsigned char>(character & 0xFF));
        value.data.push_back(static_cast<unsigned char>(character >> 8));
    }
    return value;
}

/// Bytes joined by commas, as many as there are; nothing unless they are the whole text.
std::optional<RegistryValue> bytesValue(std::uint32_t type, Text text) {
    RegistryValue value{type, {}};
    while (!text.empty()) {
        const std::optional<std::uint32_t> byte = takeHexadecimal(text, kDigitsOfByte);
        if (!byte || !(text.empty() || takePrefix(text, Text(u",")))) {
            return std::nullopt;
        }
        value.data.push_back(static_cast<unsigned char>(*byte));
    }
    return value;
}

std::optional<RegistryValue> numberValue(Text text) {
    const std::optional<std::uint32_t> number = takeHexadecimal(text, kDigitsOfNumber);
    if (!number || !text.empty()) {
        return std::nullopt;
    }
    RegistryValue value{RegistryType::kNumber, {}};
    for (unsigned shift = 0; shift < 32; shift += 8) {
        value.data.push_back(static_cast<unsigned char>(*number >> shift & 0xFF));
    }
    return value;
}

std::optional<RegistryValue> parseValue(Text text) {
    if (std::optional<std::u16string> content = takeQuoted(text)) {
        return text.empty() ? std::optional(textValue(*content)) : std::nullopt;
    }
    if (takePrefix(text, Text(u"dword:"))) {
        return numberValue(text);
    }
    if (takePrefix(text, Text(u"hex:"))) {
        return bytesValue(RegistryType::kBinary, text);
    }
    if (takePrefix(text, Text(u"hex("))) {
        const std::optional<std::uint32_t> type = takeHexadecimal(text, kDigitsOfNumber);
        if (type && takePrefix(text, Text(u"):"))) {
            return bytesValue(*type, text);
        }
    }
    return std::nullopt;
}

/// The line at a place, with those that go on with it: bytes that end in a backslash, followed by more of them. The
/// place is then that of the last one.
std::u16string joinedLine(const Lines& lines, std::size_t& place) {
    std::u16string line = lines[place];
    const bool maySpread = line.find(u"=hex") != std::u16string::npos;
    while (maySpread && !line.empty() && line.back() == u'\\' && place + 1 < lines.size()) {
        Text next = lines[place + 1];
        if (!takeHexadecimal(next, kDigitsOfByte)) {
            break;
        }
        line.pop_back();
        line += lines[++place];
    }
    return line;
}

/// Adds the value that a line describes.
void readValue(Text line, RegistryFile::Values& values) {
    std::optional<std::u16string> name = takePrefix(line, Text(u"@")) ? std::u16string() : takeQuoted(line);
    if (!name || !takePrefix(line, Text(u"="))) {
        return;
    }
    if (std::optional<RegistryValue> value = parseValue(line)) {
        values[toLowerCase(*name)] = *std::move(value);
    }
}

} // namespace

RegistryFile RegistryFile::parse(std::string_view bytes) {
    RegistryFile file;
    const Lines lines = linesOf(bytes);
    if (lines.empty() || lines.front() != kHeader) {
        return file;
    }
    Values* values = nullptr; // of the key that is being described
    for (std::size_t place = 1; place < lines.size(); ++place) {
        const std::u16string joined = joinedLine(lines, place);
        Text line = joined;
        if (takePrefix(line, Text(u"["))) {
            const bool complete = !line.empty() && line.back() == u']';
            values = complete ? &file.m_Keys[toLowerCase(line.substr(0, line.size() - 1))] : nullptr;
        } else if (values != nullptr) {
            readValue(line, *values);
        }
    }
    return file;
}

const RegistryFile::Values* RegistryFile::findKey(std::u16string_view path) const {
    const std::u16string lowerCase = toLowerCase(path);
    if (const auto key = m_Keys.find(lowerCase); key != m_Keys.end()) {
        return &key->second;
    }
    // A key above others is there without being described.
    static Internal::NeverDestroyed<const Values> none;
    const std::u16string below = lowerCase + u'\\';
    const auto key = m_Keys.lower_bound(below);
    return key != m_Keys.end() && key->first.compare(0, below.size(), below) == 0 ? &none.get() : nullptr;
}

const RegistryValue* RegistryFile::findValue(const Values& values, std::u16string_view name) {
    const auto value = values.find(toLowerCase(name));
    return value == values.end() ? nullptr : &value->second;
}

std::u16string toLowerCase(std::u16string_view text) {
    std::u16string result(text);
    std::transform(result.begin(), result.end(), result.begin(), [](char16_t character) {
        return u'A' <= character && character <= u'Z' ? static_cast<char16_t>(character - u'A' + u'a') : character;
    });
    return result;
}

} // namespace Utilities
