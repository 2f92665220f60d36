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

/// Why an XSVF file was not played to its end; the numbers are those that players of the format use.
enum class XsvfError {
    None = 0,
    TdoMismatch = 2,      ///< the device returned other bits than expected
    RetriesExhausted = 3, ///< a mismatch in every repetition that the file allows
    IllegalCommand = 4,   ///< or the data ended before the command that completes the file: XsvfReport::dataEnded
    IllegalState = 5,     ///< a TAP state that does not exist or cannot be reached from the present one
    DataOverflow = 6      ///< a shift of more than 7000 bytes
};

/// The result of a play.
struct XsvfReport {
    bool opened = false; ///< the camera gave access to its JTAG port, or there was no camera
    XsvfError error = XsvfError::None;
    std::uint32_t commandCount = 0; ///< commands read, including one that failed
    std::size_t commandOffset = 0;  ///< offset in the file of the last command read
    bool dataEnded = false;         ///< the data ended before the command that completes the file
    /// Operations on the port, including opening and closing it, that the camera refused or that did not reach it. They
    /// had no effect.
    std::uint64_t failedTransfers = 0;
    /// Number of the command at which the first operation failed; 0: before the first command.
    std::uint32_t failedCommand = 0;
    std::size_t failedOffset = 0; ///< offset of that command in the file
    bool cameraGone = false;      ///< a transfer failed because the camera is gone; the play ended there
    /// Bits of the last comparison that failed: as long as the shift, most significant byte first, as in the file. Only
    /// the bits that the mask selects were compared; an empty mask selects all.
    std::vector<unsigned char> expectedTdo, capturedTdo, tdoMask;

    /// Whether the file ran to its XCOMPLETE command without error and all of it reached the camera.
    bool succeeded() const { return opened && error == XsvfError::None && failedTransfers == 0; }
};

/// Plays an XSVF file, the compact binary form of a boundary-scan programming file (SVF), into the JTAG port of a
/// camera.
///
/// One play at a time in the process: a second caller waits. JTAG access is always closed at the end; the TAP stays in
/// the state in which the file ended. A damaged file ends with an error in the report, never with an exception.
///
/// @param handle the camera SDK's handle of an open camera; null plays without a device, as if it returned zeros
/// @return whether the file ran to its XCOMPLETE command without error; failed transfers are not considered
/// @throws KestrelException "WouldWaitForItself"  called by the progress function of another play
QUILL_API bool playXsvf(void* handle, std::vector<unsigned char> data);

/// The same with a report. Ends soon after the camera is gone. The progress function is called on the calling thread
/// with the fraction of the file that has been read, about a thousand times in all, and repeatedly during waits and
/// retries; an exception that it throws ends the play and passes through.
/// @return XsvfReport::succeeded()
QUILL_API bool playXsvf(void* handle, std::vector<unsigned char> data, XsvfReport& report,
                        const std::function<void(double)>& progress = {});

/// The same for a connected camera of the maker's camera SDK.
/// @throws KestrelException_Function "FunctionUnsupported"  any other camera: its JTAG port cannot be reached;
///     "FunctionExecution"  the camera is not open
QUILL_API bool playXsvf(CameraInterface::Camera& camera, std::vector<unsigned char> data, XsvfReport& report,
                        const std::function<void(double)>& progress = {});

/// Whether the JTAG port of a camera can be reached, connected or not: only for cameras of the maker's camera SDK.
QUILL_API bool canPlayXsvf(const CameraInterface::Camera& camera);

/// Reads an XSVF file to its end without a device; every comparison counts as fulfilled.
QUILL_API XsvfReport checkXsvf(std::vector<unsigned char> data);

} // namespace Utilities
