// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <memory>
#include <mutex>

#include "Sensor/ColorFilter.h"
#include "Sensor/Illumination.h"

namespace SoftwareDevices {

/// The settings with which one frame is taken.
struct Exposure {
    float milliseconds = 0;
    float gain = 1;
    std::array<float, kFilterCount> filterGains{1, 1, 1, 1}; ///< by Filter
    float blackLevel = 0;                                    ///< in sample values
    float gamma = 1; ///< a sample is proportional to light to the power of 1 / gamma

    bool operator==(const Exposure& other) const {
        return milliseconds == other.milliseconds && gain == other.gain && filterGains == other.filterGains &&
               blackLevel == other.blackLevel && gamma == other.gamma;
    }
};

/// The sample and noise that one light value gives.
struct alignas(std::uint32_t) Response {
    std::uint16_t sample;
    std::int16_t noise; ///< standard deviation, in sixteenths of a sample value
};
using Responses = std::vector<Response>; ///< by light

/// Turns the scene into frames. Thread-safe. The same seed, frame number, scene, format and exposure give the same
/// bytes.
class Sensor {
public:
    explicit Sensor(const DeviceDescription& description);

    void present(const Scene& scene);

    /// Computes what all frames of these settings share, and keeps it for the next of them.
    void prepare(const ORVEX_FRAME_FORMAT& format, const Exposure& exposure);

    /// @param buffer  room for the format's image bytes
    void takeFrame(const ORVEX_FRAME_FORMAT& format, const Exposure& exposure, std::uint64_t frameNumber,
                   std::uint8_t* buffer);

private:
    struct Transfer {
        Exposure exposure;
        std::array<std::shared_ptr<const Responses>, kFilterCount> responses; ///< by filter
    };

    std::shared_ptr<const Illumination> illumination(const ORVEX_FRAME_FORMAT& format);
    std::shared_ptr<const Transfer> transfer(const Exposure& exposure);
    std::shared_ptr<const Responses> respond(const Exposure& exposure, float filterGain) const;
    void takeRaw(const FrameGeometry& geometry, const Illumination& illumination, const Transfer& transfer,
                 std::uint64_t frameNumber, std::uint8_t* buffer) const;

    const DeviceDescription& m_Description; ///< of the hardware that owns this sensor
    const FilterCell m_Cell;

    std::mutex m_Mutex;                                 ///< guards the following members; held while they are computed
    std::shared_ptr<const Scene> m_Scene;               ///< null: the default scene
    ORVEX_FRAME_FORMAT m_IlluminatedFormat{};           ///< of m_Illumination
    std::shared_ptr<const Illumination> m_Illumination; ///< of the last frame, reused for the next
    std::shared_ptr<const Transfer> m_Transfer;         ///< likewise
};

} // namespace SoftwareDevices
