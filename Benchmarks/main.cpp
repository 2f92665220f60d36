#include <algorithm>
#include <cstdio>
#include <exception>
#include <regex>
#include <stdexcept>
#include <string>

#include <opencv2/core.hpp>

#include "CameraListScaling.h"
#include "Claims.h"
#include "Support/Report.h"

namespace {

using namespace Benchmarks;

struct Options {
    bool json = false;
    bool brief = false;
    std::string filter = ".";
};

Options parseOptions(int argc, char** argv) {
    Options options;
    for (int i = 1; i < argc; ++i) {
        const std::string argument = argv[i];
        if (argument == "--json") {
            options.json = true;
        } else if (argument == "--short") {
            options.brief = true;
        } else if (argument == "--filter" && i + 1 < argc) {
            options.filter = argv[++i];
        } else {
            throw std::invalid_argument("usage: quill_benchmarks [--json] [--short] [--filter REGEX]");
        }
    }
    return options;
}

constexpr int kRounds = 21;
constexpr int kRoundsOfShortForm = 7;
/// What the short form forgives: it is for machines that do other things as well.
constexpr double kToleranceOfShortForm = 2;

/// Whether all goals are met, in the short form by twice the ratio.
bool run(const Options& options) {
    // Results of one thread: what several gain is the same on both sides, and less regular.
    cv::setNumThreads(1);
    const Scope scope = options.brief ? Scope::Short : Scope::Full;
    const double tolerance = options.brief ? kToleranceOfShortForm : 1;
    const std::regex filter(options.filter);
    Report report(options.json);
    bool allMet = true;
    for (const auto& claims : {conversionClaims, bufferClaims, exportClaims, cameraListClaims, propertyClaims,
                               hashClaims, firmwareClaims, streamClaims, sdkCameraClaims}) {
        for (const Claim& claim : claims(scope)) {
            if (std::regex_search(claim.goal + " " + claim.what, filter)) {
                const Measurement measurement = measure(claim, options.brief ? kRoundsOfShortForm : kRounds);
                report.add(claim, measurement);
                allMet = allMet && measurement.ratio <= claim.limit * tolerance;
            }
        }
    }
    measureCameraListScaling(options.filter, options.brief, [&](const ScalingResult& result) { report.add(result); });
    report.finish();
    return allMet;
}

} // namespace

int main(int argc, char** argv) {
    try {
        return run(parseOptions(argc, argv)) ? 0 : 1;
    } catch (const std::exception& failure) {
        std::fprintf(stderr, "%s\n", failure.what());
        return 2;
    }
}
