// SPDX-License-Identifier: Apache-2.0

#include <array>
#include <chrono>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include <fcntl.h>
#include <png.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include "Claims.h"
#include "Support/TemporaryFolder.h"

namespace Benchmarks {

namespace {

using Milliseconds = std::chrono::duration<double, std::milli>;

constexpr double kStartMilliseconds = 10;
constexpr double kPictureLimit = 1.2;

/// The camera of the picture: its frames have 8 bits, and come at its first frame rate.
const char* const kPictureCamera = "41500101";
constexpr png_uint_32 kPictureWidth = 2592;
constexpr png_uint_32 kPictureHeight = 1944;
constexpr double kFramePeriodMilliseconds = 1000.0 / 15;
constexpr int kPictureCompression = 1; ///< the tool's

/// Runs the tool as a fresh process, without output; returns the time that it takes.
double millisecondsOfTool(std::vector<std::string> words) {
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    for (const int descriptor : {STDOUT_FILENO, STDERR_FILENO}) {
        posix_spawn_file_actions_addopen(&actions, descriptor, "/dev/null", O_WRONLY, 0);
    }
    words.insert(words.begin(), QUILL_BENCHMARK_TOOL);
    std::vector<char*> arguments;
    for (std::string& word : words) {
        arguments.push_back(word.data());
    }
    arguments.push_back(nullptr);
    pid_t child = 0;
    int status = 0;
    const auto begin = std::chrono::steady_clock::now();
    const bool ran = posix_spawn(&child, arguments.front(), &actions, nullptr, arguments.data(), environ) == 0 &&
                     waitpid(child, &status, 0) == child && status == 0;
    const Milliseconds time = std::chrono::steady_clock::now() - begin;
    posix_spawn_file_actions_destroy(&actions);
    if (!ran) {
        throw std::runtime_error("The tool failed: " + words.at(1) + ".");
    }
    return time.count();
}

/// The time of a fresh process that loads the library and both flat libraries, and lists the cameras.
double millisecondsOfStart() {
    constexpr int kStarts = 15;
    std::vector<double> times;
    for (int start = 0; start < kStarts; ++start) {
        times.push_back(millisecondsOfTool({"list"}));
    }
    return median(times);
}

/// The time in which libpng alone writes the samples of a picture.
double millisecondsOfLibpng(const std::vector<char>& samples, const std::string& path) {
    const auto begin = std::chrono::steady_clock::now();
    const std::unique_ptr<FILE, int (*)(FILE*)> file(std::fopen(path.c_str(), "wb"), &std::fclose);
    png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
    png_infop info = png_create_info_struct(png);
    png_init_io(png, file.get());
    png_set_compression_level(png, kPictureCompression);
    png_set_IHDR(png, info, kPictureWidth, kPictureHeight, 8, PNG_COLOR_TYPE_GRAY, PNG_INTERLACE_NONE,
                 PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
    png_write_info(png, info);
    for (png_uint_32 row = 0; row < kPictureHeight; ++row) {
        png_write_row(png, reinterpret_cast<png_const_bytep>(&samples.at(std::size_t{row} * kPictureWidth)));
    }
    png_write_end(png, nullptr);
    png_destroy_write_struct(&png, &info);
    return Milliseconds(std::chrono::steady_clock::now() - begin).count();
}

/// The time in which a fresh process captures a picture and writes it, in times of what it cannot do without.
double ratioOfCapture() {
    constexpr int kPictures = 9;
    const TestSupport::TemporaryFolder folder;
    const std::string raw = folder.file("picture.raw");
    millisecondsOfTool({"capture", kPictureCamera, "-o", raw});
    std::ifstream stream(raw, std::ios::binary);
    const std::vector<char> samples{std::istreambuf_iterator<char>(stream), {}};
    const std::string written = folder.file("written.png");
    const std::string captured = folder.file("captured.png");
    std::vector<double> ratios;
    for (int picture = 0; picture < kPictures; ++picture) {
        const double floor = kFramePeriodMilliseconds + millisecondsOfLibpng(samples, written);
        ratios.push_back(millisecondsOfTool({"capture", kPictureCamera, "-o", captured}) / floor);
    }
    return median(ratios);
}

} // namespace

std::vector<Claim> toolClaims(Scope scope) {
    if (scope == Scope::Short) {
        return {}; // the first is no ratio, and the second needs a machine that does nothing else
    }
    return {countingClaim("P23", "fresh process lists the cameras", "milliseconds", kStartMilliseconds,
                          millisecondsOfStart),
            countingClaim("P33", "5 MP captured to PNG by a fresh process", "x frame period, libpng", kPictureLimit,
                          ratioOfCapture)};
}

} // namespace Benchmarks
