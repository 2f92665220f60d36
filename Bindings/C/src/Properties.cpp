// SPDX-License-Identifier: Apache-2.0

#include <array>
#include <charconv>
#include <functional>
#include <limits>
#include <stdexcept>
#include <system_error>

#include <Quill.h>

#include "Blocks.h"
#include "Calls.h"
#include "Workspace.h"

using namespace CInterface;
using CameraInterface::Property;
using CameraInterface::PROPERTY_TYPE;
using CameraInterface::PropertyVisibility;

namespace {

static_assert(QUILL_PROPERTY_FLOAT == static_cast<int>(PROPERTY_TYPE::Float) &&
              QUILL_PROPERTY_BOOLEAN == static_cast<int>(PROPERTY_TYPE::Boolean));
static_assert(QUILL_VISIBILITY_INVISIBLE == static_cast<int>(PropertyVisibility::Invisible));

/// Calls an operation of a property.
template <typename Body>
quill_status withProperty(quill_camera camera, const char* name, quill_error* error, Body body) {
    return call(error, [&] {
        requireAll(name);
        const CameraUse use(camera);
        body(use->getProperty(name));
    });
}

/// Calls an operation that returns something.
/// @param convert  makes of it what the caller gets
template <typename Result, typename Convert>
quill_status readProperty(quill_camera camera, const char* name, Result* result, quill_error* error, Convert convert) {
    return call(error, [&] {
        requireAll(name, result);
        const CameraUse use(camera);
        *result = convert(use->getProperty(name));
    });
}

template <std::string (Property::*read)()>
quill_status readText(quill_camera camera, const char* name, char** result, quill_error* error) {
    return readProperty(camera, name, result, error, [](Property& property) { return copyText((property.*read)()); });
}

template <bool (Property::*read)()>
quill_status readBool(quill_camera camera, const char* name, bool* result, quill_error* error) {
    return readProperty(camera, name, result, error, [](Property& property) { return (property.*read)(); });
}

/// Makes what the library calls of a callback, or nothing of none.
std::function<void(Property&)> changeFunction(quill_camera camera,
                                              const Callback<quill_property_change_function>& change) {
    if (!change) {
        return {};
    }
    return [change, camera](Property& property) { change(camera, property.getName().c_str()); };
}

/// Reads a number that is the whole text.
template <typename Number>
Number parseNumber(const std::string& text) {
    Number number{};
    const char* const end = text.data() + text.size();
    const auto [rest, failure] = std::from_chars(text.data(), end, number);
    if (failure == std::errc::result_out_of_range) {
        throw std::out_of_range("The value is out of range: " + text);
    }
    if (failure != std::errc() || rest != end) {
        throw std::invalid_argument("The value is not such a number: " + text);
    }
    return number;
}

template <typename Number>
quill_status readNumber(quill_camera camera, const char* name, Number* value, quill_error* error) {
    return readProperty(camera, name, value, error,
                        [](Property& property) { return parseNumber<Number>(property.getValue()); });
}

/// The longest fixed notation is that of the smallest numbers.
constexpr std::size_t kLongestNumber =
    16 - std::numeric_limits<double>::min_exponent10 + std::numeric_limits<double>::digits;

/// The shortest text without an exponent that is read as the same number.
std::string numberText(double value) {
    std::array<char, kLongestNumber> text{};
    const auto end = std::to_chars(text.data(), text.data() + text.size(), value, std::chars_format::fixed);
    return {text.data(), end.ptr};
}

} // namespace

quill_status quill_camera_get_supported_properties(quill_camera camera, char*** names, size_t* count,
                                                   quill_error* error) {
    return call(error, [&] {
        requireAll(names, count);
        giveTexts(CameraUse(camera)->getSupportedProperties(), names, count);
    });
}

quill_status quill_camera_is_property_supported(quill_camera camera, const char* name, bool* supported,
                                                quill_error* error) {
    return call(error, [&] {
        requireAll(name, supported);
        *supported = CameraUse(camera)->isPropertySupported(name);
    });
}

quill_status quill_camera_register_property_change_callback(quill_camera camera,
                                                            quill_property_change_function callback, void* context,
                                                            quill_release_function release, quill_error* error) {
    return call(error, [&] {
        const Callback<quill_property_change_function> change(callback, CallbackContext(context, release));
        CameraUse(camera)->registerPropertyChangeCallback(changeFunction(camera, change));
    });
}

quill_status quill_property_register_on_change_callback(quill_camera camera, const char* name,
                                                        quill_property_change_function callback, void* context,
                                                        quill_release_function release, quill_error* error) {
    return call(error, [&] {
        const Callback<quill_property_change_function> change(callback, CallbackContext(context, release));
        requireAll(name);
        const CameraUse use(camera);
        use->getProperty(name).registerOnChangeCallback(changeFunction(camera, change));
    });
}

quill_status quill_property_get_value(quill_camera camera, const char* name, char** value, quill_error* error) {
    return readText<&Property::getValue>(camera, name, value, error);
}

quill_status quill_property_set_value(quill_camera camera, const char* name, const char* value, quill_error* error) {
    return call(error, [&] {
        requireAll(name, value);
        CameraUse(camera)->getProperty(name).setValue(value);
    });
}

quill_status quill_property_get_int(quill_camera camera, const char* name, int64_t* value, quill_error* error) {
    return readNumber(camera, name, value, error);
}

quill_status quill_property_get_double(quill_camera camera, const char* name, double* value, quill_error* error) {
    return readNumber(camera, name, value, error);
}

quill_status quill_property_get_bool(quill_camera camera, const char* name, bool* value, quill_error* error) {
    return readProperty(camera, name, value, error,
                        [](Property& property) { return CameraInterface::States().toValue(property.getValue()); });
}

quill_status quill_property_set_int(quill_camera camera, const char* name, int64_t value, quill_error* error) {
    return withProperty(camera, name, error, [&](Property& property) { property.setValue(std::to_string(value)); });
}

quill_status quill_property_set_double(quill_camera camera, const char* name, double value, quill_error* error) {
    return withProperty(camera, name, error, [&](Property& property) { property.setValue(numberText(value)); });
}

quill_status quill_property_set_bool(quill_camera camera, const char* name, bool value, quill_error* error) {
    return withProperty(camera, name, error,
                        [&](Property& property) { property.setValue(CameraInterface::States().toString(value)); });
}

quill_status quill_property_get_minimum(quill_camera camera, const char* name, char** minimum, quill_error* error) {
    return readText<&Property::getMinimum>(camera, name, minimum, error);
}

quill_status quill_property_get_maximum(quill_camera camera, const char* name, char** maximum, quill_error* error) {
    return readText<&Property::getMaximum>(camera, name, maximum, error);
}

quill_status quill_property_get_default(quill_camera camera, const char* name, char** default_value,
                                        quill_error* error) {
    return readText<&Property::getDefault>(camera, name, default_value, error);
}

quill_status quill_property_reset_to_default(quill_camera camera, const char* name, quill_error* error) {
    return withProperty(camera, name, error, [](Property& property) { property.resetToDefault(); });
}

quill_status quill_property_update(quill_camera camera, const char* name, bool notify_linked, quill_error* error) {
    return withProperty(camera, name, error, [&](Property& property) { property.update(notify_linked); });
}

quill_status quill_property_is_read_only(quill_camera camera, const char* name, bool* read_only, quill_error* error) {
    return readBool<&Property::isReadOnly>(camera, name, read_only, error);
}

quill_status quill_property_is_available_for_writing(quill_camera camera, const char* name, bool* available,
                                                     quill_error* error) {
    return readBool<&Property::isAvailableForWriting>(camera, name, available, error);
}

quill_status quill_property_is_discrete(quill_camera camera, const char* name, bool* discrete, quill_error* error) {
    return readBool<&Property::isDiscrete>(camera, name, discrete, error);
}

quill_status quill_property_get_value_list(quill_camera camera, const char* name, char*** values, size_t* count,
                                           quill_error* error) {
    return call(error, [&] {
        requireAll(name, values, count);
        giveTexts(CameraUse(camera)->getProperty(name).getValueList(), values, count);
    });
}

quill_status quill_property_get_unit(quill_camera camera, const char* name, char** unit, quill_error* error) {
    return readText<&Property::getUnit>(camera, name, unit, error);
}

quill_status quill_property_get_increment(quill_camera camera, const char* name, char** increment, quill_error* error) {
    return readText<&Property::getIncrement>(camera, name, increment, error);
}

quill_status quill_property_get_description(quill_camera camera, const char* name, char** description,
                                            quill_error* error) {
    return readText<&Property::getDescription>(camera, name, description, error);
}

quill_status quill_property_get_category(quill_camera camera, const char* name, char** category, quill_error* error) {
    return readText<&Property::getCategory>(camera, name, category, error);
}

quill_status quill_property_get_visibility(quill_camera camera, const char* name, quill_property_visibility* visibility,
                                           quill_error* error) {
    return readProperty(camera, name, visibility, error, [](Property& property) {
        return static_cast<quill_property_visibility>(property.getVisibility());
    });
}

quill_status quill_property_get_type(quill_camera camera, const char* name, quill_property_type* type,
                                     quill_error* error) {
    return readProperty(camera, name, type, error,
                        [](Property& property) { return static_cast<quill_property_type>(property.getType()); });
}
