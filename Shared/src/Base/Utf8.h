// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <codecvt>
#include <locale>
#include <stdexcept>
#include <string>

namespace Base {

/// Converts between UTF-8 and UTF-16.
using Utf16Converter = std::wstring_convert<std::codecvt_utf8_utf16<char16_t>, char16_t>;
/// Converts between UTF-8 and wide text with one character per element.
using WideConverter = std::wstring_convert<std::codecvt_utf8<wchar_t>>;

/// A text in UTF-8.
/// @throws std::range_error "bad conversion"  it contains invalid characters, such as half a surrogate pair
template <typename Converter>
std::string toUtf8(const typename Converter::wide_string& text) {
    std::string result;
    Converter converter(std::string{}); // its result on failure, instead of its own exception
    result = converter.to_bytes(text);
    if (converter.converted() != text.size()) {
        throw std::range_error("bad conversion");
    }
    return result;
}

} // namespace Base
