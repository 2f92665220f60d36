// SPDX-License-Identifier: Apache-2.0

#include "Properties/OrvexStandardProperty.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <utility>

#include "Base/TextConversion.h"
#include "Cameras/OrvexCamera/OrvexCamera.h"
#include "Exceptions/Raise.h"
#include "OrvexApi/OrvexApi.h"

namespace OrvexAdapter {

using namespace KestrelExceptions;

namespace {

constexpr std::int32_t kReadOnlyFlag = 0x00010000; // of the range's flags

// Error numbers of the SDK.
constexpr std::array<std::uint32_t, 4> kUnsupported{20, 21, 22, 83};
constexpr std::uint32_t kNotWritableNow = 22; // after a write

/// Upper bound of the difference between a limit and its text.
constexpr double kTextRounding = 1e-6;

/// Of this thread.
thread_local const OrvexStandardProperty::Question* t_Answered = nullptr;

/// Limits a number's text to the texts of two limits.
std::string limitTo(const std::string& minimum, const std::string& maximum, double number, const std::string& text) {
    if (number > Base::parseDouble(maximum)) {
        return maximum;
    }
    return Base::parseDouble(minimum) > number ? minimum : text;
}

bool isUnsupported(std::uint32_t error) {
    return std::find(kUnsupported.begin(), kUnsupported.end(), error) != kUnsupported.end();
}

} // namespace

OrvexStandardProperty::Question::Question(OrvexCamera& camera, unsigned long propertyId)
    : m_Camera(&camera), m_PropertyId(static_cast<std::uint32_t>(propertyId)),
      m_IsSupported(OrvexStandardProperty::isSupported(camera, m_PropertyId)) {
    t_Answered = this;
}

OrvexStandardProperty::Question::~Question() {
    t_Answered = nullptr;
}

std::unique_ptr<CameraInterface::Property>
OrvexStandardProperty::makeIfSupported(const std::string& name, const CameraInterface::PROPERTY_TYPE& type,
                                       OrvexCamera& camera, const unsigned long& propertyId) {
    const Question question(camera, propertyId);
    return question.isSupported() ? std::make_unique<OrvexStandardProperty>(name, type, camera, propertyId) : nullptr;
}

OrvexStandardProperty::OrvexStandardProperty(const std::string& name, const CameraInterface::PROPERTY_TYPE& type,
                                             OrvexCamera& camera, const unsigned long& propertyId)
    : Property(name, type), m_Camera(&camera), m_PropertyId(static_cast<std::uint32_t>(propertyId)) {
    const bool isAnswered =
        t_Answered != nullptr && t_Answered->m_Camera == m_Camera && t_Answered->m_PropertyId == m_PropertyId;
    if (!(isAnswered ? t_Answered->isSupported() : isSupported(camera, m_PropertyId))) {
        raise<KestrelException_Property>(QUILL_HERE, Errors::kPropertyUnsupported, getName());
    }
}

std::string OrvexStandardProperty::getMinimum() {
    return Base::toSixDecimals(readMinimum());
}

std::string OrvexStandardProperty::getMaximum() {
    return Base::toSixDecimals(readMaximum());
}

std::string OrvexStandardProperty::getValue() {
    return Base::toSixDecimals(readValue());
}

std::string OrvexStandardProperty::getDefault() {
    return Base::toSixDecimals(readDefault());
}

bool OrvexStandardProperty::isReadOnly() {
    try {
        return (readRange().flags & kReadOnlyFlag) != 0;
    } catch (const KestrelException_Property&) {
        raise<KestrelException_Property>(QUILL_HERE, Errors::kPropertyErrorUnknown, getName());
    }
}

bool OrvexStandardProperty::isAvailableForWriting() {
    if (isReadOnly()) {
        return false;
    }
    if (writeState(readState())) {
        return true;
    }
    if (orvexApi().sdkGetLastErrorForCamera(m_Camera->getHandle()) == kNotWritableNow) {
        return false;
    }
    raise<KestrelException_Property>(QUILL_HERE, Errors::kPropertyErrorUnknown, getName());
}

bool OrvexStandardProperty::isDiscrete() {
    return false;
}

std::vector<std::string> OrvexStandardProperty::getValueList() {
    return {};
}

void OrvexStandardProperty::setValue(const std::string& value) {
    if (isWritable()) {
        writeValue(Base::parseFloat(clampToRange(value)));
    }
}

std::string OrvexStandardProperty::clampToRange(std::string text) {
    const double number = Base::parseDouble(text);
    if (isDiscrete()) {
        return limitTo(getMinimum(), getMaximum(), number, text);
    }
    const float minimum = readMinimum();
    const float maximum = readMaximum();
    if (number - minimum >= kTextRounding && maximum - number >= kTextRounding) {
        return text; // well within the limits, whose texts need not be formatted
    }
    return limitTo(Base::toSixDecimals(minimum), Base::toSixDecimals(maximum), number, text);
}

float OrvexStandardProperty::readValue() {
    return readState().value;
}

std::int32_t OrvexStandardProperty::readFlags() {
    return readState().flags;
}

float OrvexStandardProperty::readMinimum() {
    return readRange().minimum;
}

float OrvexStandardProperty::readMaximum() {
    return readRange().maximum;
}

float OrvexStandardProperty::readDefault() {
    return readRange().defaultValue;
}

void OrvexStandardProperty::writeValue(const float& value) {
    const bool changes = std::fabs(value - readValue()) > std::numeric_limits<float>::epsilon();
    if (changes) {
        writeAndNotify({value, readFlags()});
    }
}

void OrvexStandardProperty::writeFlags(std::int32_t flags) {
    writeAndNotify({readValue(), flags});
}

bool OrvexStandardProperty::isWritable() {
    return !isReadOnly() && isAvailableForWriting();
}

bool OrvexStandardProperty::tryToRead(OrvexCamera& camera, std::uint32_t propertyId, State& state) {
    return orvexApi().sdkGetProperty(camera.getHandle(), propertyId, &state.value, &state.flags) != 0;
}

bool OrvexStandardProperty::isSupported(OrvexCamera& camera, std::uint32_t propertyId) {
    State state;
    return tryToRead(camera, propertyId, state) ||
           !isUnsupported(orvexApi().sdkGetLastErrorForCamera(camera.getHandle()));
}

OrvexStandardProperty::State OrvexStandardProperty::readState() {
    State state;
    if (!tryToRead(*m_Camera, m_PropertyId, state)) {
        raise<KestrelException_Property>(QUILL_HERE, Errors::kPropertyReadFailure, getName());
    }
    return state;
}

OrvexStandardProperty::Range OrvexStandardProperty::readRange() {
    Range range;
    if (orvexApi().sdkPropertyRange(m_Camera->getHandle(), m_PropertyId, &range.minimum, &range.maximum,
                                    &range.defaultValue, &range.flags) == 0) {
        raise<KestrelException_Property>(QUILL_HERE, Errors::kPropertyRangeReadFailure, getName());
    }
    return range;
}

bool OrvexStandardProperty::writeState(const State& state) {
    return orvexApi().sdkSetProperty(m_Camera->getHandle(), m_PropertyId, state.value, state.flags) != 0;
}

void OrvexStandardProperty::writeAndNotify(const State& state) {
    if (!writeState(state)) {
        raise<KestrelException_Property>(QUILL_HERE, Errors::kPropertyWriteFailure, getName());
    }
    onChange(true);
}

} // namespace OrvexAdapter
