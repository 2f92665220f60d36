// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <gst/gst.h>

#include <Quill.h>

#include "VideoFormats.h"

namespace QuillGStreamer {

/// Sets a connected camera to a frame rate that downstream accepts: its present one if possible, otherwise the nearest
/// to it. A camera without the property "Framerate" has an unknown rate, and downstream may name any.
/// @param accepted caps of downstream; null for no wish
/// @param mayChange whether the rate may be changed, which restarts the stream
/// @return the rate of the camera, whether or not downstream accepts it
/// @throws what Property::getValue() and setValue() throw
FrameRate adaptFrameRate(CameraInterface::Camera& camera, const GstCaps* accepted, bool mayChange);

} // namespace QuillGStreamer
