// SPDX-License-Identifier: Apache-2.0

#include "CameraHandle.h"

#include <exception>

#include "Errors.h"

namespace PythonBinding {

using CameraInterface::Camera;
using CameraInterface::Frame;

namespace {

thread_local bool g_IsInFrameCallback = false;

} // namespace

bool CameraHandle::isListed() const {
    try {
        return !m_Ended && isOfThisProcess() && &Camera::getCamera(m_SerialNumber) == &m_Camera;
    } catch (const std::exception&) {
        return false;
    }
}

void CameraHandle::requireThisProcess() const {
    if (!isOfThisProcess()) {
        throw Failure("CameraGoneError", "CameraGone", "The camera belongs to the parent of this process.");
    }
}

void CameraHandle::requireListed() const {
    if (Process::present().isEnding()) {
        throw Failure("CameraGoneError", "CameraGone", "The workspace is ending.");
    }
    if (!isListed()) {
        throw Failure("CameraGoneError", "CameraGone",
                      m_Ended ? "The workspace of this camera has ended."
                              : describe(CameraInterface::FrameQueueStatus::CameraGone));
    }
}

void CameraHandle::awaitUsers() {
    std::unique_lock lock(m_Mutex);
    m_Free.wait(lock, [this] { return m_Depth == 0 && m_Stops == 0 && m_Others == 0; });
}

void CameraHandle::stopCapture() noexcept {
    {
        const std::lock_guard lock(m_Mutex);
        if (!m_IsCapturing) {
            return;
        }
        ++m_Stops; // nobody else gets a turn meanwhile
    }
    try {
        m_Camera.stopStream();
    } catch (const std::exception&) {
        // The wait for the image ends by itself.
    }
    const std::lock_guard lock(m_Mutex);
    --m_Stops;
    m_Free.notify_all();
}

void CameraHandle::endFrameCallback() {
    const auto count = [this](int change) {
        const std::lock_guard lock(m_Mutex);
        m_Others += change;
        m_Free.notify_all();
    };
    count(1);
    try {
        requireListed();
        m_Camera.setFrameCallback({});
    } catch (...) {
        count(-1);
        throw;
    }
    count(-1);
}

void CameraHandle::setFrameCallback(std::function<void(const Frame&)> callback,
                                    const CameraInterface::FrameQueueSettings& settings, Released& released) {
    requireThisProcess();
    if (g_IsInFrameCallback || isUsedHere()) {
        throw Failure("Error", "WouldWaitForItself",
                      "A frame callback is replaced neither by such a callback nor within another call of the camera.");
    }
    std::unique_lock lock(m_FrameCallbackMutex, std::defer_lock);
    while (!lock.try_lock()) { // ThreadSanitizer does not see locks with a time limit
        std::this_thread::sleep_for(kSignalPeriod);
        released.checkSignals();
    }
    if (callback) { // what fails, fails while the former one is there
        const Turn turn(*this, Purpose::Call, &released);
        turn.camera().openFrameQueue(settings);
    }
    endFrameCallback();
    if (callback) {
        const Turn turn(*this, Purpose::Call, &released);
        turn.camera().setFrameCallback(
            [callback = std::move(callback)](const Frame& frame) {
                g_IsInFrameCallback = true; // the thread is of frame callbacks alone
                callback(frame);
            },
            settings);
    }
}

bool CameraHandle::isUsedHere() {
    const std::lock_guard lock(m_Mutex);
    return m_Depth > 0 && m_User == std::this_thread::get_id();
}

Turn::Turn(CameraHandle& camera, Purpose purpose, Released* released) : m_Handle(camera) {
    m_Handle.requireThisProcess();
    if (!take(purpose, std::chrono::milliseconds(0))) {
        m_Handle.requireListed(); // otherwise the wait is of no use
        while (!take(purpose, kSignalPeriod)) {
            if (released) {
                released->checkSignals();
            }
        }
    }
    try {
        m_Handle.requireListed(); // from here on it is not destroyed
    } catch (...) {
        giveBack();
        throw;
    }
}

Turn::~Turn() {
    giveBack();
}

bool Turn::take(Purpose purpose, std::chrono::milliseconds limit) {
    if (purpose == Purpose::Close) {
        m_Handle.stopCapture();
    }
    std::unique_lock lock(m_Handle.m_Mutex);
    const std::thread::id thisThread = std::this_thread::get_id();
    const auto isOwn = [&] { return m_Handle.m_Depth > 0 && m_Handle.m_User == thisThread; };
    const auto isBeside = [&] { return purpose == Purpose::Stop && m_Handle.m_IsCapturing && !isOwn(); };
    const auto isFree = [&] { return m_Handle.m_Depth == 0 && m_Handle.m_Stops == 0; };
    if (!m_Handle.m_Free.wait_for(lock, limit, [&] { return isOwn() || isBeside() || isFree(); })) {
        return false;
    }
    m_IsBeside = isBeside();
    if (m_IsBeside) {
        ++m_Handle.m_Stops;
        return true;
    }
    m_Captures = purpose == Purpose::Capture && !isOwn();
    m_Handle.m_IsCapturing |= m_Captures;
    m_Handle.m_User = thisThread;
    ++m_Handle.m_Depth;
    return true;
}

void Turn::giveBack() {
    const std::lock_guard lock(m_Handle.m_Mutex);
    if (m_IsBeside) {
        --m_Handle.m_Stops;
    } else {
        --m_Handle.m_Depth;
        m_Handle.m_IsCapturing &= !m_Captures;
    }
    m_Handle.m_Free.notify_all();
}

} // namespace PythonBinding
