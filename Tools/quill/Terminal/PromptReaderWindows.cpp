// SPDX-License-Identifier: Apache-2.0

#include <cstdio>
#include <utility>

#include "Terminal/LineReader.h"
#include "Terminal/StandardStreams.h"

namespace QuillTool {

namespace {

/// Lines of a console, which edits them and keeps their history itself.
class ConsoleLines : public LineReader {
public:
    explicit ConsoleLines(Interrupt& interrupt) : m_Interrupt(interrupt) {}

    std::optional<std::string> next() override {
        std::fputs("quill> ", stdout);
        static_cast<void>(std::fflush(stdout));
        for (;;) {
            std::optional<std::string> line = readInput(m_Interrupt.waker());
            if (!line) {
                m_Interrupt.clear();
                std::fputs("\nquill> ", stdout);
                static_cast<void>(std::fflush(stdout));
                continue;
            }
            if (line->empty()) {
                std::puts("");
                return std::nullopt;
            }
            line->erase(line->find_last_not_of("\r\n") + 1);
            return line;
        }
    }

    bool isInteractive() const override { return true; }

private:
    Interrupt& m_Interrupt;
};

} // namespace

std::unique_ptr<LineReader> makePromptReader(Interrupt& interrupt, Completer /*completer*/) {
    return std::make_unique<ConsoleLines>(interrupt);
}

} // namespace QuillTool
