// SPDX-License-Identifier: Apache-2.0

#include "Serve/Cameras/Reports.h"

#include <chrono>

#include <Quill.h>
#include <fmt/chrono.h>
#include <fmt/format.h>

#include "Camera/CameraJson.h"
#include "Terminal/Numbers.h"

namespace QuillTool::Serve {

using CameraInterface::Camera;
using CameraInterface::STREAM_TYPE;

namespace {

constexpr double kMillisecondsPerSecond = 1000.0;

constexpr const char* kTemperatures[] = {CameraInterface::PropertyNames::kCameraTemperature,
                                         CameraInterface::PropertyNames::kSensorTemperature};

Json temperaturesOf(const SelectedCamera& camera) {
    Json temperatures = Json::array();
    for (const char* name : kTemperatures) {
        if (!camera->isPropertySupported(name)) {
            continue;
        }
        CameraInterface::Property& property = camera->getProperty(name);
        if (const auto value = parseNumber(property.getValue(), NumberKind::Real)) {
            temperatures.push_back({{"name", name}, {"value", *value}, {"unit", property.getUnit()}});
        }
    }
    return temperatures;
}

} // namespace

Json listReport(KnownCameras& known) {
    Json cameras = Json::array();
    for (const auto& [serialNumber, modelName] : Camera::getCamerasList()) {
        Json camera = listedCameraJson(serialNumber, modelName);
        // One that left while it streamed comes back disconnected.
        camera["isStreaming"] = camera["state"] == "connected" && known.isStreaming(serialNumber);
        cameras.push_back(std::move(camera));
    }
    return {{"cameras", cameras}, {"failures", enumerationFailuresJson()}};
}

Json cameraReport(KnownCamera& camera, const SelectedCamera& selected) {
    camera.rememberStreaming(selected->isConnected() && selected->isStreaming());
    Json report = listedCameraJson(selected.serialNumber(), selected->getModelName());
    report["isStreaming"] = camera.isStreaming();
    return report;
}

Json statisticsReport(const SelectedCamera& camera) {
    Json report{{"camera", camera.serialNumber()}, {"isStreaming", camera->isStreaming()}};
    auto& statistics = camera->getStreamStatistics();
    report["deliveredPerSecond"] = statistics.getFramesPerSecond(STREAM_TYPE::Delivered);
    report["receivedPerSecond"] = statistics.getFramesPerSecond(STREAM_TYPE::Received);
    report["captureTimeMs"] = statistics.getCaptureTime() * kMillisecondsPerSecond;
    report["transferTimeMs"] = statistics.getImageDataTransferTime() * kMillisecondsPerSecond;
    report["temperatures"] = temperaturesOf(camera);
    Json& counters = report["counters"] = Json::array();
    const std::string replaced = fmt::format("Dropped by {}", kViewersQueue);
    for (const auto& counter : camera->getStreamCounters()) {
        const bool isReplaced = counter.name == replaced; // viewers want the newest frame, not all
        counters.push_back(
            {{"name", counter.name},
             {"value", counter.value},
             {"isLoss", counter.isLoss && !isReplaced},
             {"description", isReplaced ? "Frames for which no viewer was ready." : counter.description}});
    }
    return report;
}

Json logReport(const char* level, const std::string& serialNumber, const std::string& text) {
    const auto now = std::chrono::time_point_cast<std::chrono::seconds>(std::chrono::system_clock::now());
    return {{"time", fmt::format("{:%Y-%m-%dT%H:%M:%SZ}", fmt::gmtime(std::chrono::system_clock::to_time_t(now)))},
            {"level", level},
            {"camera", serialNumber.empty() ? Json() : Json(serialNumber)},
            {"text", text}};
}

} // namespace QuillTool::Serve
