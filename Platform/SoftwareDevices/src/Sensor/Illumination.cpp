// SPDX-License-Identifier: Apache-2.0

#include "Sensor/Illumination.h"

#include <algorithm>
#include <array>

#include "Sensor/ColorFilter.h"

namespace SoftwareDevices {

namespace {

constexpr std::uint16_t kBinning = 1;

/// The place of a pixel among the points of the scene, along one axis: between a point and the next.
struct Place {
    std::uint32_t point;
    float part; ///< weight of the next point
};

Place placeOf(std::uint32_t pixel, std::uint32_t sensorLength, std::uint32_t sceneLength) {
    const double place = (pixel + 0.5) * sceneLength / sensorLength - 0.5;
    const double inside = std::clamp(place, 0.0, sceneLength - 1.0);
    const auto point = static_cast<std::uint32_t>(inside);
    return {point, static_cast<float>(inside - point)};
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

/// The scene's light on chosen pixels of the sensor's rows.
class Projection {
public:
    /// @param columns  of the pixels, the same in each row
    Projection(const DeviceDescription& description, const Scene& scene, const std::vector<std::uint32_t>& columns)
        : m_Scene(scene), m_SensorHeight(description.sensorHeight),
          m_Components(description.colorFormat == ColorFormat::MONO ? 1 : kSceneComponents),
          m_Row((std::size_t{scene.width} + 1) * kSceneComponents) {
        constexpr std::uint32_t kComponents[kFilterCount] = {0, 1, 1, 2};
        const FilterCell cell = filterCell(description.colorFormat);
        for (std::uint32_t y = 0; y < m_Taps.size(); ++y) {
            m_Taps[y].reserve(columns.size());
            for (const std::uint32_t x : columns) {
                const Place place = placeOf(x, description.sensorWidth, scene.width);
                const std::uint32_t component = m_Components == 1 ? 0 : kComponents[filterAt(cell, x, y)];
                m_Taps[y].push_back({place.point * m_Components + component, place.part});
            }
        }
    }

    /// Adds the light on the pixels of a row to sums of as many pixels each as are given; 0 .. 255 for each pixel.
    void addRow(std::uint32_t y, std::vector<float>& sums) {
        look(y);
        const float* const row = m_Row.data();
        const float* const next = row + m_Components;
        const Place* tap = m_Taps[y & 1].data();
        for (std::size_t added = 0; added < m_Taps[0].size(); added += sums.size()) {
            for (float& sum : sums) {
                sum += row[tap->point] + tap->part * (next[tap->point] - row[tap->point]);
                ++tap;
            }
        }
    }

private:
    static constexpr std::uint32_t kSceneComponents = 3;

    /// Sets the row of the scene at a row of the sensor.
    void look(std::uint32_t y) {
        const Place place = placeOf(y, m_SensorHeight, m_Scene.height);
        const std::size_t width = m_Scene.width;
        const std::size_t samples = width * kSceneComponents;
        const std::uint8_t* above = &m_Scene.rgb[place.point * samples];
        const std::uint8_t* below = &m_Scene.rgb[std::min(place.point + 1, m_Scene.height - 1) * samples];
        for (std::size_t i = 0; i < samples; ++i) {
            m_Row[i] = static_cast<float>(above[i]) + place.part * static_cast<float>(below[i] - above[i]);
        }
        if (m_Components == 1) {
            for (std::size_t x = 0; x < width; ++x) {
                m_Row[x] = 0.299f * m_Row[3 * x] + 0.587f * m_Row[3 * x + 1] + 0.114f * m_Row[3 * x + 2];
            }
        }
        const auto end = m_Row.begin() + static_cast<std::ptrdiff_t>(width * m_Components);
        std::copy_n(end - m_Components, m_Components, end);
    }

    const Scene& m_Scene;
    const std::uint32_t m_SensorHeight;
    const std::uint32_t m_Components;         ///< of a point: those of the scene, or grey alone on a monochrome sensor
    std::array<std::vector<Place>, 2> m_Taps; ///< of even and odd rows, into m_Row
    std::vector<float> m_Row;                 ///< the scene's points in a row, the last of them twice
};

} // namespace

Illumination illuminate(const DeviceDescription& description, const Scene& scene, const ORVEX_FRAME_FORMAT& format) {
    const FrameGeometry geometry = frameGeometry(description, format);
    const std::uint32_t period = description.colorFormat == ColorFormat::MONO ? 1 : 2;
    const SamplingAxis across{format.xOffset, format.samplingX, period, format.flagsX == kBinning};
    const SamplingAxis down{format.yOffset, format.samplingY, period, format.flagsY == kBinning};
    const float scale = static_cast<float>(kFullLight) / 255 / static_cast<float>(across.count() * down.count());

    std::vector<std::uint32_t> columns;
    columns.reserve(std::size_t{geometry.width} * across.count());
    for (std::uint32_t column = 0; column < across.count(); ++column) {
        for (std::uint32_t x = 0; x < geometry.width; ++x) {
            columns.push_back(across.pixel(x, column));
        }
    }
    Projection projection(description, scene, columns);
    Illumination illumination;
    illumination.reserve(std::size_t{geometry.width} * geometry.height);
    std::vector<float> sums(geometry.width);
    std::vector<std::uint16_t> row(geometry.width);
    for (std::uint32_t y = 0; y < geometry.height; ++y) {
        std::fill(sums.begin(), sums.end(), 0.0f);
        for (std::uint32_t i = 0; i < down.count(); ++i) {
            projection.addRow(down.pixel(y, i), sums);
        }
        for (std::uint32_t x = 0; x < geometry.width; ++x) {
            // Without a call of the rounding functions, which no vector holds.
            row[x] = static_cast<std::uint16_t>(sums[x] * scale + 0.5f); // NOLINT(bugprone-incorrect-roundings)
        }
        illumination.insert(illumination.end(), row.begin(), row.end());
    }
    return illumination;
}

} // namespace SoftwareDevices
