// SPDX-License-Identifier: Apache-2.0

#include "Cameras.h"

#include <optional>

#include <pybind11/stl.h>

#include "Errors.h"
#include "Frames.h"
#include "Images.h"
#include "Properties.h"
#include "Text.h"
#include "Values.h"

namespace PythonBinding {

namespace py = pybind11;
using namespace CameraInterface;

namespace {

/// Calls a member function of a camera without the interpreter.
template <typename Result>
auto camera(Result (Camera::*function)(), Purpose purpose = Purpose::Call) {
    return [=](CameraHandle& handle) -> Result {
        const CameraUse use(handle, purpose);
        return ((*use).*function)();
    };
}

const char* stateName(CameraHandle& handle) {
    switch (camera(&Camera::getState)(handle)) {
    case CameraState::Connected:
        return "connected";
    case CameraState::Disconnected:
        return "disconnected";
    case CameraState::Suspended:
        return "suspended";
    }
    return "";
}

bool isAlive(CameraHandle& handle) {
    try {
        return camera(&Camera::isCameraAlive)(handle);
    } catch (const Failure&) { // it has left the list
        return false;
    }
}

// --- Images ---

std::unique_ptr<Imaging::Image> waitForImage(const CameraPointer& handle) {
    struct Wait {
        std::atomic<bool> hasOwnRun{false}; ///< the stream did not run before
        std::atomic<bool> isGivenUp{false};
    };
    if (handle->isUsedHere()) {
        const CameraUse use(*handle, Purpose::Capture);
        return use->getImage();
    }
    const auto state = std::make_shared<Wait>();
    return interruptibly(
        [handle, state] {
            const Turn turn(*handle, Purpose::Capture, nullptr);
            state->hasOwnRun = !turn.camera().isStreaming();
            return state->isGivenUp ? nullptr : turn.camera().getImage();
        },
        [handle, state] {
            state->isGivenUp = true;
            if (state->hasOwnRun) {
                handle->stopCapture();
            }
        });
}

ImageObject convertImage(CameraHandle& handle, const ImageObject& object, const std::string& format) {
    const Imaging::IMAGE_FORMAT target = formatNamed(format);
    const CameraUse use(handle);
    return ownImage(use->convertImage(Imaging::cloneImage(*object.image), target));
}

py::dict statistics(CameraHandle& handle) {
    std::optional<StreamStatistics> copy; // shares the counters
    {
        const CameraUse use(handle);
        copy = use->getStreamStatistics();
    }
    py::dict result;
    result["delivered_per_second"] = copy->getFramesPerSecond(STREAM_TYPE::Delivered);
    result["received_per_second"] = copy->getFramesPerSecond(STREAM_TYPE::Received);
    result["delivered"] = copy->getFrameCount(STREAM_TYPE::Delivered);
    result["received"] = copy->getFrameCount(STREAM_TYPE::Received);
    result["incomplete"] = copy->getIncompleteFrameCount();
    result["delivered_interval_time"] = copy->getDesiredIntervalTime(STREAM_TYPE::Delivered);
    result["received_interval_time"] = copy->getDesiredIntervalTime(STREAM_TYPE::Received);
    result["capture_time"] = copy->getCaptureTime();
    result["image_data_transfer_time"] = copy->getImageDataTransferTime();
    return result;
}

void setDesiredIntervalTime(CameraHandle& handle, const std::string& counter, double seconds) {
    if (counter != "delivered" && counter != "received") {
        throw py::value_error(R"(A rate is that of "delivered" or "received" frames.)");
    }
    const CameraUse use(handle);
    use->getStreamStatistics().setDesiredIntervalTime(
        counter == "delivered" ? STREAM_TYPE::Delivered : STREAM_TYPE::Received, seconds);
}

void setFrameCallback(CameraHandle& handle, const py::object& function, std::size_t capacity,
                      const std::string& whenFull, const std::string& name) {
    std::function<void(const Frame&)> callback;
    if (!function.is_none()) {
        callback = [function = Callback(function)](const Frame& frame) {
            function.call([&] { return py::make_tuple(frame); });
        };
    }
    const FrameQueueSettings settings = queueSettings(capacity, whenFull, name);
    Released released;
    handle.setFrameCallback(std::move(callback), settings, released);
}

// --- Functions ---

py::list listOf(const std::vector<ParameterDescriptor>& descriptors) {
    const ParameterTypes types;
    py::list result;
    for (const ParameterDescriptor& descriptor : descriptors) {
        result.append(py::make_tuple(toPython(descriptor.m_Label), types.toString(descriptor.m_Type)));
    }
    return result;
}

py::tuple describeFunction(CameraHandle& handle, const std::string& name) {
    std::vector<ParameterDescriptor> parameters, results;
    bool available = false;
    {
        const CameraUse use(handle);
        Function& function = use->getFunction(name);
        parameters = function.getParameters();
        results = function.getReturnFormat();
        available = function.isAvailable();
    }
    return py::make_tuple(listOf(parameters), listOf(results), available);
}

py::object perform(CameraHandle& handle, const std::string& name, const py::args& arguments) {
    std::vector<std::string> parameters, results;
    for (const py::handle argument : arguments) {
        parameters.push_back(toParameter(argument));
    }
    std::vector<ParameterDescriptor> types;
    {
        const CameraUse use(handle);
        types = use->getFunction(name).getReturnFormat();
        results = use->perform(name, parameters);
    }
    return toResults(types, results);
}

// --- GigE cameras of the SDK ---

/// Settings, statistics and failure, each None if it is missing; None for any other camera.
py::object readGigEOf(CameraHandle& handle) {
    std::optional<OrvexAdapter::GigEDescription> description;
    {
        const CameraUse use(handle);
        description = OrvexAdapter::readGigE(*use);
    }
    if (!description) {
        return py::none();
    }
    py::object settings = py::none();
    if (const auto& read = description->settings) {
        settings = py::make_tuple(read->GetCamIPAddress(), read->GetCamMaskAddress(), read->GetCamGatewayAddress(),
                                  read->GetCamMacAddress(), read->GetHostIPAddress(), read->GetHostMaskAddress(),
                                  read->GetHostGatewayAddress(), read->GetHostMacAddress());
    }
    return py::make_tuple(settings, description->statistics, toException(description->failure));
}

// --- Settings ---

std::string readSettingsAsJson(CameraHandle& handle) {
    const CameraUse use(handle);
    return toJson(readSettings(*use));
}

py::list listOf(const std::vector<SettingDifference>& differences) {
    const py::object type = py::module_::import("quillcamera._types").attr("SettingDifference");
    py::list result;
    for (const SettingDifference& difference : differences) {
        result.append(type(toPython(difference.name), toPython(difference.wanted), toPython(difference.present),
                           toPython(difference.reason)));
    }
    return result;
}

py::tuple writeSettingsFromJson(CameraHandle& handle, const std::string& json, bool acceptOtherModels,
                                const py::object& progress) {
    SettingsOptions options;
    options.acceptOtherModels = acceptOtherModels;
    options.progress = [progress = ProgressFunction(progress)](const std::string& name) {
        progress([&name] { return py::make_tuple(toPython(name)); });
    };
    SettingsReport report;
    {
        const CameraUse use(handle);
        report = writeSettings(*use, parseSettings(json), options);
    }
    return py::make_tuple(toPython(report.written), listOf(report.different), listOf(report.failed),
                          toException(report.interruption));
}

py::list compareSettingsWithJson(CameraHandle& handle, const std::string& json) {
    std::vector<SettingDifference> differences;
    {
        const CameraUse use(handle);
        differences = compareSettings(*use, parseSettings(json));
    }
    return listOf(differences);
}

// --- The list ---

/// Calls a static function of the list without the interpreter.
template <typename Function>
auto list(Function function) {
    Process::present().requireWorkspace();
    const Released released;
    return function();
}

void registerNewConnectCallback(const py::object& function) {
    std::function<void()> callback;
    if (!function.is_none()) {
        callback = [function = Callback(function)] { function.call([] { return py::tuple(); }); };
    }
    list([&] { Camera::registerNewConnectCallback(std::move(callback)); });
}

void registerDisconnectCallback(const py::object& function) {
    std::function<void(const std::string&, const std::string&)> callback;
    if (!function.is_none()) {
        callback = [function = Callback(function)](const std::string& modelName, const std::string& serialNumber) {
            function.call([&] { return py::make_tuple(toPython(modelName), toPython(serialNumber)); });
        };
    }
    list([&] { Process::present().registerDisconnectCallback(std::move(callback)); });
}

void bindList(py::module_& module) {
    module.def("initialise_workspace", [] { Process::present().requireWorkspace(); });
    module.def(
        "end_workspace", [](bool atExit) { Process::present().endWorkspace(atExit); }, py::arg("at_exit"));
    module.def("get_cameras_list", [] { return toPython(list(&Camera::getCamerasList)); });
    module.def("search_for_new_cameras", [] { return list(&Camera::searchForNewCameras); });
    module.def("get_enumeration_failures", [] { return toPython(list(&Camera::getEnumerationFailures)); });
    module.def("register_new_connect_callback", &registerNewConnectCallback, py::arg("callback"));
    module.def("register_disconnect_callback", &registerDisconnectCallback, py::arg("callback"));
}

} // namespace

void bindCameras(py::module_& module) {
    bindList(module);
    bindProperties(module);

    py::class_<CameraHandle, CameraPointer>(module, "CameraBase", "What Camera does in C++.")
        .def(py::init([](const std::string& serialNumber) { return Process::present().handleOf(serialNumber); }),
             py::arg("serial_number"))
        .def_property_readonly("serial_number",
                               [](const CameraHandle& handle) { return toPython(handle.serialNumber()); })
        .def_property_readonly("model_name",
                               [](CameraHandle& handle) { return toPython(camera(&Camera::getModelName)(handle)); })
        .def_property_readonly(
            "kind", [](const CameraHandle& handle) { return getKindName(handle.kind()); },
            "\"SDK device\", \"software device\", \"simulated\", \"USB3 Vision\", \"GenICam\" or "
            "\"unknown\".")
        .def_property_readonly(
            "is_listed", [](const CameraHandle& handle) { return handle.isListed(); },
            "Whether the camera is still in the list. Without, everything else raises CameraGoneError.")
        .def_property_readonly("state", &stateName, R"("connected", "disconnected" or "suspended".)")
        .def_property_readonly("is_connected", [](CameraHandle& handle) { return CameraUse(handle)->isConnected(); })
        .def_property_readonly("is_alive", &isAlive, "Whether the camera is listed and, connected, still answers.")
        .def_property_readonly(
            "info", [](CameraHandle& handle) { return toPython(camera(&Camera::getCameraInfo)(handle)); },
            "Descriptive texts, by key; empty before the first connection.")
        .def("connect", camera(&Camera::connect), R"(Opens the camera. Does nothing if it is connected.

CameraConnectionError: it cannot be opened)")
        .def("disconnect", camera(&Camera::disconnect, Purpose::Close),
             R"(Stops the stream and closes the camera. Does nothing if it is disconnected.

CameraStateError: it is suspended; StreamError: the stream cannot be stopped)")
        .def("suspend", camera(&Camera::suspend, Purpose::Close),
             R"(Stops the stream and suspends the camera, which stays listed while it is unplugged.

CameraStateError: it is not connected)")
        .def_property_readonly("is_streaming", camera(&Camera::isStreaming))
        .def("start_stream", camera(&Camera::startStream), R"(Starts the stream with the present settings.

StreamError: the camera refuses; Error "StreamUnsupported", "InvalidStreamSettings", "InvalidStreamFormat")")
        .def("stop_stream", camera(&Camera::stopStream, Purpose::Stop),
             R"(Stops the stream: when it returns, no frame is captured any more. Loops over frames end.

May be called while another thread waits for an image. StreamError: the camera refuses)")
        .def(
            "capture", [](const CameraPointer& handle) { return ownImage(waitForImage(handle)); },
            R"(Returns the next image, which belongs to the caller. If the stream does not run, starts it for this one.

The wait is bounded by the property "Timeout" in milliseconds; a negative one means 5 s and the frame's own time. Ctrl-C
ends it at once. StreamTimeoutError, StreamStoppedError, CameraGoneError; what start_stream() raises)")
        .def("convert_image", &convertImage, py::arg("image"), py::arg("format"),
             "Like Image.convert(), but a camera that demosaics its own images does so with its own settings.")
        .def_property_readonly("statistics", &statistics, R"(The statistics of the stream, as a dict.

delivered_per_second, received_per_second  rates of frames that the stream handed out, and of those that came
delivered, received, incomplete            their totals; incomplete ones were dropped
delivered_interval_time, received_interval_time  over which the rates are averaged, in seconds
capture_time, image_data_transfer_time     of the last frame, in seconds)")
        .def("set_desired_interval_time", &setDesiredIntervalTime, py::arg("counter"), py::arg("seconds"),
             R"(Sets the time over which a rate of `statistics` is averaged; initially one second.

counter  "delivered" or "received")")
        .def_property_readonly(
            "counters", [](CameraHandle& handle) { return toPython(camera(&Camera::getStreamCounters)(handle)); },
            R"(What became of all frames, as a dict of Counter by name.

"Captured" is the sum of "Delivered", "Turned Away", "Unused" and of the losses before any queue; then, for each open
queue, how many of the delivered frames it dropped.)")
        .def(
            "open_frame_queue",
            [](CameraHandle& handle, std::size_t capacity, const std::string& whenFull, const std::string& name) {
                return openQueue(handle, queueSettings(capacity, whenFull, name));
            },
            py::arg("capacity") = 8, py::arg("when_full") = "drop_oldest", py::arg("name") = "",
            R"(Opens a queue that gets every frame from now on, in this run of the stream and in later ones.

capacity   frames that wait, 1 to 65536
when_full  "drop_oldest" keeps the newest frames, "drop_newest" keeps a series without gaps, "hold_back" makes the stream
           wait until there is space
name       distinguishes the queue in `counters`
InvalidArgumentError: the capacity; Error "StreamUnsupported")")
        .def("set_frame_callback", &setFrameCallback, py::arg("callback"), py::arg("capacity") = 8,
             py::arg("when_full") = "drop_oldest", py::arg("name") = "",
             R"(Replaces the function that gets every Frame, on a thread of its own, from such a queue; None clears it.

When the call returns, the former function no longer runs; a frame that comes meanwhile may reach neither. What the
function raises goes to sys.unraisablehook. What open_frame_queue() raises, and then the former function stays; Error
"WouldWaitForItself": called by such a function, or by one that another call of the camera has called)")
        .def(
            "register_property_change_callback",
            [](const CameraPointer& handle, const py::object& callback) {
                auto function = changeFunction(handle, callback);
                CameraUse(*handle)->registerPropertyChangeCallback(std::move(function));
            },
            py::arg("callback"),
            R"(Replaces the function that gets a Property after it was written, or changed with one that was; None clears it.

Called on the writing thread, which gets what it raises.)")
        .def(
            "get_property",
            [](const CameraPointer& handle, const std::string& name) {
                CameraUse(*handle)->getProperty(name);
                return PropertyObject{handle, name};
            },
            py::arg("name"), "Returns a Property. PropertyNotFoundError")
        .def(
            "get_supported_properties",
            [](CameraHandle& handle) { return toPython(camera(&Camera::getSupportedProperties)(handle)); },
            "Returns the names of all properties, sorted; none before the first connection.")
        .def(
            "__contains__",
            [](CameraHandle& handle, const std::string& name) { return CameraUse(handle)->isPropertySupported(name); },
            "Whether the camera has a property of this name.")
        .def(
            "__getitem__",
            [](const CameraPointer& handle, const std::string& name) {
                return readValue({handle, name});
            },
            "The value of a property: see Property.value.")
        .def(
            "__setitem__",
            [](const CameraPointer& handle, const std::string& name, const py::object& value) {
                writeValue({handle, name}, value);
            },
            "Writes a property: see Property.value.")
        .def(
            "get_supported_functions",
            [](CameraHandle& handle) { return toPython(camera(&Camera::getSupportedFunctions)(handle)); },
            "Returns the names of all functions, sorted; none before the first connection.")
        .def("_describe_function", &describeFunction)
        .def("perform", &perform, py::arg("name"), R"(Performs a function and returns its results.

Parameters are numbers, texts, or bytes and arrays of bytes. Of the results, a String comes back as bytes, an Integer,
Float or Boolean as int, float or bool; None for no result, a tuple for several. FunctionNotFoundError; FunctionError: the
operation failed; InvalidArgumentError: too few parameters)")
        .def("_read_gige", &readGigEOf)
        .def("_read_settings", &readSettingsAsJson)
        .def("_write_settings", &writeSettingsFromJson)
        .def("_compare_settings", &compareSettingsWithJson)
        .def("__eq__",
             [](const CameraPointer& handle, const py::object& other) {
                 return py::isinstance<CameraHandle>(other) && other.cast<CameraPointer>() == handle;
             })
        .def("__hash__", [](const CameraPointer& handle) { return std::hash<CameraPointer>()(handle); });
}

} // namespace PythonBinding
