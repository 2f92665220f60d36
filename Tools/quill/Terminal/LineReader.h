// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <memory>
#include <optional>
#include <string>

#include "Terminal/Interrupt.h"

namespace QuillTool {

/// Where the shell's lines come from.
class LineReader {
public:
    LineReader() = default;
    LineReader(const LineReader&) = delete;
    LineReader& operator=(const LineReader&) = delete;
    virtual ~LineReader() = default;

    /// The next line without its end; nothing at the end of the input, or when an interrupt ends it.
    virtual std::optional<std::string> next() = 0;
    /// Whether a person types the lines.
    virtual bool isInteractive() const = 0;
};

/// Lines of standard input: edited at a prompt with a history where it is a terminal, as they come otherwise. An
/// interrupt at the prompt discards the line, elsewhere it ends the input.
/// @param interrupt  outlives the reader
std::unique_ptr<LineReader> makeLineReader(Interrupt& interrupt);

} // namespace QuillTool
