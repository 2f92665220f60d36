// SPDX-License-Identifier: Apache-2.0

#include "Terminal/Numbers.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <system_error>

#include <fmt/format.h>

namespace QuillTool {

namespace {

bool isHexadecimal(std::string_view text) {
    return text.size() > 2 && text[0] == '0' && (text[1] == 'x' || text[1] == 'X');
}

bool isFinite(std::string_view text) {
    double value = 0;
    const auto [rest, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    return error == std::errc{} && rest == text.data() + text.size() && std::isfinite(value);
}

std::string withoutLeadingZeros(std::string_view digits) {
    const std::size_t first = std::min(digits.find_first_not_of('0'), digits.size());
    const bool startsWithDigit = first < digits.size() && digits[first] >= '0' && digits[first] <= '9';
    return std::string(
        digits.substr(startsWithDigit || first == 0 ? first : first - 1)); // keeps one zero before a point
}

} // namespace

std::optional<std::uint64_t> parseWholeNumber(std::string_view text) {
    const bool hexadecimal = isHexadecimal(text);
    const std::string_view digits = hexadecimal ? text.substr(2) : text;
    std::uint64_t value = 0;
    const char* const end = digits.data() + digits.size();
    const auto [rest, error] = std::from_chars(digits.data(), end, value, hexadecimal ? 16 : 10);
    if (digits.empty() || rest != end || error == std::errc::invalid_argument) {
        return std::nullopt;
    }
    return error == std::errc::result_out_of_range ? std::numeric_limits<std::uint64_t>::max() : value;
}

std::optional<std::string> decimalText(const std::string& text, NumberKind kind) {
    const bool negative = text.rfind('-', 0) == 0;
    const std::string_view magnitude = std::string_view(text).substr(negative ? 1 : 0);
    const std::string sign = negative ? "-" : "";
    if (isHexadecimal(magnitude)) {
        const auto value = parseWholeNumber(magnitude);
        return value ? std::optional(fmt::format("{}{}", sign, *value)) : std::nullopt;
    }
    const bool isNumber = kind == NumberKind::Whole ? parseWholeNumber(magnitude).has_value()
                                                    : magnitude.find('-') != 0 && isFinite(magnitude);
    return isNumber ? std::optional(sign + withoutLeadingZeros(magnitude)) : std::nullopt;
}

std::optional<double> parseNumber(const std::string& text, NumberKind kind) {
    const std::optional<std::string> decimal = decimalText(text, kind);
    if (!decimal) {
        return std::nullopt;
    }
    double number = 0;
    std::from_chars(decimal->data(), decimal->data() + decimal->size(), number);
    return number;
}

} // namespace QuillTool
