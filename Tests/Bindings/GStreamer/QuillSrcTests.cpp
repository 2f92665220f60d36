// SPDX-License-Identifier: Apache-2.0

#include <atomic>
#include <chrono>
#include <fstream>
#include <future>
#include <optional>
#include <string>
#include <vector>

#include <gst/video/video.h>

#include "Bindings/GStreamer/Pipeline.h"
#include "Support/TemporaryFolder.h"

namespace {

using namespace CameraInterface;
using Imaging::IMAGE_FORMAT;
using SoftwareDevices::DeviceDescription;
using ::testing::HasSubstr;
using TestSupport::Owned;
using TestSupport::Pipeline;
using TestSupport::PipelineFixture;

class QuillSrc : public PipelineFixture {};

GstBuffer* bufferOf(const Owned<GstSample>& sample) {
    return gst_sample_get_buffer(sample.get());
}

/// The address of the first byte.
const guint8* addressOf(GstBuffer* buffer) {
    GstMapInfo map;
    gst_buffer_map(buffer, &map, GST_MAP_READ);
    const guint8* const address = map.data;
    gst_buffer_unmap(buffer, &map);
    return address;
}

/// The bytes of all rows without padding, as a video element finds them.
std::vector<unsigned char> rowsOf(const Owned<GstSample>& sample, std::size_t rowBytes, std::size_t rows) {
    std::vector<unsigned char> bytes;
    GstVideoInfo info;
    GstVideoFrame frame;
    GstCaps* const caps = gst_sample_get_caps(sample.get());
    if (gst_structure_has_name(gst_caps_get_structure(caps, 0), "video/x-bayer") != 0) {
        const guint8* const first = addressOf(bufferOf(sample));
        for (std::size_t row = 0; row < rows; ++row) {
            const guint8* const begin = first + row * GST_ROUND_UP_4(rowBytes);
            bytes.insert(bytes.end(), begin, begin + rowBytes);
        }
    } else if (gst_video_info_from_caps(&info, caps) != 0 &&
               gst_video_frame_map(&frame, &info, bufferOf(sample), GST_MAP_READ) != 0) {
        for (std::size_t row = 0; row < rows; ++row) {
            const auto* const begin = static_cast<const guint8*>(GST_VIDEO_FRAME_PLANE_DATA(&frame, 0)) +
                                      row * static_cast<std::size_t>(GST_VIDEO_FRAME_PLANE_STRIDE(&frame, 0));
            bytes.insert(bytes.end(), begin, begin + rowBytes);
        }
        gst_video_frame_unmap(&frame);
    }
    return bytes;
}

/// Lets downstream of a pad understand rows of any stride.
void acceptAnyStride(GstElement* sink) {
    const Owned<GstPad> pad(gst_element_get_static_pad(sink, "sink"));
    const auto answer = [](GstPad*, GstPadProbeInfo* info, gpointer) {
        GstQuery* const query = GST_PAD_PROBE_INFO_QUERY(info);
        if (GST_QUERY_TYPE(query) != GST_QUERY_ALLOCATION) {
            return GST_PAD_PROBE_OK;
        }
        gst_query_add_allocation_meta(query, GST_VIDEO_META_API_TYPE, nullptr);
        return GST_PAD_PROBE_HANDLED;
    };
    gst_pad_add_probe(pad.get(), GST_PAD_PROBE_TYPE_QUERY_DOWNSTREAM, answer, nullptr, nullptr);
}

TEST_F(QuillSrc, BuffersOfEveryFormatAreTheLibrarysBytesWithoutACopyWhereTheyAreTheCameras) {
    struct Case {
        const char* caps; ///< that downstream accepts; empty for any
        DeviceDescription device;
        const char* pixelFormat;
        std::optional<IMAGE_FORMAT> converted; ///< none: the camera's own
        const char* delivered;
        unsigned width = 32;
        bool acceptsAnyStride = false;
        bool isShared = true; ///< if it is the camera's own
    };
    const auto colors = [](SoftwareDevices::ColorFormat format) {
        DeviceDescription device = color();
        device.colorFormat = format;
        return device;
    };
    DeviceDescription bigEndian = mono();
    bigEndian.bigEndian = true;
    DeviceDescription littleEndian = mono();
    littleEndian.bigEndian = false;
    const std::vector<Case> cases{
        {"", mono(), "8", {}, "GRAY8"},
        {"", littleEndian, "16", {}, "GRAY16_LE"},
        {"", bigEndian, "16", {}, "GRAY16_BE"},
        {"", colors(SoftwareDevices::ColorFormat::RGGB), "8", {}, "rggb"},
        {"", colors(SoftwareDevices::ColorFormat::GRBG), "8", {}, "grbg"},
        {"", colors(SoftwareDevices::ColorFormat::GBRG), "8", {}, "gbrg"},
        {"", colors(SoftwareDevices::ColorFormat::BGGR), "8", {}, "bggr"},
        {"", color(), "24", {}, "BGR"},
        {"", color(), "32", {}, "BGRA"},
        {"video/x-raw", color(), "8", IMAGE_FORMAT::RGB, "RGB"},
        {"video/x-raw,format=BGR", color(), "8", IMAGE_FORMAT::BGR, "BGR"},
        {"video/x-raw,format=RGBA", color(), "8", IMAGE_FORMAT::RGBA, "RGBA"},
        {"video/x-raw,format=GRAY8", color(), "8", IMAGE_FORMAT::MONO, "GRAY8"},
        {"video/x-raw", color(), "16", IMAGE_FORMAT::RGBA, "RGBA64_LE"},
        {"video/x-raw,format=BGRA64_LE", color(), "16", IMAGE_FORMAT::BGRA, "BGRA64_LE"},
        {"video/x-raw", color(), "48", IMAGE_FORMAT::RGBA, "RGBA64_LE"},
        {"", mono(), "8", {}, "GRAY8", 33, false, false},
        {"", mono(), "8", {}, "GRAY8", 33, true},
        {"", color(), "8", {}, "rggb", 34, true, false},
    };
    for (const Case& one : cases) {
        SCOPED_TRACE(std::string(one.delivered) + " of " + one.pixelFormat + " as '" + one.caps + "'");
        const std::uint32_t serial = plug(one.device, one.width);
        Camera& camera = open(serial);
        camera.getProperty("Pixel Format").setValue(one.pixelFormat);
        FrameQueue frames = camera.openFrameQueue({4096, WhenFull::DropNewest, "all"});
        Pipeline pipeline(std::string("quillsrc name=source ! ") +
                          (*one.caps == 0 ? "" : one.caps + std::string(" ! ")) + "appsink");
        if (one.acceptsAnyStride) {
            acceptAnyStride(pipeline.find("sink"));
        }
        pipeline.setState(GST_STATE_PLAYING);
        const Owned<GstSample> sample = pipeline.pull();
        ASSERT_TRUE(sample) << pipeline.waitForError();
        const GstStructure* const caps = gst_caps_get_structure(gst_sample_get_caps(sample.get()), 0);
        EXPECT_STREQ(gst_structure_get_string(caps, "format"), one.delivered);

        Frame frame = frames.pop().frame;
        while (frame.information.number != GST_BUFFER_OFFSET(bufferOf(sample))) {
            frame = frames.pop().frame;
        }
        std::vector<unsigned char> expected = frame.image->getData();
        if (one.converted) {
            const bool isComputed = frame.image->getBitDepth() == 48;
            const auto source = isComputed ? Imaging::createImage(one.width, 16, expected, 16, true, IMAGE_FORMAT::BGR)
                                           : Imaging::cloneImage(*frame.image);
            expected = Imaging::convertImage(source, *one.converted)->getData();
        }
        EXPECT_EQ(rowsOf(sample, expected.size() / 16, 16), expected);
        EXPECT_EQ(addressOf(bufferOf(sample)) == frame.image->getDataAddress(), !one.converted && one.isShared);
        pipeline.setState(GST_STATE_NULL);
        SoftwareDevices::unplug(serial);
        Camera::unitialisedWorkpace();
    }
}

TEST_F(QuillSrc, UnpluggingEndsThePipelineWithAnErrorThatSaysSo) {
    const std::uint32_t serial = plug(mono());
    Pipeline pipeline("quillsrc name=source ! appsink");
    pipeline.setState(GST_STATE_PLAYING);
    ASSERT_TRUE(pipeline.pull());
    SoftwareDevices::unplug(serial);
    EXPECT_EQ(pipeline.waitForError(), "Camera " + std::to_string(serial) + " is gone.");
    EXPECT_TRUE(pipeline.setState(GST_STATE_NULL));
    EXPECT_FALSE(pipeline.setState(GST_STATE_PLAYING));
    EXPECT_EQ(pipeline.waitForError(), "There is no camera that has a stream.");
    SoftwareDevices::replug(serial);
    EXPECT_TRUE(pipeline.setState(GST_STATE_NULL) && pipeline.setState(GST_STATE_PLAYING));
    EXPECT_TRUE(pipeline.pull());
}

TEST_F(QuillSrc, StopsAtOnceWhileTheCameraAwaitsATrigger) {
    const std::uint32_t serial = plug(mono());
    Pipeline pipeline(
        "quillsrc name=source extra-properties=\"Streaming Mode=Still, Hardware Trigger=Enabled\" ! appsink");
    for (int i = 0; i < 3; ++i) {
        pipeline.setState(GST_STATE_PLAYING);
        while (!SoftwareDevices::triggerStill(serial)) { // the camera is not ready yet
        }
        ASSERT_TRUE(pipeline.pull());
        auto stopped = std::async(std::launch::async, [&] { return pipeline.setState(GST_STATE_NULL); });
        ASSERT_EQ(stopped.wait_for(std::chrono::minutes(5)), std::future_status::ready);
    }
}

TEST_F(QuillSrc, PlaysPausesAndStopsAgainAndAgain) {
    const std::uint32_t serial = plug(mono());
    Pipeline pipeline("quillsrc name=source ! appsink");
    for (int i = 0; i < 10; ++i) {
        ASSERT_TRUE(pipeline.setState(GST_STATE_PLAYING));
        const Owned<GstSample> before = pipeline.pull();
        ASSERT_TRUE(before);
        ASSERT_TRUE(pipeline.setState(GST_STATE_PAUSED));
        while (Owned<GstSample>(gst_app_sink_try_pull_sample(GST_APP_SINK(pipeline.find("sink")), 0))) {
        }
        const guint64 delivered = pipeline.count("delivered");
        EXPECT_GT(delivered, 0U);
        ASSERT_TRUE(pipeline.setState(GST_STATE_PLAYING));
        const Owned<GstSample> after = pipeline.pull();
        ASSERT_TRUE(after);
        EXPECT_GT(GST_BUFFER_PTS(bufferOf(after)), GST_BUFFER_PTS(bufferOf(before)));
        // the pause may have caught one frame between its count and its way down: more than that one come
        while (pipeline.count("delivered") == delivered) {
            ASSERT_TRUE(pipeline.pull());
        }
        ASSERT_TRUE(pipeline.setState(GST_STATE_NULL));
        EXPECT_FALSE(SoftwareDevices::isStreaming(serial));
        EXPECT_FALSE(SoftwareDevices::isOpen(serial));
    }
}

TEST_F(QuillSrc, LostFramesAreMarkedCountedAndReported) {
    const std::uint32_t serial = plug(mono());
    Pipeline pipeline("quillsrc name=source ! appsink");
    pipeline.setState(GST_STATE_PLAYING);
    guint64 next = GST_BUFFER_OFFSET_END(bufferOf(pipeline.pull()));
    SoftwareDevices::dropFrames(serial, 3);
    Owned<GstSample> sample;
    for (sample = pipeline.pull(); GST_BUFFER_OFFSET(bufferOf(sample)) == next; sample = pipeline.pull()) {
        EXPECT_FALSE(GST_BUFFER_FLAG_IS_SET(bufferOf(sample), GST_BUFFER_FLAG_DISCONT));
        next = GST_BUFFER_OFFSET_END(bufferOf(sample));
    }
    EXPECT_TRUE(GST_BUFFER_FLAG_IS_SET(bufferOf(sample), GST_BUFFER_FLAG_DISCONT));
    const Owned<GstMessage> qos = pipeline.waitFor(GST_MESSAGE_QOS);
    guint64 dropped = 0;
    gst_message_parse_qos_stats(qos.get(), nullptr, nullptr, &dropped);
    EXPECT_EQ(dropped, GST_BUFFER_OFFSET(bufferOf(sample)) - next);
    const Owned<GstMessage> statistics = pipeline.waitFor(GST_MESSAGE_ELEMENT);
    EXPECT_STREQ(gst_structure_get_name(gst_message_get_structure(statistics.get())), "quillsrc-stats");
    pipeline.setState(GST_STATE_PAUSED);
    EXPECT_GE(pipeline.count("captured"), pipeline.count("delivered") + dropped);
}

TEST_F(QuillSrc, DownstreamsFrameRateIsSetOnTheCameraAlsoLater) {
    const std::uint32_t serial = plug(mono());
    Pipeline pipeline("quillsrc name=source ! capsfilter name=filter caps=video/x-raw,framerate=15/2 ! appsink");
    const auto rateOf = [](const Owned<GstSample>& sample) {
        int numerator = 0;
        int denominator = 1;
        gst_structure_get_fraction(gst_caps_get_structure(gst_sample_get_caps(sample.get()), 0), "framerate",
                                   &numerator, &denominator);
        return static_cast<float>(numerator) / static_cast<float>(denominator);
    };
    pipeline.setState(GST_STATE_PLAYING);
    EXPECT_EQ(rateOf(pipeline.pull()), 7.5F);
    EXPECT_EQ(SoftwareDevices::frameRate(serial), 7.5F);
    gst_util_set_object_arg(G_OBJECT(pipeline.find("filter")), "caps", "video/x-raw,framerate=[20/1,40/1]");
    while (rateOf(pipeline.pull()) != 30.0F) {
    }
    EXPECT_EQ(SoftwareDevices::frameRate(serial), 30.0F);
    gst_util_set_object_arg(G_OBJECT(pipeline.find("filter")), "caps", "video/x-raw,framerate=17/1");
    EXPECT_THAT(pipeline.waitForError(), HasSubstr("framerate=(fraction)30/1"));
}

TEST_F(QuillSrc, PipelinesAndTheApplicationShareACamera) {
    const std::uint32_t serial = plug(mono());
    Pipeline first("quillsrc name=source ! appsink");
    Pipeline second("quillsrc name=source ! appsink");
    first.setState(GST_STATE_PLAYING);
    second.setState(GST_STATE_PLAYING);
    ASSERT_TRUE(first.pull() && second.pull());
    first.setState(GST_STATE_NULL);
    ASSERT_TRUE(SoftwareDevices::isStreaming(serial));
    second.setState(GST_STATE_NULL);
    EXPECT_FALSE(SoftwareDevices::isOpen(serial));

    Camera& camera = open(serial);
    camera.startStream();
    first.setState(GST_STATE_PLAYING);
    ASSERT_TRUE(first.pull());
    camera.stopStream(); // the pipeline waits
    camera.getProperty("Framerate").setValue("30");
    camera.startStream();
    ASSERT_TRUE(first.pull());
    first.setState(GST_STATE_NULL);
    EXPECT_TRUE(camera.isStreaming());
    first.setState(GST_STATE_PLAYING);
    Camera::unitialisedWorkpace();
    EXPECT_THAT(first.waitForError(), HasSubstr("is gone"));
}

TEST_F(QuillSrc, ACameraThatTookThePlaceOfADestroyedOneIsLeftAlone) {
    const std::uint32_t serial = plug(mono());
    for (int i = 0; i < 5; ++i) { // the new object may have the same address
        Pipeline pipeline("quillsrc name=source ! appsink");
        pipeline.setState(GST_STATE_PLAYING);
        ASSERT_TRUE(pipeline.pull());
        pipeline.setState(GST_STATE_PAUSED);
        Camera::unitialisedWorkpace();
        Camera& camera = open(serial);
        camera.startStream();
        g_object_set(pipeline.find("source"), "extra-properties", "Video Gain=3", nullptr);
        EXPECT_TRUE(pipeline.waitFor(GST_MESSAGE_WARNING));
        Pipeline other("quillsrc name=source ! appsink");
        other.setState(GST_STATE_PLAYING);
        ASSERT_TRUE(other.pull());
        other.setState(GST_STATE_NULL);
        EXPECT_TRUE(camera.isStreaming());
        pipeline.setState(GST_STATE_NULL);
        EXPECT_TRUE(camera.isStreaming());
        Camera::unitialisedWorkpace();
    }
}

TEST_F(QuillSrc, ACameraThatRefusesToStopIsClosedAllTheSame) {
    const std::uint32_t serial = plug(mono());
    Pipeline pipeline("quillsrc name=source ! appsink");
    pipeline.setState(GST_STATE_PLAYING);
    ASSERT_TRUE(pipeline.pull());
    SoftwareDevices::failNext(serial, SoftwareDevices::Operation::sdkRemoveStreamingCallback, 1,
                              SoftwareDevices::kInternalError);
    pipeline.setState(GST_STATE_NULL);
    EXPECT_FALSE(SoftwareDevices::isOpen(serial));
}

TEST_F(QuillSrc, PropertiesThatTwoThreadsSetAreBothKept) {
    Pipeline pipeline("quillsrc name=source ! appsink");
    GstElement* const source = pipeline.find("source");
    std::atomic<bool> ended{false};
    auto other = std::async(std::launch::async, [&] {
        while (!ended) {
            g_object_set(source, "serial", "1", nullptr);
        }
    });
    for (int i = 0; i < 20000; ++i) {
        const std::string wanted = "Gain=" + std::to_string(i);
        g_object_set(source, "extra-properties", wanted.c_str(), nullptr);
        gchar* text = nullptr;
        g_object_get(source, "extra-properties", &text, nullptr);
        EXPECT_EQ(text, wanted);
        g_free(text);
    }
    ended = true;
}

TEST_F(QuillSrc, WhoHearsAWarningMayUseTheCamera) {
    plug(color());
    Pipeline pipeline("quillsrc name=source ! appsink");
    pipeline.setState(GST_STATE_PLAYING);
    ASSERT_TRUE(pipeline.pull());
    GstElement* const source = pipeline.find("source");
    const Owned<GstBus> bus(gst_element_get_bus(source));
    const auto answer = [](GstBus*, GstMessage* message, gpointer element) {
        if (GST_MESSAGE_TYPE(message) == GST_MESSAGE_WARNING) {
            g_object_set(element, "extra-properties", "Video Gain=3", nullptr);
        }
        return GST_BUS_PASS;
    };
    gst_bus_set_sync_handler(bus.get(), answer, source, nullptr);
    auto written = std::async(std::launch::async, [source] {
        g_object_set(source, "extra-properties", "Video Exposure=1000000", nullptr); // more than the camera takes
    });
    ASSERT_EQ(written.wait_for(std::chrono::minutes(5)), std::future_status::ready);
    gst_bus_set_sync_handler(bus.get(), nullptr, nullptr, nullptr);
    gchar* text = nullptr;
    g_object_get(source, "extra-properties", &text, nullptr);
    EXPECT_STREQ(text, "Video Gain=3") << "no warning";
    g_free(text);
}

TEST_F(QuillSrc, TheCameraGetsSettingsAndProperties) {
    const std::uint32_t serial = plug(color());
    Camera& camera = open(serial);
    const TestSupport::TemporaryFolder folder;
    const std::string file = (folder.path() / "settings.json").string();
    CameraSettings settings = readSettings(camera);
    settings.values = {{"Video Gain", "5"}, {"Video Exposure", "4.5"}};
    std::ofstream(file) << toJson(settings);
    Pipeline pipeline("quillsrc name=source settings-file=" + file +
                      " extra-properties=\"Video Gain=2, Height=8\" ! appsink");
    ASSERT_TRUE(pipeline.setState(GST_STATE_PLAYING)) << pipeline.waitForError();
    const auto number = [&camera](const char* name) { return std::stod(camera.getProperty(name).getValue()); };
    EXPECT_EQ(number("Video Exposure"), 4.5);
    EXPECT_EQ(number("Video Gain"), 2);
    EXPECT_EQ(number("Height"), 8);
    GstElement* const source = pipeline.find("source");
    g_object_set(source, "extra-properties", "Video Gain=3", nullptr);
    EXPECT_EQ(number("Video Gain"), 3);
    g_object_set(source, "extra-properties", "Video Gain", nullptr);
    EXPECT_TRUE(pipeline.waitFor(GST_MESSAGE_WARNING));
    pipeline.setState(GST_STATE_NULL);
    g_object_set(source, "extra-properties", "Iris\\,Two=3", nullptr);
    EXPECT_FALSE(pipeline.setState(GST_STATE_PLAYING));
    EXPECT_THAT(pipeline.waitForError(), HasSubstr("Property 'Iris,Two' cannot be '3'"));
}

TEST_F(QuillSrc, AnswersLatencyAndRefusesToSeek) {
    plug(mono());
    Pipeline pipeline("quillsrc name=source queue=4 ! video/x-raw,framerate=30/1 ! appsink");
    pipeline.setState(GST_STATE_PLAYING);
    ASSERT_TRUE(pipeline.pull());
    GstElement* const source = pipeline.find("source");
    GstQuery* const query = gst_query_new_latency();
    ASSERT_TRUE(gst_element_query(source, query));
    gboolean isLive = 0;
    GstClockTime least = 0;
    GstClockTime most = 0;
    gst_query_parse_latency(query, &isLive, &least, &most);
    gst_query_unref(query);
    EXPECT_TRUE(isLive);
    EXPECT_EQ(least, GST_SECOND / 30);
    EXPECT_EQ(most, 4 * least);
    for (GstElement* const target : {source, pipeline.find("sink")}) {
        EXPECT_FALSE(gst_element_seek_simple(target, GST_FORMAT_TIME, GST_SEEK_FLAG_FLUSH, 0));
    }
    gst_element_send_event(source, gst_event_new_eos());
    while (pipeline.pull()) {
    }
    EXPECT_TRUE(pipeline.waitFor(GST_MESSAGE_EOS));
}

} // namespace
