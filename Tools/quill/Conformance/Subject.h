// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <functional>
#include <map>
#include <string>

#include <Quill.h>

namespace QuillTool::Conformance {

/// What reaches the camera. Each kind has answers of its own.
enum class Kind : unsigned {
    Sdk = 1,
    SdkWithoutStream = 2, ///< an SDK camera that lacks what a stream needs, such as one whose FPGA is not loaded
    Usb3Vision = 4,
    Simulated = 8
};

const char* nameOf(Kind kind);

/// Somebody who takes the camera away from the library and brings it back. Both are empty where nobody can.
struct Plug {
    std::function<void()> pull;
    std::function<void()> putBack;
};

/// Whether calls are made that may write the camera's flash, if only what is there already.
enum class FlashWrites { Forbidden, Allowed };

/// The camera whose answers are examined. It is made anew as often as need be, for which the library's workspace ends
/// every time: whoever holds another reference to a camera loses it.
class Subject {
public:
    /// Connects the camera once to see what it offers.
    /// @throws KestrelException  it is not there, or cannot be connected
    Subject(const std::string& serialNumber, const Plug& plug, FlashWrites flashWrites);
    Subject(const Subject&) = delete;
    Subject& operator=(const Subject&) = delete;
    /// Ends the workspace, and with it every stream and connection.
    ~Subject();

    /// Replaces the object by one that was never connected. Nobody watches the list then.
    void renew();

    CameraInterface::Camera& camera() const { return *m_Camera; }
    const Plug& plug() const { return m_Plug; }
    bool mayWriteFlash() const { return m_FlashWrites == FlashWrites::Allowed; }

    const std::string& serialNumber() const { return m_SerialNumber; }
    const std::string& modelName() const { return m_ModelName; }
    /// Empty where the camera does not tell.
    const std::string& firmwareVersion() const { return m_FirmwareVersion; }
    Kind kind() const { return m_Kind; }
    /// A property whose value the camera itself holds, if there is one; empty on a camera without properties.
    const std::string& property() const { return m_Property; }
    const std::string& propertyValue() const { return m_PropertyValue; }
    /// A function that takes parameters; empty on a camera without one.
    const std::string& function() const { return m_Function; }

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
};

} // namespace QuillTool::Conformance
