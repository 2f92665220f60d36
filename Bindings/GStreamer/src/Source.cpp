// SPDX-License-Identifier: Apache-2.0

#include "Source.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <exception>
#include <utility>
#include <vector>

#include "CameraValues.h"

namespace QuillGStreamer {

using CameraInterface::Camera;
using CameraInterface::Frame;
using CameraInterface::FrameInformation;
using CameraInterface::FrameQueue;
using CameraInterface::FrameQueueStatus;
using CameraInterface::FrameResult;
using Utilities::MutexLock;
using Clock = std::chrono::steady_clock;

namespace {

ElementError resourceError(GstResourceError code, const std::string& sentence) {
    return {GST_RESOURCE_ERROR, code, sentence};
}

/// Calls @p action; a failure becomes one of the element.
template <typename Action>
auto attempt(GstResourceError code, const std::string& tried, Action&& action) {
    try {
        return action();
    } catch (const NoSuchCamera& failure) {
        throw resourceError(GST_RESOURCE_ERROR_NOT_FOUND, failure.what());
    } catch (const std::exception& failure) {
        throw resourceError(code, tried + ": " + reasonOf(failure));
    }
}

/// The field of the statistics for a counter of the library: "Not Transferred" is "not-transferred".
std::string toFieldName(std::string name) {
    std::transform(name.begin(), name.end(), name.begin(),
                   [](char letter) { return g_ascii_isalnum(letter) ? g_ascii_tolower(letter) : '-'; });
    return name;
}

std::map<std::string, std::uint64_t> countsOf(const FrameQueue& queue, std::map<std::string, std::uint64_t> former) {
    for (const CameraInterface::StreamCounter& counter : queue.getCounters()) {
        former[toFieldName(counter.name)] += counter.value;
    }
    return former;
}

/// Copies rows that follow each other to rows of another stride.
GstBuffer* copyRows(const Imaging::Image& image, std::size_t rowBytes, std::size_t stride) {
    const std::size_t rows = image.getHeight();
    GstBuffer* buffer = gst_buffer_new_allocate(nullptr, stride * rows, nullptr);
    GstMapInfo map;
    if (buffer == nullptr || gst_buffer_map(buffer, &map, GST_MAP_WRITE) == 0) {
        gst_buffer_replace(&buffer, nullptr);
        throw resourceError(GST_RESOURCE_ERROR_NO_SPACE_LEFT, "There is no memory for the next frame.");
    }
    const unsigned char* const source = image.getDataAddress();
    for (std::size_t row = 0; row < rows; ++row) {
        std::memcpy(map.data + row * stride, source + row * rowBytes, rowBytes);
        std::memset(map.data + row * stride + rowBytes, 0, stride - rowBytes);
    }
    gst_buffer_unmap(buffer, &map);
    return buffer;
}

} // namespace

Source::~Source() {
    gst_caps_replace(&m_Accepted, nullptr);
}

SourceOptions Source::options() const {
    const MutexLock lock(m_Mutex);
    return m_Options;
}

std::shared_ptr<CameraUse> Source::use() const {
    const MutexLock lock(m_Mutex);
    return m_Use;
}

void Source::setExtraProperties(const std::string& assignments) {
    changeOptions([&](SourceOptions& options) { options.extraProperties = assignments; });
    const std::shared_ptr<CameraUse> camera = use();
    if (!camera) {
        return;
    }
    try {
        writeSettings(*camera, parseAssignments(assignments));
    } catch (const std::exception& failure) {
        warn(reasonOf(failure));
    }
}

void Source::warn(const std::string& sentence) {
    GST_ELEMENT_WARNING(&m_Element, RESOURCE, SETTINGS, ("%s", sentence.c_str()), (nullptr));
}

void Source::writeSettings(CameraUse& camera, const CameraInterface::CameraSettings& settings) {
    if (settings.values.empty()) {
        return;
    }
    std::vector<std::string> warnings;
    camera.with([&](Camera& object, bool /*mayRestart*/) { warnings = writeValues(object, settings); });
    for (const std::string& warning : warnings) { // the application that hears them may use the camera
        warn(warning);
    }
}

void Source::start() {
    const SourceOptions options = this->options();
    const auto opened = attempt(GST_RESOURCE_ERROR_OPEN_READ, "Camera " + options.serialNumber + " cannot be opened",
                                [&] { return std::make_shared<CameraUse>(options.serialNumber); });
    const std::string name = "Camera " + opened->serialNumber();
    {
        const MutexLock lock(m_Mutex);
        m_Use = opened;
        m_FormerCounts.clear();
        m_IsUnlocked = false;
    }
    m_Delivered = m_Lost = 0;
    try {
        attempt(GST_RESOURCE_ERROR_SETTINGS, name + " cannot be set", [&] {
            if (!options.settingsFile.empty()) {
                writeSettings(*opened, readSettingsFile(options.settingsFile));
            }
            writeSettings(*opened, parseAssignments(options.extraProperties));
        });
        adaptRate();
        attempt(GST_RESOURCE_ERROR_OPEN_READ, name + " cannot stream", [&] {
            openQueue();
            opened->startStream();
        });
    } catch (...) {
        stop();
        throw;
    }
}

void Source::stop() {
    std::shared_ptr<CameraUse> use; // closed after the lock is released
    Queue queue;
    {
        const MutexLock lock(m_Mutex);
        use.swap(m_Use);
        queue.swap(m_Queue);
        m_OfferedLayout.reset();
        if (queue) {
            queue->close();
            m_FormerCounts = countsOf(*queue, std::move(m_FormerCounts));
        }
    }
    m_Layout.reset();
    m_Format = nullptr;
    m_LastQueue.reset();
    gst_caps_replace(&m_Accepted, nullptr);
}

void Source::openQueue() {
    const std::shared_ptr<CameraUse> camera = use();
    const CameraInterface::FrameQueueSettings settings{options().queueCapacity, CameraInterface::WhenFull::DropOldest,
                                                       "quillsrc"};
    Queue queue;
    camera->with([&](Camera& object, bool /*mayRestart*/) {
        queue = std::make_shared<FrameQueue>(object.openFrameQueue(settings));
    });
    const MutexLock lock(m_Mutex);
    if (m_Queue) {
        m_FormerCounts = countsOf(*m_Queue, std::move(m_FormerCounts));
    }
    m_Queue = queue;
    m_QueueFailure.clear();
}

void Source::unlock() {
    const MutexLock lock(m_Mutex);
    m_IsUnlocked = true;
    if (m_Queue) {
        m_Queue->close(); // it cannot be opened again: the next one begins without old frames
    }
}

void Source::unlockStop() {
    {
        const MutexLock lock(m_Mutex);
        if (!std::exchange(m_IsUnlocked, false) || !m_Use) {
            return;
        }
    }
    try {
        openQueue();
    } catch (const std::exception& failure) {
        const MutexLock lock(m_Mutex);
        m_QueueFailure = reasonOf(failure);
    }
}

bool Source::isNegotiable() const {
    const MutexLock lock(m_Mutex);
    return m_OfferedLayout.has_value();
}

GstCaps* Source::caps() const {
    const MutexLock lock(m_Mutex);
    return m_OfferedLayout ? makeCaps(*m_OfferedLayout, m_Rate, m_Options.format) : makeTemplateCaps();
}

void Source::setLayout(const ImageLayout& layout) {
    m_Layout = layout;
    const MutexLock lock(m_Mutex);
    m_OfferedLayout = layout;
}

void Source::adaptRate() {
    GstCaps* const accepted = gst_pad_peer_query_caps(GST_BASE_SRC_PAD(&m_Element), nullptr);
    const bool isKnown = m_Accepted != nullptr && accepted != nullptr && gst_caps_is_equal(m_Accepted, accepted) != 0;
    gst_caps_take(&m_Accepted, accepted);
    if (isKnown) {
        return;
    }
    const std::shared_ptr<CameraUse> camera = use();
    FrameRate rate;
    attempt(GST_RESOURCE_ERROR_SETTINGS, "The frame rate cannot be set", [&] {
        camera->with([&](Camera& object, bool mayRestart) { rate = adaptFrameRate(object, m_Accepted, mayRestart); });
    });
    bool isChange = false;
    {
        const MutexLock lock(m_Mutex);
        isChange = m_Rate.period() != rate.period();
        m_Rate = rate;
    }
    if (isChange) {
        gst_element_post_message(GST_ELEMENT(&m_Element), gst_message_new_latency(GST_OBJECT(&m_Element)));
    }
}

ElementError Source::refusalOfDownstream() const {
    GstCaps* const offered = caps();
    gchar* const text = gst_caps_to_string(offered);
    const std::string sentence = std::string("Downstream accepts none of: ") + text;
    g_free(text);
    gst_caps_unref(offered);
    return {GST_CORE_ERROR, GST_CORE_ERROR_NEGOTIATION, sentence};
}

bool Source::setCaps(GstCaps* caps) {
    m_Format = findVideoFormat(caps);
    gst_video_info_init(&m_VideoInfo);
    const bool isRaw = gst_structure_has_name(gst_caps_get_structure(caps, 0), "video/x-raw") != 0;
    return m_Format != nullptr && (!isRaw || gst_video_info_from_caps(&m_VideoInfo, caps) != 0);
}

void Source::decideAllocation(GstQuery& query) {
    m_TakesAnyStride = gst_query_find_allocation_meta(&query, GST_VIDEO_META_API_TYPE, nullptr) != 0;
    while (gst_query_get_n_allocation_pools(&query) != 0) { // the memory is the library's
        gst_query_remove_nth_allocation_pool(&query, 0);
    }
}

GstFlowReturn Source::create(GstBuffer*& buffer) {
    for (;;) {
        Queue queue;
        {
            const MutexLock lock(m_Mutex);
            if (m_IsUnlocked) {
                return GST_FLOW_FLUSHING;
            }
            if (!m_QueueFailure.empty()) {
                throw resourceError(GST_RESOURCE_ERROR_READ, m_QueueFailure);
            }
            queue = m_Queue;
        }
        if (queue != m_LastQueue) { // frames in between were not meant to come
            m_LastQueue = queue;
            m_Run = 0;
        }
        const FrameResult result = queue->pop();
        switch (result.status) {
        case FrameQueueStatus::Frame:
            if (result.frame.information.arrival >= m_PlaysSince.load()) {
                return deliver(result.frame, buffer);
            }
            break;
        case FrameQueueStatus::Stopped:
        case FrameQueueStatus::Suspended:
            queue->waitForRun(); // whoever stopped it may start it again
            break;
        case FrameQueueStatus::RunEnded:
            return GST_FLOW_EOS;
        case FrameQueueStatus::Closed:
            return GST_FLOW_FLUSHING;
        case FrameQueueStatus::CameraGone:
            throw resourceError(GST_RESOURCE_ERROR_READ, "Camera " + use()->serialNumber() + " is gone.");
        default:
            throw resourceError(GST_RESOURCE_ERROR_READ, CameraInterface::describe(result.status));
        }
    }
}

GstFlowReturn Source::deliver(const Frame& frame, GstBuffer*& buffer) {
    const ImageLayout layout(*frame.image);
    if (!m_Layout || !(*m_Layout == layout)) {
        setLayout(layout);
        if (gst_base_src_negotiate(&m_Element) == 0) {
            return GST_PAD_IS_FLUSHING(GST_BASE_SRC_PAD(&m_Element)) ? GST_FLOW_FLUSHING : GST_FLOW_NOT_NEGOTIATED;
        }
    }
    buffer = wrap(isSameFormat(layout, *m_Format) ? frame.image : convert(*frame.image, layout, *m_Format));
    describe(*buffer, frame.information);
    return GST_FLOW_OK;
}

GstBuffer* Source::wrap(const Image& image) {
    const std::size_t rowBytes = std::size_t{m_Layout->width} * m_Format->samples * m_Format->bytesPerSample;
    const bool isRaw = GST_VIDEO_INFO_FORMAT(&m_VideoInfo) != GST_VIDEO_FORMAT_UNKNOWN;
    const std::size_t usualStride =
        isRaw ? static_cast<std::size_t>(GST_VIDEO_INFO_PLANE_STRIDE(&m_VideoInfo, 0)) : GST_ROUND_UP_4(rowBytes);
    if (rowBytes != usualStride && !(isRaw && m_TakesAnyStride)) {
        return copyRows(*image, rowBytes, usualStride);
    }
    const std::size_t size = rowBytes * m_Layout->height;
    GstBuffer* const buffer = gst_buffer_new_wrapped_full(
        GST_MEMORY_FLAG_READONLY, const_cast<unsigned char*>(image->getDataAddress()), size, 0, size, new Image(image),
        [](gpointer owner) { delete static_cast<Image*>(owner); });
    if (rowBytes != usualStride) {
        std::array<gsize, GST_VIDEO_MAX_PLANES> offsets{};
        std::array<gint, GST_VIDEO_MAX_PLANES> strides{static_cast<gint>(rowBytes)};
        gst_buffer_add_video_meta_full(buffer, GST_VIDEO_FRAME_FLAG_NONE, GST_VIDEO_INFO_FORMAT(&m_VideoInfo),
                                       m_Layout->width, m_Layout->height, 1, offsets.data(), strides.data());
    }
    return buffer;
}

void Source::describe(GstBuffer& buffer, const FrameInformation& information) {
    GST_BUFFER_PTS(&buffer) = runningTime(information.arrival);
    GST_BUFFER_DURATION(&buffer) = latency().first == 0 ? GST_CLOCK_TIME_NONE : latency().first;
    GST_BUFFER_OFFSET(&buffer) = information.number;
    GST_BUFFER_OFFSET_END(&buffer) = information.number + 1;
    if (information.cameraTime && information.cameraTime->count() >= 0) {
        static GstCaps* const camera = gst_caps_from_string("timestamp/x-quill-camera");
        static GstCaps* const epoch = gst_caps_from_string("timestamp/x-quill-tai");
        gst_buffer_add_reference_timestamp_meta(
            &buffer, information.cameraClock == CameraInterface::CameraClock::Epoch ? epoch : camera,
            static_cast<GstClockTime>(information.cameraTime->count()), GST_CLOCK_TIME_NONE);
    }
    ++m_Delivered;
    const bool isSameRun = information.run == m_Run;
    const std::uint64_t lost = isSameRun ? information.number - m_Number - 1 : 0;
    if (!isSameRun || lost != 0) {
        GST_BUFFER_FLAG_SET(&buffer, GST_BUFFER_FLAG_DISCONT);
    }
    m_Run = information.run;
    m_Number = information.number;
    if (lost != 0) {
        reportLoss(lost, buffer);
    }
}

void Source::reportLoss(std::uint64_t lost, const GstBuffer& buffer) {
    m_Lost += lost;
    const GstClockTime time = GST_BUFFER_PTS(&buffer);
    GstMessage* const message =
        gst_message_new_qos(GST_OBJECT(&m_Element), 1, time, time, time, GST_BUFFER_DURATION(&buffer));
    gst_message_set_qos_stats(message, GST_FORMAT_BUFFERS, m_Delivered, m_Lost);
    gst_element_post_message(GST_ELEMENT(&m_Element), message);
    gst_element_post_message(GST_ELEMENT(&m_Element), gst_message_new_element(GST_OBJECT(&m_Element), statistics()));
}

GstClockTime Source::runningTime(Clock::time_point arrival) const {
    GstClock* const clock = gst_element_get_clock(GST_ELEMENT(&m_Element));
    if (clock == nullptr) {
        return GST_CLOCK_TIME_NONE;
    }
    // The two clocks are read as closely together as the scheduler allows.
    constexpr int kTries = 4;
    constexpr std::chrono::microseconds kClose{20};
    auto closest = Clock::duration::max();
    GstClockTimeDiff time = 0;
    for (int i = 0; i < kTries && closest > kClose; ++i) {
        const Clock::time_point before = Clock::now();
        const auto now = static_cast<GstClockTimeDiff>(gst_clock_get_time(clock));
        const Clock::duration took = Clock::now() - before;
        if (took < closest) {
            closest = took;
            time = now - std::chrono::nanoseconds(before + took / 2 - arrival).count();
        }
    }
    gst_object_unref(clock);
    const auto base = static_cast<GstClockTimeDiff>(gst_element_get_base_time(GST_ELEMENT(&m_Element)));
    return static_cast<GstClockTime>(std::max<GstClockTimeDiff>(time - base, 0));
}

std::pair<GstClockTime, GstClockTime> Source::latency() const {
    const MutexLock lock(m_Mutex);
    const GstClockTime period = m_Rate.period();
    return m_Rate.isKnown() ? std::pair(period, period * m_Options.queueCapacity)
                            : std::pair(GstClockTime{0}, GST_CLOCK_TIME_NONE);
}

GstStructure* Source::statistics() const {
    GstStructure* const structure = gst_structure_new_empty("quillsrc-stats");
    const MutexLock lock(m_Mutex);
    for (const auto& [name, value] : m_Queue ? countsOf(*m_Queue, m_FormerCounts) : m_FormerCounts) {
        gst_structure_set(structure, name.c_str(), G_TYPE_UINT64, value, nullptr);
    }
    return structure;
}

} // namespace QuillGStreamer
