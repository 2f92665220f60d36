// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace QuillTool {

/// White space in every locale.
constexpr std::string_view kBlanks = " \t\n\v\f\r";

/// The text on one line and harmless to a terminal: line breaks and other control characters become single blanks.
std::string oneLine(std::string_view text);

/// A JSON text with escapes for the control characters behind ASCII's first 32, which JSON allows as they are.
std::string harmlessJson(std::string_view json);

/// How many columns a UTF-8 text takes, each character counted as one.
std::size_t displayWidth(std::string_view text);

/// The text in capitals, ASCII letters only.
std::string inCapitals(std::string text);

} // namespace QuillTool
