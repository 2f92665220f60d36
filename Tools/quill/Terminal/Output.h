// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include <nlohmann/json.hpp>

namespace QuillTool {

/// JSON whose keys keep their order of insertion.
using Json = nlohmann::ordered_json;

/// Rows under a header; all have the same number of cells, except headings within the table, which are the only cell of
/// their row.
struct Table {
    std::vector<std::string> header;
    std::vector<std::vector<std::string>> rows;
};

/// Reports that the reader of the results has closed the pipe. This ends the command and is not an error.
struct OutputClosed {};

/// Writes results to standard output, everything else to standard error. Uses colour only on a terminal, and never if
/// the environment variable NO_COLOR is set.
///
/// Functions that print results throw OutputClosed, or a ToolError if the results cannot be written.
class Output {
public:
    Output();

    void print(std::string_view text);
    void printLine(std::string_view text);
    /// Prints aligned columns, and "-" for an empty cell.
    void printTable(const Table& table);
    /// Prints replacement characters for bytes that are not UTF-8.
    void printJson(const Json& document);
    /// Prints the document on one line.
    void printJsonLine(const Json& document);
    /// Writes everything printed so far.
    void flush();
    /// Whether people see results and complaints at once, rather than a file or another program.
    bool isOnTerminal() const;

    /// Prints one line on standard error.
    void notify(std::string_view sentence);
    void warn(std::string_view sentence);
    void fail(std::string_view sentence);
    /// Sets the prefix of lines on standard error, such as "line 3"; empty for none.
    void setPlace(const std::string& place) { m_Place = place; }

private:
    void complain(std::string_view style, std::string_view sentence);

    bool m_ColorResults;
    bool m_ColorComplaints;
    std::string m_Place;
};

} // namespace QuillTool
