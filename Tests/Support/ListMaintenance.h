#pragma once

#include "Cameras/Camera.h"

namespace TestSupport {

/// Runs of the list's maintenance, with callbacks, at the moment that a test chooses instead of by the clock.
bool dropVanishedCameras();
bool addNewCameras();

/// An explicit instantiation may name what is private; this one hands it out.
template <bool (*dropVanished)(), bool (*addNew)()>
struct ListMaintenance {
    friend bool dropVanishedCameras() { return dropVanished(); }
    friend bool addNewCameras() { return addNew(); }
};

} // namespace TestSupport
