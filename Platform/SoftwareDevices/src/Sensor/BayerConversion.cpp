// SPDX-License-Identifier: Apache-2.0

#include "Sensor/BayerConversion.h"

#include <algorithm>
#include <cmath>

#include "Refusal.h"

namespace SoftwareDevices {

namespace {

constexpr ColorMatrix kIdentity{1, 0, 0, 0, 1, 0, 0, 0, 1};

/// Corrects the colours of a sensor under one kind of light to those of human vision; each row adds up to 1.
struct NamedMatrix {
    std::int32_t code;
    ColorMatrix matrix;
};

constexpr NamedMatrix kCorrectionMatrices[] = {
    {0, kIdentity},                                                             // none
    {1, {1.62f, -0.48f, -0.14f, -0.26f, 1.45f, -0.19f, -0.02f, -0.58f, 1.60f}}, // fluorescent
    {2, {1.51f, -0.40f, -0.11f, -0.20f, 1.41f, -0.21f, 0.01f, -0.47f, 1.46f}},  // daylight
    {3, {1.74f, -0.52f, -0.22f, -0.31f, 1.47f, -0.16f, -0.08f, -0.84f, 1.92f}}, // incandescent
    {4, {1.55f, -0.43f, -0.12f, -0.21f, 1.42f, -0.21f, 0.00f, -0.50f, 1.50f}},  // xenon flash
    {5, {1.70f, -0.50f, -0.20f, -0.30f, 1.46f, -0.16f, -0.07f, -0.78f, 1.85f}}, // halogen
    {6, {1.58f, -0.45f, -0.13f, -0.24f, 1.44f, -0.20f, -0.01f, -0.54f, 1.55f}}, // LED
    {14, kIdentity},                                                            // identity
    {15, kIdentity},                                                            // custom: no matrix is stored
};

ColorMatrix operator*(const ColorMatrix& left, const ColorMatrix& right) {
    ColorMatrix product{};
    for (std::size_t row = 0; row < 3; ++row) {
        for (std::size_t column = 0; column < 3; ++column) {
            for (std::size_t i = 0; i < 3; ++i) {
                product[row * 3 + column] += left[row * 3 + i] * right[i * 3 + column];
            }
        }
    }
    return product;
}

/// Rotates the hue by @p degrees and scales the saturation; does not change grey.
ColorMatrix hueAndSaturation(float degrees, float saturation) {
    const float radians = degrees * 3.14159265f / 180;
    const float cosine = saturation * std::cos(radians);
    const float sine = saturation * std::sin(radians);
    const ColorMatrix toLumaChroma{0.299f, 0.587f, 0.114f, -0.169f, -0.331f, 0.5f, 0.5f, -0.419f, -0.081f};
    const ColorMatrix turn{1, 0, 0, 0, cosine, -sine, 0, sine, cosine};
    const ColorMatrix toColors{1, 0, 1.402f, 1, -0.344f, -0.714f, 1, 1.772f, 0};
    return toColors * turn * toLumaChroma;
}

/// Three rows of a frame with one more column at each side, mirrored so that the pattern of filters continues.
class RowWindow {
public:
    explicit RowWindow(const RawFrame& frame) : m_Frame(frame) {
        for (std::vector<int>& row : m_Rows) {
            row.resize(std::size_t{frame.width} + 2);
        }
    }

    void moveTo(std::uint32_t y) {
        const std::uint32_t last = m_Frame.height - 1;
        load(m_Rows[0], y > 0 ? y - 1 : std::min(1u, last));
        load(m_Rows[1], y);
        load(m_Rows[2], y < last ? y + 1 : last - std::min(1u, last));
    }

    /// The sample at an offset in columns and rows (-1 to 1) from column x.
    int at(std::uint32_t x, int right, int down) const {
        const int row = 1 + down;
        return m_Rows[static_cast<std::size_t>(row)][x + 1 + static_cast<std::size_t>(right)];
    }

private:
    void load(std::vector<int>& row, std::uint32_t y) const {
        const std::uint8_t* in = m_Frame.data + std::size_t{y} * m_Frame.width * m_Frame.bytesPerSample;
        if (m_Frame.bytesPerSample == 1) {
            std::copy_n(in, m_Frame.width, row.begin() + 1);
        } else {
            for (std::uint32_t x = 0; x < m_Frame.width; ++x) {
                row[x + 1] = m_Frame.bigEndian ? in[2 * x] << 8 | in[2 * x + 1] : in[2 * x + 1] << 8 | in[2 * x];
            }
        }
        const std::size_t width = m_Frame.width;
        row.front() = row[std::min<std::size_t>(2, width)];
        row.back() = row[std::max<std::size_t>(width, 2) - 1];
    }

    const RawFrame& m_Frame;
    std::array<std::vector<int>, 3> m_Rows;
};

struct Pixel {
    int red, green, blue;
};

Pixel copyMosaic(const RowWindow& window, const FilterCell&, std::uint32_t x, std::uint32_t) {
    const int sample = window.at(x, 0, 0);
    return {sample, sample, sample};
}

/// Takes the colours of the pixel's own two-by-two cell.
Pixel shareCell(const RowWindow& window, const FilterCell& cell, std::uint32_t x, std::uint32_t y) {
    const int right = x & 1 ? -1 : 1;
    const int down = y & 1 ? -1 : 1;
    std::array<int, kFilterCount> samples{};
    samples[filterAt(cell, x, y)] = window.at(x, 0, 0);
    samples[filterAt(cell, x + 1, y)] = window.at(x, right, 0);
    samples[filterAt(cell, x, y + 1)] = window.at(x, 0, down);
    samples[filterAt(cell, x + 1, y + 1)] = window.at(x, right, down);
    return {samples[kRed], (samples[kGreen1] + samples[kGreen2]) / 2, samples[kBlue]};
}

/// Computes each missing colour as the mean of its nearest neighbours.
Pixel interpolate(const RowWindow& window, const FilterCell& cell, std::uint32_t x, std::uint32_t y) {
    const int own = window.at(x, 0, 0);
    const int across = window.at(x, -1, 0) + window.at(x, 1, 0);
    const int down = window.at(x, 0, -1) + window.at(x, 0, 1);
    const auto diagonal = [&] {
        return (window.at(x, -1, -1) + window.at(x, 1, -1) + window.at(x, -1, 1) + window.at(x, 1, 1)) / 4;
    };
    switch (filterAt(cell, x, y)) {
    case kRed:
        return {own, (across + down) / 4, diagonal()};
    case kBlue:
        return {diagonal(), (across + down) / 4, own};
    case kGreen1:
        return {across / 2, own, down / 2};
    default:
        return {down / 2, own, across / 2};
    }
}

class PixelWriter {
public:
    PixelWriter(const RawFrame& frame, std::uint32_t channels, const Development& development)
        : m_Channels(channels), m_Wide(frame.bytesPerSample == 2), m_BigEndian(frame.bigEndian),
          m_Maximum(static_cast<int>(frame.maximum)), m_Corrects(development.matrix != kIdentity),
          m_Matrix(development.matrix) {}

    void write(std::uint8_t*& out, Pixel pixel) const {
        if (m_Corrects) {
            pixel = {corrected(pixel, 0), corrected(pixel, 3), corrected(pixel, 6)};
        }
        if (m_Channels == 1) {
            return store(out, (77 * pixel.red + 150 * pixel.green + 29 * pixel.blue) / 256);
        }
        store(out, pixel.blue);
        store(out, pixel.green);
        store(out, pixel.red);
        if (m_Channels == 4) {
            store(out, m_Maximum);
        }
    }

private:
    int corrected(const Pixel& pixel, std::size_t row) const {
        const float value = m_Matrix[row] * static_cast<float>(pixel.red) +
                            m_Matrix[row + 1] * static_cast<float>(pixel.green) +
                            m_Matrix[row + 2] * static_cast<float>(pixel.blue);
        return static_cast<int>(std::clamp(value + 0.5f, 0.0f, static_cast<float>(m_Maximum)));
    }

    void store(std::uint8_t*& out, int value) const {
        const int sample = std::min(value, m_Maximum);
        if (m_Wide && m_BigEndian) {
            *out++ = static_cast<std::uint8_t>(sample >> 8);
        }
        *out++ = static_cast<std::uint8_t>(sample);
        if (m_Wide && !m_BigEndian) {
            *out++ = static_cast<std::uint8_t>(sample >> 8);
        }
    }

    const std::uint32_t m_Channels;
    const bool m_Wide;
    const bool m_BigEndian;
    const int m_Maximum;
    const bool m_Corrects;
    const ColorMatrix m_Matrix;
};

template <auto demosaicedAt>
void developRows(const RawFrame& frame, std::uint8_t* destination, std::uint32_t channels,
                 const Development& development) {
    const FilterCell cell = filterCell(frame.colorFormat);
    const PixelWriter writer(frame, channels, development);
    const std::size_t rowBytes = std::size_t{frame.width} * channels * frame.bytesPerSample;
    RowWindow window(frame);
    for (std::uint32_t y = 0; y < frame.height; ++y) {
        window.moveTo(y);
        std::uint8_t* out = destination + rowBytes * (development.flipY ? frame.height - 1 - y : y);
        for (std::uint32_t i = 0; i < frame.width; ++i) {
            writer.write(out, demosaicedAt(window, cell, development.flipX ? frame.width - 1 - i : i, y));
        }
    }
}

} // namespace

RawFrame rawFrame(const DeviceDescription& description, const std::uint8_t* data, std::uint32_t width,
                  std::uint32_t height, std::uint32_t bytesPerSample) {
    const std::uint32_t depth = bytesPerSample == 1 ? 8 : description.bitDepth;
    return {data, width, height, bytesPerSample, description.bigEndian, description.colorFormat, (1u << depth) - 1};
}

Development developmentOf(const ORVEX_CONVERSION& parameters) {
    constexpr std::int32_t kMethods[] = {0, 1, 2, 3, 8};
    const auto* method = std::find(std::begin(kMethods), std::end(kMethods), parameters.demosaicMethod);
    const auto* matrix = std::find_if(std::begin(kCorrectionMatrices), std::end(kCorrectionMatrices),
                                      [&](const NamedMatrix& m) { return m.code == parameters.correctionMatrix; });
    require(method != std::end(kMethods) && matrix != std::end(kCorrectionMatrices), kInvalidArgument);
    Development development;
    development.demosaic = static_cast<Demosaic>(*method);
    development.matrix = matrix->matrix;
    return development;
}

Development developmentOf(const ORVEX_CONVERSION_PARAMS& parameters) {
    const float numbers[] = {parameters.hue, parameters.saturation, parameters.digitalGain,
                             parameters.digitalWhiteBalanceU, parameters.digitalWhiteBalanceV};
    require(parameters.size == sizeof parameters &&
                std::all_of(std::begin(numbers), std::end(numbers), [](float number) { return std::isfinite(number); }),
            kInvalidArgument);
    Development development = developmentOf(ORVEX_CONVERSION{parameters.demosaicMethod, parameters.correctionMatrix});
    development.flipX = parameters.flipX != 0;
    development.flipY = parameters.flipY != 0;
    const bool changesColor = parameters.hue != 0 || parameters.saturation != 1 || parameters.digitalGain != 1 ||
                              parameters.digitalWhiteBalanceU != 0 || parameters.digitalWhiteBalanceV != 0;
    if (changesColor) {
        const float gain = parameters.digitalGain;
        const ColorMatrix balance{gain * (1 + parameters.digitalWhiteBalanceV), 0, 0, 0, gain, 0, 0, 0,
                                  gain * (1 + parameters.digitalWhiteBalanceU)};
        development.matrix = hueAndSaturation(parameters.hue, parameters.saturation) * development.matrix * balance;
    }
    return development;
}

void develop(const RawFrame& frame, std::uint8_t* destination, std::uint32_t channels, const Development& development) {
    switch (development.demosaic) {
    case Demosaic::None:
        return developRows<copyMosaic>(frame, destination, channels, development);
    case Demosaic::Fast:
    case Demosaic::Simple:
        return developRows<shareCell>(frame, destination, channels, development);
    case Demosaic::HighQuality:
    case Demosaic::HigherQuality:
        return developRows<interpolate>(frame, destination, channels, development);
    }
}

} // namespace SoftwareDevices
