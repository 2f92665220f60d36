// SPDX-License-Identifier: Apache-2.0

#include "Camera/Session.h"

#include <algorithm>
#include <exception>
#include <string_view>
#include <vector>

namespace QuillTool {

using CameraInterface::Camera;

namespace {

/// The largest number of cameras that an error lists.
constexpr std::size_t kCamerasNamed = 10;

std::string enumerate(const std::vector<std::string>& serialNumbers) {
    const std::size_t named = std::min(serialNumbers.size(), kCamerasNamed);
    const auto end = serialNumbers.begin() + static_cast<std::ptrdiff_t>(named);
    const std::string names = fmt::format("{}", fmt::join(serialNumbers.begin(), end, ", "));
    return named == serialNumbers.size() ? names : fmt::format("{} and {} more", names, serialNumbers.size() - named);
}

} // namespace

ToolError SelectedCamera::explain(const std::string& tried, const std::exception& failure) const {
    const auto* explained = dynamic_cast<const ToolError*>(&failure);
    const ToolError error = explained == nullptr ? describeFailure(about(tried), failure) : *explained;
    return isGone() ? ToolError(ExitCode::CameraGone, fmt::format("{} The camera is gone.", error.what())) : error;
}

bool SelectedCamera::isGone() const noexcept {
    try {
        const Camera* listed = &Camera::getCamera(m_SerialNumber);
        return listed != m_Camera || (m_Camera->isConnected() && !m_Camera->isCameraAlive());
    } catch (const std::exception&) {
        return true;
    }
}

Session::~Session() {
    try {
        if (m_Open) {
            Camera::unitialisedWorkpace();
        }
    } catch (const std::exception& failure) {
        m_Output.warn(fmt::format("cannot close the cameras: {}", reasonOf(failure)));
    }
}

std::map<std::string, std::string> Session::listCameras() {
    m_Open = true;
    auto cameras = QuillTool::attempt("the cameras cannot be listed", [] {
        Camera::initialiseWorkspace();
        return Camera::getCamerasList();
    });
    const std::map<std::string, std::string> failures = Camera::getEnumerationFailures();
    for (const auto& [adapter, reason] : failures) {
        if (m_ReportedFailures.count(adapter) == 0) {
            m_Output.warn(fmt::format("{}: cannot be enumerated: {}", adapter, readable(reason)));
        }
    }
    m_ReportedFailures = failures;
    return cameras;
}

std::string Session::incompleteness() {
    std::vector<std::string> adapters;
    for (const auto& failure : Camera::getEnumerationFailures()) {
        adapters.push_back(failure.first);
    }
    return adapters.empty() ? "" : fmt::format("{} cannot be enumerated", fmt::join(adapters, ", "));
}

std::string Session::select(const std::string& selector) {
    const std::map<std::string, std::string> cameras = listCameras();
    if (cameras.count(selector) != 0) {
        return selector;
    }
    std::vector<std::string> all;
    std::vector<std::string> matches;
    for (const auto& camera : cameras) {
        all.push_back(camera.first);
        if (camera.first.compare(0, selector.size(), selector) == 0) {
            matches.push_back(camera.first);
        }
    }
    if (matches.size() > 1) {
        throw ToolError(ExitCode::Usage, fmt::format("camera '{}': matches several: {}", selector, enumerate(matches)));
    }
    if (matches.empty()) {
        const std::string present = all.empty() ? "there is none" : "there are: " + enumerate(all);
        const std::string incomplete = incompleteness();
        throw ToolError(ExitCode::NotFound, fmt::format("camera '{}': not found; {}{}{}", selector, present,
                                                        incomplete.empty() ? "" : "; ", incomplete));
    }
    return matches.front();
}

SelectedCamera Session::connect(const std::string& selector) {
    const std::string serialNumber = select(selector);
    return QuillTool::attempt(fmt::format("camera {}: cannot be connected", serialNumber), [&] {
        SelectedCamera camera(Camera::getCamera(serialNumber), serialNumber);
        camera->connect();
        return camera;
    });
}

} // namespace QuillTool
