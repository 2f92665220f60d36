// SPDX-License-Identifier: Apache-2.0

#include "Sensor/Sensor.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <utility>

#include "Sensor/BayerConversion.h"

namespace SoftwareDevices {

namespace {

constexpr float kFullWell = 10000; // electrons
constexpr float kReadNoise = 6;    // electrons

constexpr std::size_t kNoiseCount = 1u << 16;
constexpr int kNoiseDeviation = 256;

std::uint64_t scramble(std::uint64_t value) {
    value = (value ^ value >> 30) * 0xBF58476D1CE4E5B9u;
    value = (value ^ value >> 27) * 0x94D049BB133111EBu;
    return value ^ value >> 31;
}

/// Normally distributed numbers with standard deviation kNoiseDeviation. Never destroyed: frames may be taken while the
/// process exits.
const std::vector<std::int16_t>& noiseTable() {
    static const auto& table = *new std::vector<std::int16_t>([] {
        std::vector<std::int16_t> noise;
        noise.reserve(kNoiseCount);
        for (std::uint64_t i = 0; i < kNoiseCount; ++i) {
            int sum = -12 * 128; // twelve uniform numbers of 0 .. 255: deviation 256, approximately normal
            for (std::uint64_t j = 0; j < 12; ++j) {
                sum += static_cast<int>(scramble(i * 12 + j + 1) & 0xFF);
            }
            noise.push_back(static_cast<std::int16_t>(sum));
        }
        return noise;
    }());
    return table;
}

std::shared_ptr<const Scene> sharedDefaultScene() {
    static const auto& scene = *new std::shared_ptr<const Scene>(std::make_shared<Scene>(defaultScene()));
    return scene;
}

bool isSame(const ORVEX_FRAME_FORMAT& a, const ORVEX_FRAME_FORMAT& b) {
    ORVEX_FRAME_FORMAT sameLayout = b; // the light is independent of the pixel format
    sameLayout.pixelFormat = a.pixelFormat;
    return std::memcmp(&a, &sameLayout, sizeof a) == 0;
}

} // namespace

Sensor::Sensor(const DeviceDescription& description)
    : m_Description(description), m_Cell(filterCell(description.colorFormat)) {}

void Sensor::present(const Scene& scene) {
    auto presented = std::make_shared<const Scene>(scene);
    const std::lock_guard<std::mutex> lock(m_Mutex);
    m_Scene = std::move(presented);
    m_Illumination = nullptr;
}

void Sensor::takeFrame(const ORVEX_FRAME_FORMAT& format, const Exposure& exposure, std::uint64_t frameNumber,
                       std::uint8_t* buffer) {
    FrameGeometry geometry = frameGeometry(m_Description, format);
    const auto light = illumination(format);
    const auto response = transfer(exposure);
    if (geometry.layout.channels == 1) {
        return takeRaw(geometry, *light, *response, frameNumber, buffer);
    }

    // Colour that the camera computes.
    const PixelLayout delivered = geometry.layout;
    geometry.layout.channels = 1;
    std::vector<std::uint8_t> raw(geometry.imageBytes());
    takeRaw(geometry, *light, *response, frameNumber, raw.data());
    Development development;
    development.demosaic = m_Description.colorFormat == ColorFormat::MONO ? Demosaic::None : Demosaic::HighQuality;
    develop(rawFrame(m_Description, raw.data(), geometry.width, geometry.height, delivered.bytesPerSample), buffer,
            delivered.channels, development);
}

std::shared_ptr<const Illumination> Sensor::illumination(const ORVEX_FRAME_FORMAT& format) {
    const std::lock_guard<std::mutex> lock(m_Mutex);
    if (!m_Illumination || !isSame(format, m_IlluminatedFormat)) {
        if (!m_Scene) {
            m_Scene = sharedDefaultScene();
        }
        m_Illumination = std::make_shared<const Illumination>(illuminate(m_Description, *m_Scene, format));
        m_IlluminatedFormat = format;
    }
    return m_Illumination;
}

std::shared_ptr<const Sensor::Transfer> Sensor::transfer(const Exposure& exposure) {
    const std::lock_guard<std::mutex> lock(m_Mutex);
    if (m_Transfer && m_Transfer->exposure == exposure) {
        return m_Transfer;
    }
    const auto fullScale = static_cast<float>((1u << m_Description.bitDepth) - 1);
    const auto transfer = std::make_shared<Transfer>();
    transfer->exposure = exposure;
    for (std::size_t filter = 0; filter < kFilterCount; ++filter) {
        const float signalPerLight = exposure.milliseconds / m_Description.saturationExposure * exposure.gain *
                                     exposure.filterGains[filter] / static_cast<float>(kFullLight);
        std::vector<Response> responses(kFullLight + 1);
        for (std::uint32_t light = 0; light <= kFullLight; ++light) {
            const float signal = std::clamp(signalPerLight * static_cast<float>(light), 0.0f, 1.0f);
            const float shown = exposure.gamma == 1 ? signal : std::pow(signal, 1 / exposure.gamma);
            const float sample = std::min(shown * fullScale + exposure.blackLevel, fullScale);
            const float electrons = std::sqrt(signal * kFullWell + kReadNoise * kReadNoise);
            const float noise = signal < 1 ? m_Description.noise * electrons / kFullWell * fullScale * 16 : 0;
            responses[light] = {static_cast<std::uint16_t>(std::lround(sample)),
                                static_cast<std::uint16_t>(std::clamp(noise, 0.0f, 65535.0f))};
        }
        transfer->responses[filter] = std::move(responses);
    }
    m_Transfer = transfer;
    return transfer;
}

template <class Store>
void Sensor::fillRaw(const FrameGeometry& geometry, const Illumination& illumination, const Transfer& transfer,
                     std::uint64_t frameNumber, std::uint8_t* buffer, Store store) const {
    constexpr int kDeviations = kNoiseDeviation * 16;
    const std::int16_t* noise = noiseTable().data();
    const int maximum = (1 << m_Description.bitDepth) - 1;
    const std::uint16_t* light = illumination.data();
    for (std::uint32_t y = 0; y < geometry.height; ++y) {
        const std::size_t start = scramble(std::uint64_t{m_Description.noiseSeed} << 32 ^ frameNumber << 16 ^ y);
        const Response* even = transfer.responses[filterAt(m_Cell, 0, y)].data();
        const Response* odd = transfer.responses[filterAt(m_Cell, 1, y)].data();
        for (std::uint32_t x = 0; x < geometry.width; ++x) {
            const Response response = (x & 1 ? odd : even)[*light++];
            const int deviation = noise[(start + x) % kNoiseCount] * response.noise / kDeviations;
            store(buffer, std::clamp(response.sample + deviation, 0, maximum));
        }
    }
}

void Sensor::takeRaw(const FrameGeometry& geometry, const Illumination& illumination, const Transfer& transfer,
                     std::uint64_t frameNumber, std::uint8_t* buffer) const {
    const auto fill = [&](auto store) { fillRaw(geometry, illumination, transfer, frameNumber, buffer, store); };
    if (geometry.layout.bytesPerSample == 1) {
        fill([shift = m_Description.bitDepth - 8](std::uint8_t*& out, int sample) {
            *out++ = static_cast<std::uint8_t>(sample >> shift);
        });
    } else if (m_Description.bigEndian) {
        fill([](std::uint8_t*& out, int sample) {
            *out++ = static_cast<std::uint8_t>(sample >> 8);
            *out++ = static_cast<std::uint8_t>(sample);
        });
    } else {
        fill([](std::uint8_t*& out, int sample) {
            *out++ = static_cast<std::uint8_t>(sample);
            *out++ = static_cast<std::uint8_t>(sample >> 8);
        });
    }
}

} // namespace SoftwareDevices
