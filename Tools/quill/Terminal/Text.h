// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace QuillTool {

/// White space in every locale.
constexpr std::string_view kBlanks = " \t\n\v\f\r";

/// Replaces line breaks and other control characters by single blanks, so that the text takes one line and cannot
/// control a terminal.
std::string oneLine(std::string_view text);

/// Escapes the control characters from U+007F to U+009F, which JSON allows unescaped.
std::string harmlessJson(std::string_view json);

/// Returns the number of columns of a UTF-8 text, one per character.
std::size_t displayWidth(std::string_view text);

/// Converts ASCII letters to capitals.
std::string inCapitals(std::string text);

} // namespace QuillTool
