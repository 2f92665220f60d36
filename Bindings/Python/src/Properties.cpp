// SPDX-License-Identifier: Apache-2.0

#include "Properties.h"

#include <utility>

#include "Text.h"
#include "Values.h"

namespace PythonBinding {

namespace py = pybind11;
using CameraInterface::Property;
using CameraInterface::PROPERTY_TYPE;
using CameraInterface::PropertyVisibility;

namespace {

/// Returns what @p question, a function of a property, returns.
template <typename Question>
auto ask(const PropertyObject& object, Question question) {
    const CameraUse camera(*object.camera);
    return question(camera->getProperty(object.name));
}

/// A text that a member function of a property returns, and the property's type.
using TypedText = std::pair<PROPERTY_TYPE, std::string>;

template <std::string (Property::*read)()>
py::object valueOf(const PropertyObject& object) {
    const TypedText text =
        ask(object, [](Property& property) { return TypedText(property.getType(), (property.*read)()); });
    return toValue(text.first, text.second);
}

template <std::string (Property::*read)()>
py::str textOf(const PropertyObject& object) {
    return toPython(ask(object, [](Property& property) { return (property.*read)(); }));
}

template <bool (Property::*is)()>
bool isTrue(const PropertyObject& object) {
    return ask(object, [](Property& property) { return (property.*is)(); });
}

void registerOnChangeCallback(const PropertyObject& object, const py::object& callback) {
    auto function = changeFunction(object.camera, callback);
    ask(object, [&function](Property& property) { property.registerOnChangeCallback(std::move(function)); });
}

void writeText(const PropertyObject& object, const std::string& text) {
    ask(object, [&text](Property& property) { property.setValue(text); });
}

py::tuple range(const PropertyObject& object) {
    return py::make_tuple(valueOf<&Property::getMinimum>(object), valueOf<&Property::getMaximum>(object));
}

py::object step(const PropertyObject& object) {
    const TypedText text =
        ask(object, [](Property& property) { return TypedText(property.getType(), property.getIncrement()); });
    return text.second.empty() ? py::none() : toValue(text.first, text.second);
}

py::tuple choices(const PropertyObject& object) {
    const auto [type, texts] = ask(object, [](Property& property) {
        return std::make_pair(property.getType(),
                              property.isDiscrete() ? property.getValueList() : std::vector<std::string>());
    });
    py::tuple result(texts.size());
    for (std::size_t i = 0; i < texts.size(); ++i) {
        result[i] = toValue(type, texts[i]);
    }
    return result;
}

std::string typeName(const PropertyObject& object) {
    return CameraInterface::PropertyTypes().toString(
        ask(object, [](Property& property) { return property.getType(); }));
}

const char* visibility(const PropertyObject& object) {
    switch (ask(object, [](Property& property) { return property.getVisibility(); })) {
    case PropertyVisibility::Beginner:
        return "beginner";
    case PropertyVisibility::Expert:
        return "expert";
    case PropertyVisibility::Guru:
        return "guru";
    case PropertyVisibility::Invisible:
        return "invisible";
    }
    return "";
}

py::str represent(const PropertyObject& object) {
    try {
        const std::string unit = ask(object, [](Property& property) { return property.getUnit(); });
        return py::str("<Property {}: {!r}{}>")
            .format(toPython(object.name), readValue(object), toPython(unit.empty() ? unit : ' ' + unit));
    } catch (const std::exception&) { // of a camera that is gone, too, there is a name
        return py::str("<Property {}>").format(toPython(object.name));
    }
}

} // namespace

std::function<void(Property&)> changeFunction(const CameraPointer& camera, const py::object& function) {
    if (function.is_none()) {
        return {};
    }
    return [camera, function = Callback(function)](Property& property) {
        function.callThrough([&] { return py::make_tuple(PropertyObject{camera, property.getName()}); });
    };
}

py::object readValue(const PropertyObject& property) {
    return valueOf<&Property::getValue>(property);
}

void writeValue(const PropertyObject& property, py::handle value) {
    writeText(property, toText(value));
}

void bindProperties(py::module_& module) {
    py::class_<PropertyObject>(module, "Property", R"(A setting or reading of a camera.

Every access asks the camera. All raise PropertyNotFoundError if the camera has no such property (a camera has its
properties once it is connected), PropertyError if the camera does not answer or refuses, CameraGoneError.)")
        .def_property_readonly(
            "name", [](const PropertyObject& object) { return toPython(object.name); },
            "The name by which the camera lists the property.")
        .def_property("value", &readValue, &writeValue, R"(The value: int, float, bool or str, by the property's type.

A text that is none of the type stays a str ("USB" of a switch with names of its own). When written: a number is limited
to the range; a choice must be one of `choices` (PropertyValueError, InvalidArgumentError, ValueError otherwise); True and
False stand for "Enabled" and "Disabled"; most properties ignore a write while they are not `writable`.)")
        .def_property(
            "text", &textOf<&Property::getValue>,
            [](const PropertyObject& object, const py::str& text) { writeText(object, toBytes(text)); },
            "The value as the library's text, such as \"12.500000\".")
        .def_property_readonly("type", &typeName, R"("Integer", "Float", "String" or "Boolean".)")
        .def_property_readonly("unit", &textOf<&Property::getUnit>, R"(The unit of the value: "ms", "px", ... or "".)")
        .def_property_readonly("range", &range, "The smallest and the largest value.")
        .def_property_readonly("step", &step, "The step of which a value is a multiple, or None.")
        .def_property_readonly("default", &valueOf<&Property::getDefault>, "The value after reset().")
        .def_property_readonly("choices", &choices, "The values that are allowed; empty if any within the range is.")
        .def_property_readonly("description", &textOf<&Property::getDescription>, "One sentence, or an empty text.")
        .def_property_readonly("category", &textOf<&Property::getCategory>,
                               "Such as \"Image Format Control\", or an empty text.")
        .def_property_readonly("visibility", &visibility,
                               R"(For whom the property is: "beginner", "expert", "guru", "invisible".)")
        .def_property_readonly("writable", &isTrue<&Property::isAvailableForWriting>, "Whether it can be written now.")
        .def_property_readonly("read_only", &isTrue<&Property::isReadOnly>, "Whether it can never be written.")
        .def(
            "reset",
            [](const PropertyObject& object) { ask(object, [](Property& property) { property.resetToDefault(); }); },
            "Writes the default value.")
        .def(
            "register_on_change_callback", &registerOnChangeCallback, py::arg("callback"),
            R"(Replaces the function that gets this Property after it was written or changed with another one; None clears it.

Called on the writing thread, which gets what it raises. Camera.register_property_change_callback(), and connecting the
camera again, replace it, too.)")
        .def("__repr__", &represent);
}

} // namespace PythonBinding
