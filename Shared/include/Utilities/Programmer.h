// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <functional>
#include <vector>

#include "../Export.h"

namespace CameraInterface {
class Camera;
}

/// Work on a camera's flash and JTAG port, and what the library itself is made with.
namespace Utilities {

/// Programs a camera. Uses only its functions "Erase Flash", "Write Flash", "Read Flash", "Read Flash Status", "Write
/// Flash Status", "Write Ram" and "Jtag", so that any camera that has them can be programmed.
///
/// Addresses and sizes count bytes. A progress function, if given, is called on the calling thread after each chunk
/// with the fraction that is done, up to 1; an exception that it throws ends the operation and passes through.
/// Exceptions of the camera's functions pass through as well; the flash stays partly erased or written, and nothing is
/// retried. All operations block. One caller per camera at a time.
class QUILL_API Programmer {
public:
    /// Whether the flash from @p address on holds @p data. Ends at the first chunk that differs. Empty data always
    /// matches.
    /// @throws std::invalid_argument "Chunk size cannot be 0."
    static bool compareFlash(CameraInterface::Camera& camera, const std::vector<unsigned char>& data,
                             const unsigned int& address, const unsigned int& chunkSize,
                             std::function<void(double)> progress);

    /// Reverses the bits of every byte: bit 7 becomes bit 0, bit 6 becomes bit 1 and so on.
    static std::vector<unsigned char> flipBitOrder(std::vector<unsigned char> data);

    /// Plays an XSVF file into the camera's JTAG port. Does not report whether it succeeded: see playXsvf().
    static void jtagXsvf(CameraInterface::Camera& camera, std::vector<unsigned char> data);

    /// @throws KestrelException_Function "FunctionExecution"  the camera returned nothing
    static unsigned char readFlashStatus(CameraInterface::Camera& camera, unsigned int address);
    static void writeFlashStatus(CameraInterface::Camera& camera, unsigned int address, unsigned char status);

    /// Erases as many bytes of flash as @p data has, and writes the data in chunks.
    /// @throws std::invalid_argument "No data provided.", "Data provided is too large." (more than @p maximumSize) or
    ///     "Chunk size cannot be 0."; the camera is untouched
    static void writeBufferToFlash(CameraInterface::Camera& camera, std::vector<unsigned char> data,
                                   const unsigned int& address, const unsigned int& maximumSize,
                                   const unsigned int& chunkSize, std::function<void(double)> progress);

    /// The same for a boot image, whose four header bytes are written last: an interrupted update leaves no image that
    /// the camera would start.
    /// @throws std::invalid_argument  as writeBufferToFlash(), or "Invalid image file.": the header is not that of a
    ///     boot image
    static void writeFirmwareToFlash(CameraInterface::Camera& camera, std::vector<unsigned char> data,
                                     const unsigned int& address, const unsigned int& maximumSize,
                                     const unsigned int& chunkSize, std::function<void(double)> progress);

    /// Loads a boot image into RAM in chunks of at most 4096 bytes and starts it. A failure of the start itself is not
    /// reported, because the camera may leave the bus as it starts.
    /// @throws std::invalid_argument "No data provided." or "Invalid image file." (see readBootImage()); the camera is
    ///     untouched
    static void writeFirmwareToRam(CameraInterface::Camera& camera, std::vector<unsigned char> data,
                                   std::function<void(double)> progress);

private:
    static bool isValidFirmware(const std::vector<unsigned char>& data);
};

} // namespace Utilities
