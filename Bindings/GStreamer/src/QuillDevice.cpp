// SPDX-License-Identifier: Apache-2.0

#include "QuillDevice.h"

#include <string>

#include "QuillSrc.h"
#include "VideoFormats.h"

namespace QuillGStreamer {

namespace {

constexpr const char* kSerialField = "quill.serial";

struct QuillDevice {
    GstDevice parent;
};

struct QuillDeviceClass {
    GstDeviceClass parent;
};

gboolean reconfigureElement(GstDevice* device, GstElement* element) {
    if (G_OBJECT_TYPE(element) != getSourceType()) {
        return 0;
    }
    GstStructure* const properties = gst_device_get_properties(device);
    g_object_set(element, "serial", gst_structure_get_string(properties, kSerialField), nullptr);
    gst_structure_free(properties);
    return 1;
}

GstElement* createElement(GstDevice* device, const gchar* name) {
    GstElement* const element = gst_element_factory_make(kSourceName, name);
    if (element != nullptr) {
        reconfigureElement(device, element);
    }
    return element;
}

void initialiseDeviceClass(gpointer klass, gpointer /*data*/) {
    GST_DEVICE_CLASS(klass)->create_element = createElement;
    GST_DEVICE_CLASS(klass)->reconfigure_element = reconfigureElement;
}

} // namespace

GstDevice* makeDevice(const ListedCamera& camera) {
    static const GType type =
        g_type_register_static_simple(GST_TYPE_DEVICE, g_intern_static_string("QuillDevice"), sizeof(QuillDeviceClass),
                                      initialiseDeviceClass, sizeof(QuillDevice), nullptr, GTypeFlags{});
    const std::string name = camera.modelName + " (" + camera.serialNumber + ")";
    GstCaps* const caps = makeTemplateCaps();
    GstStructure* const properties =
        gst_structure_new("quill-properties", "device.api", G_TYPE_STRING, "quill", kSerialField, G_TYPE_STRING,
                          camera.serialNumber.c_str(), "quill.model", G_TYPE_STRING, camera.modelName.c_str(), nullptr);
    auto* const device =
        static_cast<GstDevice*>(g_object_new(type, "display-name", name.c_str(), "caps", caps, "device-class",
                                             "Video/Source", "properties", properties, nullptr));
    gst_structure_free(properties);
    gst_caps_unref(caps);
    return device;
}

} // namespace QuillGStreamer
