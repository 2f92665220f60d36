// SPDX-License-Identifier: Apache-2.0

// Threads that concurrently do everything an application may do, while devices come and go. Every thread draws its
// operations from the seed; their interleaving depends on the machine.
//
//   quill_storm [--seed N] [--operations N] [--seconds N] [--samples FILE]
//
// --operations is the number of operations of each thread in a round; with --seconds, rounds repeat for that time. In
// every other round only one thread maintains the list, so that the callbacks of each camera must alternate. Between
// rounds the file gets seconds, resident KiB, threads, open descriptors and operations so far.

#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <string>
#include <thread>

#include <SoftwareDevices.h>

#include "Base/SharedLibrary.h"
#include "Cameras/SimulatedCamera/DescriptionFile.h"
#include "Imaging/Conversion.h"
#include "Reliability/Storm/Round.h"
#include "Reliability/Storm/Tally.h"
#include "Support/ProcessFigures.h"

// Replaces definitions of library files that are not linked here.
std::string Base::getLibraryFolder() {
    return QUILL_TEST_LIBRARY_FOLDER;
}
std::string CameraInterface::SimulatedAdapter::getDescriptionFilePath() {
    return QUILL_STORM_CAMERA_LIST;
}

namespace {

using namespace Storm;
using TestSupport::openDescriptors;
using TestSupport::residentBytes;
using TestSupport::threadsOfProcess;
using Clock = std::chrono::steady_clock;

constexpr std::size_t kMemoryAllowance = 24U << 20;

/// Converts on more threads than may run OpenCV's parallel loops; further threads then convert on the library's own
/// threads.
void convertOnManyThreads() {
    using namespace Imaging;
    const auto image = createImage(64, 48, std::vector<unsigned char>(64 * 48), 8, true, IMAGE_FORMAT::BAYER_RGGB);
    for (int i = 0; i < 1000; ++i) {
        std::thread([&image] { convertImage(image, IMAGE_FORMAT::MONO); }).join();
    }
}

} // namespace

int main(int argc, char** argv) {
    std::uint32_t operations = 600;
    long seconds = 0;
    std::ofstream samples;
    for (int i = 1; i + 1 < argc; i += 2) {
        const long value = std::strtol(argv[i + 1], nullptr, 10);
        if (std::strcmp(argv[i], "--seed") == 0) {
            tally().seed = static_cast<std::uint32_t>(value);
        } else if (std::strcmp(argv[i], "--operations") == 0) {
            operations = static_cast<std::uint32_t>(value);
        } else if (std::strcmp(argv[i], "--seconds") == 0) {
            seconds = value;
        } else if (std::strcmp(argv[i], "--samples") == 0) {
            samples.open(argv[i + 1]);
        }
    }
    convertOnManyThreads();
    const std::size_t threadsAtStart = threadsOfProcess();
    const auto begin = Clock::now();
    std::size_t residentEarly = 0;
    std::size_t descriptorsEarly = 0;
    std::uint32_t round = 0;
    for (; !tally().failed && (round < 4 || Clock::now() < begin + std::chrono::seconds(seconds)); ++round) {
        runRound(round, operations, threadsAtStart);
        if (round == 1) {
            residentEarly = residentBytes();
            descriptorsEarly = openDescriptors();
        }
        samples << std::chrono::duration<double>(Clock::now() - begin).count() << ' ' << residentBytes() / 1024 << ' '
                << threadsOfProcess() << ' ' << openDescriptors() << ' ' << tally().operations << std::endl;
    }
#ifndef QUILL_SANITIZED // these keep freed memory for a while
    require(residentBytes() < residentEarly + kMemoryAllowance, "memory grows");
#endif
    require(openDescriptors() == descriptorsEarly, "descriptors are left open");
    require(tally().callbacks > 0, "no callback ran");
    std::printf("seed %u: %u rounds, %llu operations, %llu refused calls, %llu callbacks, %llu boundary calls, "
                "%zu KiB early, %zu KiB at the end\n",
                tally().seed, round, static_cast<unsigned long long>(tally().operations),
                static_cast<unsigned long long>(tally().refusals), static_cast<unsigned long long>(tally().callbacks),
                static_cast<unsigned long long>(SoftwareDevices::boundaryCalls()), residentEarly >> 10,
                residentBytes() >> 10);
    return tally().failed ? EXIT_FAILURE : EXIT_SUCCESS;
}
