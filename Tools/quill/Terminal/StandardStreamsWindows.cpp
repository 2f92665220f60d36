// SPDX-License-Identifier: Apache-2.0

#include "Terminal/StandardStreams.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <mutex>
#include <string_view>
#include <system_error>
#include <thread>
#include <utility>

#include <fcntl.h>
#include <io.h>
#include <windows.h>

#include <shellapi.h>

#include "Terminal/Output.h"

namespace QuillTool {

namespace {

/// Small enough that an interrupt does not wait for long.
constexpr DWORD kPieceBytes = 1U << 20;

HANDLE handleOf(StandardStream stream) {
    return GetStdHandle(stream == StandardStream::Input    ? STD_INPUT_HANDLE
                        : stream == StandardStream::Output ? STD_OUTPUT_HANDLE
                                                           : STD_ERROR_HANDLE);
}

std::string utf8(std::wstring_view text) {
    const auto size = static_cast<int>(text.size());
    const int length = WideCharToMultiByte(CP_UTF8, 0, text.data(), size, nullptr, 0, nullptr, nullptr);
    std::string result(static_cast<std::size_t>(length), '\0');
    WideCharToMultiByte(CP_UTF8, 0, text.data(), size, result.data(), length, nullptr, nullptr);
    return result;
}

/// Waits for bytes of standard input; none at its end. A console gives whole lines.
std::string readBytes() {
    constexpr wchar_t kEndOfInput = 0x1A; // Ctrl-Z
    const HANDLE input = handleOf(StandardStream::Input);
    for (;;) {
        DWORD length = 0;
        SetLastError(ERROR_SUCCESS);
        if (isTerminal(StandardStream::Input)) {
            std::array<wchar_t, 4096> text{};
            if (ReadConsoleW(input, text.data(), static_cast<DWORD>(text.size()), &length, nullptr) != 0 &&
                length > 0) {
                return text[0] == kEndOfInput ? "" : utf8({text.data(), length});
            }
        } else {
            std::array<char, 4096> bytes{};
            if (ReadFile(input, bytes.data(), static_cast<DWORD>(bytes.size()), &length, nullptr) != 0 && length > 0) {
                return {bytes.data(), length};
            }
        }
        if (GetLastError() != ERROR_OPERATION_ABORTED) { // by an interrupt
            return {};
        }
    }
}

bool isReaderGone(DWORD failure) {
    return failure == ERROR_NO_DATA || failure == ERROR_BROKEN_PIPE || failure == ERROR_PIPE_NOT_CONNECTED;
}

/// Reads standard input on a thread of its own, since the system cannot wait for the bytes of a pipe.
class InputThread {
public:
    static InputThread& instance() {
        static auto* const thread = new InputThread; // reads until the process ends
        return *thread;
    }

    std::optional<std::string> take(const Waker& waker) {
        if (waitForAny({&waker, &m_Filled}) == 0U) {
            return std::nullopt;
        }
        const std::lock_guard<std::mutex> lock(m_Mutex);
        if (!m_AtEnd) {
            m_Filled.drain();
            m_Taken.wake();
        }
        return std::move(m_Bytes);
    }

private:
    InputThread() {
        std::thread([this] { run(); }).detach();
    }

    void run() {
        for (bool atEnd = false; !atEnd;) {
            std::string bytes = readBytes();
            atEnd = bytes.empty();
            {
                const std::lock_guard<std::mutex> lock(m_Mutex);
                m_Bytes = std::move(bytes);
                m_AtEnd = atEnd;
                m_Filled.wake();
            }
            waitForAny({&m_Taken});
            m_Taken.drain();
        }
    }

    std::mutex m_Mutex; // guards the bytes and the end
    std::string m_Bytes;
    bool m_AtEnd = false;
    Waker m_Filled;
    Waker m_Taken;
};

} // namespace

void prepareStandardStreams() {
    for (std::FILE* stream : {stdin, stdout, stderr}) {
        _setmode(_fileno(stream), _O_BINARY);
    }
    SetConsoleOutputCP(CP_UTF8);
    SetConsoleCP(CP_UTF8);
    for (const StandardStream stream : {StandardStream::Output, StandardStream::Error}) {
        DWORD mode = 0;
        if (GetConsoleMode(handleOf(stream), &mode) != 0) {
            SetConsoleMode(handleOf(stream), mode | ENABLE_VIRTUAL_TERMINAL_PROCESSING);
        }
    }
}

std::vector<std::string> programArguments(int /*argc*/, char** /*argv*/) {
    int count = 0;
    wchar_t** const words = CommandLineToArgvW(GetCommandLineW(), &count);
    std::vector<std::string> arguments;
    for (int i = 1; words != nullptr && i < count; ++i) {
        arguments.push_back(utf8(words[i]));
    }
    LocalFree(words);
    return arguments;
}

bool isTerminal(StandardStream stream) {
    DWORD mode = 0;
    return GetConsoleMode(handleOf(stream), &mode) != 0;
}

bool showsColors(StandardStream stream) {
    DWORD mode = 0;
    return GetConsoleMode(handleOf(stream), &mode) != 0 && (mode & ENABLE_VIRTUAL_TERMINAL_PROCESSING) != 0;
}

int errorOfWriting() {
    const int error = errno;
    return isReaderGone(_doserrno) ? EPIPE : error;
}

std::optional<std::string> readInput(const Waker& waker) {
    return InputThread::instance().take(waker);
}

// The system does not say that the reader of a pipe has gone before something is written.
std::size_t waitWhileOutputIsRead(std::initializer_list<const Waker*> wakers) {
    return waitForAny(wakers).value();
}

std::optional<std::size_t> writeOutput(const unsigned char* bytes, std::size_t size,
                                       std::initializer_list<const Waker*> wakers) {
    if (waitForAny(wakers, std::chrono::milliseconds(0))) {
        return std::nullopt;
    }
    DWORD count = 0;
    const auto piece = static_cast<DWORD>(std::min<std::size_t>(size, kPieceBytes));
    if (WriteFile(handleOf(StandardStream::Output), bytes, piece, &count, nullptr) == 0) {
        const DWORD failure = GetLastError();
        if (isReaderGone(failure)) {
            throw OutputClosed{};
        }
        throw std::system_error(static_cast<int>(failure), std::system_category());
    }
    return count;
}

} // namespace QuillTool
