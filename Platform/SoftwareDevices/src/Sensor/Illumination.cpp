// SPDX-License-Identifier: Apache-2.0

#include "Sensor/Illumination.h"

#include <algorithm>
#include <cmath>

#include "Sensor/ColorFilter.h"

namespace SoftwareDevices {

namespace {

constexpr std::uint16_t kBinning = 1;

/// The two points of the scene between which a pixel lies, along one axis.
struct Tap {
    std::uint32_t first;
    std::uint32_t second;
    float part; ///< weight of the second
};

Tap tapAt(std::uint32_t pixel, std::uint32_t sensorLength, std::uint32_t sceneLength) {
    const double place = (pixel + 0.5) * sceneLength / sensorLength - 0.5;
    const double inside = std::clamp(place, 0.0, sceneLength - 1.0);
    const auto first = static_cast<std::uint32_t>(inside);
    return {first, std::min(first + 1, sceneLength - 1), static_cast<float>(inside - first)};
}

/// The sensor pixels that form one delivered pixel, along one axis.
struct SamplingAxis {
    std::uint32_t offset;
    std::uint32_t factor;
    std::uint32_t period; ///< 2 on a colour sensor: pixels of one colour are two apart
    bool bins;

    std::uint32_t count() const { return bins ? factor : 1; }
    std::uint32_t pixel(std::uint32_t delivered, std::uint32_t i) const {
        return offset + delivered / period * period * factor + delivered % period + i * period;
    }
};

/// One scene colour at any pixel of the sensor.
class Projection {
public:
    Projection(const DeviceDescription& description, const Scene& scene)
        : m_Scene(scene), m_SensorHeight(description.sensorHeight), m_Cell(filterCell(description.colorFormat)),
          m_Monochrome(description.colorFormat == ColorFormat::MONO) {
        m_Columns.reserve(description.sensorWidth);
        for (std::uint32_t x = 0; x < description.sensorWidth; ++x) {
            m_Columns.push_back(tapAt(x, description.sensorWidth, scene.width));
        }
        m_Row.resize(std::size_t{scene.width} * 3);
    }

    /// Selects the sensor row that lightAt() reads.
    void selectRow(std::uint32_t y) {
        const Tap tap = tapAt(y, m_SensorHeight, m_Scene.height);
        const std::uint8_t* first = &m_Scene.rgb[std::size_t{tap.first} * m_Row.size()];
        const std::uint8_t* second = &m_Scene.rgb[std::size_t{tap.second} * m_Row.size()];
        for (std::size_t i = 0; i < m_Row.size(); ++i) {
            m_Row[i] = static_cast<float>(first[i]) + tap.part * static_cast<float>(second[i] - first[i]);
        }
        m_Y = y;
    }

    /// @return 0 .. 255
    float lightAt(std::uint32_t x) const {
        if (m_Monochrome) {
            return 0.299f * componentAt(x, 0) + 0.587f * componentAt(x, 1) + 0.114f * componentAt(x, 2);
        }
        constexpr std::size_t kComponents[kFilterCount] = {0, 1, 1, 2};
        return componentAt(x, kComponents[filterAt(m_Cell, x, m_Y)]);
    }

private:
    float componentAt(std::uint32_t x, std::size_t component) const {
        const Tap& tap = m_Columns[x];
        const float first = m_Row[tap.first * 3 + component];
        return first + tap.part * (m_Row[tap.second * 3 + component] - first);
    }

    const Scene& m_Scene;
    const std::uint32_t m_SensorHeight;
    const FilterCell m_Cell;
    const bool m_Monochrome;
    std::vector<Tap> m_Columns;
    std::vector<float> m_Row; ///< the scene's row at the selected sensor row
    std::uint32_t m_Y = 0;
};

} // namespace

Illumination illuminate(const DeviceDescription& description, const Scene& scene, const ORVEX_FRAME_FORMAT& format) {
    const FrameGeometry geometry = frameGeometry(description, format);
    const std::uint32_t period = description.colorFormat == ColorFormat::MONO ? 1 : 2;
    const SamplingAxis across{format.xOffset, format.samplingX, period, format.flagsX == kBinning};
    const SamplingAxis down{format.yOffset, format.samplingY, period, format.flagsY == kBinning};
    const float scale = static_cast<float>(kFullLight) / 255 / static_cast<float>(across.count() * down.count());

    Projection projection(description, scene);
    Illumination illumination(std::size_t{geometry.width} * geometry.height);
    std::uint16_t* next = illumination.data();
    std::vector<float> sums(geometry.width);
    for (std::uint32_t y = 0; y < geometry.height; ++y) {
        std::fill(sums.begin(), sums.end(), 0.0f);
        for (std::uint32_t row = 0; row < down.count(); ++row) {
            projection.selectRow(down.pixel(y, row));
            for (std::uint32_t x = 0; x < geometry.width; ++x) {
                for (std::uint32_t column = 0; column < across.count(); ++column) {
                    sums[x] += projection.lightAt(across.pixel(x, column));
                }
            }
        }
        for (const float sum : sums) {
            *next++ = static_cast<std::uint16_t>(std::lround(sum * scale));
        }
    }
    return illumination;
}

} // namespace SoftwareDevices
