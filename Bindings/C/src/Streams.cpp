// SPDX-License-Identifier: Apache-2.0

// The stream of a camera, its counters, and every frame of it.

#include <chrono>

#include <Quill.h>

#include "Blocks.h"
#include "Calls.h"
#include "Objects.h"
#include "Workspace.h"

using namespace CInterface;
using CameraInterface::CameraClock;
using CameraInterface::Frame;
using CameraInterface::FrameQueueSettings;
using CameraInterface::FrameQueueStatus;
using CameraInterface::FrameResult;
using CameraInterface::STREAM_TYPE;
using CameraInterface::StreamCounter;
using CameraInterface::StreamStatistics;
using CameraInterface::WhenFull;
using KestrelExceptions::KestrelException_InvalidArgument;
using std::chrono::nanoseconds;

namespace {

static_assert(QUILL_STREAM_DELIVERED == static_cast<int>(STREAM_TYPE::Delivered) &&
              QUILL_STREAM_RECEIVED == static_cast<int>(STREAM_TYPE::Received));
static_assert(QUILL_DROP_OLDEST == static_cast<int>(WhenFull::DropOldest) &&
              QUILL_HOLD_BACK == static_cast<int>(WhenFull::HoldBack));
static_assert(QUILL_QUEUE_STOPPED == static_cast<int>(FrameQueueStatus::Stopped) &&
              QUILL_QUEUE_CLOSED == static_cast<int>(FrameQueueStatus::Closed));
static_assert(QUILL_CLOCK_EPOCH == static_cast<int>(CameraClock::Epoch));

/// Refuses what the C++ types cannot hold, as the library does with an argument.
void requireRange(int32_t value, int32_t first, int32_t last, const char* argument) {
    if (value < first || value > last) {
        throw KestrelException_InvalidArgument("ArgumentUnhandled", __FILE__, __LINE__,
                                               "Provided argument value cannot be handled.", argument);
    }
}

FrameQueueSettings settingsOf(const quill_frame_queue_settings* theirs) {
    const quill_frame_queue_settings settings =
        fromCaller(theirs, quill_frame_queue_settings QUILL_FRAME_QUEUE_SETTINGS_INIT);
    requireAll(settings.name);
    requireRange(settings.when_full, QUILL_DROP_OLDEST, QUILL_HOLD_BACK, "when_full");
    return {settings.capacity, static_cast<WhenFull>(settings.when_full), settings.name};
}

void giveCounters(const std::vector<StreamCounter>& counters, quill_stream_counter*** list, size_t* count) {
    giveList(
        counters,
        [](Block& block, const StreamCounter& item) {
            quill_stream_counter counter{};
            counter.size = sizeof(counter);
            counter.name = block.text(item.name);
            counter.value = item.value;
            counter.description = block.text(item.description);
            counter.is_loss = item.isLoss;
            return counter;
        },
        list, count);
}

template <typename TimePoint>
int64_t nanosecondsSinceEpoch(TimePoint time) {
    return std::chrono::duration_cast<nanoseconds>(time.time_since_epoch()).count();
}

/// A frame that is valid during a call.
class LentFrame {
public:
    explicit LentFrame(const Frame& frame) : m_Handle{handles().create<FrameObject>(frame)} {}
    LentFrame(const LentFrame&) = delete;
    LentFrame& operator=(const LentFrame&) = delete;
    ~LentFrame() { handles().close(m_Handle.id, FrameObject::kKind); }

    quill_frame handle() const { return m_Handle; }

private:
    const quill_frame m_Handle;
};

} // namespace

quill_status quill_camera_is_streaming(quill_camera camera, bool* streaming, quill_error* error) {
    return call(error, [&] {
        requireAll(streaming);
        *streaming = CameraUse(camera)->isStreaming();
    });
}

quill_status quill_camera_start_stream(quill_camera camera, quill_error* error) {
    return call(error, [&] { CameraUse(camera)->startStream(); });
}

quill_status quill_camera_stop_stream(quill_camera camera, quill_error* error) {
    return call(error, [&] { CameraUse(camera)->stopStream(); });
}

quill_status quill_camera_get_stream_statistics(quill_camera camera, quill_stream_statistics* statistics,
                                                quill_error* error) {
    return call(error, [&] {
        requireAll(statistics);
        requireSize(*statistics);
        const CameraUse use(camera);
        StreamStatistics& source = use->getStreamStatistics();
        quill_stream_statistics result{};
        result.delivered_frames_per_second = source.getFramesPerSecond(STREAM_TYPE::Delivered);
        result.received_frames_per_second = source.getFramesPerSecond(STREAM_TYPE::Received);
        result.delivered_frame_count = source.getFrameCount(STREAM_TYPE::Delivered);
        result.received_frame_count = source.getFrameCount(STREAM_TYPE::Received);
        result.incomplete_frame_count = source.getIncompleteFrameCount();
        result.delivered_interval_time = source.getDesiredIntervalTime(STREAM_TYPE::Delivered);
        result.received_interval_time = source.getDesiredIntervalTime(STREAM_TYPE::Received);
        result.capture_time = source.getCaptureTime();
        result.image_data_transfer_time = source.getImageDataTransferTime();
        toCaller(*statistics, result);
    });
}

quill_status quill_camera_set_desired_interval_time(quill_camera camera, quill_stream_type type, double seconds,
                                                    quill_error* error) {
    return call(error, [&] {
        const CameraUse use(camera);
        requireRange(type, QUILL_STREAM_DELIVERED, QUILL_STREAM_RECEIVED, "type");
        use->getStreamStatistics().setDesiredIntervalTime(static_cast<STREAM_TYPE>(type), seconds);
    });
}

quill_status quill_camera_get_stream_counters(quill_camera camera, quill_stream_counter*** counters, size_t* count,
                                              quill_error* error) {
    return call(error, [&] {
        requireAll(counters, count);
        giveCounters(CameraUse(camera)->getStreamCounters(), counters, count);
    });
}

quill_status quill_camera_get_image(quill_camera camera, quill_image* image, quill_error* error) {
    return call(error, [&] {
        requireAll(image);
        const CameraUse use(camera);
        const Workspace::ImageWait wait(*use);
        giveImage(use->getImage(), image);
    });
}

const char* quill_describe(quill_frame_queue_status status) {
    return status >= QUILL_QUEUE_FRAME && status <= QUILL_QUEUE_CLOSED
               ? CameraInterface::describe(static_cast<FrameQueueStatus>(status))
               : "unknown";
}

quill_status quill_camera_open_frame_queue(quill_camera camera, const quill_frame_queue_settings* settings,
                                           quill_frame_queue* queue, quill_error* error) {
    return call(error, [&] {
        requireAll(queue);
        const CameraUse use(camera);
        queue->id = handles().create<FrameQueueObject>(use->openFrameQueue(settingsOf(settings)));
    });
}

quill_status quill_camera_set_frame_callback(quill_camera camera, const quill_frame_queue_settings* settings,
                                             quill_frame_function callback, void* context,
                                             quill_release_function release, quill_error* error) {
    return call(error, [&] {
        const Callback<quill_frame_function> hear(callback, CallbackContext(context, release));
        const CameraUse use(camera);
        const FrameQueueSettings queueSettings = settingsOf(settings);
        if (hear) {
            use->setFrameCallback(
                [hear](const Frame& frame) {
                    const InsideCall mark;
                    const LentFrame lent(frame);
                    hear(lent.handle());
                },
                queueSettings);
        } else {
            use->setFrameCallback({});
        }
    });
}

quill_status quill_frame_queue_pop(quill_frame_queue queue, int64_t limit_ns, quill_frame_queue_status* status,
                                   quill_frame* frame, quill_error* error) {
    return call(error, [&] {
        requireAll(status, frame);
        const Use<FrameQueueObject> use(queue.id);
        FrameResult result = limit_ns < 0    ? use->queue().pop()
                             : limit_ns == 0 ? use->queue().tryPop()
                                             : use->queue().pop(nanoseconds(limit_ns));
        frame->id = result ? handles().create<FrameObject>(std::move(result.frame)) : 0;
        *status = static_cast<quill_frame_queue_status>(result.status);
    });
}

quill_status quill_frame_queue_wait_for_run(quill_frame_queue queue, int64_t limit_ns, quill_frame_queue_status* status,
                                            quill_error* error) {
    return call(error, [&] {
        requireAll(status);
        const Use<FrameQueueObject> use(queue.id);
        *status = static_cast<quill_frame_queue_status>(limit_ns < 0 ? use->queue().waitForRun()
                                                                     : use->queue().waitForRun(nanoseconds(limit_ns)));
    });
}

quill_status quill_frame_queue_close(quill_frame_queue queue, quill_error* error) {
    return call(error, [&] { Use<FrameQueueObject>(queue.id)->queue().close(); });
}

quill_status quill_frame_queue_size(quill_frame_queue queue, size_t* size, quill_error* error) {
    return call(error, [&] {
        requireAll(size);
        *size = Use<FrameQueueObject>(queue.id)->queue().size();
    });
}

quill_status quill_frame_queue_capacity(quill_frame_queue queue, size_t* capacity, quill_error* error) {
    return call(error, [&] {
        requireAll(capacity);
        *capacity = Use<FrameQueueObject>(queue.id)->queue().capacity();
    });
}

quill_status quill_frame_queue_get_counters(quill_frame_queue queue, quill_stream_counter*** counters, size_t* count,
                                            quill_error* error) {
    return call(error, [&] {
        requireAll(counters, count);
        giveCounters(Use<FrameQueueObject>(queue.id)->queue().getCounters(), counters, count);
    });
}

quill_status quill_frame_queue_release(quill_frame_queue queue, quill_error* error) {
    return call(error, [&] {
        const Use<FrameQueueObject> use(queue.id);
        closeHandle<FrameQueueObject>(queue.id);
        use->queue().close();
    });
}

quill_status quill_frame_get_information(quill_frame frame, quill_frame_information* information, quill_error* error) {
    return call(error, [&] {
        requireAll(information);
        const Use<FrameObject> use(frame.id);
        const CameraInterface::FrameInformation& source = use->frame().information;
        quill_frame_information result{};
        result.run = source.run;
        result.number = source.number;
        result.camera_number = source.cameraNumber.value_or(0);
        result.camera_time_ns = source.cameraTime.value_or(nanoseconds(0)).count();
        result.arrival_ns = nanosecondsSinceEpoch(source.arrival);
        result.arrival_wall_time_ns = nanosecondsSinceEpoch(source.arrivalWallTime);
        result.exposure_ms = source.exposureMs.value_or(0);
        result.gain = source.gain.value_or(0);
        result.camera_clock = static_cast<quill_camera_clock>(source.cameraClock);
        result.has_camera_number = source.cameraNumber.has_value();
        result.has_camera_time = source.cameraTime.has_value();
        result.has_exposure = source.exposureMs.has_value();
        result.has_gain = source.gain.has_value();
        toCaller(*information, result);
    });
}

quill_status quill_frame_get_layout(quill_frame frame, quill_image_layout* layout, quill_error* error) {
    return call(error, [&] {
        requireAll(layout);
        giveLayout(*Use<FrameObject>(frame.id)->frame().image, *layout);
    });
}

quill_status quill_frame_get_image(quill_frame frame, quill_image* image, quill_error* error) {
    return call(error, [&] {
        requireAll(image);
        giveImage(Use<FrameObject>(frame.id)->frame().image, image);
    });
}

quill_status quill_frame_copy(quill_frame frame, quill_frame* copy, quill_error* error) {
    return call(error, [&] {
        requireAll(copy);
        copy->id = handles().create<FrameObject>(Use<FrameObject>(frame.id)->frame());
    });
}

quill_status quill_frame_release(quill_frame frame, quill_error* error) {
    return call(error, [&] { closeHandle<FrameObject>(frame.id); });
}
