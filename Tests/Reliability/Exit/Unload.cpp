// Loads a module that uses the library, and unloads it while a stream and the watching threads run, again and again.

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <thread>

#include <SoftwareDevices.h>
#include <dlfcn.h>
#include <unistd.h>

namespace {

auto threads() {
    return std::distance(std::filesystem::directory_iterator("/proc/self/task"), {});
}

std::size_t residentBytes() {
    std::size_t size = 0;
    std::size_t resident = 0;
    std::ifstream("/proc/self/statm") >> size >> resident;
    return resident * static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
}

/// A thread that was joined may be listed for a moment more.
bool threadsComeDownTo(std::ptrdiff_t count) {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::minutes(5);
    while (threads() > count && std::chrono::steady_clock::now() < deadline) {
        std::this_thread::yield();
    }
    return threads() == count;
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 3) {
        return EXIT_FAILURE;
    }
    SoftwareDevices::startEmpty();
    SoftwareDevices::DeviceDescription device = SoftwareDevices::defaultDevices()[1];
    device.sensorWidth = 1280;
    device.sensorHeight = 1024;
    const std::uint32_t serial = SoftwareDevices::plug(device);
    SoftwareDevices::setAsFastAsAsked(serial, true);
    std::thread([] {}).join(); // a sanitizer adds a thread of its own to the first one
    const auto threadsBefore = threads();
    std::size_t residentEarly = 0;
    for (int cycle = 0; cycle < 20; ++cycle) {
        void* const module = dlopen(argv[1], RTLD_NOW);
        auto* const use = module ? reinterpret_cast<bool (*)(const char*)>(dlsym(module, "useQuill")) : nullptr;
        if (use == nullptr || !use(std::to_string(serial).c_str()) || !SoftwareDevices::isStreaming(serial) ||
            dlclose(module) != 0) {
            return EXIT_FAILURE;
        }
        const bool isLoaded = dlopen(argv[2], RTLD_NOW | RTLD_NOLOAD) != nullptr;
        if (isLoaded || SoftwareDevices::isOpen(serial) || !threadsComeDownTo(threadsBefore)) {
            return EXIT_FAILURE;
        }
        residentEarly = cycle == 1 ? residentBytes() : residentEarly;
    }
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__) // these keep freed memory for a while
    // A frame has more than a megabyte: the buffers of a run must not stay.
    if (residentBytes() > residentEarly + (10U << 20)) {
        return EXIT_FAILURE;
    }
#endif
    return EXIT_SUCCESS;
}
