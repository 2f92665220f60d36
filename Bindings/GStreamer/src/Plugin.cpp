// SPDX-License-Identifier: Apache-2.0

#include <gst/gst.h>

#include <Quill.h>

#include "QuillDevice.h"
#include "QuillSrc.h"

namespace {

/// Registers only: GStreamer also loads plug-ins to see what they have.
gboolean initialisePlugin(GstPlugin* plugin) {
    using namespace QuillGStreamer;
    return gst_element_register(plugin, kSourceName, GST_RANK_NONE, getSourceType()) != 0 &&
           gst_device_provider_register(plugin, "quilldeviceprovider", GST_RANK_PRIMARY, getDeviceProviderType()) != 0;
}

} // namespace

#define PACKAGE "quillcamera"
GST_PLUGIN_DEFINE(GST_VERSION_MAJOR, GST_VERSION_MINOR, quill, "Machine-vision cameras", initialisePlugin,
                  QUILL_VERSION_TEXT, "Apache 2.0", "Quill", "quillcamera")
