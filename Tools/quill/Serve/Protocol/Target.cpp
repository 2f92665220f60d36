// SPDX-License-Identifier: Apache-2.0

#include "Serve/Protocol/Target.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdint>

#include "Serve/Cameras/Refusal.h"

namespace QuillTool::Serve {

namespace {

Refusal badTarget(const std::string& reason) {
    return {400, "BadTarget", "The target of the request " + reason + ".",
            "Percent-encode what a path or query holds."};
}

int hexDigit(char digit) {
    constexpr std::string_view kDigits = "0123456789abcdef";
    const auto place = kDigits.find(digit >= 'A' && digit <= 'F' ? static_cast<char>(digit - 'A' + 'a') : digit);
    return place == std::string_view::npos ? -1 : static_cast<int>(place);
}

std::string decoded(std::string_view text, bool plusIsBlank) {
    std::string plain;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '%') {
            plain += plusIsBlank && text[i] == '+' ? ' ' : text[i];
            continue;
        }
        const int high = i + 2 < text.size() ? hexDigit(text[i + 1]) : -1;
        const int low = high < 0 ? -1 : hexDigit(text[i + 2]);
        if (low < 0) {
            throw badTarget("has a '%' that two hexadecimal digits do not follow");
        }
        plain += static_cast<char>(high * 16 + low);
        i += 2;
    }
    if (!isPlainText(plain)) {
        throw badTarget("holds control characters, or is not UTF-8");
    }
    return plain;
}

/// Calls @p take with every piece between separators.
template <typename Take>
void split(std::string_view text, char separator, Take&& take) {
    for (;;) {
        const std::size_t end = text.find(separator);
        take(text.substr(0, end));
        if (end == std::string_view::npos) {
            return;
        }
        text.remove_prefix(end + 1);
    }
}

/// The length of the UTF-8 character at the front; 0 where there is none.
std::size_t characterLength(std::string_view text) {
    struct Form {
        unsigned char mask, lead;
        std::uint32_t smallest;
    };
    constexpr std::array<Form, 4> kForms{
        {{0x80, 0, 0}, {0xe0, 0xc0, 0x80}, {0xf0, 0xe0, 0x800}, {0xf8, 0xf0, 0x10000}}};
    const auto first = static_cast<unsigned char>(text.front());
    for (std::size_t length = 1; length <= kForms.size(); ++length) {
        const Form& form = kForms[length - 1];
        if ((first & form.mask) != form.lead) {
            continue;
        }
        if (text.size() < length) {
            return 0;
        }
        std::uint32_t code = first & static_cast<unsigned char>(~form.mask);
        for (std::size_t i = 1; i < length; ++i) {
            const auto next = static_cast<unsigned char>(text[i]);
            if ((next & 0xc0) != 0x80) {
                return 0;
            }
            code = code << 6 | (next & 0x3f);
        }
        const bool isSurrogate = code >= 0xd800 && code < 0xe000;
        const bool isControl = code < 0x20 || (code >= 0x7f && code < 0xa0);
        return code < form.smallest || code > 0x10ffff || isSurrogate || isControl ? 0 : length;
    }
    return 0;
}

} // namespace

bool isPlainText(std::string_view text) {
    while (!text.empty()) {
        const std::size_t length = characterLength(text);
        if (length == 0) {
            return false;
        }
        text.remove_prefix(length);
    }
    return true;
}

Target parseTarget(std::string_view text) {
    if (text.empty() || text.front() != '/') {
        throw badTarget("does not begin with '/'");
    }
    if (text.find('#') != std::string_view::npos) {
        throw badTarget("has a fragment");
    }
    Target target;
    const std::size_t question = text.find('?');
    split(text.substr(1, question == std::string_view::npos ? question : question - 1), '/',
          [&target](std::string_view segment) { target.segments.push_back(decoded(segment, false)); });
    if (question != std::string_view::npos) {
        split(text.substr(question + 1), '&', [&target](std::string_view pair) {
            const std::size_t equals = pair.find('=');
            if (!pair.empty()) {
                target.parameters.emplace_back(
                    decoded(pair.substr(0, equals), true),
                    equals == std::string_view::npos ? "" : decoded(pair.substr(equals + 1), true));
            }
        });
    }
    return target;
}

const std::string* Target::parameter(std::string_view name) const {
    const auto isNamed = [name](const auto& pair) { return pair.first == name; };
    const auto found = std::find_if(parameters.begin(), parameters.end(), isNamed);
    if (found == parameters.end()) {
        return nullptr;
    }
    if (std::find_if(found + 1, parameters.end(), isNamed) != parameters.end()) {
        throw Refusal(400, "BadParameter", "The parameter '" + std::string(name) + "' is there more than once.",
                      "Give it once.");
    }
    return &found->second;
}

unsigned Target::wholeNumber(std::string_view name, unsigned minimum, unsigned maximum) const {
    const std::string* const text = parameter(name);
    unsigned value = 0;
    const auto parsed = text == nullptr ? std::from_chars_result{nullptr, std::errc::invalid_argument}
                                        : std::from_chars(text->data(), text->data() + text->size(), value);
    if (parsed.ec != std::errc() || parsed.ptr != text->data() + text->size() || value < minimum || value > maximum) {
        throw Refusal(400, "BadParameter",
                      "The parameter '" + std::string(name) +
                          (text == nullptr ? "' is missing." : "' is no such number."),
                      "Give a whole number from " + std::to_string(minimum) + " to " + std::to_string(maximum) + ".");
    }
    return value;
}

unsigned Target::wholeNumber(std::string_view name, unsigned minimum, unsigned maximum, unsigned otherwise) const {
    return parameter(name) == nullptr ? otherwise : wholeNumber(name, minimum, maximum);
}

std::string percentEncoded(std::string_view text) {
    constexpr std::string_view kDigits = "0123456789ABCDEF";
    constexpr std::string_view kPlain = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-._~";
    std::string encoded;
    for (const char character : text) {
        if (kPlain.find(character) != std::string_view::npos) {
            encoded += character;
        } else {
            const auto byte = static_cast<unsigned char>(character);
            encoded += {'%', kDigits[byte >> 4], kDigits[byte & 15]};
        }
    }
    return encoded;
}

} // namespace QuillTool::Serve
