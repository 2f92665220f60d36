// SPDX-License-Identifier: Apache-2.0

#include <string>

#include "Bindings/GStreamer/Pipeline.h"

namespace {

using TestSupport::Owned;
using TestSupport::PipelineFixture;

class DeviceProvider : public PipelineFixture {};

TEST_F(DeviceProvider, FollowsTheComingAndGoingOfCameras) {
    const std::uint32_t first = plug(mono());
    const Owned<GstDeviceMonitor> monitor(gst_device_monitor_new());
    gst_device_monitor_add_filter(monitor.get(), "Video/Source", nullptr);
    ASSERT_TRUE(gst_device_monitor_start(monitor.get()));
    const Owned<GstBus> bus(gst_device_monitor_get_bus(monitor.get()));
    const auto next = [&bus](GstMessageType type) {
        const Owned<GstMessage> message(gst_bus_timed_pop_filtered(bus.get(), TestSupport::kLongest, type));
        GstDevice* device = nullptr;
        if (type == GST_MESSAGE_DEVICE_ADDED) {
            gst_message_parse_device_added(message.get(), &device);
        } else {
            gst_message_parse_device_removed(message.get(), &device);
        }
        return Owned<GstDevice>(device);
    };
    const auto serialOf = [](const Owned<GstDevice>& device) {
        const Owned<GstElement> element(
            GST_ELEMENT(gst_object_ref_sink(gst_device_create_element(device.get(), nullptr))));
        gchar* text = nullptr;
        g_object_get(element.get(), "serial", &text, nullptr);
        const std::string serial = text;
        g_free(text);
        return serial;
    };
    EXPECT_EQ(serialOf(next(GST_MESSAGE_DEVICE_ADDED)), std::to_string(first));
    const std::uint32_t second = plug(color());
    EXPECT_EQ(serialOf(next(GST_MESSAGE_DEVICE_ADDED)), std::to_string(second));
    SoftwareDevices::unplug(first);
    EXPECT_EQ(serialOf(next(GST_MESSAGE_DEVICE_REMOVED)), std::to_string(first));
    gst_device_monitor_stop(monitor.get());
}

} // namespace
