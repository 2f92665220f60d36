// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Terminal/Interrupt.h"

namespace QuillTool {

/// Reads the lines of the shell.
class LineReader {
public:
    LineReader() = default;
    LineReader(const LineReader&) = delete;
    LineReader& operator=(const LineReader&) = delete;
    virtual ~LineReader() = default;

    /// Returns the next line without its end; nothing at the end of the input or after an interrupt that ends it.
    virtual std::optional<std::string> next() = 0;
    /// Returns whether the lines come from a terminal.
    virtual bool isInteractive() const = 0;
};

/// Returns what the last word can become.
using Completer = std::function<std::vector<std::string>(const std::vector<std::string>& words)>;

/// Reads standard input. On a terminal, it offers a prompt with editing, completion by Tab, and a history that sessions
/// share, and an interrupt discards the line; otherwise an interrupt ends the input.
/// @param interrupt  outlives the reader
std::unique_ptr<LineReader> makeLineReader(Interrupt& interrupt, Completer completer);

/// That of a terminal.
std::unique_ptr<LineReader> makePromptReader(Interrupt& interrupt, Completer completer);

} // namespace QuillTool
