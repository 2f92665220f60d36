// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <thread>

#include <Quill.h>

#include "Interpreter.h"

namespace PythonBinding {

/// A camera as Python holds it: a name for a camera of the list, which is looked up again for every call, and the turn
/// of the one thread that may use the camera. Shared by all objects of Python that stand for the camera.
class CameraHandle {
public:
    CameraHandle(Process& process, CameraInterface::Camera& camera, std::string serialNumber)
        : m_Process(process), m_Camera(camera), m_SerialNumber(std::move(serialNumber)), m_Kind(camera.getKind()) {}

    const std::string& serialNumber() const { return m_SerialNumber; }
    CameraInterface::CameraKind kind() const { return m_Kind; }
    /// Whether it stands for the camera, which is listed and which an earlier one may have had the place of.
    bool standsFor(const CameraInterface::Camera& camera, const std::string& serialNumber) const {
        return !m_Ended && &m_Camera == &camera && m_Kind == camera.getKind() && m_SerialNumber == serialNumber;
    }
    /// Whether the camera is listed: then it lives.
    bool isListed() const;
    /// Called when the workspace ends, and no thread uses the camera.
    void end() { m_Ended = true; }
    /// Whether the calling thread uses the camera: it is in a callback of it.
    bool isUsedHere();
    /// Notes that the camera has left the list.
    /// @return whether that is news
    bool depart() { return !m_Departed.exchange(true); }
    /// Waits until no thread uses the camera.
    void awaitUsers();
    /// Stops the stream if a thread waits for an image.
    void stopCapture() noexcept;
    /// Replaces the function that gets every frame. Waits for the former one without a turn, for which that one may
    /// wait.
    /// @throws Failure  on the thread of such a function, or within another call of the camera; the camera is gone
    void setFrameCallback(std::function<void(const CameraInterface::Frame&)> callback,
                          const CameraInterface::FrameQueueSettings& settings, Released& released);

private:
    friend class Turn;

    bool isOfThisProcess() const { return &m_Process == &Process::present(); }
    /// @throws Failure  its locks may be held for ever
    void requireThisProcess() const;
    /// @throws Failure  no camera will answer
    void requireListed() const;
    void endFrameCallback();

    Process& m_Process;
    CameraInterface::Camera& m_Camera; // owned by the library; lives as long as it is listed
    const std::string m_SerialNumber;
    const CameraInterface::CameraKind m_Kind;
    std::atomic<bool> m_Ended{false};
    std::atomic<bool> m_Departed{false};

    std::mutex m_FrameCallbackMutex; // guards the frame callback, also while the former one is awaited
    std::mutex m_Mutex;              // guards whose turn it is
    std::condition_variable m_Free;
    std::thread::id m_User;
    int m_Depth = 0; // of calls by the user: callbacks of the camera may use it
    bool m_IsCapturing = false;
    int m_Stops = 0;  // threads that stop the stream beside a user that waits for an image
    int m_Others = 0; // threads that use the camera without a turn
};

using CameraPointer = std::shared_ptr<CameraHandle>;

/// What a use of a camera is for.
enum class Purpose {
    Call,
    Capture, ///< waits for an image: the stream may be stopped meanwhile
    Stop,    ///< stops the stream, also while another thread waits for an image
    Close    ///< ends such a wait first
};

/// The calling thread's turn with a camera. Needs no interpreter.
class Turn {
public:
    /// Waits for it; Ctrl-C ends the wait if the interpreter was @p released.
    /// @throws Failure  the camera is gone, the workspace ends, or the camera belongs to the parent of this process
    Turn(CameraHandle& camera, Purpose purpose, Released* released);
    Turn(const Turn&) = delete;
    Turn& operator=(const Turn&) = delete;
    ~Turn();

    CameraInterface::Camera& camera() const { return m_Handle.m_Camera; }

private:
    /// Waits for at most @p limit.
    bool take(Purpose purpose, std::chrono::milliseconds limit);
    void giveBack();

    CameraHandle& m_Handle;
    bool m_IsBeside = false; // stops the stream while another thread has the turn
    bool m_Captures = false;
};

/// A turn of a thread of Python, which has the interpreter before and afterwards.
class CameraUse {
public:
    explicit CameraUse(CameraHandle& camera, Purpose purpose = Purpose::Call) : m_Turn(camera, purpose, &m_Released) {}

    CameraInterface::Camera& operator*() const { return m_Turn.camera(); }
    CameraInterface::Camera* operator->() const { return &m_Turn.camera(); }

private:
    Released m_Released;
    Turn m_Turn;
};

} // namespace PythonBinding
