// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <map>
#include <string>
#include <vector>

#include <Quill.h>

#include "Callbacks.h"
#include "Handles.h"

namespace CInterface {

/// The handles of cameras. The list owns cameras, and destroys those that left it when 64 more have left; before that,
/// their handles become invalid, and calls that use them end. Thread-safe.
class Workspace {
public:
    /// The one of this process; never destroyed. A forked child has its own.
    static Workspace& instance();

    void initialise();
    void end();
    std::uint64_t findCamera(const char* serialNumber);
    void registerNewConnect(Callback<quill_new_connect_function> callback);
    void registerDisconnect(Callback<quill_disconnect_function> callback);

    /// Keeps the workspace from ending.
    class Stay {
    public:
        /// Waits until an end has ended; not for callbacks, for which it waits.
        Stay();
        /// @throws KestrelException_Camera "CameraNotFound"  the workspace ends
        explicit Stay(const char* serialNumber);
        Stay(const Stay&) = delete;
        Stay& operator=(const Stay&) = delete;
        ~Stay();

    private:
        Workspace& m_Workspace = instance();
    };

    /// Marks a camera whose stream has to be stopped to end the call.
    class ImageWait {
    public:
        explicit ImageWait(CameraInterface::Camera& camera);
        ImageWait(const ImageWait&) = delete;
        ImageWait& operator=(const ImageWait&) = delete;
        ~ImageWait();

    private:
        Workspace& m_Workspace = instance();
        CameraInterface::Camera& m_Camera;
    };

    /// Ends all handles, and waits for nobody: the process exits.
    void closeAtExit();
    /// Called by the last user of a handle that was closed.
    void noteClosed();

private:
    struct KnownCamera {
        std::uint64_t id;
        std::string serialNumber;
        std::uint64_t order;      // in which cameras became known
        bool hasDeparted = false; // left the list
    };
    /// Marks that the workspace ends.
    class Ending;

    void watch();
    void closeAll();
    template <typename Function, typename Await>
    void exchange(Callback<Function> Workspace::*present, Callback<Function>& callback, Await await);
    void hearArrival();
    void hearDeparture(const std::string& modelName, const std::string& serialNumber);
    std::uint64_t noteDeparture(const std::string& serialNumber);
    void awaitUsers();
    void stopAwaitedStreams();

    Utilities::Mutex m_Mutex; // guards the following members
    std::condition_variable m_Changed;
    std::map<CameraInterface::Camera*, KnownCamera> m_Cameras QUILL_GUARDED_BY(m_Mutex);
    std::uint64_t m_Order QUILL_GUARDED_BY(m_Mutex) = 0;
    // Those that left the list last, oldest first; null for one without a handle.
    std::deque<CameraInterface::Camera*> m_Departed QUILL_GUARDED_BY(m_Mutex);
    std::size_t m_Closing QUILL_GUARDED_BY(m_Mutex) = 0; // handles that are closed and still in use, and other uses
    std::size_t m_Stays QUILL_GUARDED_BY(m_Mutex) = 0;
    std::map<CameraInterface::Camera*, int> m_ImageWaits QUILL_GUARDED_BY(m_Mutex);
    bool m_Ending QUILL_GUARDED_BY(m_Mutex) = false;
    bool m_Exiting QUILL_GUARDED_BY(m_Mutex) = false;  // the process
    bool m_Watching QUILL_GUARDED_BY(m_Mutex) = false; // departures are heard
    Callback<quill_new_connect_function> m_NewConnect QUILL_GUARDED_BY(m_Mutex);
    Callback<quill_disconnect_function> m_Disconnect QUILL_GUARDED_BY(m_Mutex);
};

/// A camera of the list.
class CameraObject : public HandledObject {
public:
    static constexpr HandleKind kKind = HandleKind::Camera;

    explicit CameraObject(CameraInterface::Camera& camera) : m_Camera(camera) {}
    ~CameraObject() override { Workspace::instance().noteClosed(); }

    CameraInterface::Camera& camera() const { return m_Camera; }

private:
    CameraInterface::Camera& m_Camera;
};

/// The use of a camera by one call.
class CameraUse {
public:
    /// @throws InvalidHandle
    explicit CameraUse(quill_camera camera) : m_Object(camera.id) {}

    CameraInterface::Camera* operator->() const { return &m_Object->camera(); }
    CameraInterface::Camera& operator*() const { return m_Object->camera(); }

private:
    const InsideCall m_InsideCall; // outlasts the use, whose end may run foreign code
    const Use<CameraObject> m_Object;
};

} // namespace CInterface
