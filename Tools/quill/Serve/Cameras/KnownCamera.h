// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <atomic>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include <Quill.h>

#include "Camera/Session.h"
#include "Serve/Pictures/LiveFeed.h"

namespace QuillTool::Serve {

/// The queue from which viewers get the newest frame.
constexpr const char* kViewersQueue = "viewers";

/// A camera that somebody asked for; stays while it is away.
class KnownCamera {
public:
    explicit KnownCamera(std::string serialNumber);

    const std::string& serialNumber() const { return m_SerialNumber; }
    const std::shared_ptr<LiveFeed>& feed() const { return m_Feed; }

    /// Runs an action with the camera, connected or not, while no other action of this camera runs. Nobody else uses
    /// the camera meanwhile, but frames go on to be delivered.
    /// @throws KestrelException "CameraNotFound"
    template <typename Action>
    auto use(Action&& action) {
        const Utilities::MutexLock turn(m_Turn);
        const SelectedCamera camera(CameraInterface::Camera::getCamera(m_SerialNumber), m_SerialNumber);
        return std::forward<Action>(action)(camera);
    }
    /// The same with a connected camera.
    /// @throws Refusal  it is not connected
    template <typename Action>
    auto useConnected(Action&& action) {
        return use([&](const SelectedCamera& camera) {
            requireConnected(camera);
            return std::forward<Action>(action)(camera);
        });
    }

    /// Whether the stream ran when it was last looked at.
    bool isStreaming() const { return m_IsStreaming; }
    /// @return whether it has changed
    bool rememberStreaming(bool isStreaming) { return m_IsStreaming.exchange(isStreaming) != isStreaming; }

    /// Whether a client started the stream, which recordings then do not stop.
    std::atomic<bool> isStreamWanted{false};
    /// Recordings under way. Grows only within use().
    std::atomic<unsigned> recordings{0};
    /// Whether a recording started the stream. Changes only within use().
    std::atomic<bool> isStreamOfRecordings{false};

    /// @throws Refusal
    static void requireConnected(const SelectedCamera& camera);

private:
    CameraInterface::FrameQueue openQueue();

    const std::string m_SerialNumber;
    Utilities::Mutex m_Turn; // of the calls that use the camera
    std::atomic<bool> m_IsStreaming{false};
    const std::shared_ptr<LiveFeed> m_Feed; // ends first: it uses the others
};

/// The cameras that somebody asked for, by serial number. Thread-safe.
class KnownCameras {
public:
    /// @throws KestrelException "CameraNotFound"  never seen, and not listed
    std::shared_ptr<KnownCamera> find(const std::string& serialNumber);
    std::vector<std::shared_ptr<KnownCamera>> all();
    bool isStreaming(const std::string& serialNumber);

private:
    Utilities::Mutex m_Mutex; // guards the map
    std::map<std::string, std::shared_ptr<KnownCamera>> m_Cameras QUILL_GUARDED_BY(m_Mutex);
};

} // namespace QuillTool::Serve
