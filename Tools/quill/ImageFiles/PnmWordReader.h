// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <string_view>

namespace QuillTool {

/// Reads the words of a PNM file; skips blanks and comments.
class PnmWordReader {
public:
    /// @param text  outlives this object
    explicit PnmWordReader(std::string_view text) : m_Rest(text) {}

    /// Returns the unread rest.
    std::string_view rest() const { return m_Rest; }

    /// Returns the next word; empty at the end of the file.
    std::string_view word();

    /// Returns the next word as a number.
    /// @param name  names the number in errors
    /// @throws std::runtime_error  not a number of 32 bits
    unsigned number(std::string_view name);

    /// Skips the blank between a header and binary samples, and a comment before it.
    /// @throws std::runtime_error  the blank is missing
    void endHeader();

private:
    void skipTo(std::size_t position);

    std::string_view m_Rest;
};

} // namespace QuillTool
