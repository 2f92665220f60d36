// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <vector>

#include "../Export.h"

namespace CameraInterface {
class Camera;
}

namespace Utilities {

/// Why an XSVF file was not played to its end; the numbers are those of the format's players.
enum class XsvfError {
    None = 0,
    TdoMismatch = 2,      ///< the device answered other bits than expected
    RetriesExhausted = 3, ///< and went on doing so as often as the file allows
    IllegalCommand = 4,   ///< or the data ended without the command that completes the file: XsvfReport::dataEnded
    IllegalState = 5,     ///< a TAP state that does not exist or cannot be reached from the present one
    DataOverflow = 6      ///< a shift of more than 7000 bytes
};

/// What became of a play.
struct XsvfReport {
    bool opened = false; ///< the camera gave access to its JTAG port, or there was no camera
    XsvfError error = XsvfError::None;
    std::uint32_t commandCount = 0; ///< commands read, the one that failed included
    std::size_t commandOffset = 0;  ///< in the file, of the last command read
    bool dataEnded = false;         ///< no command was left, and none had completed the file
    /// Operations on the port that the camera refused, or that did not reach it: what they should have done was not
    /// done. Opening and closing are among them.
    std::uint64_t failedTransfers = 0;
    /// Number of the command at which the first one failed; 0: before the first command.
    std::uint32_t failedCommand = 0;
    std::size_t failedOffset = 0; ///< in the file, of that command
    bool cameraGone = false;      ///< a transfer failed because the camera is gone; the play ended there
    /// Of the last comparison that failed: as long as the shift, most significant byte first, as in the file. Only the
    /// bits that the mask selects were compared; an empty mask selects all.
    std::vector<unsigned char> expectedTdo, capturedTdo, tdoMask;

    /// The file ran to its XCOMPLETE command without error, and all of it reached the camera.
    bool succeeded() const { return opened && error == XsvfError::None && failedTransfers == 0; }
};

/// Plays an XSVF file, the compact binary form of a boundary-scan programming file (SVF), into the JTAG port of a
/// camera.
///
/// One play at a time in the process: a second caller waits. JTAG access is closed whatever happens; the TAP stays in
/// the state in which the file ended. Damaged files end with an error of the report, never with an exception.
///
/// @param handle the camera SDK's handle of an open camera; null plays against no device, which answers zeros
/// @return whether the file ran to its XCOMPLETE command without error; transfers that fail are not looked at
/// @throws KestrelException "WouldWaitForItself"  called by the progress function of another play
QUILL_API bool playXsvf(void* handle, std::vector<unsigned char> data);

/// The same, and reports what happened. Ends soon after the camera is gone. The progress function is called on the
/// calling thread with the fraction of the file that has been read, about a thousand times in all, and again and again
/// during waits and retries; what it throws ends the play and passes through.
/// @return XsvfReport::succeeded()
QUILL_API bool playXsvf(void* handle, std::vector<unsigned char> data, XsvfReport& report,
                        const std::function<void(double)>& progress = {});

/// The same for a connected camera of the maker's camera SDK.
/// @throws KestrelException_Function "FunctionUnsupported"  another camera, whose JTAG port cannot be reached;
///     "FunctionExecution"  the camera is not open
QUILL_API bool playXsvf(CameraInterface::Camera& camera, std::vector<unsigned char> data, XsvfReport& report,
                        const std::function<void(double)>& progress = {});

/// Whether the JTAG port of a camera, connected or not, can be reached: only that of a camera of the maker's camera
/// SDK.
QUILL_API bool canPlayXsvf(const CameraInterface::Camera& camera);

/// Reads an XSVF file to its end without a device, every comparison taken for fulfilled.
QUILL_API XsvfReport checkXsvf(std::vector<unsigned char> data);

} // namespace Utilities
