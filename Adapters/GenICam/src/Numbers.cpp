// SPDX-License-Identifier: Apache-2.0

#include "Numbers.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <limits>
#include <stdexcept>
#include <system_error>

namespace GenICamAdapter {

namespace {

/// Below this part of the range, a step says that there is none.
constexpr double kSmallestStep = 1e-12;

const char* beginOfNumber(const std::string& text) {
    const std::size_t begin = std::min(text.find_first_not_of(" \t\n\r"), text.size());
    const bool hasPlus = begin + 1 < text.size() && text[begin] == '+' && text[begin + 1] != '-';
    return text.data() + begin + (hasPlus ? 1 : 0);
}

void requireNumber(std::errc failure, const char* function) {
    if (failure == std::errc::result_out_of_range) {
        throw std::out_of_range(std::string(function) + " argument out of range");
    }
    if (failure != std::errc()) {
        throw std::invalid_argument(std::string("invalid ") + function + " argument");
    }
}

} // namespace

std::string textOf(std::int64_t number) {
    return std::to_string(number);
}

std::string textOf(double number) {
    std::array<char, 400> text{}; // the largest number has 309 digits
    const auto result = std::to_chars(text.data(), text.data() + text.size(), number);
    return {text.data(), result.ptr};
}

std::int64_t parseInteger(const std::string& text) {
    const char* begin = beginOfNumber(text);
    const char* const end = text.data() + text.size();
    const bool isNegative = begin != end && *begin == '-';
    const char* const digits = isNegative ? begin + 1 : begin;
    std::int64_t number = 0;
    if (end - digits > 2 && digits[0] == '0' && (digits[1] == 'x' || digits[1] == 'X')) {
        requireNumber(std::from_chars(digits + 2, end, number, 16).ec, "stoll");
        return isNegative ? -number : number;
    }
    requireNumber(std::from_chars(begin, end, number).ec, "stoll");
    return number;
}

double parseFloat(const std::string& text) {
    double number = 0;
    const char* const begin = beginOfNumber(text);
    requireNumber(std::from_chars(begin, text.data() + text.size(), number).ec, "stod");
    if (!std::isfinite(number)) {
        requireNumber(std::errc::result_out_of_range, "stod");
    }
    return number;
}

std::int64_t toStep(std::int64_t number, std::int64_t minimum, std::int64_t maximum, std::int64_t step) {
    if (minimum > maximum) {
        return number;
    }
    number = std::clamp(number, minimum, maximum);
    if (step <= 1) {
        return number;
    }
    // Unsigned: the whole range may span 64 bits.
    const std::uint64_t wide = static_cast<std::uint64_t>(number) - static_cast<std::uint64_t>(minimum);
    const std::uint64_t most = static_cast<std::uint64_t>(maximum) - static_cast<std::uint64_t>(minimum);
    const auto unsignedStep = static_cast<std::uint64_t>(step);
    std::uint64_t steps = wide / unsignedStep;
    if (wide % unsignedStep > (unsignedStep - 1) / 2 && steps < most / unsignedStep) {
        ++steps;
    }
    return static_cast<std::int64_t>(static_cast<std::uint64_t>(minimum) + steps * unsignedStep);
}

double toStep(double number, double minimum, double maximum, double step) {
    if (!(minimum <= maximum)) {
        return number;
    }
    number = std::clamp(number, minimum, maximum);
    if (!(step > (maximum - minimum) * kSmallestStep) || !std::isfinite(step)) {
        return number;
    }
    const double rounded = minimum + std::round((number - minimum) / step) * step;
    return rounded > maximum ? rounded - step : rounded;
}

} // namespace GenICamAdapter
