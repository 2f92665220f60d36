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

    /// "camera 90001: @p what", the beginning of every sentence about it.
    std::string about(const std::string& what) const { return fmt::format("camera {}: {}", m_SerialNumber, what); }

    /// Runs an action on the camera. What it throws becomes a ToolError: see explain().
    template <typename Action>
    auto attempt(const std::string& tried, Action&& action) const {
        try {
            return std::forward<Action>(action)();
        } catch (const std::exception& failure) {
            throw explain(tried, failure);
        }
    }

    /// A failure as a ToolError about this camera: @p tried says what cannot be done. The camera that went away
    /// meanwhile is told from the one that refuses.
    ToolError explain(const std::string& tried, const std::exception& failure) const;

private:
    bool isGone() const noexcept;

    CameraInterface::Camera* m_Camera; // kept by the library until the session ends
    std::string m_SerialNumber;
};

/// The cameras, from the first command that needs them to the end of the process.
class Session {
public:
    explicit Session(Output& output) : m_Output(output) {}
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;
    ~Session();

    /// Looks for cameras and returns the model name of each by its serial number. Warns of kinds of cameras that cannot
    /// be looked for; incompleteness() says which they are.
    std::map<std::string, std::string> listCameras();
    /// Empty, or a sentence that says which cameras the last listCameras() could not look for.
    static std::string incompleteness();
    /// The camera with this serial number, or the only one whose serial number starts so, connected.
    SelectedCamera connect(const std::string& selector);
    /// The serial number of the same camera, which is left as it is.
    std::string select(const std::string& selector);

private:
    Output& m_Output;
    bool m_Open = false;
    std::map<std::string, std::string> m_ReportedFailures;
};

} // namespace QuillTool
