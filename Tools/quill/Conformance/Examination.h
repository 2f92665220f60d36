// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <chrono>
#include <functional>
#include <string>
#include <vector>

#include "Conformance/Matrix.h"

namespace QuillTool::Conformance {

/// The time limit of a call in any state.
constexpr std::chrono::seconds kLongestCall{10};

/// One call in one state: the expected and the actual answer.
struct Finding {
    const PublicCall* call;
    State state;
    std::string expected;
    std::string answer;
    std::chrono::milliseconds time{0};
    bool conforms = false;
};

/// Makes every public call in every state that the camera can reach. Abandons a state that it cannot reach again, with
/// one finding that gives the reason.
/// @param proceed  called before each call; its exceptions end the examination
std::vector<Finding> examine(Subject& subject, const std::function<void()>& proceed);

} // namespace QuillTool::Conformance
