// SPDX-License-Identifier: Apache-2.0

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <memory>
#include <stdexcept>
#include <string>

#include <malloc.h>

#include <benchmark/benchmark.h>

#include "Cameras/SimulatedCamera/SimulatedCamera.h"
#include "Claims.h"
#include "Functions/Simulated/SimulatedFunctions.h"
#include "Utilities/Programmer.h"
#include "Xsvf/XsvfPlay.h"

namespace Benchmarks {

namespace {

using namespace CameraInterface;
using namespace Utilities;
using Bytes = std::vector<unsigned char>;

constexpr double kPlayLimit = 1.25;
/// A second copy of the image would take 2.
constexpr double kMemoryLimit = 1.01;
constexpr double kFlashLimit = 1.2;

// --- XSVF ---

constexpr std::uint8_t kControlTarget = 0x19;
constexpr std::uint8_t kShiftTarget = 0x1A;
constexpr std::size_t kTransferBytes = 256; // the maximum of one transfer
constexpr std::uint32_t kTransferBits = 8 * kTransferBytes;
constexpr std::uint32_t kNoTdo = 0x4000;

/// A device that counts calls and returns zeros.
class CountingDevice {
public:
    JtagTransport transport() { return {this, write, read}; }
    std::uint64_t calls() const { return m_Calls; }

private:
    static std::uint32_t write(void* handle, std::uint8_t, std::uint32_t, std::uint32_t, const std::uint8_t*) {
        ++static_cast<CountingDevice*>(handle)->m_Calls;
        return 1;
    }
    static std::uint32_t read(void* handle, std::uint8_t, std::uint32_t, std::uint32_t length, std::uint8_t* buffer) {
        ++static_cast<CountingDevice*>(handle)->m_Calls;
        std::memset(buffer, 0, length);
        return 1;
    }

    std::uint64_t m_Calls = 0;
};

/// A device that records the control words.
class RecordingDevice {
public:
    JtagTransport transport() { return {this, write, nullptr}; }

    std::vector<std::uint32_t> words;

private:
    static std::uint32_t write(void* handle, std::uint8_t, std::uint32_t value, std::uint32_t, const std::uint8_t*) {
        static_cast<RecordingDevice*>(handle)->words.push_back(value);
        return 1;
    }
};

void append(Bytes& file, const Bytes& bytes) {
    file.insert(file.end(), bytes.begin(), bytes.end());
}

Bytes repeated(const Bytes& piece, int times) {
    Bytes file;
    for (int count = 0; count < times; ++count) {
        append(file, piece);
    }
    file.push_back(0); // XCOMPLETE
    return file;
}

void play(CountingDevice& device, const Bytes& file) {
    XsvfReport report;
    if (!playXsvf(device.transport(), file, report, {})) {
        throw std::logic_error("The file could not be played.");
    }
}

std::uint64_t callsOf(const Bytes& file) {
    CountingDevice device;
    play(device, file);
    return device.calls();
}

/// Plays a file into a device of its own.
Variant playing(const Bytes& file) {
    return {[file, device = std::make_shared<CountingDevice>()] { play(*device, file); },
            static_cast<double>(callsOf(file))};
}

/// Opaque to the compiler, so that the loop calls through pointers, as the player does.
JtagTransport opaque(JtagTransport transport) {
    benchmark::DoNotOptimize(transport);
    return transport;
}

/// A file that repeats one piece, against a loop that writes the piece's control words as often.
std::pair<Variant, Variant> controlWords(const Bytes& piece, int times) {
    RecordingDevice once, twice;
    XsvfReport report;
    playXsvf(once.transport(), repeated(piece, 1), report, {});
    playXsvf(twice.transport(), repeated(piece, 2), report, {});
    // After the words of the first piece, before the one that closes the port.
    const std::vector<std::uint32_t> words(twice.words.begin() + static_cast<std::ptrdiff_t>(once.words.size() - 1),
                                           twice.words.end() - 1);
    return {{[words, times, device = std::make_shared<CountingDevice>()] {
                 const JtagTransport transport = opaque(device->transport());
                 for (int count = 0; count < times; ++count) {
                     for (const std::uint32_t word : words) {
                         transport.registerWrite(transport.handle, kControlTarget, word, 0, nullptr);
                     }
                 }
             },
             static_cast<double>(words.size()) * times},
            playing(repeated(piece, times))};
}

/// Walks from state to state through the data and the instruction column, including the pause states.
std::pair<Variant, Variant> walking() {
    return controlWords({0x12, 6, 0x12, 4, 0x12, 1, 0x12, 13, 0x12, 11, 0x12, 1}, 5000);
}

std::pair<Variant, Variant> waiting() {
    return controlWords({0x17, 1, 1, 0, 0, 0x40, 0}, 2000); // 64 words
}

constexpr int kTransfers = 2000;

/// A file of shifts of one transfer each, from a command and the number of values that follow it.
Bytes shiftFile(unsigned char command, std::size_t values) {
    Bytes value(kTransferBytes * values);
    for (std::size_t index = 0; index < kTransferBytes; ++index) {
        value[index] = static_cast<unsigned char>(index * 7);
    }
    Bytes piece{command};
    append(piece, value);
    Bytes file{0x08, 0, 0, 0x08, 0}; // 2048 bits
    append(file, repeated(piece, kTransfers));
    return file;
}

/// Pieces of an endless shift without captured bits: the floor puts each into shift order and sends it.
std::pair<Variant, Variant> sending() {
    const Bytes file = shiftFile(0x0C, 1);
    const Variant ours = playing(file);
    return {{[file, device = std::make_shared<CountingDevice>()] {
                 const JtagTransport transport = opaque(device->transport());
                 std::array<std::uint8_t, kTransferBytes> bytes{};
                 for (auto value = file.begin() + 6; value < file.end() - 1; value += kTransferBytes + 1) {
                     std::reverse_copy(value, value + kTransferBytes, bytes.begin());
                     transport.registerWrite(transport.handle, kShiftTarget, kTransferBits | kNoTdo, kTransferBytes,
                                             bytes.data());
                 }
             },
             ours.pieces},
            ours};
}

/// The same with captured bits that are compared: the floor puts them back into the file's order.
std::pair<Variant, Variant> exchanging() {
    const Bytes file = shiftFile(0x0F, 2);
    const Variant ours = playing(file);
    return {
        {[file, device = std::make_shared<CountingDevice>()] {
             const JtagTransport transport = opaque(device->transport());
             std::array<std::uint8_t, kTransferBytes> bytes{};
             std::array<std::uint8_t, kTransferBytes> captured{};
             for (auto value = file.begin() + 6; value < file.end() - 1; value += 2 * kTransferBytes + 1) {
                 std::reverse_copy(value, value + kTransferBytes, bytes.begin());
                 transport.registerWrite(transport.handle, kShiftTarget, kTransferBits, kTransferBytes, bytes.data());
                 transport.registerRead(transport.handle, kShiftTarget, kTransferBits, kTransferBytes, bytes.data());
                 std::reverse_copy(bytes.begin(), bytes.end(), captured.begin());
                 benchmark::DoNotOptimize(std::memcmp(captured.data(), &*value + kTransferBytes, kTransferBytes));
             }
         },
         ours.pieces},
        ours};
}

// --- Flash ---

constexpr unsigned int kChunkBytes = 4096;
constexpr unsigned int kImageBytes = 256 * 1024; // a camera's firmware
constexpr unsigned int kAddress = 0x100000;

/// A simulated camera that needs no camera list for its flash functions.
class FlashCamera : public SimulatedAdapter::SimulatedCamera {
public:
    FlashCamera() : SimulatedCamera("1", "Flash") { FlashCamera::buildFunctions(); }

protected:
    void buildFunctions() override {
        for (const char* name : {"Erase Flash", "Write Flash", "Read Flash"}) {
            m_Functions.emplace(name, SimulatedAdapter::makeSimulatedFunction(this, {name, {}, {}}));
        }
    }
};

Bytes image(std::size_t size) {
    Bytes bytes(size);
    for (std::size_t index = 0; index < size; ++index) {
        bytes[index] = static_cast<unsigned char>(index * 31 + index / 251);
    }
    std::copy_n("CY\x1C\xB0", 4, bytes.begin());
    return bytes;
}

using Parameters = std::vector<std::string>;

/// A camera that measures the memory in use during each flash function.
class WatchingCamera : public FlashCamera {
public:
    WatchingCamera() {
        for (const char* name : {"Erase Flash", "Write Flash"}) {
            m_Functions[name] = std::make_unique<WatchingFunction>(name, m_MostBytes);
        }
    }
    std::size_t mostBytesInUse() const { return m_MostBytes; }

    static std::size_t bytesInUse() {
        const struct mallinfo2 memory = mallinfo2();
        return memory.uordblks + memory.hblkhd;
    }

private:
    class WatchingFunction : public Function {
    public:
        WatchingFunction(const std::string& name, std::size_t& mostBytes) : Function(name), m_MostBytes(mostBytes) {}

        std::vector<std::string> perform(std::vector<std::string>&) override {
            m_MostBytes = std::max(m_MostBytes, bytesInUse());
            return {};
        }
        bool isAvailable() override { return true; }
        std::vector<ParameterDescriptor> getParameters() override { return {}; }
        std::vector<ParameterDescriptor> getReturnFormat() override { return {}; }

    private:
        std::size_t& m_MostBytes;
    };

    std::size_t m_MostBytes = 0;
};

/// The peak memory of an update, including the image passed to it, as a multiple of the image.
double memoryOfUpdate() {
    constexpr unsigned int kLargeImageBytes = 16U << 20;
    WatchingCamera camera;
    const std::size_t before = WatchingCamera::bytesInUse();
    Programmer::writeFirmwareToFlash(camera, image(kLargeImageBytes), 0, kLargeImageBytes, kChunkBytes, {});
    return static_cast<double>(camera.mostBytesInUse() - before) / kLargeImageBytes;
}

/// The parameters of each chunk's call: its address, and the result of @p second for its offset in the image.
template <typename Second>
std::vector<Parameters> chunkParameters(Second second) {
    std::vector<Parameters> parameters;
    for (unsigned int offset = 0; offset < kImageBytes; offset += kChunkBytes) {
        parameters.push_back({std::to_string(kAddress + offset), second(offset)});
    }
    return parameters;
}

/// The interface takes an image by value: the floor includes the caller's copy.
[[gnu::noinline]] void handOver(Bytes data) { // NOLINT(performance-unnecessary-value-param)
    benchmark::DoNotOptimize(data.data());
}

std::pair<Variant, Variant> writingFlash() {
    const auto camera = std::make_shared<FlashCamera>();
    const Bytes data = image(kImageBytes);
    auto writes = chunkParameters(
        [&](unsigned int offset) { return std::string(data.begin() + offset, data.begin() + offset + kChunkBytes); });
    Parameters erase{std::to_string(kAddress), std::to_string(kImageBytes)};
    return {
        {[camera, data, erase, writes]() mutable {
            handOver(data);
            camera->perform("Erase Flash", erase);
            for (Parameters& write : writes) {
                camera->perform("Write Flash", write);
            }
        }},
        {[camera, data] { Programmer::writeBufferToFlash(*camera, data, kAddress, kImageBytes, kChunkBytes, {}); }}};
}

std::pair<Variant, Variant> comparingFlash() {
    const auto camera = std::make_shared<FlashCamera>();
    const Bytes data = image(kImageBytes);
    Programmer::writeBufferToFlash(*camera, data, kAddress, kImageBytes, kChunkBytes, {});
    auto reads = chunkParameters([](unsigned int) { return std::to_string(kChunkBytes); });
    return {{[camera, data, reads]() mutable {
                auto chunk = data.begin();
                for (Parameters& read : reads) {
                    const auto results = camera->perform("Read Flash", read);
                    benchmark::DoNotOptimize(std::memcmp(results.front().data(), &*chunk, kChunkBytes));
                    chunk += kChunkBytes;
                }
            }},
            {[camera, data] {
                if (!Programmer::compareFlash(*camera, data, kAddress, kChunkBytes, {})) {
                    throw std::logic_error("The flash holds something else.");
                }
            }}};
}

} // namespace

std::vector<Claim> firmwareClaims(Scope) {
    return {{"P16", "XSVF, TAP states, per control word", "bare loop", kPlayLimit, walking},
            {"P16", "XSVF, waits, per control word", "bare loop", kPlayLimit, waiting},
            {"P16", "XSVF, 2048 bits sent", "bare loop", kPlayLimit, sending},
            {"P16", "XSVF, 2048 bits exchanged, per call", "bare loop", kPlayLimit, exchanging},
            {"P18", "flash written in 4 KiB chunks, 256 KiB", "function calls", kFlashLimit, writingFlash},
            {"P18", "flash compared in 4 KiB chunks, 256 KiB", "calls, memcmp", kFlashLimit, comparingFlash},
            countingClaim("P24", "memory of a 16 MiB update", "x image", kMemoryLimit, memoryOfUpdate)};
}

} // namespace Benchmarks
