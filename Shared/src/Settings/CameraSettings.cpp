// SPDX-License-Identifier: Apache-2.0

#include "Settings/CameraSettings.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <iterator>
#include <limits>
#include <utility>

#include "Base/TextConversion.h"
#include "Exceptions/Raise.h"
#include "PropertyNames.h"

namespace CameraInterface {

using namespace KestrelExceptions;

namespace {

namespace Names = PropertyNames;

/// On these, the ranges and choices of others depend; written first, in this order.
constexpr const char* kWrittenFirst[] = {
    Names::kStreamingMode,
    Names::kVideoClockSpeed,
    Names::kStillClockSpeed,
    Names::kVideoTapConfiguration,
    Names::kStillTapConfiguration,
    Names::kSamplingDescription,
    Names::kPixelFormat,
    Names::kWidth,
    Names::kHeight,
    Names::kXOffset,
    Names::kYOffset,
};

/// These stand for others, or change what others do; written last, in this order.
constexpr const char* kWrittenLast[] = {
    Names::kExposure,     Names::kGain,         Names::kBlueGain,        Names::kGreenGainOne,
    Names::kGreenGainTwo, Names::kRedGain,      Names::kClockSpeed,      Names::kTapConfiguration,
    Names::kSpeed,        Names::kAutoExposure, Names::kHardwareTrigger, Names::kUsb3VisionMode,
};

/// The place of a name in the order of writing; equal for all that may be written in any order.
std::ptrdiff_t placeOf(const std::string& name) {
    const auto* const first = std::find(std::begin(kWrittenFirst), std::end(kWrittenFirst), name);
    if (first != std::end(kWrittenFirst)) {
        return first - std::end(kWrittenFirst);
    }
    const auto* const last = std::find(std::begin(kWrittenLast), std::end(kWrittenLast), name);
    return last == std::end(kWrittenLast) ? 0 : last - std::begin(kWrittenLast) + 1;
}

bool isSameNumber(const std::string& a, const std::string& b) {
    constexpr double kTextRounding = 1e-6; // of six decimals
    try {
        const double first = Base::parseDouble(a);
        const double second = Base::parseDouble(b);
        return std::abs(first - second) <= kTextRounding || static_cast<float>(first) == static_cast<float>(second);
    } catch (const std::exception&) {
        return false; // not numbers
    }
}

bool isSame(PROPERTY_TYPE type, const std::string& a, const std::string& b) {
    return a == b || (type == PROPERTY_TYPE::Float && isSameNumber(a, b));
}

void requireConnected(Camera& camera) {
    if (!camera.isConnected()) {
        raise<KestrelException_Camera>(QUILL_HERE, Errors::kCameraConnection, camera.getSerialNumber());
    }
}

bool isGone(Camera& camera) {
    return !camera.isConnected() || !camera.isCameraAlive();
}

std::string sentenceOf(const std::exception& failure) {
    const auto* const known = dynamic_cast<const KestrelException*>(&failure);
    return known != nullptr ? known->why() : failure.what();
}

/// A setting and what became of it.
struct Item {
    SettingDifference state;
    bool matches = false;
};

/// Compares a setting with the camera.
/// @throws what Property::getValue() throws  the camera is gone
void examine(Camera& camera, Item& item) {
    item.matches = false;
    item.state.present.clear();
    item.state.reason.clear();
    try {
        Property& property = camera.getProperty(item.state.name);
        item.state.present = property.getValue();
        item.matches = isSame(property.getType(), item.state.wanted, item.state.present);
    } catch (const std::exception& failure) {
        item.state.reason = sentenceOf(failure);
        if (isGone(camera)) {
            throw;
        }
    }
}

/// One call of writeSettings().
class Writing {
public:
    Writing(Camera& camera, const CameraSettings& settings, const SettingsOptions& options)
        : m_Camera(camera), m_Options(options) {
        for (const auto& [name, value] : settings.values) {
            m_Items.push_back({{name, value, "", "It was not reached."}});
        }
        std::stable_sort(m_Items.begin(), m_Items.end(),
                         [](const Item& a, const Item& b) { return placeOf(a.state.name) < placeOf(b.state.name); });
    }

    SettingsReport run() {
        try {
            writeInRounds();
        } catch (...) {
            m_Report.interruption = std::current_exception();
        }
        for (const Item& item : m_Items) {
            if (!item.matches) {
                (item.state.reason.empty() ? m_Report.different : m_Report.failed).push_back(item.state);
            }
        }
        return std::move(m_Report);
    }

private:
    void writeInRounds() {
        std::size_t remaining = std::numeric_limits<std::size_t>::max();
        for (;;) {
            for (Item& item : m_Items) {
                if (m_Options.progress) {
                    m_Options.progress(item.state.name);
                }
                write(item);
            }
            std::size_t differing = 0;
            for (Item& item : m_Items) {
                const std::string reason = item.state.reason;
                examine(m_Camera, item); // a later write may have changed an earlier value
                if (!item.matches) {
                    ++differing;
                    item.state.reason = item.state.reason.empty() ? reason : item.state.reason;
                }
            }
            if (differing == 0 || differing >= remaining) {
                return;
            }
            remaining = differing;
        }
    }

    /// Writes a setting, unless the camera has it, and reads it back.
    void write(Item& item) {
        examine(m_Camera, item);
        if (item.matches || !m_Camera.isPropertySupported(item.state.name)) {
            return;
        }
        std::string reason = tryToWrite(item);
        if (reason.empty()) {
            if (std::find(m_Report.written.begin(), m_Report.written.end(), item.state.name) ==
                m_Report.written.end()) {
                m_Report.written.push_back(item.state.name);
            }
            examine(m_Camera, item);
        } else {
            item.state.reason = std::move(reason);
        }
    }

    /// @return why it cannot be written; empty if it is
    /// @throws what Property::setValue() throws  the camera is gone
    std::string tryToWrite(const Item& item) {
        try {
            Property& property = m_Camera.getProperty(item.state.name);
            if (property.isReadOnly()) {
                return "It is read-only.";
            }
            if (!property.isAvailableForWriting()) {
                return "It cannot be written now.";
            }
            property.setValue(item.state.wanted);
            return "";
        } catch (const std::exception& failure) {
            if (isGone(m_Camera)) {
                throw;
            }
            return sentenceOf(failure);
        }
    }

    Camera& m_Camera;
    const SettingsOptions& m_Options;
    std::vector<Item> m_Items;
    SettingsReport m_Report;
};

} // namespace

CameraSettings readSettings(Camera& camera) {
    requireConnected(camera);
    CameraSettings settings{getKindName(camera.getKind()), camera.getModelName(), camera.getSerialNumber(), {}};
    for (const std::string& name : camera.getSupportedProperties()) {
        Property& property = camera.getProperty(name);
        if (!property.isReadOnly()) {
            settings.values.emplace(name, property.getValue());
        }
    }
    return settings;
}

SettingsReport writeSettings(Camera& camera, const CameraSettings& settings, const SettingsOptions& options) {
    requireConnected(camera);
    if (!options.acceptOtherModels && settings.modelName != camera.getModelName()) {
        raise<KestrelException>(QUILL_HERE, Errors::kSettingsModel);
    }
    return Writing(camera, settings, options).run();
}

std::vector<SettingDifference> compareSettings(Camera& camera, const CameraSettings& settings) {
    requireConnected(camera);
    std::vector<SettingDifference> differences;
    for (const auto& [name, value] : settings.values) {
        Item item{{name, value, "", ""}};
        examine(camera, item);
        if (!item.matches) {
            differences.push_back(item.state);
        }
    }
    return differences;
}

} // namespace CameraInterface
