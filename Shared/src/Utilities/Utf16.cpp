#include "Utilities/Utf16.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <stdexcept>

namespace Utilities {

namespace {

constexpr char32_t kFirstHighSurrogate = 0xD800;
constexpr char32_t kFirstLowSurrogate = 0xDC00;
constexpr char32_t kPastSurrogates = 0xE000;
constexpr char32_t kFirstOfPairs = 0x10000;
constexpr char32_t kPastCharacters = 0x110000;
constexpr unsigned kBitsOfSurrogate = 10;
constexpr unsigned kBitsOfContinuation = 6;

/// One length of UTF-8: the bits that mark its first byte, and the characters that need it.
struct Utf8Length {
    unsigned char mark;
    unsigned char markMask;
    char32_t first;
    char32_t past;
};

/// By the number of continuation bytes.
constexpr std::array<Utf8Length, 4> kLengths{{
    {0x00, 0x80, 0x0, 0x80},
    {0xC0, 0xE0, 0x80, 0x800},
    {0xE0, 0xF0, 0x800, kFirstOfPairs},
    {0xF0, 0xF8, kFirstOfPairs, kPastCharacters},
}};
constexpr unsigned char kContinuationMark = 0x80;
constexpr unsigned char kContinuationMask = 0xC0;

bool isBetween(char32_t character, char32_t first, char32_t past) {
    return first <= character && character < past;
}

/// Takes the character at the front of a text; nothing, and the text is of no more use, where there is none.
std::optional<char32_t> takeUtf8(std::string_view& text) {
    const auto front = static_cast<unsigned char>(text.front());
    const auto* const length = std::find_if(kLengths.begin(), kLengths.end(), [&](const Utf8Length& candidate) {
        return (front & candidate.markMask) == candidate.mark;
    });
    const auto continuations = static_cast<std::size_t>(length - kLengths.begin());
    if (length == kLengths.end() || text.size() <= continuations) {
        return std::nullopt;
    }
    char32_t character = front & static_cast<unsigned char>(~length->markMask);
    for (const char next : text.substr(1, continuations)) {
        const auto byte = static_cast<unsigned char>(next);
        if ((byte & kContinuationMask) != kContinuationMark) {
            return std::nullopt;
        }
        character = character << kBitsOfContinuation | (byte & static_cast<unsigned char>(~kContinuationMask));
    }
    text.remove_prefix(1 + continuations);
    if (!isBetween(character, length->first, length->past) ||
        isBetween(character, kFirstHighSurrogate, kPastSurrogates)) {
        return std::nullopt;
    }
    return character;
}

void appendUtf16(std::u16string& text, char32_t character) {
    if (character < kFirstOfPairs) {
        text += static_cast<char16_t>(character);
        return;
    }
    const char32_t rest = character - kFirstOfPairs;
    text += static_cast<char16_t>(kFirstHighSurrogate + (rest >> kBitsOfSurrogate));
    text += static_cast<char16_t>(kFirstLowSurrogate + (rest & ((1U << kBitsOfSurrogate) - 1)));
}

/// Takes the character at the front of a text.
char32_t takeUtf16(std::u16string_view& text) {
    const char32_t front = text.front();
    text.remove_prefix(1);
    if (!isBetween(front, kFirstHighSurrogate, kPastSurrogates)) {
        return front;
    }
    if (front >= kFirstLowSurrogate || text.empty() || !isBetween(text.front(), kFirstLowSurrogate, kPastSurrogates)) {
        throw std::range_error("bad conversion");
    }
    const char32_t low = text.front() - kFirstLowSurrogate;
    text.remove_prefix(1);
    return kFirstOfPairs + ((front - kFirstHighSurrogate) << kBitsOfSurrogate | low);
}

void appendUtf8(std::string& text, char32_t character) {
    const auto* const length = std::find_if(kLengths.begin(), kLengths.end(),
                                            [&](const Utf8Length& candidate) { return character < candidate.past; });
    auto continuations = static_cast<unsigned>(length - kLengths.begin());
    text += static_cast<char>(length->mark | character >> (kBitsOfContinuation * continuations));
    while (continuations > 0) {
        --continuations;
        const char32_t bits = character >> (kBitsOfContinuation * continuations);
        text += static_cast<char>(kContinuationMark | (bits & ((1U << kBitsOfContinuation) - 1)));
    }
}

} // namespace

std::optional<std::u16string> utf16FromUtf8(std::string_view text) {
    std::u16string result;
    while (!text.empty()) {
        const std::optional<char32_t> character = takeUtf8(text);
        if (!character) {
            return std::nullopt;
        }
        appendUtf16(result, *character);
    }
    return result;
}

std::string utf8FromUtf16(std::u16string_view text) {
    std::string result;
    while (!text.empty()) {
        appendUtf8(result, takeUtf16(text));
    }
    return result;
}

} // namespace Utilities
