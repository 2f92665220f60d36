// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <atomic>
#include <memory>
#include <string>
#include <vector>

#include <gst/app/gstappsink.h>
#include <gst/gst.h>

#include <Quill.h>
#include <SoftwareDevices.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace TestSupport {

struct Unreference {
    void operator()(gpointer object) const { gst_object_unref(object); }
    void operator()(GstSample* sample) const { gst_sample_unref(sample); }
    void operator()(GstMessage* message) const { gst_message_unref(message); }
    void operator()(GstStructure* structure) const { gst_structure_free(structure); }
};

template <typename T>
using Owned = std::unique_ptr<T, Unreference>;

/// What a test waits for is there long before, or never.
constexpr GstClockTime kLongest = 300 * GST_SECOND;

/// A pipeline of the elements of a gst-launch line, which ends in "! appsink".
class Pipeline {
public:
    explicit Pipeline(const std::string& line);
    Pipeline(const Pipeline&) = delete;
    Pipeline& operator=(const Pipeline&) = delete;
    ~Pipeline();

    GstElement* find(const char* name) const;
    bool setState(GstState state);
    /// Waits for the next buffer; null at the end of the stream.
    Owned<GstSample> pull() const;
    /// Waits for a message of one of the types.
    Owned<GstMessage> waitFor(GstMessageType types) const;
    /// Waits for an error and returns its text.
    std::string waitForError() const;
    /// A field of the statistics; 0 if there is none.
    guint64 count(const char* field) const;

private:
    /// Counts the buffers on the streaming thread: ThreadSanitizer does not see the order that GStreamer's queue makes.
    std::atomic<unsigned> m_Arrived{0};
    Owned<GstElement> m_Pipeline;
    Owned<GstElement> m_Source;
    Owned<GstElement> m_Sink;
};

/// A fixture without devices. The workspace ends with each test, so that the plug-in meets every beginning.
class PipelineFixture : public ::testing::Test {
protected:
    PipelineFixture();
    ~PipelineFixture() override;

    /// Plugs a device of a small region in.
    static std::uint32_t plug(SoftwareDevices::DeviceDescription device, unsigned width = 32, unsigned height = 16);
    static SoftwareDevices::DeviceDescription mono() { return SoftwareDevices::defaultDevices().at(1); }
    static SoftwareDevices::DeviceDescription color() { return SoftwareDevices::defaultDevices().at(0); }
    /// Opens the camera as the application that it is part of.
    static CameraInterface::Camera& open(std::uint32_t serial);
};

} // namespace TestSupport
