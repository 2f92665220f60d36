// SPDX-License-Identifier: Apache-2.0
#pragma once

namespace CameraInterface {

/// Marks the calling thread, while the object lives, as one of the library's that runs callbacks of the application:
/// what waits for such threads must not be called there.
class CallbackThread {
public:
    CallbackThread();
    CallbackThread(const CallbackThread&) = delete;
    CallbackThread& operator=(const CallbackThread&) = delete;
    ~CallbackThread();

    /// Whether the calling thread is marked.
    static bool isHere();
    /// @throws KestrelException "WouldWaitForItself"  the calling thread is marked
    static void refuse();
};

} // namespace CameraInterface
