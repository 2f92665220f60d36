// SPDX-License-Identifier: Apache-2.0

#include <algorithm>
#include <array>
#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <cwchar>
#include <filesystem>
#include <string_view>
#include <system_error>
#include <utility>

#include <histedit.h>
#include <poll.h>
#include <unistd.h>

#include "Terminal/LineReader.h"
#include "Terminal/ToolError.h"
#include "Terminal/WordSplitter.h"

namespace QuillTool {

namespace {

/// The words of a line that is being typed, up to the cursor.
struct BegunLine {
    std::vector<std::string> words; ///< the last one is begun, and may be empty
    std::string quote;              ///< that is open
};

std::optional<BegunLine> splitBegunLine(const std::string& text) {
    for (const char* quote : {"", "\"", "'"}) {
        try {
            BegunLine line{splitWords(text + 'x' + quote), quote}; // the letter stands for what is still to come
            if (!line.words.empty()) {                             // not a comment
                line.words.back().pop_back();
                return line;
            }
        } catch (const ToolError&) {
            // The quote that is open is another one.
        }
    }
    return std::nullopt;
}

/// Makes text a part of a word.
std::string quoted(const std::string& text, const std::string& quote) {
    const std::string_view special = quote.empty() ? " \t\"'\\#" : quote == "\"" ? "\"\\" : "";
    std::string result;
    for (const char character : text) {
        if (special.find(character) != std::string_view::npos) {
            result += '\\';
        }
        result += character;
    }
    return result;
}

std::string commonBeginning(const std::vector<std::string>& texts) {
    std::string common = texts.front();
    for (const std::string& text : texts) {
        const auto end = std::mismatch(common.begin(), common.end(), text.begin(), text.end()).first;
        common.erase(end, common.end());
    }
    return common;
}

/// The file of the history below the folder for such files; empty if there is no such folder.
std::filesystem::path historyFile() {
    // NOLINTBEGIN(concurrency-mt-unsafe): the tool sets no variables
    const char* const state = std::getenv("XDG_STATE_HOME");
    const char* const home = std::getenv("HOME");
    // NOLINTEND(concurrency-mt-unsafe)
    if (state != nullptr && *state == '/') {
        return std::filesystem::path(state) / "quill" / "history";
    }
    return home != nullptr && *home == '/' ? std::filesystem::path(home) / ".local/state/quill/history"
                                           : std::filesystem::path();
}

/// @return false after an interrupt
bool waitForTyping(const Interrupt& interrupt) {
    std::array<pollfd, 2> waiting{pollfd{static_cast<int>(interrupt.waker().waitable()), POLLIN, 0},
                                  pollfd{STDIN_FILENO, POLLIN, 0}};
    while (poll(waiting.data(), waiting.size(), -1) <= 0) { // a signal came
    }
    return waiting[0].revents == 0;
}

class PromptLines : public LineReader {
public:
    PromptLines(Interrupt& interrupt, Completer completer)
        : m_Interrupt(interrupt), m_Completer(std::move(completer)), m_History(history_init(), &history_end),
          m_Editor(el_init("quill", stdin, stdout, stderr), &el_end), m_HistoryFile(historyFile()) {
        // Sets the encoding of characters, before any other thread runs.
        static_cast<void>(std::setlocale(LC_CTYPE, "")); // NOLINT(concurrency-mt-unsafe)
        HistEvent event{};
        history(m_History.get(), &event, H_SETSIZE, kHistorySize);
        history(m_History.get(), &event, H_SETUNIQUE, 1);
        history(m_History.get(), &event, H_LOAD, m_HistoryFile.c_str()); // if it is there
        el_set(m_Editor.get(), EL_CLIENTDATA, this);
        el_set(m_Editor.get(), EL_PROMPT, &prompt);
        el_set(m_Editor.get(), EL_HIST, &history, m_History.get());
        el_set(m_Editor.get(), EL_EDITOR, "emacs");
        el_set(m_Editor.get(), EL_GETCFN, &readCharacter);
        el_set(m_Editor.get(), EL_ADDFN, "quill-complete", "Complete the word", &complete);
        el_set(m_Editor.get(), EL_BIND, "^I", "quill-complete", nullptr);
        el_source(m_Editor.get(), nullptr);
    }
    PromptLines(const PromptLines&) = delete;
    PromptLines& operator=(const PromptLines&) = delete;
    /// Without a folder to write to, the history ends with the session.
    ~PromptLines() override {
        std::error_code error;
        std::filesystem::create_directories(m_HistoryFile.parent_path(), error);
        HistEvent event{};
        history(m_History.get(), &event, H_SAVE, m_HistoryFile.c_str());
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

    static PromptLines& selfOf(EditLine* editor) {
        void* self = nullptr;
        el_get(editor, EL_CLIENTDATA, &self);
        return *static_cast<PromptLines*>(self);
    }

    /// Adds what all candidates have in common, or lists them.
    static unsigned char complete(EditLine* editor, int /*character*/) {
        const LineInfo* const typed = el_line(editor);
        const auto line = splitBegunLine({typed->buffer, typed->cursor});
        const auto candidates = line ? selfOf(editor).m_Completer(line->words) : std::vector<std::string>();
        if (candidates.empty()) {
            return CC_ERROR; // beeps
        }
        const std::string common = commonBeginning(candidates);
        std::string addition = quoted(common.substr(line->words.back().size()), line->quote);
        if (candidates.size() == 1 && common.back() != '=') {
            addition += line->quote + ' ';
        }
        if (addition.empty()) {
            std::puts("");
            for (const std::string& candidate : candidates) {
                std::puts(candidate.c_str());
            }
            return CC_REDISPLAY;
        }
        return el_insertstr(editor, addition.c_str()) == 0 ? CC_REFRESH : CC_ERROR;
    }

    /// Reads the next character of the terminal. Returns 1, or 0 at the end of the input or after an interrupt, or -1
    /// on an error.
    static int readCharacter(EditLine* editor, wchar_t* character) {
        const Interrupt& interrupt = selfOf(editor).m_Interrupt;
        std::mbstate_t state{};
        for (;;) {
            char byte = 0;
            if (!waitForTyping(interrupt)) {
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
    const Completer m_Completer;
    std::unique_ptr<History, decltype(&history_end)> m_History; // outlives the editor that uses it
    std::unique_ptr<EditLine, decltype(&el_end)> m_Editor;
    const std::filesystem::path m_HistoryFile;
};

} // namespace

std::unique_ptr<LineReader> makePromptReader(Interrupt& interrupt, Completer completer) {
    return std::make_unique<PromptLines>(interrupt, std::move(completer));
}

} // namespace QuillTool
