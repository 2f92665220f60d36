// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <string_view>

namespace QuillTool {

/// Goes through the words of a PNM file, over blanks and comments.
class PnmWordReader {
public:
    /// @param text  outlives this object
    explicit PnmWordReader(std::string_view text) : m_Rest(text) {}

    /// What has not been read.
    std::string_view rest() const { return m_Rest; }

    /// The next word; empty at the end of the file.
    std::string_view word();

    /// The next word as a number.
    /// @param name  what the number is, for the error
    /// @throws std::runtime_error  no number of 32 bits
    unsigned number(std::string_view name);

    /// Skips the one blank that stands between a header and binary samples, and a comment before it.
    /// @throws std::runtime_error  there is none
    void endHeader();

private:
    void skipTo(std::size_t position);

    std::string_view m_Rest;
};

} // namespace QuillTool
