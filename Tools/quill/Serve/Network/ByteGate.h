// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <condition_variable>
#include <functional>
#include <string>
#include <string_view>

#include <Quill.h>

namespace QuillTool::Serve {

/// Passes bytes from a thread that may wait to a connection that may not. Thread-safe.
class ByteGate {
public:
    /// Passes bytes on once fewer than 4 MiB wait.
    /// @return false: the connection is gone
    bool write(std::string_view bytes);
    /// Says that no bytes follow, and whether all were written.
    void finish(bool isComplete);

    /// Calls @p wake, on any thread, whenever there is something to take, and now. It must not block.
    void onBytes(std::function<void()> wake);
    struct Taken {
        std::string bytes;
        bool isLast = false;
        bool isComplete = false;
    };
    /// Takes what waits.
    Taken take();
    /// Refuses all bytes from now on.
    void close();

private:
    void wake();

    Utilities::Mutex m_Mutex; // guards what follows
    std::string m_Waiting QUILL_GUARDED_BY(m_Mutex);
    bool m_IsClosed QUILL_GUARDED_BY(m_Mutex) = false;
    bool m_IsFinished QUILL_GUARDED_BY(m_Mutex) = false;
    bool m_IsComplete QUILL_GUARDED_BY(m_Mutex) = false;
    std::function<void()> m_Wake QUILL_GUARDED_BY(m_Mutex);
    std::condition_variable m_Changed;
};

} // namespace QuillTool::Serve
