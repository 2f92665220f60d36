// SPDX-License-Identifier: Apache-2.0

#include "Properties/OrvexFramerate.h"

#include <algorithm>
#include <cstdint>
#include <stdexcept>

#include "Base/TextConversion.h"
#include "Cameras/OrvexCamera/OrvexCamera.h"
#include "Exceptions/Raise.h"
#include "OrvexApi/OrvexApi.h"
#include "Properties/OrvexFrameFormat.h"
#include "Properties/Truncation.h"

namespace OrvexAdapter {

using namespace KestrelExceptions;

namespace {

constexpr std::uint32_t kVideoClockSpeed = 126;

/// More rates than any camera offers. A larger count is invalid.
constexpr std::uint32_t kMaximumRates = 1024;

} // namespace

OrvexFramerate::OrvexFramerate(const std::string& name, const CameraInterface::PROPERTY_TYPE& type, OrvexCamera& camera)
    : Property(name, type), m_Camera(&camera) {
    const std::uint32_t count = countRates();
    if (count == 0 || count > kMaximumRates) {
        raise<KestrelException_Property>(QUILL_HERE, Errors::kPropertyUnsupported, getName());
    }
}

std::string OrvexFramerate::getMinimum() {
    const std::vector<std::string> rates = getValueList();
    return rates.empty() ? "" : rates.front();
}

std::string OrvexFramerate::getMaximum() {
    const std::vector<std::string> rates = getValueList();
    return rates.empty() ? "" : rates.back();
}

std::string OrvexFramerate::getValue() {
    return Base::toSixDecimals(readFrameFormat(*m_Camera, *this, QUILL_HERE).rate);
}

std::string OrvexFramerate::getDefault() {
    const std::vector<std::string> rates = getValueList();
    if (rates.empty()) {
        return "";
    }
    const std::size_t steps = std::min<std::size_t>(defaultClockSteps(), rates.size() - 1);
    return rates[rates.size() - 1 - steps];
}

bool OrvexFramerate::isReadOnly() {
    return false;
}

bool OrvexFramerate::isAvailableForWriting() {
    return !m_Camera->isStreaming();
}

bool OrvexFramerate::isDiscrete() {
    return true;
}

std::vector<std::string> OrvexFramerate::getValueList() {
    const std::uint32_t count = countRates();
    std::vector<float> rates(count <= kMaximumRates ? count : 0);
    const std::uint32_t available = orvexApi().sdkEnumAvailableFrameRates(
        m_Camera->getHandle(), static_cast<std::uint32_t>(rates.size()), rates.data());
    if (available == 0 || count > kMaximumRates) {
        raise<KestrelException_Property>(QUILL_HERE, Errors::kPropertyReadFailure, getName());
    }
    rates.resize(std::min<std::size_t>(rates.size(), available));
    std::vector<std::string> texts(rates.size());
    std::transform(rates.begin(), rates.end(), texts.begin(), Base::toSixDecimals);
    return texts;
}

void OrvexFramerate::setValue(const std::string& value) {
    const bool wasStreaming = m_Camera->isStreaming();
    if (isReadOnly()) {
        return;
    }
    if (wasStreaming) {
        m_Camera->stopStream();
    }
    const std::string entry = findValueInList(value);
    FrameFormat frames = readFrameFormat(*m_Camera, *this, QUILL_HERE);
    frames.rate = Base::parseFloat(entry);
    if (!writeFrameFormat(*m_Camera, frames)) {
        raise<KestrelException_Property>(QUILL_HERE, Errors::kPropertyWriteFailure, getName());
    }
    onChange(true);
    if (wasStreaming) {
        m_Camera->startStream();
    }
}

std::string OrvexFramerate::findValueInList(std::string text) {
    const std::vector<std::string> rates = getValueList();
    const auto entry = std::find_if(rates.begin(), rates.end(), [&](const std::string& rate) {
        return !text.empty() && rate.find(text) != std::string::npos;
    });
    if (entry == rates.end()) {
        throw std::invalid_argument(
            "Desired value must be selected from one of the available options in the value list.");
    }
    return *entry;
}

std::uint32_t OrvexFramerate::countRates() {
    return orvexApi().sdkEnumAvailableFrameRates(m_Camera->getHandle(), 0, nullptr);
}

/// The number of steps from the minimum of the video clock speed to its default, counted below its maximum.
unsigned int OrvexFramerate::defaultClockSteps() {
    float minimum = 0;
    float maximum = 0;
    float defaultValue = 0;
    std::int32_t flags = 0;
    if (orvexApi().sdkPropertyRange(m_Camera->getHandle(), kVideoClockSpeed, &minimum, &maximum, &defaultValue,
                                    &flags) == 0) {
        return 0;
    }
    // The speeds are 8-bit numbers.
    const auto target = static_cast<std::uint8_t>(truncate(defaultValue));
    auto speed = static_cast<std::uint8_t>(truncate(minimum));
    const auto isBelowMaximum = [maximum](std::uint8_t number) { return static_cast<float>(number) < maximum; };
    unsigned int steps = 0;
    if (isBelowMaximum(speed)) {
        while (speed != target && isBelowMaximum(static_cast<std::uint8_t>(speed + 1))) {
            ++speed;
            ++steps;
        }
    }
    return steps;
}

} // namespace OrvexAdapter
