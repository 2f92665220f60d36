// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string_view>

#include "Conformance/PublicCalls.h"
#include "Conformance/States.h"

namespace QuillTool::Conformance {

/// The documented answer of a call on a camera of a kind in a state; several, with bars between them, where the
/// documentation leaves the choice.
std::string_view documentedAnswer(const PublicCall& call, Kind kind, State state);

/// Whether a documented answer has @p answer among its choices.
bool allows(std::string_view documented, std::string_view answer);

/// Whether the call can be made at all: after the end of the workspace there is no camera.
bool isPossible(const PublicCall& call, const StateDescription& state, const Subject& subject);

} // namespace QuillTool::Conformance
