// SPDX-License-Identifier: Apache-2.0

#include "Camera/Region.h"

#include <algorithm>
#include <array>
#include <exception>
#include <vector>

#include <fmt/format.h>

#include "Terminal/Numbers.h"

namespace QuillTool {

namespace PropertyNames = CameraInterface::PropertyNames;

namespace {

/// Names the properties of one direction.
struct Direction {
    const char* offset;
    const char* length;
    const char* maximum; ///< of the sensor
};

constexpr std::array kDirections{
    Direction{PropertyNames::kXOffset, PropertyNames::kWidth, PropertyNames::kMaximumWidth},
    Direction{PropertyNames::kYOffset, PropertyNames::kHeight, PropertyNames::kMaximumHeight},
};

std::optional<std::uint64_t> wholePart(const std::string& text) {
    const auto number = parseNumber(text, NumberKind::Real);
    return number && *number >= 0 ? std::optional(static_cast<std::uint64_t>(*number)) : std::nullopt;
}

std::optional<std::uint64_t> readPixels(const SelectedCamera& camera, const char* property) {
    try {
        return wholePart(camera->getProperty(property).getValue());
    } catch (const std::exception&) {
        return std::nullopt; // unreadable
    }
}

std::uint64_t readUnit(const SelectedCamera& camera, const char* property) {
    try {
        return unitIn(camera->getProperty(property).getIncrement()).value_or(1);
    } catch (const std::exception&) {
        return 1; // unreadable
    }
}

/// Explains why the region is invalid; empty if it is valid.
std::string regionTrouble(const SelectedCamera& camera) {
    std::vector<std::string> troubles;
    for (const Direction& direction : kDirections) {
        const auto end = readPixels(camera, direction.maximum);
        const auto offset = readPixels(camera, direction.offset);
        const auto length = readPixels(camera, direction.length);
        if (!end || !offset || !length) {
            continue;
        }
        const std::uint64_t unit = readUnit(camera, direction.length);
        for (const auto& [property, value] : {std::pair(direction.offset, *offset), {direction.length, *length}}) {
            if (const std::string trouble = unitTrouble(unit, value, 0, *end); !trouble.empty()) {
                troubles.push_back(fmt::format("property '{}' is {}: {}", property, value, trouble));
            }
        }
        if (*offset + *length > *end) {
            troubles.push_back(fmt::format("'{}' {} and '{}' {} reach beyond the sensor, which ends at {}",
                                           direction.offset, *offset, direction.length, *length, *end));
        }
    }
    return fmt::format("{}", fmt::join(troubles, "; "));
}

} // namespace

std::optional<std::uint64_t> unitIn(const std::string& increment) {
    const auto unit = wholePart(increment);
    return unit && *unit != 0 ? unit : std::nullopt;
}

std::string unitTrouble(std::uint64_t unit, std::uint64_t value, std::uint64_t least, std::uint64_t most) {
    if (value % unit == 0) {
        return "";
    }
    std::vector<std::uint64_t> nearest;
    for (const std::uint64_t candidate : {value - value % unit, value - value % unit + unit}) {
        if (candidate >= least && candidate <= most) {
            nearest.push_back(candidate);
        }
    }
    return fmt::format("it takes multiples of {}{}{}", unit,
                       nearest.empty()       ? ""
                       : nearest.size() == 1 ? "; the nearest is "
                                             : "; the nearest are ",
                       fmt::join(nearest, " and "));
}

ToolError withRegionTrouble(const SelectedCamera& camera, const ToolError& failure) {
    const std::string trouble = failure.code() == ExitCode::Failed ? regionTrouble(camera) : "";
    return trouble.empty() ? failure : ToolError(failure.code(), fmt::format("{} {}", failure.what(), trouble));
}

} // namespace QuillTool
