// SPDX-License-Identifier: Apache-2.0

#include "Serve/Cameras/SensorRegion.h"

#include <algorithm>
#include <cstdint>
#include <optional>
#include <string>

#include <Quill.h>
#include <fmt/format.h>

#include "Camera/PropertyAccess.h"
#include "Camera/Region.h"
#include "Serve/Cameras/Refusal.h"
#include "Terminal/Numbers.h"

namespace QuillTool::Serve {

namespace PropertyNames = CameraInterface::PropertyNames;

namespace {

/// One direction of the sensor.
struct Axis {
    const char* offset; ///< name of the property
    const char* length;
    const char* maximum;
    const char* offsetKey; ///< in JSON
    const char* lengthKey;
};

constexpr Axis kAxes[] = {
    {PropertyNames::kXOffset, PropertyNames::kWidth, PropertyNames::kMaximumWidth, "x", "width"},
    {PropertyNames::kYOffset, PropertyNames::kHeight, PropertyNames::kMaximumHeight, "y", "height"},
};

std::optional<std::uint64_t> pixelsIn(const std::string& text) {
    const auto number = parseNumber(text, NumberKind::Real);
    return number && *number >= 0 ? std::optional(static_cast<std::uint64_t>(*number)) : std::nullopt;
}

/// A number of pixels among others that are multiples of a unit.
struct Extent {
    std::uint64_t value = 0;
    std::uint64_t unit = 1;
    std::uint64_t least = 0;
};

Extent readExtent(const SelectedCamera& camera, const char* name) {
    const PropertyReading reading = readProperty(camera, name);
    return {pixelsIn(reading.value).value_or(0), unitIn(reading.increment).value_or(1),
            pixelsIn(reading.minimum).value_or(0)};
}

std::uint64_t sensorEnd(const SelectedCamera& camera, const Axis& axis) {
    if (camera->isPropertySupported(axis.maximum)) {
        if (const auto end = pixelsIn(camera->getProperty(axis.maximum).getValue())) {
            return *end;
        }
    }
    return pixelsIn(camera->getProperty(axis.length).getMaximum()).value_or(0);
}

void requireRegion(const SelectedCamera& camera) {
    for (const Axis& axis : kAxes) {
        for (const char* name : {axis.offset, axis.length}) {
            if (!camera->isPropertySupported(name)) {
                throw Refusal(404, "RegionNotSupported", camera.about(fmt::format("it has no property '{}'", name)),
                              "This camera delivers the whole sensor.");
            }
        }
    }
}

std::uint64_t wantedPixels(const Json& wanted, const char* key) {
    const auto member = wanted.find(key);
    if (member == wanted.end() || !member->is_number()) {
        throw Refusal(400, "BadBody", fmt::format("The region has no number '{}'.", key),
                      R"(Send {"x": 0, "y": 0, "width": 640, "height": 480}.)");
    }
    constexpr double kMost = 1e9;
    return static_cast<std::uint64_t>(std::clamp(member->get<double>() + 0.5, 0.0, kMost));
}

void write(const SelectedCamera& camera, const char* name, std::uint64_t value) {
    camera->getProperty(name).setValue(std::to_string(value));
}

/// The nearest region: offsets begin where the wanted ones do, or before; lengths include the wanted pixels.
void writeAxis(const SelectedCamera& camera, const Axis& axis, const Json& wanted) {
    const Extent offset = readExtent(camera, axis.offset);
    const Extent length = readExtent(camera, axis.length);
    const std::uint64_t end = sensorEnd(camera, axis);
    const std::uint64_t last = end < length.least ? 0 : end - length.least;
    std::uint64_t begin = std::min(wantedPixels(wanted, axis.offsetKey), last);
    const std::uint64_t wantedEnd = begin + wantedPixels(wanted, axis.lengthKey);
    begin -= begin % offset.unit;
    std::uint64_t size = std::max(wantedEnd > begin ? wantedEnd - begin : 0, std::max(length.least, length.unit));
    size = (size + length.unit - 1) / length.unit * length.unit;
    const std::uint64_t room = end - std::min(begin, end);
    size = std::min(size, room - room % length.unit);
    // At the offset 0, every size fits.
    write(camera, axis.offset, 0);
    write(camera, axis.length, size);
    write(camera, axis.offset, begin);
}

} // namespace

Json readRegion(const SelectedCamera& camera) {
    requireRegion(camera);
    Json region;
    Json unit;
    Json maximum;
    for (const Axis& axis : kAxes) {
        for (const auto& [name, key] : {std::pair(axis.offset, axis.offsetKey), {axis.length, axis.lengthKey}}) {
            const Extent extent = readExtent(camera, name);
            region[key] = extent.value;
            unit[key] = extent.unit;
        }
        maximum[axis.lengthKey] = sensorEnd(camera, axis);
    }
    return {{"camera", camera.serialNumber()}, {"region", region}, {"unit", unit}, {"maximum", maximum}};
}

Json writeRegion(const SelectedCamera& camera, const Json& wanted) {
    requireRegion(camera);
    for (const Axis& axis : kAxes) {
        wantedPixels(wanted, axis.offsetKey);
        wantedPixels(wanted, axis.lengthKey);
    }
    const bool wasStreaming = camera->isStreaming();
    if (wasStreaming) {
        camera->stopStream();
    }
    std::string failure;
    try {
        for (const Axis& axis : kAxes) {
            writeAxis(camera, axis, wanted);
        }
    } catch (const std::exception& refusal) {
        failure = reasonOf(refusal);
    }
    if (wasStreaming) {
        attemptStart(camera, "it cannot stream from this region", [&] { camera->startStream(); });
    }
    Json report = readRegion(camera);
    const bool isAsWanted = std::all_of(report["region"].items().begin(), report["region"].items().end(),
                                        [&](const auto& item) { return item.value() == wanted[item.key()]; });
    report["difference"] = !failure.empty() ? failure
                           : isAsWanted     ? ""
                                            : "The camera takes only some regions; this is the nearest.";
    return report;
}

} // namespace QuillTool::Serve
