// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <functional>
#include <map>
#include <string>
#include <vector>

#include <Quill.h>

namespace QuillTool::Conformance {

/// The interface that reaches the camera. Each kind has its own answers.
enum class Kind : unsigned {
    Sdk = 1,
    SdkWithoutStream = 2, ///< an SDK camera that cannot stream, such as a camera without a loaded FPGA
    Usb3Vision = 4,
    Simulated = 8,
    GenICam = 16
};

const char* nameOf(Kind kind);

/// Removes the camera and brings it back. Both functions are empty if that is not possible.
struct Plug {
    std::function<void()> pull;
    std::function<void()> putBack;
};

/// Whether calls may write the camera's flash, if only with its present content.
enum class FlashWrites { Forbidden, Allowed };

/// The examined camera. renew() ends the library's workspace and invalidates all references to cameras.
class Subject {
public:
    /// Connects the camera once to read its features.
    /// @throws KestrelException  the camera is absent, or cannot be connected
    Subject(const std::string& serialNumber, const Plug& plug, FlashWrites flashWrites);
    Subject(const Subject&) = delete;
    Subject& operator=(const Subject&) = delete;
    /// Ends the workspace with all streams and connections.
    ~Subject();

    /// Replaces the camera by a new object that was never connected. No watchdog runs afterwards.
    void renew();

    CameraInterface::Camera& camera() const { return *m_Camera; }
    const Plug& plug() const { return m_Plug; }
    bool mayWriteFlash() const { return m_FlashWrites == FlashWrites::Allowed; }

    const std::string& serialNumber() const { return m_SerialNumber; }
    const std::string& modelName() const { return m_ModelName; }
    /// Returns an empty text if the camera does not report it.
    const std::string& firmwareVersion() const { return m_FirmwareVersion; }
    Kind kind() const { return m_Kind; }
    /// Returns a property, preferably one stored in the camera; empty for a camera without properties.
    const std::string& property() const { return m_Property; }
    const std::string& propertyValue() const { return m_PropertyValue; }
    /// Returns a function with parameters; empty for a camera without one.
    const std::string& function() const { return m_Function; }

    /// Adds the counters of the present camera object, which start at 0 for each.
    void count(const std::vector<CameraInterface::StreamCounter>& counters);
    /// Returns the sums so far; empty for a camera without a stream.
    const std::vector<CameraInterface::StreamCounter>& counters() const { return m_Counters; }

private:
    Kind findKind() const;
    std::string findProperty() const;
    std::string findFunction() const;

    const std::string m_SerialNumber;
    const Plug m_Plug;
    const FlashWrites m_FlashWrites;
    CameraInterface::Camera* m_Camera = nullptr; // the library's
    Kind m_Kind = Kind::Simulated;
    std::string m_ModelName;
    std::string m_FirmwareVersion;
    std::string m_Property;
    std::string m_PropertyValue;
    std::string m_Function;
    std::vector<CameraInterface::StreamCounter> m_Counters;
};

} // namespace QuillTool::Conformance
