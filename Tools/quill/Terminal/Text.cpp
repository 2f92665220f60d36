// SPDX-License-Identifier: Apache-2.0

#include "Terminal/Text.h"

#include <algorithm>

#include <fmt/format.h>

namespace QuillTool {

namespace {

/// Returns the length of the control character at the front of a text; 0 for none. Those from U+0080 to U+009F take two
/// bytes.
std::size_t controlLength(std::string_view text) {
    const auto byte = [&](std::size_t index) { return static_cast<unsigned char>(text[index]); };
    if (byte(0) == 0xC2 && text.size() > 1 && byte(1) >= 0x80 && byte(1) < 0xA0) {
        return 2;
    }
    return byte(0) < 0x20 || byte(0) == 0x7F ? 1 : 0;
}

} // namespace

std::string oneLine(std::string_view text) {
    std::string line;
    line.reserve(text.size());
    bool blankPending = false;
    while (!text.empty()) {
        if (const std::size_t length = controlLength(text); length != 0) {
            blankPending = true;
            text.remove_prefix(length);
            continue;
        }
        if (blankPending && !line.empty() && line.back() != ' ') {
            line += ' ';
        }
        blankPending = false;
        line += text.front();
        text.remove_prefix(1);
    }
    return line;
}

std::string harmlessJson(std::string_view json) {
    std::string harmless;
    harmless.reserve(json.size());
    while (!json.empty()) {
        const std::size_t length = std::max<std::size_t>(controlLength(json), 1);
        const std::string_view character = json.substr(0, length);
        const auto last = static_cast<unsigned char>(character.back());
        harmless += length == 2 || last == 0x7F ? fmt::format("\\u{:04x}", last) : std::string(character);
        json.remove_prefix(length);
    }
    return harmless;
}

std::size_t displayWidth(std::string_view text) {
    const auto startsCharacter = [](char byte) { return (static_cast<unsigned char>(byte) & 0xC0) != 0x80; };
    return static_cast<std::size_t>(std::count_if(text.begin(), text.end(), startsCharacter));
}

std::string inCapitals(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(), [](char character) {
        return character >= 'a' && character <= 'z' ? static_cast<char>(character - 'a' + 'A') : character;
    });
    return text;
}

} // namespace QuillTool
