// SPDX-License-Identifier: Apache-2.0

#include "Workspace.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <exception>
#include <utility>

#include "Process/Process.h"

namespace CInterface {

using CameraInterface::Camera;
using KestrelExceptions::KestrelException;
using KestrelExceptions::KestrelException_Camera;
using Utilities::MutexLock;

namespace {

/// The library keeps 64 cameras that left the list; when the next one leaves, the oldest of this many is still there.
constexpr std::size_t kMaximumDeparted = 63;
/// After which a stream is stopped again that a call has started meanwhile for its image.
constexpr std::chrono::milliseconds kStopAgain{20};

std::atomic<Workspace*> g_Workspace{nullptr};

/// Ends the handles before the library destroys the cameras, when the process exits.
struct ExitGuard {
    ExitGuard() = default;
    ExitGuard(const ExitGuard&) = delete;
    ExitGuard& operator=(const ExitGuard&) = delete;
    ~ExitGuard() {
        if (Process::hasOtherThreads()) {
            Workspace::instance().closeAtExit();
        }
    }
};

/// The same failure as the library's own when a camera is not in the list.
[[noreturn]] void raiseNotFound(const char* serialNumber) {
    throw KestrelException_Camera("CameraNotFound", __FILE__, __LINE__,
                                  "Camera was not found in the list of available cameras.", serialNumber);
}

} // namespace

void InsideCall::refuse() {
    if (s_Depth > 0) {
        throw KestrelException::create(
            "WouldWaitForItself", __FILE__, __LINE__,
            "This operation waits for the call or the callback that called it. Call it from another thread.");
    }
}

Workspace& Workspace::instance() {
    static const bool isPrepared = [] {
        g_Workspace = new Workspace;
        Process::keepThisLibraryWithItsThreads(); // the C++ library keeps callbacks into it
        // The parent's may be locked by a thread that the child does not have.
        Process::callInForkedChild([] { g_Workspace = new Workspace; });
        Camera::getEnumerationFailures(); // the library's own guard is made first, and acts last
        static const ExitGuard guard;
        return true;
    }();
    static_cast<void>(isPrepared);
    return *g_Workspace;
}

class Workspace::Ending {
public:
    explicit Ending(Workspace& workspace) : m_Workspace(workspace) {
        MutexLock lock(m_Workspace.m_Mutex);
        lock.wait(m_Workspace.m_Changed,
                  [this]() QUILL_REQUIRES(m_Workspace.m_Mutex) { return !m_Workspace.m_Ending; });
        m_Workspace.m_Ending = true;
    }
    Ending(const Ending&) = delete;
    Ending& operator=(const Ending&) = delete;
    ~Ending() {
        const MutexLock lock(m_Workspace.m_Mutex);
        m_Workspace.m_Ending = false;
        m_Workspace.m_Changed.notify_all();
    }

private:
    Workspace& m_Workspace;
};

void Workspace::initialise() {
    InsideCall::refuse();
    const Stay stay;
    bool isWatching = false;
    {
        const MutexLock lock(m_Mutex);
        isWatching = m_Watching;
    }
    if (!isWatching) {
        watch();
    }
    Camera::initialiseWorkspace();
}

void Workspace::watch() {
    Camera::registerDisconnectCallback([this](const std::string& modelName, const std::string& serialNumber) {
        hearDeparture(modelName, serialNumber);
    });
    const MutexLock lock(m_Mutex);
    m_Watching = true;
}

void Workspace::end() {
    InsideCall::refuse();
    // Released without a lock, once others may use the workspace again.
    Callback<quill_new_connect_function> newConnect;
    Callback<quill_disconnect_function> disconnect;
    const Ending ending(*this);
    const InsideCall mark;
    closeAll();
    awaitUsers();
    Camera::unitialisedWorkpace();
    const MutexLock lock(m_Mutex);
    m_Watching = false;
    m_Departed.clear(); // cameras that left while the others were awaited
    std::swap(newConnect, m_NewConnect);
    std::swap(disconnect, m_Disconnect);
}

std::uint64_t Workspace::findCamera(const char* serialNumber) {
    const MutexLock lock(m_Mutex); // no camera that leaves the list meanwhile is destroyed
    if (m_Ending) {
        raiseNotFound(serialNumber);
    }
    Camera& camera = Camera::getCamera(serialNumber);
    const auto known = m_Cameras.find(&camera);
    if (known != m_Cameras.end()) {
        return known->second.id;
    }
    KnownCamera& entry = m_Cameras[&camera];
    try {
        entry.serialNumber = serialNumber;
        entry.order = ++m_Order;
        entry.id = handles().create<CameraObject>(camera);
    } catch (...) {
        m_Cameras.erase(&camera);
        throw;
    }
    return entry.id;
}

void Workspace::registerNewConnect(Callback<quill_new_connect_function> callback) {
    exchange(&Workspace::m_NewConnect, callback,
             [this] { Camera::registerNewConnectCallback([this] { hearArrival(); }); });
}

void Workspace::registerDisconnect(Callback<quill_disconnect_function> callback) {
    exchange(&Workspace::m_Disconnect, callback, [this] { watch(); });
}

/// Swaps callbacks. The former one, or the new one after a failure, is released by the caller, without a lock.
/// @param await  waits until the former one no longer runs
template <typename Function, typename Await>
void Workspace::exchange(Callback<Function> Workspace::*present, Callback<Function>& callback, Await await) {
    InsideCall::refuse();
    const Stay stay;
    const auto swap = [&] {
        const MutexLock lock(m_Mutex);
        std::swap(this->*present, callback);
    };
    swap();
    try {
        await();
    } catch (...) {
        swap();
        throw;
    }
}

void Workspace::hearArrival() {
    const InsideCall mark;
    Callback<quill_new_connect_function> callback;
    {
        const MutexLock lock(m_Mutex);
        callback = m_NewConnect;
    }
    if (callback) {
        callback();
    }
}

void Workspace::hearDeparture(const std::string& modelName, const std::string& serialNumber) {
    const InsideCall mark;
    if (const std::uint64_t expired = noteDeparture(serialNumber)) {
        handles().close(expired, CameraObject::kKind);
    }
    Callback<quill_disconnect_function> callback;
    {
        const MutexLock lock(m_Mutex);
        callback = m_Disconnect;
    }
    if (callback) {
        callback(modelName.c_str(), serialNumber.c_str());
    }
    MutexLock lock(m_Mutex);
    lock.wait(m_Changed, [this]() QUILL_REQUIRES(m_Mutex) { return m_Closing == 0 || m_Exiting; });
}

/// @return the handle of the camera that the library destroys next, or 0
std::uint64_t Workspace::noteDeparture(const std::string& serialNumber) {
    const MutexLock lock(m_Mutex);
    Camera* departed = nullptr;
    for (const auto& [camera, known] : m_Cameras) { // several only while one leaves and another one takes its place
        if (!known.hasDeparted && known.serialNumber == serialNumber &&
            (departed == nullptr || known.order < m_Cameras.at(departed).order)) {
            departed = camera;
        }
    }
    if (departed != nullptr) {
        m_Cameras.at(departed).hasDeparted = true;
    }
    m_Departed.push_back(departed);
    if (m_Departed.size() < kMaximumDeparted + 1) {
        return 0;
    }
    const auto oldest = m_Cameras.find(m_Departed.front());
    m_Departed.pop_front();
    if (oldest == m_Cameras.end()) {
        return 0;
    }
    const std::uint64_t id = oldest->second.id;
    m_Cameras.erase(oldest);
    ++m_Closing;
    return id;
}

void Workspace::closeAll() {
    std::vector<std::uint64_t> ids;
    {
        const MutexLock lock(m_Mutex);
        for (const auto& [camera, known] : m_Cameras) {
            ids.push_back(known.id);
        }
        m_Cameras.clear();
        m_Departed.clear();
        m_Closing += ids.size();
    }
    for (const std::uint64_t id : ids) {
        handles().close(id, CameraObject::kKind);
    }
}

void Workspace::closeAtExit() {
    {
        const MutexLock lock(m_Mutex);
        m_Exiting = true;
        m_Changed.notify_all();
    }
    closeAll();
}

void Workspace::noteClosed() {
    const MutexLock lock(m_Mutex);
    --m_Closing;
    m_Changed.notify_all();
}

void Workspace::awaitUsers() {
    while (true) {
        {
            MutexLock lock(m_Mutex);
            if (lock.waitFor(m_Changed, kStopAgain,
                             [this]() QUILL_REQUIRES(m_Mutex) { return m_Closing == 0 && m_Stays == 0; })) {
                return;
            }
        }
        stopAwaitedStreams();
    }
}

void Workspace::stopAwaitedStreams() {
    std::vector<Camera*> cameras; // they exist until the workspace has ended
    {
        const MutexLock lock(m_Mutex);
        for (const auto& [camera, waits] : m_ImageWaits) {
            cameras.push_back(camera);
        }
        ++m_Closing; // one that left the list is not destroyed meanwhile
    }
    for (Camera* const camera : cameras) {
        try {
            camera->stopStream();
        } catch (const std::exception&) {
            // It is stopped again, until the wait has ended.
        }
    }
    noteClosed();
}

Workspace::Stay::Stay() {
    MutexLock lock(m_Workspace.m_Mutex);
    lock.wait(m_Workspace.m_Changed, [this]() QUILL_REQUIRES(m_Workspace.m_Mutex) { return !m_Workspace.m_Ending; });
    ++m_Workspace.m_Stays;
}

Workspace::Stay::Stay(const char* serialNumber) {
    const MutexLock lock(m_Workspace.m_Mutex);
    if (m_Workspace.m_Ending) {
        raiseNotFound(serialNumber);
    }
    ++m_Workspace.m_Stays;
}

Workspace::Stay::~Stay() {
    const MutexLock lock(m_Workspace.m_Mutex);
    --m_Workspace.m_Stays;
    m_Workspace.m_Changed.notify_all();
}

Workspace::ImageWait::ImageWait(Camera& camera) : m_Camera(camera) {
    const MutexLock lock(m_Workspace.m_Mutex);
    ++m_Workspace.m_ImageWaits[&camera];
}

Workspace::ImageWait::~ImageWait() {
    const MutexLock lock(m_Workspace.m_Mutex);
    const auto entry = m_Workspace.m_ImageWaits.find(&m_Camera);
    if (--entry->second == 0) {
        m_Workspace.m_ImageWaits.erase(entry);
    }
}

} // namespace CInterface
