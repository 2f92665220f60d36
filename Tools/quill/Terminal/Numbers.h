// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <string_view>

#include <CLI/CLI.hpp>

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

namespace Detail {
CLI::Validator wholeNumber(std::uint64_t least, std::uint64_t most);
} // namespace Detail

/// Adds an argument or option that takes a whole number from @p least to @p most.
template <typename Integer>
CLI::Option* addNumber(CLI::App& parser, const std::string& name, Integer& value, const std::string& description,
                       std::uint64_t least, std::uint64_t most = std::numeric_limits<Integer>::max()) {
    return parser.add_option(name, value, description)->transform(Detail::wholeNumber(least, most));
}

} // namespace QuillTool
