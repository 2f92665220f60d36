// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <exception>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include "../Cameras/Camera.h"
#include "../Export.h"

namespace CameraInterface {

/// What a camera is set to: the values of its writable properties, and which camera they come from.
struct CameraSettings {
    std::string kind; ///< getKindName()
    std::string modelName;
    std::string serialNumber;
    std::map<std::string, std::string> values; ///< by name of the property
};

/// A property that does not have the value that the settings give.
struct SettingDifference {
    std::string name;
    std::string wanted;
    std::string present; ///< empty if it cannot be read
    std::string reason;  ///< one sentence why it cannot be written or read; empty if it only has another value
};

/// The result of writeSettings().
struct SettingsReport {
    /// The properties that were written, in the order of their first writing. All others had their values already, or
    /// are among those below.
    std::vector<std::string> written;
    std::vector<SettingDifference> different; ///< accepted a write, but read otherwise afterwards
    std::vector<SettingDifference> failed;    ///< refused, missing on this camera, or not reached
    /// What ended the writing before its time: the exception of the progress function, or of a camera that is gone.
    /// Null if all was tried.
    std::exception_ptr interruption;

    /// Whether the camera has all values of the settings.
    bool isComplete() const { return different.empty() && failed.empty() && !interruption; }
};

/// What writeSettings() accepts, and the function that gets its progress.
struct SettingsOptions {
    bool acceptOtherModels = false;
    /// Called before each property is looked at, on the writing thread. An exception ends the writing.
    std::function<void(const std::string& name)> progress;
};

/// Reads the values of all properties of a connected camera that are not read-only, locked ones included.
/// @throws KestrelException_Camera "CameraConnection"  the camera is not connected; what Property::getValue() and
///     isReadOnly() throw
QUILL_API CameraSettings readSettings(Camera& camera);

/// Writes the values that differ from the present ones, in an order that works: modes, clocks and formats before the
/// region, the region before its offsets, properties that stand for others last. What depends on something else is
/// written again in further rounds, as long as each leaves fewer differences than the one before. Then reads everything
/// back. Numbers are equal if they are the same 32-bit floating-point number or differ by at most a millionth.
///
/// A property that fails ends nothing. Does not throw once the writing has begun.
/// @throws KestrelException_Camera "CameraConnection"  the camera is not connected
/// @throws KestrelException "SettingsModel"  the settings come from another model
QUILL_API SettingsReport writeSettings(Camera& camera, const CameraSettings& settings,
                                       const SettingsOptions& options = {});

/// Returns what differs between a connected camera, of any model, and the settings, in the order of names. Properties
/// that the settings do not mention make no difference.
/// @throws KestrelException_Camera "CameraConnection"  the camera is not connected; what Property::getValue() throws
///     when the camera is gone
QUILL_API std::vector<SettingDifference> compareSettings(Camera& camera, const CameraSettings& settings);

/// Returns the settings as a JSON document that ends with a line break:
/// `{"format": 1, "camera": {"kind": ..., "model": ..., "serial": ...}, "properties": {NAME: VALUE, ...}}`, all values
/// texts. Bytes that are not UTF-8 become replacement characters.
QUILL_API std::string toJson(const CameraSettings& settings);
/// Reads such a document, of at most 1 MiB. Ignores further keys.
/// @throws KestrelException "SettingsInvalid"  its sentence names the place, and what is wrong there
QUILL_API CameraSettings parseSettings(const std::string& json);

} // namespace CameraInterface
