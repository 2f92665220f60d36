// SPDX-License-Identifier: Apache-2.0

#include "Process.h"

#include <thread>

#include <pthread.h>

#include "CameraHandle.h"
#include "Errors.h"
#include "Interpreter.h"

namespace PythonBinding {

namespace py = pybind11;
using CameraInterface::Camera;

Process* Process::s_Present = nullptr;

namespace {

/// The library keeps 64 cameras that left the list; when the next one leaves, the oldest of this many is still there.
constexpr std::size_t kMaximumDeparted = 63;

template <typename Container, typename IsExpired>
void eraseExpired(Container& container, IsExpired isExpired) {
    for (auto entry = container.begin(); entry != container.end();) {
        entry = isExpired(*entry) ? container.erase(entry) : std::next(entry);
    }
}

} // namespace

void Process::begin() {
    const auto mainThread = py::module_::import("threading").attr("main_thread")().attr("ident").cast<unsigned long>();
    s_Present = new Process(mainThread);
    pthread_atfork(nullptr, nullptr, [] { s_Present = new Process(PyThread_get_thread_ident()); });
}

bool Process::isMainThread() const {
    return PyThread_get_thread_ident() == m_MainThread;
}

bool Process::enterCall() {
    const std::lock_guard lock(m_Mutex);
    if (m_AtExit) {
        return false;
    }
    ++m_Calls;
    return true;
}

void Process::leaveCall() {
    const std::lock_guard lock(m_Mutex);
    --m_Calls;
    m_Returned.notify_all();
}

int Process::callsUnderWay() const {
    const std::lock_guard lock(m_Mutex);
    return m_Calls;
}

void Process::waitForCalls() {
    std::unique_lock lock(m_Mutex);
    m_Returned.wait_for(lock, kSignalPeriod, [this] { return m_Calls == 0; });
}

void Process::requireWorkspace() {
    if (isEnding()) {
        throw Failure("CameraGoneError", "CameraGone", "The workspace is ending.");
    }
    if (!m_Started) {
        const Released released;
        const std::lock_guard lock(m_StartMutex);
        if (!m_Started) {
            registerDisconnectCallback({});
            Camera::initialiseWorkspace();
            m_Started = true;
        }
    }
}

CameraPointer Process::handleOf(const std::string& serialNumber) {
    requireWorkspace();
    const Released released;
    Camera& camera = Camera::getCamera(serialNumber);
    const std::lock_guard lock(m_Mutex);
    const auto known = m_Cameras.find(&camera);
    CameraPointer handle = known == m_Cameras.end() ? nullptr : known->second.lock();
    if (!handle || !handle->standsFor(camera, serialNumber)) {
        eraseExpired(m_Cameras, [](const auto& entry) { return entry.second.expired(); });
        handle = std::make_shared<CameraHandle>(*this, camera, serialNumber);
        m_Cameras[&camera] = handle;
    }
    return handle;
}

void Process::registerDisconnectCallback(std::function<void(const std::string&, const std::string&)> callback) {
    Camera::registerDisconnectCallback(
        [this, callback = std::move(callback)](const std::string& modelName, const std::string& serialNumber) {
            awaitUsersOfOldest(serialNumber);
            if (callback) {
                callback(modelName, serialNumber);
            }
        });
}

/// Called for each camera that left the list: waits for calls that use the one that the library destroys next.
void Process::awaitUsersOfOldest(const std::string& departed) {
    std::weak_ptr<CameraHandle> left; // none if nobody holds it
    for (const CameraPointer& camera : heldCameras()) {
        if (camera->serialNumber() == departed && !camera->isListed() && camera->depart()) {
            left = camera;
        }
    }
    CameraPointer oldest;
    {
        const std::lock_guard lock(m_Mutex);
        m_Departed.push_back(left);
        if (m_Departed.size() > kMaximumDeparted) {
            oldest = m_Departed.front().lock();
            m_Departed.pop_front();
        }
    }
    if (oldest) {
        oldest->awaitUsers();
    }
}

void Process::keep(const std::shared_ptr<CameraInterface::FrameQueue>& queue) {
    const std::lock_guard lock(m_Mutex);
    eraseExpired(m_Queues, [](const auto& entry) { return entry.expired(); });
    m_Queues.insert(queue);
}

std::vector<CameraPointer> Process::heldCameras() const {
    std::vector<CameraPointer> cameras;
    const std::lock_guard lock(m_Mutex);
    for (const auto& entry : m_Cameras) {
        if (CameraPointer camera = entry.second.lock()) {
            cameras.push_back(std::move(camera));
        }
    }
    return cameras;
}

void Process::endWaits() {
    std::set<std::weak_ptr<CameraInterface::FrameQueue>, std::owner_less<>> queues;
    {
        const std::lock_guard lock(m_Mutex);
        queues.swap(m_Queues);
    }
    for (const auto& entry : queues) {
        if (const auto queue = entry.lock()) {
            queue->close();
        }
    }
    for (const CameraPointer& camera : heldCameras()) {
        camera->stopCapture();
    }
}

void Process::endWorkspace(bool atExit) {
    while (Acquired::isHere() || m_Ending.exchange(true)) {
        if (Acquired::isHere() || !atExit) {
            throw Failure("Error", "WouldWaitForItself",
                          "The end of the workspace waits for the callback, or the end, that called it.");
        }
        const WithoutInterpreter released;
        std::this_thread::sleep_for(kSignalPeriod); // for the other thread that ends it
    }
    struct Ending {
        std::atomic<bool>& is;
        ~Ending() { is = false; }
    } const ending{m_Ending};

    // Calls begin only with the interpreter: with it, their number says whether one may still be under way.
    while (callsUnderWay() > 0) {
        {
            const WithoutInterpreter released;
            endWaits();
            waitForCalls();
        }
        // At exit, Ctrl-C would leave threads in a library whose interpreter is gone.
        if (!atExit && isMainThread() && PyErr_CheckSignals() != 0) {
            throw py::error_already_set();
        }
    }
    m_AtExit = atExit;
    const WithoutInterpreter released;
    endWaits();
    for (const CameraPointer& camera : heldCameras()) {
        camera->end();
    }
    Camera::unitialisedWorkpace();
    const std::lock_guard lock(m_Mutex);
    m_Cameras.clear();
    m_Departed.clear();
    m_Started = false;
}

} // namespace PythonBinding
