// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <functional>
#include <vector>

#include "../Export.h"

namespace CameraInterface {
class Camera;
}

namespace Utilities {

/// Puts new code into a camera, through its functions "Erase Flash", "Write Flash", "Read Flash", "Read Flash Status",
/// "Write Flash Status", "Write Ram" and "Jtag" alone, so that any camera that has them can be programmed.
///
/// Addresses and sizes count bytes. A progress function, where one is given, is called on the calling thread after each
/// chunk with the fraction that is done, up to 1; what it throws ends the operation and passes through. What a camera's
/// function throws passes through as well, and the flash stays as far as it was erased or written: nothing is tried
/// again. All operations block. One caller per camera at a time.
class QUILL_API Programmer {
public:
    /// Whether the flash from @p address on holds @p data; ends at the first chunk that differs. No data are equal to
    /// anything.
    /// @throws std::invalid_argument "Chunk size cannot be 0."
    static bool compareFlash(CameraInterface::Camera& camera, const std::vector<unsigned char>& data,
                             const unsigned int& address, const unsigned int& chunkSize,
                             std::function<void(double)> progress);

    /// Every byte with bit 7 as bit 0, bit 6 as bit 1 and so on.
    static std::vector<unsigned char> flipBitOrder(std::vector<unsigned char> data);

    /// Plays an XSVF file into the camera's JTAG port. Does not report whether it succeeded: see playXsvf().
    static void jtagXsvf(CameraInterface::Camera& camera, std::vector<unsigned char> data);

    /// @throws KestrelException_Function "FunctionExecution"  the camera answered nothing
    static unsigned char readFlashStatus(CameraInterface::Camera& camera, unsigned int address);
    static void writeFlashStatus(CameraInterface::Camera& camera, unsigned int address, unsigned char status);

    /// Erases as much flash as there are data, and writes them in chunks.
    /// @throws std::invalid_argument "No data provided.", "Data provided is too large." (more than @p maximumSize) or
    ///     "Chunk size cannot be 0."; the camera is untouched
    static void writeBufferToFlash(CameraInterface::Camera& camera, std::vector<unsigned char> data,
                                   const unsigned int& address, const unsigned int& maximumSize,
                                   const unsigned int& chunkSize, std::function<void(double)> progress);

    /// The same with a boot image, whose four header bytes are written last: an update that was interrupted leaves no
    /// image that the camera would start.
    /// @throws std::invalid_argument  as writeBufferToFlash(), or "Invalid image file.": no boot image's header
    static void writeFirmwareToFlash(CameraInterface::Camera& camera, std::vector<unsigned char> data,
                                     const unsigned int& address, const unsigned int& maximumSize,
                                     const unsigned int& chunkSize, std::function<void(double)> progress);

    /// Loads a boot image into RAM in chunks of at most 4096 bytes and starts it. The camera may leave the bus as it
    /// starts, so that a failure of the start alone is not reported.
    /// @throws std::invalid_argument "No data provided." or "Invalid image file." (see readBootImage()); the camera is
    ///     untouched
    static void writeFirmwareToRam(CameraInterface::Camera& camera, std::vector<unsigned char> data,
                                   std::function<void(double)> progress);

private:
    static bool isValidFirmware(const std::vector<unsigned char>& data);
};

} // namespace Utilities
