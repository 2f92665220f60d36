// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

/// Converts numbers to text and back, independent of the locale of the process.
namespace Base {

/// A number in fixed notation (two decimals for floating-point numbers), a truth value as 0 or 1, a text unchanged.
std::string toText(unsigned long value);
std::string toText(int value);
std::string toText(double value);
std::string toText(bool value);
std::string toText(const std::string& value);
/// A number with six decimals and no exponent, as "%f" writes it.
std::string toSixDecimals(float value);

/// Reads the first blank-delimited word as a standard input stream does: a blank text leaves @p value unchanged, a word
/// that does not start with a number gives 0, and a number out of range gives the nearest limit. Integers are 32 bits
/// wide.
void extractFirstWord(const std::string& text, unsigned long& value);
void extractFirstWord(const std::string& text, int& value);
void extractFirstWord(const std::string& text, double& value);
void extractFirstWord(const std::string& text, bool& value);
void extractFirstWord(const std::string& text, std::string& value);

/// The signed 32-bit number at the start of a text, with automatic base: "0x" hexadecimal, a leading 0 octal, otherwise
/// decimal. Leading white space and a sign are accepted; text after the number is ignored.
/// @throws std::invalid_argument "invalid stoi argument"  no number there
/// @throws std::out_of_range "stoi argument out of range"  not a signed 32-bit number
int parseInteger(const std::string& text);

/// Takes the base from the number itself, as parseInteger() does.
inline constexpr int kAutomaticBase = 0;

/// The unsigned 32-bit number at the start of a text, in base 10, base 16 (with or without "0x") or the automatic base.
/// Leading white space and a sign are accepted, a negative number wraps around; text after the number is ignored.
/// @throws std::invalid_argument "invalid stoul argument"  no number there
/// @throws std::out_of_range "stoul argument out of range"  wider than 32 bits
unsigned long parseUnsigned(const std::string& text, int base = 10);

/// The floating-point number at the start of a text: decimal, hexadecimal with "0x", "inf" or "nan". Leading white
/// space and a sign are accepted; text after the number is ignored.
/// @throws std::invalid_argument "invalid stod argument" or "invalid stof argument"  no number there
/// @throws std::out_of_range "stod argument out of range" or "stof argument out of range"  too large or too small
double parseDouble(const std::string& text);
float parseFloat(const std::string& text);

} // namespace Base
