#include "Text.h"

#include <algorithm>

namespace QuillTool {

namespace {

bool isControl(char character) {
    return static_cast<unsigned char>(character) < 0x20 || character == 0x7F;
}

} // namespace

std::string oneLine(std::string_view text) {
    std::string line;
    line.reserve(text.size());
    bool blankPending = false;
    for (const char character : text) {
        if (isControl(character)) {
            blankPending = true;
            continue;
        }
        if (blankPending && !line.empty() && line.back() != ' ') {
            line += ' ';
        }
        blankPending = false;
        line += character;
    }
    return line;
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
