// SPDX-License-Identifier: Apache-2.0

#include "Cameras/GenICam/GenICamPlug.h"

#include "GenICamCamera.h"
#include "NetworkPlug.h"
#include "Process.h"
#include "Version.h"

namespace GenICamAdapter {

namespace {

void restNow(bool atExit) {
    Process::instance().discovery().stop();
    if (atExit) {
        Process::instance().reaper().finish();
    }
}

constexpr CameraInterface::GenICam::Plug kPlug{QUILL_VERSION_TEXT,
                                               GenICamCamera::getListOfCameras,
                                               restNow,
                                               Network::describe,
                                               Network::setPersistentAddress,
                                               Network::setAddressMode,
                                               Network::setPacketSize,
                                               Network::setPacketDelay,
                                               Network::setHeartbeat,
                                               Network::forceAddress,
                                               Network::examine};

} // namespace

} // namespace GenICamAdapter

/// Returns the adapter; see GenICamPlug.h.
extern "C" QUILL_API const CameraInterface::GenICam::Plug* quill_genicam_plug() {
    return &GenICamAdapter::kPlug;
}
