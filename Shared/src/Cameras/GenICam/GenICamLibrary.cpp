// SPDX-License-Identifier: Apache-2.0

#include "Cameras/GenICam/GenICamLibrary.h"

#include <atomic>
#include <string>

#include "Base/SharedLibrary.h"
#include "Cameras/GenICam/GenICamPlug.h"
#include "Exceptions/Raise.h"
#include "Version.h"

namespace CameraInterface::GenICam {

using namespace KestrelExceptions;

namespace {

constexpr const char* kLibraryName = "quillcamera-genicam";

struct LoadedPlug {
    const Plug* plug = nullptr;
    std::string failure;
};

std::atomic<const Plug*> loadedPlug{nullptr};

LoadedPlug load() {
    const Base::SharedLibrary library(Base::getLibraryFolder(), kLibraryName);
    void* const symbol = library.find(kPlugName);
    if (symbol == nullptr) {
        return {nullptr, library.failure().empty() ? "the library has no adapter" : library.failure()};
    }
    const Plug* const plug = reinterpret_cast<const Plug* (*)()>(symbol)();
    if (std::string(plug->version) != QUILL_VERSION_TEXT) {
        return {nullptr,
                std::string("the adapter is of version ") + plug->version + ", this library of " QUILL_VERSION_TEXT};
    }
    loadedPlug = plug;
    return {plug, ""};
}

const LoadedPlug& loadOnce() {
    static const LoadedPlug loaded = load();
    return loaded;
}

} // namespace

std::vector<std::unique_ptr<Camera>> getListOfCameras() {
    const Settings settings = getSettings();
    const bool isNetworkNamed = !settings.cards.empty() || !settings.addresses.empty();
    const bool isNeeded = isNetworkNamed || (settings.usb && isUsb3VisionDeviceAttached());
    if (!isNeeded && loadedPlug.load() == nullptr) {
        return {};
    }
    if (!isNetworkNamed && loadOnce().plug == nullptr) {
        return {};
    }
    return requirePlug().getListOfCameras(settings);
}

const Plug& requirePlug() {
    const LoadedPlug& loaded = loadOnce();
    if (loaded.plug == nullptr) {
        throw KestrelException::create(Errors::kCameraEnumeration.name, __FILE__, __LINE__,
                                       std::string(Errors::kCameraEnumeration.description) + " " + loaded.failure);
    }
    return *loaded.plug;
}

void rest(bool atExit) {
    if (const Plug* plug = loadedPlug) {
        plug->rest(atExit);
    }
}

} // namespace CameraInterface::GenICam
