// SPDX-License-Identifier: Apache-2.0
#pragma once

namespace TestSupport {

/// Runs the list's maintenance, with callbacks, at a moment that the test chooses instead of by the clock.
bool dropVanishedCameras();
bool addNewCameras();

} // namespace TestSupport
