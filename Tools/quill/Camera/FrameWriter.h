// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <atomic>
#include <cstdint>
#include <exception>
#include <functional>
#include <string>
#include <thread>

#include <Quill.h>

#include "Terminal/Interrupt.h"
#include "Terminal/Waker.h"

namespace QuillTool {

/// Returns the name that ffmpeg has for the layout of an image; empty if it has none.
std::string rawVideoFormat(const Imaging::Image& image);

/// Writes the bytes of frames to standard output, on a thread of its own, so that a slow reader does not keep the
/// camera waiting: the queue drops what the reader cannot take.
class FrameWriter {
public:
    using Callback = std::function<void()>;

    /// @param queue of a stream that runs
    /// @param frames the number of frames after which it ends; 0 if it ends with the stream
    /// @param onEnd called on the thread when it has ended
    FrameWriter(const Interrupt& interrupt, CameraInterface::FrameQueue queue, std::uint64_t frames, Callback onEnd);
    FrameWriter(const FrameWriter&) = delete;
    FrameWriter& operator=(const FrameWriter&) = delete;
    ~FrameWriter();

    std::uint64_t written() const { return m_Written; }
    /// Frames that the reader could not take in time; final after finish().
    std::uint64_t dropped() const { return m_Dropped; }
    /// Waits until the frames that are queued are written, after the stream was stopped.
    /// @throws OutputClosed  the reader has closed the pipe
    /// @throws ToolError  the frames cannot be written
    void finish();

private:
    void run();
    /// @return false after an interrupt, or when nobody waits for the end
    bool write(const Imaging::Image& image);

    const Interrupt& m_Interrupt;
    CameraInterface::FrameQueue m_Queue;
    const std::uint64_t m_Limit;
    const Callback m_OnEnd;
    std::atomic<std::uint64_t> m_Written{0};
    std::atomic<std::uint64_t> m_Dropped{0};
    Waker m_Abandoned;
    std::exception_ptr m_Failure; // written by the thread, read once it has ended
    std::thread m_Thread;
};

} // namespace QuillTool
