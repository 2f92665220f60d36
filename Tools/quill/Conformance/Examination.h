// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <chrono>
#include <functional>
#include <string>
#include <vector>

#include "Conformance/Matrix.h"

namespace QuillTool::Conformance {

/// No call may take longer, whatever state the camera is in.
constexpr std::chrono::seconds kLongestCall{10};

/// One call in one state: what it should answer and what it did.
struct Finding {
    const PublicCall* call;
    State state;
    std::string expected;
    std::string answer;
    std::chrono::milliseconds time{0};
    bool conforms = false;
};

/// Makes every public call in every state that the camera can be brought to. A state that it cannot be brought to again
/// is given up with one finding that says why.
/// @param proceed  asked before each call; what it throws ends the examination
std::vector<Finding> examine(Subject& subject, const std::function<void()>& proceed);

} // namespace QuillTool::Conformance
