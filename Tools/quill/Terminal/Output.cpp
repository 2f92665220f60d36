// SPDX-License-Identifier: Apache-2.0

#include "Terminal/Output.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <system_error>

#include <fmt/format.h>

#include "Terminal/StandardStreams.h"
#include "Terminal/Text.h"
#include "Terminal/ToolError.h"

namespace QuillTool {

namespace {

constexpr std::string_view kBold = "\033[1m";
constexpr std::string_view kBoldRed = "\033[1;31m";
constexpr std::string_view kBoldYellow = "\033[1;33m";
constexpr std::string_view kPlain = "\033[0m";
constexpr std::string_view kColumnGap = "  ";

bool isSet(const char* variable) {
    const char* value = std::getenv(variable); // NOLINT(concurrency-mt-unsafe): nobody changes the environment
    return value != nullptr && *value != '\0';
}

bool wantsColor(StandardStream stream) {
    return showsColors(stream) && !isSet("NO_COLOR");
}

void requireWritten(bool written) {
    if (written) {
        return;
    }
    const int reason = errorOfWriting();
    std::clearerr(stdout);
    if (reason == EPIPE) {
        throw OutputClosed{};
    }
    throw ToolError(ExitCode::Failed,
                    fmt::format("standard output: cannot be written: {}", std::generic_category().message(reason)));
}

std::string cellText(const std::string& cell) {
    return cell.empty() ? "-" : oneLine(cell);
}

std::string dump(const Json& document, int indentation) {
    return harmlessJson(document.dump(indentation, ' ', false, Json::error_handler_t::replace));
}

/// Aligns the cells of a row with their columns. Adds no blanks after the last cell.
std::string alignedRow(const std::vector<std::string>& cells, const std::vector<std::size_t>& widths) {
    std::string line;
    for (std::size_t column = 0; column < cells.size(); ++column) {
        const std::string cell = cellText(cells[column]);
        line += cell;
        if (column + 1 < cells.size()) {
            line.append(widths[column] - displayWidth(cell), ' ').append(kColumnGap);
        }
    }
    return line;
}

} // namespace

Output::Output()
    : m_ColorResults(wantsColor(StandardStream::Output)), m_ColorComplaints(wantsColor(StandardStream::Error)) {}

void Output::print(std::string_view text) {
    requireWritten(std::fwrite(text.data(), 1, text.size(), stdout) == text.size());
}

void Output::printLine(std::string_view text) {
    print(text);
    print("\n");
}

void Output::printTable(const Table& table) {
    std::vector<std::size_t> widths(table.header.size());
    const auto widen = [&](const std::vector<std::string>& cells) {
        const bool isHeading = cells.size() < widths.size();
        for (std::size_t column = 0; !isHeading && column < cells.size(); ++column) {
            widths[column] = std::max(widths[column], displayWidth(cellText(cells[column])));
        }
    };
    widen(table.header);
    std::for_each(table.rows.begin(), table.rows.end(), widen);

    const std::string header = alignedRow(table.header, widths);
    printLine(m_ColorResults ? fmt::format("{}{}{}", kBold, header, kPlain) : header);
    for (const std::vector<std::string>& row : table.rows) {
        printLine(alignedRow(row, widths));
    }
}

void Output::printJson(const Json& document) {
    printLine(dump(document, 2));
}

void Output::printJsonLine(const Json& document) {
    printLine(dump(document, -1));
}

void Output::flush() {
    requireWritten(std::fflush(stdout) == 0);
}

bool Output::isOnTerminal() const {
    return isTerminal(StandardStream::Output) && isTerminal(StandardStream::Error);
}

void Output::notify(std::string_view sentence) {
    complain(kBold, sentence);
}

void Output::warn(std::string_view sentence) {
    complain(kBoldYellow, fmt::format("warning: {}", sentence));
}

void Output::fail(std::string_view sentence) {
    complain(kBoldRed, sentence);
}

void Output::complain(std::string_view style, std::string_view sentence) {
    static_cast<void>(std::fflush(stdout)); // keeps the order if both streams have the same target
    const std::string program = m_ColorComplaints ? fmt::format("{}quill:{}", style, kPlain) : "quill:";
    const std::string place = m_Place.empty() ? "" : m_Place + ": ";
    const std::string line = fmt::format("{} {}{}\n", program, place, oneLine(sentence));
    static_cast<void>(std::fwrite(line.data(), 1, line.size(), stderr)); // a failure cannot be reported
    static_cast<void>(std::fflush(stderr));                              // not every system's is without a buffer
}

} // namespace QuillTool
