// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace QuillTool {

// Numbers are decimal, or hexadecimal as 0x.... Leading zeros have no effect; other characters are not allowed.

/// Parses a whole number without a sign. Returns the largest 64-bit number for larger ones; nothing for any other text.
std::optional<std::uint64_t> parseWholeNumber(std::string_view text);

enum class NumberKind { Whole, Real };

/// Converts a number, possibly negative, to decimal digits without leading zeros, which every parser of numbers reads
/// alike. Hexadecimal numbers are whole. Returns nothing if the text is not a finite number.
std::optional<std::string> decimalText(const std::string& text, NumberKind kind);

/// Returns the value of such a text.
std::optional<double> parseNumber(const std::string& text, NumberKind kind);

} // namespace QuillTool
