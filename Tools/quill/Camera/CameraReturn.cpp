// SPDX-License-Identifier: Apache-2.0

#include "Camera/CameraReturn.h"

#include <algorithm>

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include "Camera/CameraKind.h"
#include "Terminal/NumberArgument.h"

namespace QuillTool {

using CameraInterface::Camera;

namespace {

/// A restarting camera leaves the list within this time, because the library enumerates every half second. A camera
/// that stays, such as a simulated camera, restarts without leaving.
constexpr std::chrono::seconds kDepartureTime{3};

bool isListed(const std::string& serialNumber) {
    return Camera::getCamerasList().count(serialNumber) != 0;
}

} // namespace

void ReturnOptions::describe(CLI::App& parser) {
    parser.add_flag("--no-wait", noWait, "Do not wait for the camera to return");
    describeTimeout(parser);
}

CLI::Option* ReturnOptions::describeTimeout(CLI::App& parser) {
    constexpr unsigned kLongest = 3600;
    return addNumber(parser, "--timeout", timeoutSeconds, "Seconds to wait for the camera to return", 1, kLongest)
        ->capture_default_str();
}

CameraReturn::CameraReturn(Context& context, const SelectedCamera& camera, const ReturnOptions& options)
    : m_Context(context), m_Camera(camera), m_Timeout(options.timeoutSeconds), m_Quiet(options.quiet) {}

bool CameraReturn::await() {
    const Clock::time_point begin = Clock::now();
    if (!waitUntil(begin + std::min(kDepartureTime, m_Timeout), [this] { return m_Left; })) {
        report("responds, and did not leave the list");
        return false;
    }
    report("left the list");
    const std::string& serialNumber = m_Camera.serialNumber();
    if (!waitUntil(begin + m_Timeout, [&] { return isListed(serialNumber); })) {
        throw ToolError(ExitCode::TimedOut, m_Camera.about(fmt::format(
                                                "left the list and did not come back within {} s", m_Timeout.count())));
    }
    report(fmt::format("is back as {}", nameOf(kindOf(*m_Context.session.connect(serialNumber)))));
    return true;
}

template <typename Condition>
bool CameraReturn::waitUntil(Clock::time_point deadline, Condition&& isMet) {
    while (!isMet()) {
        if (Clock::now() >= deadline) {
            return false;
        }
        waitForChange(deadline);
    }
    return true;
}

void CameraReturn::waitForChange(Clock::time_point deadline) {
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now());
    waitForAny({&m_Context.interrupt.waker(), &m_Changes.waker()}, left);
    if (m_Context.interrupt.requested()) {
        throw ToolError(ExitCode::Interrupted, m_Camera.about("interrupted during its restart, which continues"));
    }
    const std::vector<Departure> departures = m_Changes.takeDepartures();
    m_Left = m_Left || std::any_of(departures.begin(), departures.end(), [this](const Departure& departure) {
                 return departure.serialNumber == m_Camera.serialNumber();
             });
}

void CameraReturn::report(const std::string& what) {
    if (!m_Quiet) {
        m_Context.output.notify(m_Camera.about(what));
    }
}

} // namespace QuillTool
