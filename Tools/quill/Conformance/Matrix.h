// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string_view>

#include "Conformance/PublicCalls.h"
#include "Conformance/States.h"

namespace QuillTool::Conformance {

/// Returns the documented answer of a call on a camera of a kind in a state. Bars separate alternatives that the
/// documentation allows.
std::string_view documentedAnswer(const PublicCall& call, Kind kind, State state);

/// Returns whether @p answer is among the alternatives of a documented answer.
bool allows(std::string_view documented, std::string_view answer);

/// Returns whether the call is possible: after the end of the workspace, no camera exists.
bool isPossible(const PublicCall& call, const StateDescription& state, const Subject& subject);

} // namespace QuillTool::Conformance
