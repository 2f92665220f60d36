// SPDX-License-Identifier: Apache-2.0

// Boot images. The input is an address, a chunk size, the number of the failing step (0: none), which is a call of the
// camera in one run and a report of progress in another, and the image.

#include <memory>
#include <stdexcept>
#include <utility>

#include "Cameras/Camera.h"
#include "Support/Input.h"
#include "Utilities/BootImage.h"
#include "Utilities/Programmer.h"

namespace {

using namespace Fuzzing;
using namespace Utilities;
using CameraInterface::Camera;
using Texts = std::vector<std::string>;

struct CallFailed {};

/// A camera with flash around one address that records the loads into its RAM.
class MemoryCamera : public Camera {
public:
    /// @param image the flash holds its header, with another body
    MemoryCamera(std::uint32_t address, const Bytes& image) : m_Address(address), m_Flash(image.size(), kNotErased) {
        std::copy_n(image.begin(), std::min<std::size_t>(image.size(), 4), m_Flash.begin());
        MemoryCamera::buildFunctions();
    }

    /// Makes a call fail, counted from now on; 0: none.
    void failCall(unsigned int number) { m_CallsToFailure = number; }

    const Bytes& flash() const { return m_Flash; }
    const std::vector<std::pair<std::uint32_t, std::string>>& ramWrites() const { return m_RamWrites; }

    std::unique_ptr<Imaging::Image> getImage() override { return nullptr; }
    std::map<std::string, std::string> getCameraInfo() override { return {}; }
    std::string getSerialNumber() override { return {}; }
    std::string getModelName() override { return {}; }
    bool isCameraAlive() override { return true; }
    void connect() override {}
    void disconnect() override {}
    void suspend() override {}

protected:
    void buildProperties() override {}
    void buildFunctions() override {
        add("Erase Flash", [this](const Texts& parameters) {
            const auto range = rangeOf(parameters[0], std::stoull(parameters[1]));
            std::fill(range.first, range.second, kErased);
            return Texts{};
        });
        add("Write Flash", [this](const Texts& parameters) {
            const auto range = rangeOf(parameters[0], parameters[1].size());
            std::copy(parameters[1].begin(), parameters[1].end(), range.first);
            return Texts{};
        });
        add("Read Flash", [this](const Texts& parameters) {
            const auto range = rangeOf(parameters[0], std::stoull(parameters[1]));
            return Texts{{range.first, range.second}};
        });
        add("Write Ram", [this](const Texts& parameters) {
            m_RamWrites.emplace_back(std::stoul(parameters[0]), parameters[1]);
            return Texts{};
        });
    }

private:
    static constexpr unsigned char kNotErased = 0x5A;
    static constexpr unsigned char kErased = 0xFF;

    using Action = std::function<Texts(const Texts&)>;

    class CameraFunction : public CameraInterface::Function {
    public:
        CameraFunction(const std::string& name, Action action) : Function(name), m_Action(std::move(action)) {}

        Texts perform(Texts& parameters) override { return m_Action(parameters); }
        bool isAvailable() override { return true; }
        std::vector<CameraInterface::ParameterDescriptor> getParameters() override { return {}; }
        std::vector<CameraInterface::ParameterDescriptor> getReturnFormat() override { return {}; }

    private:
        Action m_Action;
    };

    void add(const char* name, const Action& action) {
        m_Functions.emplace(name, std::make_unique<CameraFunction>(name, [this, action](const Texts& parameters) {
                                if (m_CallsToFailure > 0 && --m_CallsToFailure == 0) {
                                    throw CallFailed{};
                                }
                                return action(parameters);
                            }));
    }

    std::pair<Bytes::iterator, Bytes::iterator> rangeOf(const std::string& addressText, std::uint64_t length) {
        const std::uint64_t address = std::stoull(addressText);
        require(address >= m_Address && address + length <= m_Address + m_Flash.size(),
                "only the image's own place is touched");
        const auto begin = m_Flash.begin() + static_cast<std::ptrdiff_t>(address - m_Address);
        return {begin, begin + static_cast<std::ptrdiff_t>(length)};
    }

    const std::uint64_t m_Address;
    Bytes m_Flash;
    std::vector<std::pair<std::uint32_t, std::string>> m_RamWrites;
    unsigned int m_CallsToFailure = 0;
};

/// A progress function that throws at the report of a number, counted from 1 (0: none).
std::function<void(double)> progress(unsigned int failingReport = 0) {
    return [last = 0.0, failingReport](double fraction) mutable {
        require(fraction >= last && fraction <= 1, "progress never decreases and is at most 1");
        last = fraction;
        if (failingReport > 0 && --failingReport == 0) {
            throw CallFailed{};
        }
    };
}

/// Four bytes, the least significant one first.
std::uint64_t wordAt(const Bytes& data, std::size_t position) {
    return data[position] | data[position + 1] << 8 | data[position + 2] << 16 |
           std::uint64_t{data[position + 3]} << 24;
}

void checkSections(const BootImage& image, Bytes data) {
    std::size_t position = 4;
    for (const BootImageSection& section : image.sections) {
        require(section.offset == position + 8 && section.length > 0 && section.length <= data.size() - section.offset,
                "a section follows the one before it and lies within the data");
        require(section.length == 4 * wordAt(data, position) && section.address == wordAt(data, position + 4),
                "a section has the length and the address of its header");
        position = section.offset + section.length;
    }
    require(image.size == position + 8 && image.size <= data.size(), "the image ends within the data");
    require(wordAt(data, position) == 0 && image.entryAddress == wordAt(data, position + 4),
            "the entry address follows the sections");
    data.resize(image.size);
    require(readBootImage(data).size == image.size, "data after the image is ignored");
    data.pop_back();
    require(isRefused<std::invalid_argument>([&] { readBootImage(data); }), "an incomplete image is refused");
}

void checkRam(const BootImage& image, const Bytes& data) {
    MemoryCamera camera(0, {});
    Programmer::writeFirmwareToRam(camera, data, progress());
    auto write = camera.ramWrites().begin();
    for (const BootImageSection& section : image.sections) {
        for (std::size_t done = 0; done < section.length; done += write->second.size(), ++write) {
            require(write != camera.ramWrites().end() && write->first == section.address + std::uint32_t(done),
                    "pieces follow each other in RAM");
            require(write->second.size() == std::min<std::size_t>(4096, section.length - done),
                    "a piece has 4096 bytes, the last one the rest");
            require(std::equal(write->second.begin(), write->second.end(),
                               data.begin() + static_cast<std::ptrdiff_t>(section.offset + done),
                               [](char one, unsigned char other) { return static_cast<unsigned char>(one) == other; }),
                    "RAM gets the section's bytes");
        }
    }
    require(write != camera.ramWrites().end() && write->first == image.entryAddress && write->second.empty() &&
                ++write == camera.ramWrites().end(),
            "the program is started at last");
}

/// Updates an earlier image with the same header. Takes the numbers of the failing call and report (0: none).
void checkFlash(const Bytes& data, std::uint32_t address, unsigned int chunkSize, unsigned int failingCall,
                unsigned int failingReport) {
    MemoryCamera camera(address, data);
    const Bytes before = camera.flash();
    const auto update = [&] {
        Programmer::writeFirmwareToFlash(camera, data, address, static_cast<unsigned int>(data.size()), chunkSize,
                                         progress(failingReport));
    };
    const bool isWritable = data.size() >= 4 && data[0] == 'C' && data[1] == 'Y' && data[3] == 0xB0 && chunkSize != 0;
    camera.failCall(failingCall);
    if (isRefused<std::invalid_argument, CallFailed>(update)) {
        require(!isWritable || failingCall + failingReport != 0, "an image is refused only with a reason");
        const bool isErased = isWritable && failingCall != 1;
        require(camera.flash() == before ||
                    (isErased && !std::equal(data.begin(), data.begin() + 4, camera.flash().begin())),
                "what is refused changes nothing, an interrupted update leaves no header");
        if (!isWritable) {
            return;
        }
        camera.failCall(0);
        failingReport = 0;
        update();
    }
    require(isWritable && camera.flash() == data, "the flash holds the image");
    camera.failCall(0);
    require(Programmer::compareFlash(camera, data, address, chunkSize, progress()), "the flash compares equal");
    Bytes other = data;
    other[(failingCall + failingReport) % other.size()] ^= 1;
    require(!Programmer::compareFlash(camera, other, address, chunkSize, progress()),
            "the flash differs from another image");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    Input input(bytes, size);
    const std::uint32_t address = input.word();
    const unsigned int chunkSize = input.byte();
    const unsigned int failing = input.byte();
    const Bytes data = input.rest();
    BootImage image;
    if (isRefused<std::invalid_argument>([&] { image = readBootImage(data); })) {
        MemoryCamera camera(0, {});
        require(isRefused<std::invalid_argument>([&] { Programmer::writeFirmwareToRam(camera, data, {}); }) &&
                    camera.ramWrites().empty(),
                "what is no image is not loaded");
    } else {
        checkSections(image, data);
        checkRam(image, data);
    }
    checkFlash(data, address, chunkSize, failing, 0);
    checkFlash(data, address, chunkSize, 0, failing);
    return 0;
}
