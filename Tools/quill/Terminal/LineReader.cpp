// SPDX-License-Identifier: Apache-2.0

#include "Terminal/LineReader.h"

#include <utility>

#include "Terminal/StandardStreams.h"

namespace QuillTool {

namespace {

class PlainLines : public LineReader {
public:
    explicit PlainLines(const Interrupt& interrupt) : m_Interrupt(interrupt) {}

    std::optional<std::string> next() override {
        std::size_t end = m_Pending.find('\n');
        while (end == std::string::npos && !m_AtEnd) {
            const std::size_t searched = m_Pending.size();
            const std::optional<std::string> bytes = readInput(m_Interrupt.waker());
            if (!bytes) {
                return std::nullopt;
            }
            m_AtEnd = bytes->empty();
            m_Pending += *bytes;
            end = m_Pending.find('\n', searched);
        }
        if (m_Pending.empty() || m_Interrupt.requested()) {
            return std::nullopt;
        }
        std::string line = m_Pending.substr(0, end);
        m_Pending.erase(0, end == std::string::npos ? end : end + 1);
        return line;
    }

    bool isInteractive() const override { return false; }

private:
    const Interrupt& m_Interrupt;
    std::string m_Pending;
    bool m_AtEnd = false;
};

} // namespace

std::unique_ptr<LineReader> makeLineReader(Interrupt& interrupt, Completer completer) {
    if (isTerminal(StandardStream::Input) && isTerminal(StandardStream::Output)) {
        return makePromptReader(interrupt, std::move(completer));
    }
    return std::make_unique<PlainLines>(interrupt);
}

} // namespace QuillTool
