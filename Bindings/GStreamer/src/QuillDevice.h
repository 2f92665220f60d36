// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <gst/gst.h>

#include "CameraUse.h"

namespace QuillGStreamer {

/// Makes the device of a camera, which makes elements for it. The caller owns the floating reference.
GstDevice* makeDevice(const ListedCamera& camera);

/// The type of the provider of devices: lists the cameras that have a stream, and follows their coming and going.
GType getDeviceProviderType();

} // namespace QuillGStreamer
