// SPDX-License-Identifier: Apache-2.0

#include "Base/TextPieces.h"

#include "Base/TextConversion.h"

namespace Base {

std::vector<std::string> split(const std::string& text, char separator) {
    std::vector<std::string> pieces;
    std::size_t begin = 0;
    for (std::size_t end = text.find(separator); end != std::string::npos; end = text.find(separator, begin)) {
        pieces.push_back(text.substr(begin, end - begin));
        begin = end + 1;
    }
    pieces.push_back(text.substr(begin));
    return pieces;
}

std::string dottedBytes(std::uint32_t value, int count) {
    std::string text;
    for (int byte = count - 1; byte >= 0; --byte) {
        text += (text.empty() ? "" : ".") + toText(static_cast<int>(value >> (8 * byte) & 0xFF));
    }
    return text;
}

} // namespace Base
