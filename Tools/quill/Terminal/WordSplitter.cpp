// SPDX-License-Identifier: Apache-2.0

#include "Terminal/WordSplitter.h"

#include <fmt/format.h>

#include "Terminal/Text.h"
#include "Terminal/ToolError.h"

namespace QuillTool {

namespace {

/// Splits a line from its front.
class WordSplitter {
public:
    explicit WordSplitter(std::string_view line) : m_Rest(line) {}

    std::vector<std::string> split() {
        std::vector<std::string> words;
        while (skipBlanks() && m_Rest.front() != '#') {
            words.push_back(takeWord());
        }
        return words;
    }

private:
    bool skipBlanks() {
        const std::size_t start = m_Rest.find_first_not_of(kBlanks);
        m_Rest.remove_prefix(start == std::string_view::npos ? m_Rest.size() : start);
        return !m_Rest.empty();
    }

    char take() {
        if (m_Rest.empty()) {
            throw ToolError(ExitCode::Usage, "a backslash at the end of the line quotes nothing");
        }
        const char character = m_Rest.front();
        m_Rest.remove_prefix(1);
        return character;
    }

    std::string takeWord() {
        std::string word;
        while (!m_Rest.empty() && kBlanks.find(m_Rest.front()) == std::string_view::npos) {
            const char character = take();
            if (character == '\'' || character == '"') {
                word += takeQuoted(character);
            } else {
                word += character == '\\' ? take() : character;
            }
        }
        return word;
    }

    std::string takeQuoted(char quote) {
        std::string text;
        while (!m_Rest.empty()) {
            const char character = take();
            if (character == quote) {
                return text;
            }
            const bool escapes = quote == '"' && character == '\\' && !m_Rest.empty() &&
                                 (m_Rest.front() == '"' || m_Rest.front() == '\\');
            text += escapes ? take() : character;
        }
        throw ToolError(ExitCode::Usage, fmt::format("the quote {} is not closed", quote));
    }

    std::string_view m_Rest;
};

} // namespace

std::vector<std::string> splitWords(std::string_view line) {
    return WordSplitter(line).split();
}

} // namespace QuillTool
