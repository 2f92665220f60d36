// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <string_view>

#include <CLI/CLI.hpp>

namespace QuillTool {

// Numbers are decimal, or hexadecimal as 0x...: leading zeros change nothing, and nothing may stand before or behind.

/// A whole number without a sign; of those beyond 64 bits, the largest that there is. Nothing: the text is none.
std::optional<std::uint64_t> parseWholeNumber(std::string_view text);

enum class NumberKind { Whole, Real };

/// A number, maybe negative, in the decimal form without leading zeros that every reader of numbers takes for it, in
/// whatever base it looks for. Hexadecimal ones are whole. Nothing: the text is none, or is not finite.
std::optional<std::string> decimalText(const std::string& text, NumberKind kind);

/// The value of such a text.
std::optional<double> parseNumber(const std::string& text, NumberKind kind);

namespace Detail {
CLI::Validator wholeNumber(std::uint64_t least, std::uint64_t most);
} // namespace Detail

/// Adds an argument or an option that is a whole number from @p least to @p most.
template <typename Integer>
CLI::Option* addNumber(CLI::App& parser, const std::string& name, Integer& value, const std::string& description,
                       std::uint64_t least, std::uint64_t most = std::numeric_limits<Integer>::max()) {
    return parser.add_option(name, value, description)->transform(Detail::wholeNumber(least, most));
}

} // namespace QuillTool
