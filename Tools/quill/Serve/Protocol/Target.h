// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace QuillTool::Serve {

/// The target of a request: what it names, and its parameters, both decoded.
struct Target {
    std::vector<std::string> segments; ///< of the path; a slash in a segment was percent-encoded
    std::vector<std::pair<std::string, std::string>> parameters;

    /// Returns the parameter's value, or null.
    /// @throws Refusal  400: the parameter is there more than once
    const std::string* parameter(std::string_view name) const;
    /// Returns the parameter as a whole number.
    /// @throws Refusal  400: missing, no number, or out of range
    unsigned wholeNumber(std::string_view name, unsigned minimum, unsigned maximum) const;
    /// The same, or @p otherwise where it is missing.
    unsigned wholeNumber(std::string_view name, unsigned minimum, unsigned maximum, unsigned otherwise) const;
};

/// Parses "/path/of/segments?name=value&other=value".
/// @throws Refusal  400: not of this form, bad percent-encoding, control characters, or not UTF-8
Target parseTarget(std::string_view text);

/// Encodes everything but letters, digits and "-._~", so that the text is one segment of a path.
std::string percentEncoded(std::string_view text);

/// Whether the text is UTF-8 without control characters.
bool isPlainText(std::string_view text);

} // namespace QuillTool::Serve
