// SPDX-License-Identifier: Apache-2.0

#include "Terminal/NumberArgument.h"

#include <optional>

#include <fmt/format.h>

#include "Terminal/Numbers.h"

namespace QuillTool {

CLI::Validator Detail::wholeNumber(std::uint64_t least, std::uint64_t most) {
    const std::string range = fmt::format("{} to {}", least, most);
    const auto check = [=](std::string& text) {
        const std::optional<std::uint64_t> number = parseWholeNumber(text);
        if (!number) {
            return fmt::format("'{}' is not a whole number, decimal or hexadecimal as 0x...", text);
        }
        if (*number < least || *number > most) {
            return fmt::format("{} is not within {}", text, range);
        }
        text = std::to_string(*number);
        return std::string{};
    };
    return {check, range};
}

} // namespace QuillTool
