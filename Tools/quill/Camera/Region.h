// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <utility>

#include "Camera/Session.h"

namespace QuillTool {

/// Returns the whole number, not 0, that the text of an increment stands for.
std::optional<std::uint64_t> unitIn(const std::string& increment);

/// Returns "it takes multiples of 8; the nearest are 96 and 104", limited to those from @p least to @p most; empty if
/// @p value is a multiple.
std::string unitTrouble(std::uint64_t unit, std::uint64_t value, std::uint64_t least, std::uint64_t most);

/// Adds to a failure why the camera cannot deliver the region that its properties define, if it cannot.
ToolError withRegionTrouble(const SelectedCamera& camera, const ToolError& failure);

/// Runs an action that starts the camera's stream, like SelectedCamera::attempt(), and explains an invalid region:
/// cameras refuse it without a reason.
template <typename Action>
auto attemptStart(const SelectedCamera& camera, const std::string& tried, Action&& action) {
    try {
        return camera.attempt(tried, std::forward<Action>(action));
    } catch (const ToolError& failure) {
        throw withRegionTrouble(camera, failure);
    }
}

} // namespace QuillTool
