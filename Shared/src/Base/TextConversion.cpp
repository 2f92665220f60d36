// SPDX-License-Identifier: Apache-2.0

#include "Base/TextConversion.h"

#include <algorithm>
#include <array>
#include <cfloat>
#include <charconv>
#include <cstdint>
#include <limits>
#include <optional>
#include <stdexcept>
#include <string_view>

namespace Base {

namespace {

constexpr std::string_view kWhiteSpace = " \t\n\v\f\r";
constexpr std::string_view kDecimalDigits = "0123456789";
constexpr std::string_view kHexadecimalDigits = "0123456789abcdefABCDEF";

bool isWhiteSpace(char character) {
    return character == ' ' || (character >= '\t' && character <= '\r');
}

std::string_view withoutLeadingSpace(std::string_view text) {
    while (!text.empty() && isWhiteSpace(text.front())) {
        text.remove_prefix(1);
    }
    return text;
}

/// An integer of any width: its sign and its magnitude, the latter capped above every 32-bit range.
struct Integer {
    bool negative;
    std::uint64_t magnitude;

    bool fits(std::uint64_t positiveLimit, std::uint64_t negativeLimit) const {
        return magnitude <= (negative ? negativeLimit : positiveLimit);
    }
    std::int64_t value() const {
        return negative ? -static_cast<std::int64_t>(magnitude) : static_cast<std::int64_t>(magnitude);
    }
};

constexpr std::uint64_t kInt32Maximum = std::numeric_limits<std::int32_t>::max();
constexpr std::uint64_t kInt32MinimumMagnitude = kInt32Maximum + 1;
constexpr std::uint64_t kUint32Maximum = std::numeric_limits<std::uint32_t>::max();
constexpr std::uint64_t kMagnitudeCap = std::uint64_t{1} << 62;

/// Removes a leading sign; returns whether it was a minus.
bool takeSign(std::string_view& text) {
    if (text.empty() || (text.front() != '+' && text.front() != '-')) {
        return false;
    }
    const bool negative = text.front() == '-';
    text.remove_prefix(1);
    return negative;
}

std::optional<Integer> parseDigits(std::string_view text, bool negative, int base) {
    std::uint64_t magnitude = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), magnitude, base);
    if (error == std::errc::invalid_argument) {
        return std::nullopt;
    }
    const bool overflow = error == std::errc::result_out_of_range;
    return Integer{negative, overflow ? kMagnitudeCap : std::min(magnitude, kMagnitudeCap)};
}

/// The integer as an input stream reads it: a sign, then decimal digits; 0 if there is none.
Integer extractInteger(std::string_view word) {
    const bool negative = takeSign(word);
    return parseDigits(word, negative, 10).value_or(Integer{false, 0});
}

enum class Point { NotAllowed, Allowed };

/// Removes a leading "0x" if a hexadecimal number follows, which may begin with a point; returns whether it did.
bool takeHexadecimalPrefix(std::string_view& digits, Point point = Point::NotAllowed) {
    const std::size_t first = point == Point::Allowed && digits.size() > 2 && digits[2] == '.' ? 3 : 2;
    const bool hexadecimal = digits.size() > first && digits[0] == '0' && (digits[1] == 'x' || digits[1] == 'X') &&
                             kHexadecimalDigits.find(digits[first]) != std::string_view::npos;
    digits.remove_prefix(hexadecimal ? 2 : 0);
    return hexadecimal;
}

int baseOf(std::string_view& digits) {
    if (takeHexadecimalPrefix(digits)) {
        return 16;
    }
    return !digits.empty() && digits[0] == '0' ? 8 : 10;
}

/// The longest prefix of a word that an input stream takes for a floating-point number: no "inf", "nan" or hexadecimal.
/// An incomplete exponent is included, so that "1e" is not a number.
std::string_view floatingPointCharacters(std::string_view word) {
    std::size_t length = 0;
    const auto take = [&](std::string_view allowed) {
        const bool taken = length < word.size() && allowed.find(word[length]) != std::string_view::npos;
        length += taken ? 1 : 0;
        return taken;
    };
    take("+-");
    bool digits = false;
    while (take(kDecimalDigits)) {
        digits = true;
    }
    if (take(".")) {
        while (take(kDecimalDigits)) {
            digits = true;
        }
    }
    if (digits && take("eE")) {
        take("+-");
        while (take(kDecimalDigits)) {
        }
    }
    return word.substr(0, length);
}

/// Whether a number text that is out of range is too large rather than too small, by the power of ten of its first
/// digit.
bool overflows(std::string_view number) {
    const std::size_t exponentMark = std::min(number.find_first_of("eE"), number.size());
    const std::string_view mantissa = number.substr(0, exponentMark);
    std::string_view exponentDigits = number.substr(std::min(exponentMark + 1, number.size()));
    const bool negative = takeSign(exponentDigits);
    const std::int64_t exponent = parseDigits(exponentDigits, negative, 10).value_or(Integer{false, 0}).value();
    const auto point = static_cast<std::int64_t>(std::min(mantissa.find('.'), mantissa.size()));
    const auto firstDigit = static_cast<std::int64_t>(mantissa.find_first_of("123456789"));
    return exponent + point - firstDigit > 0;
}

bool isDigit(char character) {
    return character >= '0' && character <= '9';
}

/// The number of a word that consists of few digits, with or without a point: one division of two exact numbers rounds
/// like the standard conversion, in half its time.
std::optional<double> readFewDigits(std::string_view word) {
    constexpr std::array<double, 16> kPowersOfTen{1e0, 1e1, 1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                                  1e8, 1e9, 1e10, 1e11, 1e12, 1e13, 1e14, 1e15};
    constexpr bool kDivisionRoundsOnce = FLT_EVAL_METHOD == 0;
    if (!kDivisionRoundsOnce || word.size() > kPowersOfTen.size()) {
        return std::nullopt;
    }
    std::uint64_t number = 0; // at most 16 digits, or 15 and a point
    std::size_t decimals = 0;
    bool point = false;
    for (const char character : word) {
        if (isDigit(character)) {
            number = 10 * number + static_cast<std::uint64_t>(character - '0');
            decimals += point ? 1 : 0;
        } else if (character == '.' && !point) {
            point = true;
        } else {
            return std::nullopt;
        }
    }
    constexpr std::uint64_t kLargestExact = std::uint64_t{1} << std::numeric_limits<double>::digits;
    const bool digits = word.size() > (point ? 1 : 0);
    return digits && number <= kLargestExact ? std::optional(static_cast<double>(number) / kPowersOfTen[decimals])
                                             : std::nullopt;
}

double extractDouble(std::string_view word) {
    const bool negative = takeSign(word);
    if (const auto number = readFewDigits(word)) {
        return negative ? -*number : *number;
    }
    double magnitude = 0;
    if (word.empty() || !(isDigit(word.front()) || word.front() == '.')) {
        return 0.0;
    }
    const char* const wordEnd = word.data() + word.size();
    const auto [end, error] = std::from_chars(word.data(), wordEnd, magnitude);
    const bool exponentCutOff =
        end != wordEnd && (*end == 'e' || *end == 'E') && end < word.data() + floatingPointCharacters(word).size();
    if (error == std::errc::invalid_argument || exponentCutOff) {
        return 0.0;
    }
    if (error == std::errc::result_out_of_range) {
        magnitude = overflows(floatingPointCharacters(word)) ? std::numeric_limits<double>::max() : 0.0;
    }
    return negative ? -magnitude : magnitude;
}

template <typename Number>
Number parseFloatingPoint(const std::string& text, const char* invalid, const char* outOfRange) {
    std::string_view number = withoutLeadingSpace(text);
    const bool negative = takeSign(number);
    const bool hexadecimal = takeHexadecimalPrefix(number, Point::Allowed);
    Number magnitude = 0;
    const auto [end, error] = std::from_chars(number.data(), number.data() + number.size(), magnitude,
                                              hexadecimal ? std::chars_format::hex : std::chars_format::general);
    const bool secondSign = !number.empty() && number.front() == '-';
    if (error == std::errc::invalid_argument || secondSign) {
        throw std::invalid_argument(invalid);
    }
    if (error == std::errc::result_out_of_range) {
        throw std::out_of_range(outOfRange);
    }
    return negative ? -magnitude : magnitude;
}

/// Enough for the largest number of a type before the point, its sign, the point and the decimals.
template <typename Number>
constexpr std::size_t kFixedTextSize = std::numeric_limits<Number>::max_exponent10 + 12;

template <typename Number>
std::string fixedText(Number value, int decimals) {
    std::array<char, kFixedTextSize<Number>> buffer; // NOLINT(cppcoreguidelines-pro-type-member-init): written below
    const auto result =
        std::to_chars(buffer.data(), buffer.data() + buffer.size(), value, std::chars_format::fixed, decimals);
    return {buffer.data(), result.ptr};
}

template <typename Number>
std::string integerText(Number value) {
    std::array<char, 24> buffer{};
    const auto result = std::to_chars(buffer.data(), buffer.data() + buffer.size(), value);
    return {buffer.data(), result.ptr};
}

} // namespace

std::string toText(unsigned long value) {
    return integerText(value);
}

std::string toText(int value) {
    return integerText(value);
}

std::string toText(double value) {
    return fixedText(value, 2);
}

std::string toText(bool value) {
    return value ? "1" : "0";
}

std::string toText(const std::string& value) {
    return value;
}

std::string toSixDecimals(float value) {
    return fixedText(value, 6);
}

void extractFirstWord(const std::string& text, unsigned long& value) {
    const std::string_view word = withoutLeadingSpace(text);
    if (word.empty()) {
        return;
    }
    const Integer number = extractInteger(word);
    // A negative number wraps around, as with a 32-bit long.
    value = number.fits(kUint32Maximum, kUint32Maximum) ? static_cast<std::uint32_t>(number.value()) : kUint32Maximum;
}

void extractFirstWord(const std::string& text, int& value) {
    const std::string_view word = withoutLeadingSpace(text);
    if (word.empty()) {
        return;
    }
    const std::int64_t number = extractInteger(word).value();
    value = static_cast<int>(std::clamp<std::int64_t>(number, std::numeric_limits<std::int32_t>::min(),
                                                      std::numeric_limits<std::int32_t>::max()));
}

void extractFirstWord(const std::string& text, double& value) {
    const std::string_view word = withoutLeadingSpace(text);
    if (!word.empty()) {
        value = extractDouble(word);
    }
}

void extractFirstWord(const std::string& text, bool& value) {
    const std::string_view word = withoutLeadingSpace(text);
    if (!word.empty()) {
        value = extractInteger(word).magnitude != 0;
    }
}

void extractFirstWord(const std::string& text, std::string& value) {
    const std::string_view word = withoutLeadingSpace(text);
    if (!word.empty()) {
        value = word.substr(0, word.find_first_of(kWhiteSpace));
    }
}

int parseInteger(const std::string& text) {
    std::string_view digits = withoutLeadingSpace(text);
    const bool negative = takeSign(digits);
    const int base = baseOf(digits);
    const std::optional<Integer> number = parseDigits(digits, negative, base);
    if (!number) {
        throw std::invalid_argument("invalid stoi argument");
    }
    if (!number->fits(kInt32Maximum, kInt32MinimumMagnitude)) {
        throw std::out_of_range("stoi argument out of range");
    }
    return static_cast<int>(number->value());
}

unsigned long parseUnsigned(const std::string& text, int base) {
    std::string_view digits = withoutLeadingSpace(text);
    const bool negative = takeSign(digits);
    if (base == kAutomaticBase) {
        base = baseOf(digits);
    } else if (base == 16) {
        takeHexadecimalPrefix(digits);
    }
    const std::optional<Integer> number = parseDigits(digits, negative, base);
    if (!number) {
        throw std::invalid_argument("invalid stoul argument");
    }
    if (!number->fits(kUint32Maximum, kUint32Maximum)) {
        throw std::out_of_range("stoul argument out of range");
    }
    return static_cast<std::uint32_t>(number->value());
}

double parseDouble(const std::string& text) {
    return parseFloatingPoint<double>(text, "invalid stod argument", "stod argument out of range");
}

float parseFloat(const std::string& text) {
    return parseFloatingPoint<float>(text, "invalid stof argument", "stof argument out of range");
}

} // namespace Base
