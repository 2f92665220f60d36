// SPDX-License-Identifier: Apache-2.0

// Writes every frame of a stream as a JPEG file named after its number, on all cores. Ends with what is wrong if the
// camera is gone or a file cannot be written. Arguments: serial number, number of pictures, folder.

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <future>
#include <iostream>
#include <mutex>
#include <sstream>
#include <thread>

#include <Quill.h>
#include <turbojpeg.h>

using namespace CameraInterface;
using std::filesystem::path;

namespace {

void require(bool condition, const char* problem) {
    if (!condition) {
        throw std::runtime_error(problem);
    }
}

/// Writes the file whole or not at all.
void writeFile(const path& file, const unsigned char* bytes, unsigned long size) {
    const path part = file.string() + ".part";
    std::ofstream stream(part, std::ios::binary);
    stream.write(reinterpret_cast<const char*>(bytes), static_cast<std::streamsize>(size));
    stream.close();
    if (!stream) {
        throw std::filesystem::filesystem_error("not written", part, {errno, std::generic_category()});
    }
    std::filesystem::rename(part, file);
}

void writeJpeg(const path& file, const Imaging::Image& image, tjhandle encoder) {
    const auto color = Imaging::convertImage(image, Imaging::IMAGE_FORMAT::BGR);
    require(color->getBitDepth() == 8, "JPEG has 8 bits per sample: set the camera's pixel format.");
    const int width = static_cast<int>(color->getWidth()), height = static_cast<int>(color->getHeight());
    unsigned char* bytes = nullptr;
    unsigned long size = 0;
    const int status =
        tjCompress2(encoder, color->getDataAddress(), width, 0, height, TJPF_BGR, &bytes, &size, TJSAMP_420, 90, 0);
    const std::unique_ptr<unsigned char, decltype(&tjFree)> owner(bytes, &tjFree);
    require(status == 0, tjGetErrorStr2(encoder));
    writeFile(file, bytes, size);
}

/// What the threads share. Its queue bounds the frames in memory, and holds the stream back while all threads work.
struct Recording {
    FrameQueue frames;
    int count;
    path folder;
    std::atomic<int> claimed{0}, taken{0}, written{0};
    std::vector<StreamCounter> counters{}; ///< as they were when the last frame was taken
    std::once_flag failed{};
    std::exception_ptr failure{}; ///< the first

    /// Takes frames until there are enough; on several threads.
    void run() try {
        const std::unique_ptr<void, decltype(&tjDestroy)> encoder(tjInitCompress(), &tjDestroy);
        while (claimed++ < count) {
            const FrameResult result = frames.pop(std::chrono::seconds(10));
            require(bool(result), describe(result.status));
            if (++taken == count) {
                counters = frames.getCounters();
            }
            char name[40];
            std::snprintf(name, sizeof name, "frame-%08ju.jpg", std::uintmax_t{result.frame.information.number});
            writeJpeg(folder / name, *result.frame.image, encoder.get());
            ++written;
        }
    } catch (...) {
        std::call_once(failed, [this] { failure = std::current_exception(); });
        frames.close(); // ends the other threads
    }
};

} // namespace

int main(int argumentCount, char* arguments[]) try {
    int count = 0;
    require(argumentCount == 4 && std::istringstream(arguments[2]) >> count && count > 0,
            "Usage: quill_record_pictures SERIAL COUNT FOLDER");
    std::filesystem::create_directories(arguments[3]);
    Camera::initialiseWorkspace();
    Camera& camera = Camera::getCamera(arguments[1]);
    camera.connect();
    if (camera.isPropertySupported("Pixel Format")) {
        camera.getProperty("Pixel Format").setValue("8");
    }
    Recording recording{camera.openFrameQueue({8, WhenFull::HoldBack, "recorder"}), count, arguments[3]};
    camera.startStream();
    std::vector<std::future<void>> threads(std::max(2U, std::thread::hardware_concurrency()));
    for (std::future<void>& thread : threads) {
        thread = std::async(std::launch::async, &Recording::run, &recording);
    }
    threads.clear(); // waits for them
    std::cout << recording.written << " of " << count << " pictures written\n";
    for (const auto& counter : recording.counters.empty() ? recording.frames.getCounters() : recording.counters) {
        if (counter.isLoss && counter.value > 0) {
            std::cout << counter.name << ": " << counter.value << '\n';
        }
    }
    if (recording.failure) {
        std::rethrow_exception(recording.failure);
    }
    Camera::unitialisedWorkpace();
} catch (const std::exception& failure) {
    std::cerr << failure.what() << '\n';
    return 1;
}
