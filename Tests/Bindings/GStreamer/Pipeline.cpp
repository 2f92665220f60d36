// SPDX-License-Identifier: Apache-2.0

#include "Bindings/GStreamer/Pipeline.h"

namespace TestSupport {

using CameraInterface::Camera;

Pipeline::Pipeline(const std::string& line)
    : m_Pipeline(gst_parse_launch((line + " name=sink sync=false").c_str(), nullptr)) {
    m_Source.reset(gst_bin_get_by_name(GST_BIN(m_Pipeline.get()), "source"));
    m_Sink.reset(gst_bin_get_by_name(GST_BIN(m_Pipeline.get()), "sink"));
    const Owned<GstPad> pad(gst_element_get_static_pad(m_Sink.get(), "sink"));
    const auto count = [](GstPad*, GstPadProbeInfo*, gpointer arrived) {
        static_cast<std::atomic<unsigned>*>(arrived)->fetch_add(1);
        return GST_PAD_PROBE_OK;
    };
    gst_pad_add_probe(pad.get(), GST_PAD_PROBE_TYPE_BUFFER, count, &m_Arrived, nullptr);
}

Pipeline::~Pipeline() {
    setState(GST_STATE_NULL);
}

GstElement* Pipeline::find(const char* name) const {
    GstElement* const element = gst_bin_get_by_name(GST_BIN(m_Pipeline.get()), name);
    gst_object_unref(element); // the bin keeps it
    return element;
}

bool Pipeline::setState(GstState state) {
    return gst_element_set_state(m_Pipeline.get(), state) != GST_STATE_CHANGE_FAILURE;
}

Owned<GstSample> Pipeline::pull() const {
    Owned<GstSample> sample(gst_app_sink_try_pull_sample(GST_APP_SINK(m_Sink.get()), kLongest));
    EXPECT_TRUE(m_Arrived != 0 || !sample);
    return sample;
}

Owned<GstMessage> Pipeline::waitFor(GstMessageType types) const {
    const Owned<GstBus> bus(gst_element_get_bus(m_Pipeline.get()));
    return Owned<GstMessage>(gst_bus_timed_pop_filtered(bus.get(), kLongest, types));
}

std::string Pipeline::waitForError() const {
    const Owned<GstMessage> message = waitFor(GST_MESSAGE_ERROR);
    if (!message) {
        return "none";
    }
    GError* error = nullptr;
    gst_message_parse_error(message.get(), &error, nullptr);
    const std::string text = error->message;
    g_error_free(error);
    return text;
}

guint64 Pipeline::count(const char* field) const {
    GstStructure* structure = nullptr;
    g_object_get(m_Source.get(), "stats", &structure, nullptr);
    const Owned<GstStructure> statistics(structure);
    guint64 value = 0;
    gst_structure_get_uint64(statistics.get(), field, &value);
    return value;
}

PipelineFixture::PipelineFixture() {
    SoftwareDevices::startEmpty();
}

PipelineFixture::~PipelineFixture() {
    Camera::unitialisedWorkpace();
    SoftwareDevices::startEmpty();
}

std::uint32_t PipelineFixture::plug(SoftwareDevices::DeviceDescription device, unsigned width, unsigned height) {
    device.sensorWidth = width;
    device.sensorHeight = height;
    device.unitWidth = device.colorFormat == SoftwareDevices::ColorFormat::MONO ? 1 : 2;
    device.unitHeight = device.unitWidth;
    return SoftwareDevices::plug(device);
}

Camera& PipelineFixture::open(std::uint32_t serial) {
    Camera::searchForNewCameras();
    Camera& camera = Camera::getCamera(std::to_string(serial));
    camera.connect();
    return camera;
}

} // namespace TestSupport
