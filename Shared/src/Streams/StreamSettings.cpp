// SPDX-License-Identifier: Apache-2.0

#include "Streams/StreamSettings.h"

#include <cstdint>
#include <exception>
#include <limits>
#include <string>

#include "Base/NeverDestroyed.h"
#include "Base/TextConversion.h"
#include "Exceptions/Raise.h"
#include "Properties/OrvexEnumerations.h"
#include "PropertyNames.h"

namespace OrvexAdapter {

using namespace CameraInterface;
using namespace KestrelExceptions;

namespace {

constexpr std::uint32_t kStrobe = 0x80000000U;
constexpr std::uint32_t kStrobeFromStartExposure = 0x20000000U;

/// Reads a camera's properties as values of the records.
class SettingsReader {
public:
    explicit SettingsReader(Camera& camera) : m_Camera(camera) {}

    std::string text(const char* name) const { return m_Camera.getProperty(name).getValue(); }

    float number(const char* name) const {
        double value = 0;
        Base::extractFirstWord(text(name), value);
        return static_cast<float>(value);
    }

    std::uint32_t pixels(const char* name) const {
        unsigned long value = 0;
        Base::extractFirstWord(text(name), value);
        return static_cast<std::uint32_t>(value);
    }

    bool enabled(const char* name) const { return States().toValue(text(name)); }
    bool has(const char* name) const { return m_Camera.isPropertySupported(name); }

private:
    Camera& m_Camera;
};

/// Parses the first number of one or two digits between two characters in a text.
std::uint16_t parseFactor(const std::string& text, char before, char after) {
    constexpr std::size_t kMaximumDigits = 2;
    for (std::size_t start = text.find(before); start != std::string::npos; start = text.find(before, start + 1)) {
        const std::size_t end = text.find_first_not_of("0123456789", start + 1);
        const std::size_t digits = end == std::string::npos ? 0 : end - start - 1;
        if (digits >= 1 && digits <= kMaximumDigits && text[end] == after) {
            unsigned long factor = 0;
            Base::extractFirstWord(text.substr(start + 1, digits), factor);
            return static_cast<std::uint16_t>(factor);
        }
    }
    raise<KestrelException>(QUILL_HERE, Errors::kInvalidStreamFormat);
}

std::uint16_t parseHorizontalFactor(const std::string& text) {
    return parseFactor(text, '(', 'x');
}

std::uint16_t parseVerticalFactor(const std::string& text) {
    return parseFactor(text, 'x', ')');
}

ORVEX_FRAME_FORMAT buildFrameFormat(const SettingsReader& settings) {
    ORVEX_FRAME_FORMAT format{};
    format.height = settings.pixels(PropertyNames::kHeight);
    format.width = settings.pixels(PropertyNames::kWidth);
    format.xOffset = settings.pixels(PropertyNames::kXOffset);
    format.yOffset = settings.pixels(PropertyNames::kYOffset);
    const std::string sampling = settings.text(PropertyNames::kSamplingDescription);
    format.samplingX = parseHorizontalFactor(sampling);
    format.samplingY = parseVerticalFactor(sampling);
    format.flagsX = format.flagsY = sampling.find("Binning") == std::string::npos ? 0 : 1;
    format.pixelFormat = static_cast<std::uint32_t>(PixelFormats().toValue(settings.text(PropertyNames::kPixelFormat)));
    return format;
}

void readColorGains(const SettingsReader& settings, ORVEX_SNAPSHOT& snapshot) {
    if (settings.text(PropertyNames::kColorFormat) == "MONO") {
        snapshot.gainBlue = snapshot.gainGreen1 = snapshot.gainGreen2 = snapshot.gainRed = 1.0F;
        return;
    }
    snapshot.gainBlue = settings.number(PropertyNames::kBlueStillGain);
    snapshot.gainGreen1 = settings.number(PropertyNames::kGreenStillGainOne);
    snapshot.gainGreen2 = settings.number(PropertyNames::kGreenStillGainTwo);
    snapshot.gainRed = settings.number(PropertyNames::kRedStillGain);
}

ORVEX_SNAPSHOT readSnapshot(const SettingsReader& settings) {
    ORVEX_SNAPSHOT snapshot{};
    snapshot.format = buildFrameFormat(settings);
    snapshot.bufferLastFrame = settings.enabled(PropertyNames::kBufferLastFrame) ? 1 : 0;
    snapshot.exposure = settings.number(PropertyNames::kStillExposure);
    snapshot.exposureDelay = settings.number(PropertyNames::kStillExposureDelay);
    snapshot.gain = settings.number(PropertyNames::kStillGain);
    readColorGains(settings, snapshot);
    snapshot.timeout = settings.number(PropertyNames::kTimeout);
    snapshot.strobeDelay = settings.number(PropertyNames::kStillStrobeDelay);
    snapshot.strobeFlags = settings.enabled(PropertyNames::kStrobe) ? kStrobe : 0;
    if (settings.has(PropertyNames::kStrobeFromStartExposure) &&
        settings.enabled(PropertyNames::kStrobeFromStartExposure)) {
        snapshot.strobeFlags |= kStrobeFromStartExposure;
    }
    snapshot.useHardwareTrigger = settings.enabled(PropertyNames::kHardwareTrigger) ? 1 : 0;
    snapshot.shutterType = static_cast<std::uint32_t>(ShutterTypes().toValue(settings.text(PropertyNames::kShutter)));
    return snapshot;
}

} // namespace

ORVEX_SNAPSHOT buildStreamSettings(Camera& camera, const SourceLocation& here) {
    try {
        return readSnapshot(SettingsReader(camera));
    } catch (const std::exception&) {
        raise<KestrelException>(here, Errors::kInvalidStreamSettings);
    }
}

std::chrono::nanoseconds getFrameTime(Camera& camera, StreamMode mode) {
    const auto number = [&camera](const char* name) -> double {
        try {
            return SettingsReader(camera).number(name);
        } catch (const std::exception&) {
            return 0;
        }
    };
    if (mode == StreamMode::Still) {
        return toWaitingTime(number(PropertyNames::kStillExposure) + number(PropertyNames::kStillExposureDelay));
    }
    const double framesPerSecond = number(PropertyNames::kFramerate);
    const double periodMs = framesPerSecond > 0 ? 1000 / framesPerSecond : 0;
    return toWaitingTime(number(PropertyNames::kVideoExposure) + periodMs);
}

std::chrono::nanoseconds toWaitingTime(double milliseconds) {
    using Milliseconds = std::chrono::duration<double, std::milli>;
    constexpr std::chrono::hours kLongest{24 * 365 * 100};
    if (!(milliseconds > 0)) {
        return {};
    }
    const Milliseconds time(milliseconds);
    return time < kLongest ? std::chrono::duration_cast<std::chrono::nanoseconds>(time) : kLongest;
}

std::uint32_t getBitsPerPixel(std::uint32_t pixelFormat) {
    static Base::NeverDestroyed<const PixelFormats> formats; // a worker may run at process exit
    unsigned long bits = 0;
    Base::extractFirstWord(formats.get().toString(pixelFormat), bits);
    return static_cast<std::uint32_t>(bits);
}

std::size_t getFrameSize(std::uint32_t width, std::uint32_t height, std::uint32_t pixelFormat) {
    constexpr std::size_t kLargest = std::numeric_limits<std::size_t>::max();
    const std::uint64_t pixels = std::uint64_t{width} * height;
    const std::size_t bytesPerPixel = getBitsPerPixel(pixelFormat) / 8;
    return pixels > kLargest / bytesPerPixel ? kLargest : static_cast<std::size_t>(pixels) * bytesPerPixel;
}

} // namespace OrvexAdapter
