// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace QuillTool {

/// A value of a JSON document that knows its line, for messages to people who write such documents by hand.
struct LinedJson {
    enum class Kind { Null, Truth, Number, Text, Array, Object };

    Kind kind = Kind::Null;
    std::size_t line = 1; ///< on which the value begins, except for a text of several lines
    std::string text;     ///< of a Text; of a Number and of true and false, as they are written
    std::vector<LinedJson> elements;
    std::vector<std::pair<std::string, LinedJson>> members; ///< in order, repeated keys included

    /// Returns the last member with this key, which is the one that counts; null if there is none.
    const LinedJson* find(const std::string& key) const;
    /// Returns "an object", "a number", ...
    const char* kindName() const;
};

/// A text that is not JSON.
struct JsonSyntaxError : std::runtime_error {
    JsonSyntaxError(std::size_t errorLine, const std::string& reason) : std::runtime_error(reason), line(errorLine) {}

    std::size_t line;
};

/// Reads a document. Refuses more than 64 levels.
/// @throws JsonSyntaxError
LinedJson parseLinedJson(const std::string& document);

} // namespace QuillTool
