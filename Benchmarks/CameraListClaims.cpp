// SPDX-License-Identifier: Apache-2.0

#include <fstream>
#include <stdexcept>
#include <string>

#include <benchmark/benchmark.h>
#include <nlohmann/json.hpp>

#include "Cameras/SimulatedCamera/DescriptionFile.h"
#include "Claims.h"
#include "Support/DescriptionFiles.h"

namespace Benchmarks {

namespace {

using namespace CameraInterface::SimulatedAdapter;

constexpr int kFew = 100;
constexpr int kMany = 10000;
constexpr double kLoadLimit = 1.35;
constexpr double kLoadGrowthLimit = 1.6;
constexpr double kCheckGrowthLimit = 1.5;

Variant parse(int cameras) {
    return {[path = cameraListFile(cameras)] {
        std::ifstream file(path);
        nlohmann::json document;
        file >> document;
        benchmark::DoNotOptimize(document);
    }};
}

Variant load(int cameras) {
    return {[] { benchmark::DoNotOptimize(loadSimulatedCameraList()); }, static_cast<double>(cameras),
            [cameras] { useCameraList(cameras); }};
}

Variant loadProperties(int cameras) {
    return {[lastSerialNumber = "S" + std::to_string(100000 + cameras - 1)] {
                benchmark::DoNotOptimize(loadPropertyDescriptions(lastSerialNumber));
            },
            1, [cameras] { useCameraList(cameras); }};
}

Variant disconnectCheck(int cameras) {
    return {[] {
                if (checkForDisconnectedCameras() != 0) {
                    throw std::logic_error("No camera went away, but one was dropped.");
                }
            },
            static_cast<double>(cameras), [cameras] { listCameras(cameras); }};
}

/// The same load as parse(), compared as a whole.
Variant whole(Variant variant) {
    variant.pieces = 1;
    return variant;
}

Claim loadClaim(int cameras) {
    return {"P14", "camera list of " + std::to_string(cameras) + " loaded", "bare parse", kLoadLimit,
            [cameras] { return std::pair(parse(cameras), whole(load(cameras))); }};
}

} // namespace

std::vector<Claim> cameraListClaims(Scope) {
    return {
        loadClaim(kFew),
        loadClaim(kMany),
        {"P14", "properties of one of 100 cameras loaded", "bare parse", kLoadLimit,
         [] { return std::pair(parse(kFew), loadProperties(kFew)); }},
        {"P14", "camera list loaded, per camera of 10,000", "per camera of 100", kLoadGrowthLimit,
         [] { return std::pair(load(kFew), load(kMany)); }},
        {"P15", "disconnect check, per camera of 10,000", "per camera of 100", kCheckGrowthLimit,
         [] { return std::pair(disconnectCheck(kFew), disconnectCheck(kMany)); }},
    };
}

} // namespace Benchmarks
