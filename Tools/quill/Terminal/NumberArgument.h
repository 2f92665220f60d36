// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <limits>
#include <string>

#include <CLI/CLI.hpp>

namespace QuillTool {

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
