// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <utility>

#include "Camera/Session.h"

namespace QuillTool {

/// What an edge of the image, such as "Width", must be a multiple of; nothing for any other property, or where it
/// cannot be read.
std::optional<std::uint64_t> unitOf(const SelectedCamera& camera, const std::string& property);

/// "it takes multiples of 8; the nearest are 96 and 104", of those from @p least to @p most; empty where @p value is
/// one.
std::string unitTrouble(std::uint64_t unit, std::uint64_t value, std::uint64_t least, std::uint64_t most);

/// A failure, and with it why the camera cannot deliver the region that its properties ask for, if it cannot.
ToolError withRegionTrouble(const SelectedCamera& camera, const ToolError& failure);

/// Runs an action of a camera that starts its stream, like SelectedCamera::attempt(): a camera refuses a region without
/// saying why.
template <typename Action>
auto attemptStart(const SelectedCamera& camera, const std::string& tried, Action&& action) {
    try {
        return camera.attempt(tried, std::forward<Action>(action));
    } catch (const ToolError& failure) {
        throw withRegionTrouble(camera, failure);
    }
}

} // namespace QuillTool
