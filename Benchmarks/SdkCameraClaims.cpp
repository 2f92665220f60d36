// SPDX-License-Identifier: Apache-2.0

#include <array>
#include <charconv>
#include <memory>
#include <string>

#include <benchmark/benchmark.h>

#include "Claims.h"
#include "PropertyNames.h"
#include "Support/BoundaryRecording.h"
#include "Support/SdkCamera.h"

namespace Benchmarks {

namespace {

using CameraInterface::Property;
using CameraInterface::PropertyNames::kVideoExposure;
using OrvexAdapter::orvexApi;

constexpr double kPropertyLimit = 1.3;
constexpr std::uint32_t kVideoExposureNumber = 20;
constexpr double kConnectLimit = 2;

/// Texts in turn, so that no two writes in a row are the same.
constexpr std::array kTexts{"12.5", "137.25"};

std::string textOf(float value) {
    std::array<char, 64> buffer{};
    const auto end = std::to_chars(buffer.data(), buffer.data() + buffer.size(), value, std::chars_format::fixed, 6);
    return {buffer.data(), end.ptr};
}

float valueOf(const std::string& text) {
    float value = 0;
    std::from_chars(text.data(), text.data() + text.size(), value);
    return value;
}

std::pair<Variant, Variant> readingOfCamera() {
    const auto camera = std::make_shared<SdkCamera>();
    Property& exposure = (*camera)->getProperty(kVideoExposure);
    return {{[=] {
                float value = 0;
                std::int32_t flags = 0;
                orvexApi().sdkGetProperty((*camera)->getHandle(), kVideoExposureNumber, &value, &flags);
                benchmark::DoNotOptimize(textOf(value));
            }},
            {[=, &exposure] {
                benchmark::DoNotOptimize(camera);
                benchmark::DoNotOptimize(exposure.getValue());
            }}};
}

std::pair<Variant, Variant> writingToCamera() {
    const auto camera = std::make_shared<SdkCamera>();
    Property& exposure = (*camera)->getProperty(kVideoExposure);
    exposure.setValue(kTexts[0]);
    const auto calls = std::make_shared<BoundaryRecording>([&] { exposure.setValue(kTexts[1]); });
    const std::array<std::string, kTexts.size()> texts{kTexts[0], kTexts[1]};
    return {{[=, i = std::size_t{0}]() mutable {
                benchmark::DoNotOptimize(valueOf(texts[i++ % texts.size()]));
                calls->replay((*camera)->getHandle());
            }},
            {[=, &exposure, i = std::size_t{0}]() mutable {
                benchmark::DoNotOptimize(camera);
                exposure.setValue(texts[i++ % texts.size()]);
            }}};
}

BoundaryRecording recordConnection(SdkCamera& camera) {
    return BoundaryRecording([&] { camera.makeDisconnected()->connect(); });
}

/// Connects a new camera object and closes it again.
std::pair<Variant, Variant> connecting() {
    const auto camera = std::make_shared<SdkCamera>();
    (*camera)->disconnect();
    const auto calls = std::make_shared<BoundaryRecording>(recordConnection(*camera));
    return {{[=] {
                benchmark::DoNotOptimize(camera);
                calls->replay(nullptr);
            }},
            {[=] { camera->makeDisconnected()->connect(); }}};
}

std::string connectionFloor() {
    SdkCamera camera;
    return "its " + std::to_string(recordConnection(camera).size()) + " calls";
}

} // namespace

std::vector<Claim> sdkCameraClaims(Scope) {
    return {{"P17", "SDK property read as text", "calls, to_chars", kPropertyLimit, readingOfCamera},
            {"P17", "SDK property written as text", "calls, from_chars", kPropertyLimit, writingToCamera},
            {"P19", "SDK camera connected and closed", connectionFloor(), kConnectLimit, connecting}};
}

} // namespace Benchmarks
