// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <atomic>
#include <condition_variable>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <vector>

#include <Quill.h>

namespace PythonBinding {

class CameraHandle;

/// What the binding knows of the library in this process, for the lifetime of what it hands out. A forked child has one
/// of its own; its parent's is left as it was. Thread-safe. No mutex of it is held while the interpreter is waited for,
/// nor, except for the start, while the library is.
class Process {
public:
    static Process& present() { return *s_Present; }
    /// Called once, with the interpreter.
    static void begin();

    /// Counts a call of the library. Fails, and counts nothing, once the workspace has ended because Python exits.
    bool enterCall();
    void leaveCall();
    bool isAtExit() const { return m_AtExit; }
    /// Whether this is the thread on which Python handles signals.
    bool isMainThread() const;

    /// Fills the list of cameras on first use.
    /// @throws Failure  the workspace ends
    void requireWorkspace();
    /// Ends every wait, waits until no other thread is in a call, and ends the workspace. Called with the interpreter.
    /// @throws Failure  called by a callback, or another thread does the same
    void endWorkspace(bool atExit);
    bool isEnding() const { return m_Ending || m_AtExit; }

    /// The handle of a listed camera.
    std::shared_ptr<CameraHandle> handleOf(const std::string& serialNumber);
    /// Replaces the function that hears which camera went away, by model name and serial number; it may be empty.
    void registerDisconnectCallback(std::function<void(const std::string&, const std::string&)> callback);
    /// Remembers a queue, so that its waits end with the workspace.
    void keep(const std::shared_ptr<CameraInterface::FrameQueue>& queue);

private:
    explicit Process(unsigned long mainThread) : m_MainThread(mainThread) {}

    int callsUnderWay() const;
    /// Waits for a short while.
    void waitForCalls();
    void endWaits();
    std::vector<std::shared_ptr<CameraHandle>> heldCameras() const;
    void awaitUsersOfOldest(const std::string& departed);

    static Process* s_Present; // never deleted

    const unsigned long m_MainThread;
    std::atomic<bool> m_AtExit{false};
    std::atomic<bool> m_Ending{false};
    std::atomic<bool> m_Started{false};

    std::mutex m_StartMutex;    // guards the start of the workspace; taken without the interpreter
    mutable std::mutex m_Mutex; // guards what follows
    std::condition_variable m_Returned;
    int m_Calls = 0;
    std::map<CameraInterface::Camera*, std::weak_ptr<CameraHandle>> m_Cameras;
    std::deque<std::weak_ptr<CameraHandle>> m_Departed; // those that left the list last, oldest first
    std::set<std::weak_ptr<CameraInterface::FrameQueue>, std::owner_less<>> m_Queues;
};

} // namespace PythonBinding
