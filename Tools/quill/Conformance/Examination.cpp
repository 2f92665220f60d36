// SPDX-License-Identifier: Apache-2.0

#include "Conformance/Examination.h"

#include <exception>

#include <fmt/format.h>

#include "Terminal/Text.h"
#include "Terminal/ToolError.h"

namespace QuillTool::Conformance {

namespace {

using Clock = std::chrono::steady_clock;

Finding makeCall(Subject& subject, const PublicCall& call, const StateDescription& state) {
    Finding finding{&call, state.state, std::string(documentedAnswer(call, subject.kind(), state.state)), {}};
    const Clock::time_point begin = Clock::now();
    finding.answer = call.answer(subject);
    finding.time = std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - begin);
    finding.conforms = allows(finding.expected, finding.answer);
    if (finding.time > kLongestCall) {
        finding.conforms = false;
        finding.answer += fmt::format(" after {} ms", finding.time.count());
    }
    return finding;
}

/// @return why the camera cannot be brought to the state; empty on success
std::string bring(Subject& subject, const StateDescription& state) {
    try {
        subject.renew();
        state.enter(subject);
        return "";
    } catch (const std::exception& failure) {
        return "the camera cannot be brought to this state: " + oneLine(reasonOf(failure));
    }
}

void examineState(Subject& subject, const StateDescription& state, const std::function<void()>& proceed,
                  std::vector<Finding>& findings) {
    bool isThere = false;
    for (const PublicCall& call : allPublicCalls()) {
        if (!isPossible(call, state, subject)) {
            continue;
        }
        proceed();
        if (!isThere) {
            if (const std::string obstacle = bring(subject, state); !obstacle.empty()) {
                findings.push_back({&call, state.state, "", obstacle});
                return;
            }
        }
        findings.push_back(makeCall(subject, call, state));
        isThere = call.effect == Effect::Keeps;
    }
}

} // namespace

std::vector<Finding> examine(Subject& subject, const std::function<void()>& proceed) {
    std::vector<Finding> findings;
    for (const StateDescription& state : allStates()) {
        if (state.isPossible(subject)) {
            examineState(subject, state, proceed, findings);
        }
    }
    return findings;
}

} // namespace QuillTool::Conformance
