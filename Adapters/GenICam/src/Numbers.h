// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <string>

namespace GenICamAdapter {

// Numbers as texts, independent of the locale.

std::string textOf(std::int64_t number);
/// The shortest text that reads as the same number, without an exponent where that is not longer.
std::string textOf(double number);

/// The number at the start of a text: decimal, or hexadecimal after "0x". White space before it is ignored.
/// @throws std::invalid_argument, std::out_of_range
std::int64_t parseInteger(const std::string& text);
double parseFloat(const std::string& text);

/// The number within the range that is nearest and a whole number of steps above the minimum. A step of 1 or less
/// changes nothing.
std::int64_t toStep(std::int64_t number, std::int64_t minimum, std::int64_t maximum, std::int64_t step);
/// The same; a step of 0 or less, or as small as a rounding error, changes nothing.
double toStep(double number, double minimum, double maximum, double step);

} // namespace GenICamAdapter
