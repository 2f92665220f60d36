// SPDX-License-Identifier: Apache-2.0

#include "Terminal/LineReader.h"

#include <array>
#include <clocale>
#include <cstdio>
#include <cwchar>

#include <histedit.h>
#include <unistd.h>

namespace QuillTool {

namespace {

class PlainLines : public LineReader {
public:
    explicit PlainLines(const Interrupt& interrupt) : m_Interrupt(interrupt) {}

    std::optional<std::string> next() override {
        std::size_t end = m_Pending.find('\n');
        while (end == std::string::npos && !m_AtEnd) {
            const std::size_t searched = m_Pending.size();
            if (!m_Interrupt.waitReadable(STDIN_FILENO)) {
                return std::nullopt;
            }
            readMore();
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
    void readMore() {
        std::array<char, 4096> bytes{};
        const ssize_t length = read(STDIN_FILENO, bytes.data(), bytes.size());
        m_AtEnd = length <= 0;
        m_Pending.append(bytes.data(), m_AtEnd ? 0 : static_cast<std::size_t>(length));
    }

    const Interrupt& m_Interrupt;
    std::string m_Pending;
    bool m_AtEnd = false;
};

class PromptLines : public LineReader {
public:
    explicit PromptLines(Interrupt& interrupt)
        : m_Interrupt(interrupt), m_History(history_init(), &history_end),
          m_Editor(el_init("quill", stdin, stdout, stderr), &el_end) {
        // Sets the encoding of characters, before any other thread runs.
        static_cast<void>(std::setlocale(LC_CTYPE, "")); // NOLINT(concurrency-mt-unsafe)
        HistEvent event{};
        history(m_History.get(), &event, H_SETSIZE, kHistorySize);
        history(m_History.get(), &event, H_SETUNIQUE, 1);
        el_set(m_Editor.get(), EL_CLIENTDATA, this);
        el_set(m_Editor.get(), EL_PROMPT, &prompt);
        el_set(m_Editor.get(), EL_HIST, &history, m_History.get());
        el_set(m_Editor.get(), EL_EDITOR, "emacs");
        el_set(m_Editor.get(), EL_GETCFN, &readCharacter);
        el_source(m_Editor.get(), nullptr);
    }

    std::optional<std::string> next() override {
        for (;;) {
            int length = 0;
            const char* text = el_gets(m_Editor.get(), &length);
            if (m_Interrupt.requested()) {
                std::puts("^C");
                el_reset(m_Editor.get());
                m_Interrupt.clear();
                continue;
            }
            if (text == nullptr || length <= 0) {
                std::puts("");
                return std::nullopt;
            }
            std::string line(text, static_cast<std::size_t>(length));
            if (line.find_first_not_of(" \t\r\n") != std::string::npos) {
                HistEvent event{};
                history(m_History.get(), &event, H_ENTER, text);
            }
            return line;
        }
    }

    bool isInteractive() const override { return true; }

private:
    static constexpr int kHistorySize = 1000;

    static const char* prompt(EditLine* /*editor*/) { return "quill> "; }

    /// Reads the next character of the terminal. Returns 1, or 0 at the end of the input or after an interrupt, or -1
    /// on an error.
    static int readCharacter(EditLine* editor, wchar_t* character) {
        void* self = nullptr;
        el_get(editor, EL_CLIENTDATA, &self);
        const Interrupt& interrupt = static_cast<const PromptLines*>(self)->m_Interrupt;
        std::mbstate_t state{};
        for (;;) {
            char byte = 0;
            if (!interrupt.waitReadable(STDIN_FILENO)) {
                return 0;
            }
            const ssize_t length = read(STDIN_FILENO, &byte, 1);
            if (length <= 0) {
                return static_cast<int>(length);
            }
            // NOLINTNEXTLINE(concurrency-mt-unsafe): with a state of its own
            const std::size_t used = std::mbrtowc(character, &byte, 1, &state);
            if (used <= 1) {
                return 1;
            }
            if (used == static_cast<std::size_t>(-1)) {
                state = {}; // drops an invalid byte
            }
        }
    }

    Interrupt& m_Interrupt;
    std::unique_ptr<History, decltype(&history_end)> m_History; // outlives the editor that uses it
    std::unique_ptr<EditLine, decltype(&el_end)> m_Editor;
};

} // namespace

std::unique_ptr<LineReader> makeLineReader(Interrupt& interrupt) {
    if (isatty(STDIN_FILENO) == 1 && isatty(STDOUT_FILENO) == 1) {
        return std::make_unique<PromptLines>(interrupt);
    }
    return std::make_unique<PlainLines>(interrupt);
}

} // namespace QuillTool
