// SPDX-License-Identifier: Apache-2.0

#include "Sensor/Sensor.h"

#include <algorithm>
#include <array>
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

/// Pixels that are computed at a time, an even number: they stay in the cache.
constexpr std::size_t kPiecePixels = 1024;
using Piece = std::array<std::uint16_t, kPiecePixels>;

constexpr bool kLittleEndianMachine = __BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__;

std::uint64_t scramble(std::uint64_t value) {
    value = (value ^ value >> 30) * 0xBF58476D1CE4E5B9u;
    value = (value ^ value >> 27) * 0x94D049BB133111EBu;
    return value ^ value >> 31;
}

/// Normally distributed numbers with standard deviation kNoiseDeviation: kNoiseCount of them, and the first of them
/// again for a piece that begins near the end. Never destroyed: frames may be taken while the process exits.
const std::vector<std::int16_t>& noiseTable() {
    static const auto& table = *new std::vector<std::int16_t>([] {
        std::vector<std::int16_t> noise;
        noise.reserve(kNoiseCount + kPiecePixels);
        for (std::uint64_t place = 0; place < kNoiseCount + kPiecePixels; ++place) {
            const std::uint64_t i = place % kNoiseCount;
            int sum = -12 * 128; // twelve uniform numbers of 0 .. 255: deviation 256, approximately normal
            for (std::uint64_t bytes : {scramble(2 * i + 1), scramble(2 * i + 2) >> 32}) {
                for (; bytes != 0; bytes >>= 8) {
                    sum += static_cast<int>(bytes & 0xFF);
                }
            }
            noise.push_back(static_cast<std::int16_t>(sum));
        }
        return noise;
    }());
    return table;
}

/// Takes up to kPiecePixels pixels of a row, the first of them in an even column.
void takePiece(const std::uint16_t* light, std::size_t pixels, const Response* even, const Response* odd,
               const std::int16_t* noise, int maximum, Piece& samples) {
    constexpr int kDeviations = kNoiseDeviation * 16;
    std::array<Response, kPiecePixels> responses;
    for (std::size_t x = 0; x + 1 < pixels; x += 2) {
        responses[x] = even[light[x]];
        responses[x + 1] = odd[light[x + 1]];
    }
    if (pixels % 2 != 0) {
        responses[pixels - 1] = even[light[pixels - 1]];
    }
    for (std::size_t x = 0; x < pixels; ++x) { // a loop of its own, which g++ vectorises
        const int deviation = noise[x] * responses[x].noise / kDeviations;
        samples[x] = static_cast<std::uint16_t>(std::clamp(responses[x].sample + deviation, 0, maximum));
    }
}

/// Writes samples as the format has them; returns the end of what it has written.
std::uint8_t* deliver(const DeviceDescription& description, Piece& samples, std::size_t pixels,
                      std::uint32_t bytesPerSample, std::uint8_t* buffer) {
    if (bytesPerSample == 1) {
        const auto shift = description.bitDepth - 8;
        for (std::size_t x = 0; x < pixels; ++x) {
            buffer[x] = static_cast<std::uint8_t>(samples[x] >> shift);
        }
    } else {
        if (description.bigEndian == kLittleEndianMachine) {
            for (std::size_t x = 0; x < pixels; ++x) {
                samples[x] = static_cast<std::uint16_t>(samples[x] << 8 | samples[x] >> 8);
            }
        }
        std::memcpy(buffer, samples.data(), 2 * pixels);
    }
    return buffer + bytesPerSample * pixels;
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

void Sensor::prepare(const ORVEX_FRAME_FORMAT& format, const Exposure& exposure) {
    illumination(format);
    transfer(exposure);
    noiseTable();
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
    const auto transfer = std::make_shared<Transfer>();
    transfer->exposure = exposure;
    const auto& gains = exposure.filterGains;
    for (std::size_t filter = 0; filter < kFilterCount; ++filter) {
        const auto* const first = std::find(gains.begin(), gains.end(), gains[filter]);
        const auto alike = static_cast<std::size_t>(first - gains.begin());
        transfer->responses[filter] = alike < filter ? transfer->responses[alike] : respond(exposure, gains[filter]);
    }
    m_Transfer = transfer;
    return transfer;
}

std::shared_ptr<const Responses> Sensor::respond(const Exposure& exposure, float filterGain) const {
    const auto fullScale = static_cast<float>((1u << m_Description.bitDepth) - 1);
    const float signalPerLight = exposure.milliseconds / m_Description.saturationExposure * exposure.gain * filterGain /
                                 static_cast<float>(kFullLight);
    Responses responses(kFullLight + 1);
    for (std::uint32_t light = 0; light <= kFullLight; ++light) {
        const float signal = std::clamp(signalPerLight * static_cast<float>(light), 0.0f, 1.0f);
        const float shown = exposure.gamma == 1 ? signal : std::pow(signal, 1 / exposure.gamma);
        const float sample = std::min(shown * fullScale + exposure.blackLevel, fullScale);
        const float electrons = std::sqrt(signal * kFullWell + kReadNoise * kReadNoise);
        const float noise = signal < 1 ? m_Description.noise * electrons / kFullWell * fullScale * 16 : 0;
        responses[light] = {static_cast<std::uint16_t>(std::lround(sample)),
                            static_cast<std::int16_t>(std::clamp(noise, 0.0f, 32767.0f))};
    }
    return std::make_shared<const Responses>(std::move(responses));
}

void Sensor::takeRaw(const FrameGeometry& geometry, const Illumination& illumination, const Transfer& transfer,
                     std::uint64_t frameNumber, std::uint8_t* buffer) const {
    const std::vector<std::int16_t>& noise = noiseTable();
    const int maximum = (1 << m_Description.bitDepth) - 1;
    const std::uint16_t* light = illumination.data();
    Piece samples;
    for (std::uint32_t y = 0; y < geometry.height; ++y) {
        const std::size_t start = scramble(std::uint64_t{m_Description.noiseSeed} << 32 ^ frameNumber << 16 ^ y);
        const Response* even = transfer.responses[filterAt(m_Cell, 0, y)]->data();
        const Response* odd = transfer.responses[filterAt(m_Cell, 1, y)]->data();
        for (std::size_t x = 0; x < geometry.width; x += kPiecePixels) {
            const std::size_t pixels = std::min(kPiecePixels, geometry.width - x);
            takePiece(light, pixels, even, odd, &noise[(start + x) % kNoiseCount], maximum, samples);
            light += pixels;
            buffer = deliver(m_Description, samples, pixels, geometry.layout.bytesPerSample, buffer);
        }
    }
}

} // namespace SoftwareDevices
