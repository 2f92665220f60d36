// SPDX-License-Identifier: Apache-2.0
#pragma once

namespace CameraInterface {

/// Whether a camera is open. A suspended camera stays listed while it is unplugged and can only be connected again.
enum class CameraState { Connected = 0, Disconnected = 1, Suspended = 2 };

} // namespace CameraInterface
