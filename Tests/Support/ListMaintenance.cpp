// SPDX-License-Identifier: Apache-2.0

#include "Support/ListMaintenance.h"

#include "Cameras/Camera.h"

namespace TestSupport {

namespace {

bool runDropVanished();
bool runAddNew();

/// Gives access to private functions: an explicit instantiation may name them.
template <bool (*dropVanished)(), bool (*addNew)()>
struct ListMaintenance {
    friend bool runDropVanished() { return dropVanished(); }
    friend bool runAddNew() { return addNew(); }
};

template struct ListMaintenance<&CameraInterface::Camera::callbackWatchdogDisconnect,
                                &CameraInterface::Camera::callbackWatchdogNewConnect>;

} // namespace

bool dropVanishedCameras() {
    return runDropVanished();
}

bool addNewCameras() {
    return runAddNew();
}

} // namespace TestSupport
