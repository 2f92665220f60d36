// SPDX-License-Identifier: Apache-2.0

#include "Utilities/Programmer.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <stdexcept>
#include <string>
#include <string_view>

#include "Cameras/Camera.h"
#include "Exceptions/Raise.h"
#include "Programmer/BootImageHeader.h"
#include "Utilities/BootImage.h"

namespace Utilities {

using CameraInterface::Camera;

namespace {

using Bytes = std::vector<unsigned char>;
using Progress = std::function<void(double)>;

std::vector<std::string> perform(Camera& camera, const char* function, std::vector<std::string> parameters) {
    return camera.perform(function, parameters);
}

/// Bytes as the characters that functions take and return.
const char* characters(const unsigned char* bytes) {
    return reinterpret_cast<const char*>(bytes);
}

/// A function of an address and a second parameter, performed for one chunk after the other. Reuses the memory of the
/// parameters.
class ChunkFunction {
public:
    ChunkFunction(Camera& camera, const char* name) : m_Camera(camera), m_Name(name) {}

    /// The camera's function refuses an address beyond 32 bits.
    std::vector<std::string> perform(std::uint64_t address, std::string_view second) {
        m_Parameters.resize(2); // the function may have changed them
        m_Parameters[0] = std::to_string(address);
        m_Parameters[1] = second;
        return m_Camera.perform(m_Name, m_Parameters);
    }
    std::vector<std::string> perform(std::uint64_t address, const Bytes& data, std::size_t offset, std::size_t length) {
        return perform(address, {characters(data.data() + offset), length});
    }

private:
    Camera& m_Camera;
    const std::string m_Name;
    std::vector<std::string> m_Parameters;
};

void eraseFlash(Camera& camera, std::size_t length, unsigned int address) {
    perform(camera, "Erase Flash", {std::to_string(address), std::to_string(length)});
}

void requireSize(const Bytes& data, unsigned int maximumSize) {
    if (data.size() > maximumSize) {
        throw std::invalid_argument("Data provided is too large.");
    }
}

void requireChunks(unsigned int chunkSize) {
    if (chunkSize == 0) {
        throw std::invalid_argument("Chunk size cannot be 0.");
    }
}

/// Processes the bytes from @p offset on in chunks, and reports the fraction done after each. Ends early if @p process
/// returns false.
/// @return whether it reached the end
template <typename Process>
bool forEachChunk(std::size_t offset, std::size_t length, std::size_t chunkSize, const Progress& progress,
                  Process process) {
    while (offset < length) {
        const std::size_t chunk = std::min(chunkSize, length - offset);
        if (!process(offset, chunk)) {
            return false;
        }
        offset += chunk;
        if (progress) {
            progress(static_cast<double>(offset) / static_cast<double>(length));
        }
    }
    return true;
}

void writeChunks(Camera& camera, const Bytes& data, std::size_t offset, unsigned int address, unsigned int chunkSize,
                 const Progress& progress) {
    ChunkFunction writeFlash(camera, "Write Flash");
    forEachChunk(offset, data.size(), chunkSize, progress, [&](std::size_t place, std::size_t chunk) {
        writeFlash.perform(std::uint64_t{address} + place, data, place, chunk);
        return true;
    });
}

} // namespace

// NOLINTBEGIN(performance-unnecessary-value-param): the interface takes images and progress functions so

bool Programmer::compareFlash(Camera& camera, const Bytes& data, const unsigned int& address,
                              const unsigned int& chunkSize, Progress progress) {
    if (data.empty()) {
        return true;
    }
    requireChunks(chunkSize);
    ChunkFunction readFlash(camera, "Read Flash");
    return forEachChunk(0, data.size(), chunkSize, progress, [&](std::size_t offset, std::size_t chunk) {
        const auto results = readFlash.perform(std::uint64_t{address} + offset, std::to_string(chunk));
        return !results.empty() && results.front().size() == chunk &&
               std::memcmp(results.front().data(), data.data() + offset, chunk) == 0;
    });
}

Bytes Programmer::flipBitOrder(Bytes data) {
    for (unsigned char& byte : data) {
        unsigned int flipped = 0;
        for (unsigned int bit = 0; bit < 8; ++bit) {
            flipped |= (byte >> bit & 1U) << (7 - bit);
        }
        byte = static_cast<unsigned char>(flipped);
    }
    return data;
}

bool Programmer::isValidFirmware(const Bytes& data) {
    return hasBootImageHeader(data);
}

void Programmer::jtagXsvf(Camera& camera, Bytes data) {
    perform(camera, "Jtag", {std::string(characters(data.data()), data.size())});
}

unsigned char Programmer::readFlashStatus(Camera& camera, unsigned int address) {
    constexpr const char* kFunction = "Read Flash Status";
    const auto results = perform(camera, kFunction, {std::to_string(address)});
    if (results.empty() || results.front().empty()) {
        using namespace KestrelExceptions;
        raise<KestrelException_Function>(QUILL_HERE, Errors::kFunctionExecution, kFunction);
    }
    return static_cast<unsigned char>(results.front().front());
}

void Programmer::writeFlashStatus(Camera& camera, unsigned int address, unsigned char status) {
    perform(camera, "Write Flash Status", {std::to_string(address), std::string(1, static_cast<char>(status))});
}

void Programmer::writeBufferToFlash(Camera& camera, Bytes data, const unsigned int& address,
                                    const unsigned int& maximumSize, const unsigned int& chunkSize, Progress progress) {
    requireData(data);
    requireSize(data, maximumSize);
    requireChunks(chunkSize);
    eraseFlash(camera, data.size(), address);
    writeChunks(camera, data, 0, address, chunkSize, progress);
}

void Programmer::writeFirmwareToFlash(Camera& camera, Bytes data, const unsigned int& address,
                                      const unsigned int& maximumSize, const unsigned int& chunkSize,
                                      Progress progress) {
    requireData(data);
    requireSize(data, maximumSize);
    requireBootImage(isValidFirmware(data));
    requireChunks(chunkSize);
    eraseFlash(camera, data.size(), address);
    writeChunks(camera, data, kBootImageHeaderBytes, address, chunkSize, progress);
    ChunkFunction(camera, "Write Flash").perform(address, data, 0, kBootImageHeaderBytes);
}

void Programmer::writeFirmwareToRam(Camera& camera, Bytes data, Progress progress) {
    constexpr std::size_t kChunkBytes = 4096;
    const BootImage image = readBootImage(data);
    ChunkFunction writeRam(camera, "Write Ram");
    for (const BootImageSection& section : image.sections) {
        for (std::size_t done = 0; done < section.length;) {
            const std::size_t chunk = std::min(kChunkBytes, section.length - done);
            const std::uint32_t address = section.address + static_cast<std::uint32_t>(done);
            writeRam.perform(address, data, section.offset + done, chunk);
            done += chunk;
            if (progress) {
                progress(static_cast<double>(section.offset + done) / static_cast<double>(data.size()));
            }
        }
    }
    try {
        writeRam.perform(image.entryAddress, "");
    } catch (const KestrelExceptions::KestrelException&) {
        // The camera may leave the bus as it starts the program.
    }
}

// NOLINTEND(performance-unnecessary-value-param)

} // namespace Utilities
