// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <map>
#include <string>

#include <Quill.h>
#include <fmt/format.h>

#include "Terminal/Output.h"
#include "Terminal/ToolError.h"

namespace QuillTool {

/// A connected camera of the session.
class SelectedCamera {
public:
    explicit SelectedCamera(CameraInterface::Camera& camera, const std::string& serialNumber)
        : m_Camera(&camera), m_SerialNumber(serialNumber) {}

    CameraInterface::Camera* operator->() const { return m_Camera; }
    CameraInterface::Camera& operator*() const { return *m_Camera; }
    const std::string& serialNumber() const { return m_SerialNumber; }

    /// Returns "camera 90001: @p what", the beginning of every message about the camera.
    std::string about(const std::string& what) const { return fmt::format("camera {}: {}", m_SerialNumber, what); }

    /// Runs an action on the camera. Turns its exceptions into a ToolError: see explain().
    template <typename Action>
    auto attempt(const std::string& tried, Action&& action) const {
        try {
            return std::forward<Action>(action)();
        } catch (const std::exception& failure) {
            throw explain(tried, failure);
        }
    }

    /// Turns a failure into a ToolError about this camera. @p tried names the failed action. Distinguishes a camera
    /// that has gone from a camera that refuses.
    ToolError explain(const std::string& tried, const std::exception& failure) const;

private:
    bool isGone() const noexcept;

    CameraInterface::Camera* m_Camera; // the library keeps it until the session ends
    std::string m_SerialNumber;
};

/// Holds the cameras from the first command that needs them to the end of the process.
class Session {
public:
    explicit Session(Output& output) : m_Output(output) {}
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;
    ~Session();

    /// Enumerates the cameras and returns the model name of each by serial number. Warns about kinds of camera that
    /// cannot be enumerated; incompleteness() names them.
    std::map<std::string, std::string> listCameras();
    /// Names the kinds of camera that the last listCameras() could not enumerate; empty if there are none.
    static std::string incompleteness();
    /// Connects the camera with this serial number, or the only camera whose serial number begins with it.
    SelectedCamera connect(const std::string& selector);
    /// Returns the serial number of the same camera without connecting it.
    std::string select(const std::string& selector);

private:
    Output& m_Output;
    bool m_Open = false;
    std::map<std::string, std::string> m_ReportedFailures;
};

} // namespace QuillTool
