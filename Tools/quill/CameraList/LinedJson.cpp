// SPDX-License-Identifier: Apache-2.0

#include "CameraList/LinedJson.h"

#include <algorithm>
#include <array>
#include <iterator>

#include <nlohmann/json.hpp>

#include "Terminal/ToolError.h"

namespace QuillTool {

namespace {

using nlohmann::json;

constexpr std::size_t kDeepest = 64;

/// The place of the parser in the text.
struct TextPlace {
    std::size_t line = 1;
    std::size_t lineBefore = 1; ///< before the last character
};

/// Passes characters to the parser and counts lines.
class CountingIterator {
public:
    using iterator_category = std::input_iterator_tag;
    using value_type = char;
    using difference_type = std::ptrdiff_t;
    using pointer = const char*;
    using reference = const char&;

    CountingIterator(const char* character, TextPlace& place) : m_Character(character), m_Place(&place) {}

    reference operator*() const { return *m_Character; }
    CountingIterator& operator++() {
        m_Place->lineBefore = m_Place->line;
        m_Place->line += *m_Character == '\n' ? 1 : 0;
        ++m_Character;
        return *this;
    }
    bool operator==(const CountingIterator& other) const { return m_Character == other.m_Character; }
    bool operator!=(const CountingIterator& other) const { return !(*this == other); }

private:
    const char* m_Character;
    TextPlace* m_Place;
};

/// Receives the parser's events.
class LinedJsonReader {
public:
    explicit LinedJsonReader(const TextPlace& place) : m_Place(place) {}

    LinedJson take() { return std::move(m_Document); }

    bool null() { return add(LinedJson::Kind::Null, m_Place.line, "null"); }
    bool boolean(bool value) { return add(LinedJson::Kind::Truth, m_Place.line, value ? "true" : "false"); }
    // A number ends with the character after it, which may be the end of the line.
    bool number_integer(json::number_integer_t value) { return addNumber(std::to_string(value)); }
    bool number_unsigned(json::number_unsigned_t value) { return addNumber(std::to_string(value)); }
    bool number_float(json::number_float_t /*value*/, const std::string& text) { return addNumber(text); }
    bool string(std::string& value) { return add(LinedJson::Kind::Text, m_Place.line, std::move(value)); }
    template <typename Bytes>
    bool binary(Bytes& /*value*/) {
        return true; // does not occur in JSON text
    }
    bool start_object(std::size_t /*size*/) { return open(LinedJson::Kind::Object); }
    bool start_array(std::size_t /*size*/) { return open(LinedJson::Kind::Array); }
    bool end_object() { return close(); }
    bool end_array() { return close(); }
    bool key(std::string& key) {
        m_Open.back()->members.emplace_back(std::move(key), LinedJson{});
        return true;
    }
    template <typename Failure>
    bool parse_error(std::size_t /*position*/, const std::string& /*token*/, const Failure& failure) {
        const std::string reason = readable(failure.what());
        const std::size_t colon = reason.find(": "); // after the parser's own count of lines and columns
        throw JsonSyntaxError(m_Place.lineBefore, colon == std::string::npos ? reason : reason.substr(colon + 2));
    }

private:
    LinedJson& place() {
        if (m_Open.empty()) {
            return m_Document;
        }
        LinedJson& container = *m_Open.back();
        return container.kind == LinedJson::Kind::Object ? container.members.back().second
                                                         : container.elements.emplace_back();
    }

    bool add(LinedJson::Kind kind, std::size_t line, std::string text) {
        LinedJson& value = place();
        value.kind = kind;
        value.line = line;
        value.text = std::move(text);
        return true;
    }

    bool addNumber(std::string text) { return add(LinedJson::Kind::Number, m_Place.lineBefore, std::move(text)); }

    bool open(LinedJson::Kind kind) {
        if (m_Open.size() == kDeepest) {
            throw JsonSyntaxError(m_Place.line, "there are more than 64 levels of objects and arrays");
        }
        LinedJson& value = place();
        value.kind = kind;
        value.line = m_Place.line;
        m_Open.push_back(&value); // stays where it is: its container grows only after it is closed
        return true;
    }

    bool close() {
        m_Open.pop_back();
        return true;
    }

    const TextPlace& m_Place;
    LinedJson m_Document;
    std::vector<LinedJson*> m_Open;
};

} // namespace

const LinedJson* LinedJson::find(const std::string& key) const {
    const auto member =
        std::find_if(members.rbegin(), members.rend(), [&](const auto& candidate) { return candidate.first == key; });
    return member == members.rend() ? nullptr : &member->second;
}

const char* LinedJson::kindName() const {
    constexpr std::array kNames{"null", "true or false", "a number", "a text", "an array", "an object"};
    return kNames.at(static_cast<std::size_t>(kind));
}

LinedJson parseLinedJson(const std::string& document) {
    TextPlace place;
    LinedJsonReader reader(place);
    json::sax_parse(CountingIterator(document.data(), place),
                    CountingIterator(document.data() + document.size(), place), &reader);
    return reader.take();
}

} // namespace QuillTool
