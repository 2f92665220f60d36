// SPDX-License-Identifier: Apache-2.0

#include "CameraListScaling.h"

#include <regex>

#include <benchmark/benchmark.h>

#include "Cameras/SimulatedCamera/SimulatedCamera.h"
#include "Support/DescriptionFiles.h"

namespace Benchmarks {

namespace {

using CameraInterface::Camera;
using CameraInterface::SimulatedAdapter::SimulatedCamera;

void firstEnumeration(benchmark::State& state) {
    for ([[maybe_unused]] const auto iteration : state) {
        useCameraList(static_cast<int>(state.range(0)));
        benchmark::DoNotOptimize(SimulatedCamera::getListOfCameras());
    }
}

void laterEnumeration(benchmark::State& state) {
    useCameraList(static_cast<int>(state.range(0)));
    SimulatedCamera::getListOfCameras();
    for ([[maybe_unused]] const auto iteration : state) {
        benchmark::DoNotOptimize(SimulatedCamera::getListOfCameras());
    }
}

void disconnectCheck(benchmark::State& state) {
    listCameras(static_cast<int>(state.range(0)));
    for ([[maybe_unused]] const auto iteration : state) {
        benchmark::DoNotOptimize(checkForDisconnectedCameras());
    }
}

void searchWithoutNews(benchmark::State& state) {
    listCameras(static_cast<int>(state.range(0)));
    for ([[maybe_unused]] const auto iteration : state) {
        benchmark::DoNotOptimize(Camera::searchForNewCameras());
    }
}

struct Operation {
    const char* name;
    void (*run)(benchmark::State&);
};
constexpr Operation kOperations[] = {
    {"enumeration, list file read", firstEnumeration},
    {"enumeration, list file known", laterEnumeration},
    {"disconnect check", disconnectCheck},
    {"search for new cameras, none new", searchWithoutNews},
};

/// Forwards each result instead of printing it.
class Forwarder : public benchmark::BenchmarkReporter {
public:
    explicit Forwarder(const std::function<void(ScalingResult)>& use) : m_Use(use) {}

    bool ReportContext(const Context&) override { return true; }
    void ReportRuns(const std::vector<Run>& runs) override {
        for (const Run& run : runs) {
            m_Use({run.run_name.function_name, std::stod(run.run_name.args),
                   run.real_accumulated_time / static_cast<double>(run.iterations)});
        }
    }

private:
    const std::function<void(ScalingResult)>& m_Use;
};

} // namespace

void measureCameraListScaling(const std::string& filter, const std::function<void(ScalingResult)>& use) {
    const std::regex expression(filter);
    bool any = false;
    for (const Operation& operation : kOperations) {
        if (std::regex_search(operation.name, expression)) {
            benchmark::RegisterBenchmark(operation.name, operation.run)
                ->RangeMultiplier(10)
                ->Range(10, 10000)
                ->MinTime(0.5)
                ->UseRealTime();
            any = true;
        }
    }
    if (any) {
        Forwarder forwarder(use);
        benchmark::RunSpecifiedBenchmarks(&forwarder);
    }
}

} // namespace Benchmarks
