// SPDX-License-Identifier: Apache-2.0

#include "Frames.h"

#include <algorithm>
#include <chrono>
#include <limits>
#include <optional>

#include <pybind11/stl.h>

#include "Errors.h"
#include "Images.h"
#include "Text.h"

namespace PythonBinding {

namespace py = pybind11;
using namespace CameraInterface;
using std::chrono::nanoseconds;

namespace {

/// A queue as Python holds it. Calls that are under way share it, so that it outlives them.
struct QueueObject {
    Process* process;
    std::shared_ptr<FrameQueue> queue;

    FrameQueue& get() const {
        if (process != &Process::present()) {
            throw Failure("CameraGoneError", "CameraGone", "The queue belongs to the parent of this process.");
        }
        return *queue;
    }
};

using Seconds = std::optional<double>; ///< none: for ever

/// The end of the waits that stop the stream, or that close the queue: of those nobody need be told.
bool isOrdinaryEnd(FrameQueueStatus status) {
    return status == FrameQueueStatus::Stopped || status == FrameQueueStatus::Suspended ||
           status == FrameQueueStatus::Closed;
}

[[noreturn]] void raiseEnd(FrameQueueStatus status) {
    switch (status) {
    case FrameQueueStatus::TimedOut:
        throw Failure("StreamTimeoutError", "StreamTimeout", describe(status));
    case FrameQueueStatus::CameraGone:
        throw Failure("CameraGoneError", "CameraGone", describe(status));
    default:
        throw Failure("StreamStoppedError", "StreamStopped", describe(status));
    }
}

/// Waits without the interpreter; on the main thread in slices, between which Ctrl-C ends the wait.
template <typename Wait>
FrameResult waitInSlices(const QueueObject& object, const Seconds& limit, Wait wait) {
    using Clock = std::chrono::steady_clock;
    FrameQueue& queue = object.get();
    const std::shared_ptr<FrameQueue> kept = object.queue;
    if (limit && !(*limit >= 0)) {
        throw py::value_error("A timeout must not be negative.");
    }
    const bool isMainThread = Process::present().isMainThread();
    constexpr double kLongest = 1e9; // the clock could not count much further
    const auto end = Clock::now() + std::chrono::duration_cast<nanoseconds>(
                                        std::chrono::duration<double>(std::min(limit.value_or(kLongest), kLongest)));
    Released released;
    for (;;) {
        const nanoseconds left = std::max<nanoseconds>(end - Clock::now(), nanoseconds(0));
        const bool isLast = !isMainThread || left <= kSignalPeriod;
        FrameResult result = wait(queue, isLast ? left : kSignalPeriod);
        if (isLast || result.status != FrameQueueStatus::TimedOut) {
            return result;
        }
        released.checkSignals();
    }
}

FrameResult popFrame(const QueueObject& object, const Seconds& limit) {
    return waitInSlices(object, limit, [](FrameQueue& queue, nanoseconds slice) { return queue.pop(slice); });
}

Frame pop(const QueueObject& object, const Seconds& limit) {
    FrameResult result = popFrame(object, limit);
    if (!result) {
        raiseEnd(result.status);
    }
    return std::move(result.frame);
}

/// For loops: an ordinary end ends the loop.
Frame next(const QueueObject& object, const Seconds& limit) {
    FrameResult result = popFrame(object, limit);
    if (isOrdinaryEnd(result.status)) {
        throw py::stop_iteration();
    }
    if (!result) {
        raiseEnd(result.status);
    }
    return std::move(result.frame);
}

std::optional<Frame> tryPop(const QueueObject& object) {
    FrameResult result = object.get().tryPop();
    if (!result && result.status != FrameQueueStatus::TimedOut) {
        raiseEnd(result.status);
    }
    return result ? std::optional(std::move(result.frame)) : std::nullopt;
}

void waitForRun(const QueueObject& object, const Seconds& limit) {
    const FrameResult result = waitInSlices(object, limit, [](FrameQueue& queue, nanoseconds slice) {
        return FrameResult{queue.waitForRun(slice), {}};
    });
    if (!result) {
        raiseEnd(result.status);
    }
}

std::int64_t nanosecondsOf(std::chrono::steady_clock::time_point time) {
    return nanoseconds(time.time_since_epoch()).count();
}

std::optional<std::int64_t> cameraTime(const Frame& frame) {
    const auto& time = frame.information.cameraTime;
    return time ? std::optional<std::int64_t>(time->count()) : std::nullopt;
}

py::object arrivalTime(const Frame& frame) {
    const std::chrono::duration<double> time = frame.information.arrivalWallTime.time_since_epoch();
    const py::module_ datetime = py::module_::import("datetime");
    return datetime.attr("datetime").attr("fromtimestamp")(time.count(), datetime.attr("timezone").attr("utc"));
}

const char* clockName(const Frame& frame) {
    switch (frame.information.cameraClock) {
    case CameraClock::None:
        return "none";
    case CameraClock::Camera:
        return "camera";
    case CameraClock::Epoch:
        return "epoch";
    }
    return "";
}

} // namespace

FrameQueueSettings queueSettings(std::size_t capacity, const std::string& whenFull, std::string name) {
    constexpr std::pair<const char*, WhenFull> kNames[] = {{"drop_oldest", WhenFull::DropOldest},
                                                           {"drop_newest", WhenFull::DropNewest},
                                                           {"hold_back", WhenFull::HoldBack}};
    for (const auto& [text, value] : kNames) {
        if (whenFull == text) {
            return {capacity, value, std::move(name)};
        }
    }
    throw py::value_error(R"(when_full is "drop_oldest", "drop_newest" or "hold_back".)");
}

py::dict toPython(const std::vector<StreamCounter>& counters) {
    const py::object type = py::module_::import("quillcamera._types").attr("Counter");
    py::dict result;
    for (const StreamCounter& counter : counters) {
        result[toPython(counter.name)] = type(counter.value, toPython(counter.description), counter.isLoss);
    }
    return result;
}

py::object openQueue(CameraHandle& camera, const FrameQueueSettings& settings) {
    std::shared_ptr<FrameQueue> queue;
    {
        const CameraUse use(camera);
        queue = std::make_shared<FrameQueue>(use->openFrameQueue(settings));
        Process::present().keep(queue);
    }
    return py::cast(QueueObject{&Process::present(), std::move(queue)});
}

void bindFrames(py::module_& module) {
    py::class_<Frame>(module, "Frame", "An image of a stream, and which one it is. All consumers share its memory.")
        .def_property_readonly(
            "image",
            [](const Frame& frame) {
                return ImageObject{frame.image, true};
            },
            "The image, shared and read-only.")
        .def_property_readonly(
            "run", [](const Frame& frame) { return frame.information.run; },
            "The run of the stream, counted from 1; it lasts from a start to the next stop.")
        .def_property_readonly(
            "number", [](const Frame& frame) { return frame.information.number; },
            "The number in the run, counted from 1. A gap is a lost frame; Camera.counters says why.")
        .def_property_readonly(
            "camera_number", [](const Frame& frame) { return frame.information.cameraNumber; },
            "The number that the camera gave the frame, or None.")
        .def_property_readonly("camera_time", &cameraTime,
                               "The camera's own timestamp in nanoseconds on its camera_clock, or None.")
        .def_property_readonly("camera_clock", &clockName,
                               R"("none", "camera" (an instant of its choice is 0), or "epoch" (1970-01-01 TAI is 0).)")
        .def_property_readonly(
            "arrival", [](const Frame& frame) { return nanosecondsOf(frame.information.arrival); },
            "When the last byte was here: nanoseconds on the clock of time.monotonic_ns().")
        .def_property_readonly("arrival_time", &arrivalTime, "The same instant as a datetime in UTC, for people.")
        .def_property_readonly(
            "exposure", [](const Frame& frame) { return frame.information.exposureMs; },
            "The exposure time in milliseconds, or None where it is not known.")
        .def_property_readonly(
            "gain", [](const Frame& frame) { return frame.information.gain; },
            "The gain in the unit of the camera's property, or None where it is not known.")
        .def("_repr_png_",
             [](const Frame& frame) {
                 return py::cast(ImageObject{frame.image, true}).attr("_repr_png_")();
             })
        .def("__repr__", [](const Frame& frame) {
            return "<Frame " + std::to_string(frame.information.number) + " of run " +
                   std::to_string(frame.information.run) + ": " + describeImage(*frame.image) + '>';
        });

    py::class_<QueueObject>(module, "FrameQueue", R"(Every frame of a camera's stream, in order.

Made by Camera.open_frame_queue(). Outlives stops and starts of the stream, and the camera: frames that wait stay
available, and only when none is left a wait ends with the reason. A loop over it ends when the stream stops or the queue
is closed, and raises what pop() raises otherwise. Thread-safe: each frame goes to one of the threads that wait.)")
        .def("pop", &pop, py::arg("timeout") = py::none(),
             R"(Takes the oldest frame, and waits for one if none is there.

timeout  seconds; None waits for as long as the stream runs
StreamTimeoutError, StreamStoppedError (also: the capture ended, no memory), CameraGoneError. Ctrl-C ends the wait.)")
        .def("next", &next, py::arg("timeout") = py::none(),
             "The same, but raises StopIteration when the stream stops, the camera is suspended, or the queue is "
             "closed.")
        .def("try_pop", &tryPop, "The same as pop() without waiting; None if the stream runs and no frame is there.")
        .def("wait_for_run", &waitForRun, py::arg("timeout") = py::none(),
             R"(Waits until the stream runs or a frame is there.

timeout  seconds; None for ever
StreamTimeoutError, StreamStoppedError (closed), CameraGoneError)")
        .def(
            "close", [](const QueueObject& object) { object.get().close(); },
            "Drops all frames, takes no more, and ends all waits.")
        .def_property_readonly("capacity", [](const QueueObject& object) { return object.get().capacity(); })
        .def_property_readonly(
            "counters", [](const QueueObject& object) { return toPython(object.get().getCounters()); },
            "What became of the frames since the queue was opened: \"Captured\" is the sum of \"Delivered\", "
            "\"Waiting\", \"Dropped\" and the losses before the queue. A dict of Counter by name.")
        .def(
            "__len__", [](const QueueObject& object) { return object.get().size(); }, "The number of frames that wait.")
        .def("__iter__", [](const py::object& self) { return self; })
        .def("__next__", [](const QueueObject& object) { return next(object, std::nullopt); })
        .def("__enter__", [](const py::object& self) { return self; })
        .def("__exit__", [](const QueueObject& object, const py::args& /*reason*/) {
            if (object.process == &Process::present()) {
                object.queue->close();
            }
        });
}

} // namespace PythonBinding
