// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <gst/gst.h>

namespace QuillGStreamer {

/// The name of the element.
constexpr const char* kSourceName = "quillsrc";

/// The type of the element, a live source of the frames of a camera.
GType getSourceType();

} // namespace QuillGStreamer
