// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include <nlohmann/json.hpp>

namespace QuillTool {

/// Keys stay in the order in which they are written.
using Json = nlohmann::ordered_json;

/// Rows under a header, as many cells in each.
struct Table {
    std::vector<std::string> header;
    std::vector<std::vector<std::string>> rows;
};

/// Whoever read the results has stopped reading. Nothing is left to do and nobody to tell: not an error.
struct OutputClosed {};

/// Results go to standard output, everything else to standard error. Colour only on a terminal, and never where the
/// environment has NO_COLOR.
///
/// What prints results throws OutputClosed, or a ToolError where they cannot be written.
class Output {
public:
    Output();

    void print(std::string_view text);
    void printLine(std::string_view text);
    /// In aligned columns; an empty cell is printed as "-".
    void printTable(const Table& table);
    /// Text that is not UTF-8 gets replacement characters.
    void printJson(const Json& document);
    /// On one line.
    void printJsonLine(const Json& document);
    /// Makes sure that everything printed has arrived.
    void flush();

    /// One line on standard error.
    void tell(std::string_view sentence);
    void warn(std::string_view sentence);
    void fail(std::string_view sentence);
    /// Where the lines on standard error come from, such as "line 3"; empty for none.
    void setPlace(const std::string& place) { m_Place = place; }

private:
    void complain(std::string_view style, std::string_view sentence);

    bool m_ColorResults;
    bool m_ColorComplaints;
    std::string m_Place;
};

} // namespace QuillTool
