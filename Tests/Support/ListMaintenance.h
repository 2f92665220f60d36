// SPDX-License-Identifier: Apache-2.0
#pragma once

namespace TestSupport {

/// Runs of the list's maintenance, with callbacks, at the moment that a test chooses instead of by the clock.
bool dropVanishedCameras();
bool addNewCameras();

} // namespace TestSupport
