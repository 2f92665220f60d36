// SPDX-License-Identifier: Apache-2.0

#include "StandardProperties.h"

#include <algorithm>
#include <array>
#include <functional>
#include <utility>

#include "GenICamCamera.h"
#include "Numbers.h"
#include "PixelFormats.h"
#include "Properties/MemoryProperty.h"
#include "PropertyNames.h"

namespace GenICamAdapter {

using namespace CameraInterface;

namespace {

/// How a standard property differs from the feature that serves it. What is empty is as the feature has it.
struct Mapping {
    std::function<std::string(const std::string&)> shown;   ///< the feature's text as this property's
    std::function<std::string(const std::string&)> written; ///< the reverse
    std::function<std::string()> value;                     ///< instead of the feature's value
    std::function<void(const std::string&)> write;          ///< instead of writing to the feature
    std::vector<std::string> choices;                       ///< instead of the feature's
    bool isReadOnly = false;
};

/// A property of the standard vocabulary that a feature of the camera serves. Unit, description and category go with
/// the name.
class StandardProperty : public Property {
public:
    StandardProperty(const std::string& name, PROPERTY_TYPE type, Property& feature, Mapping mapping)
        : Property(name, type), m_Feature(&feature), m_Mapping(std::move(mapping)) {
        feature.addLinkedProperty(*this);
    }

    std::string getMinimum() override {
        return m_Mapping.choices.empty() ? shown(m_Feature->getMinimum()) : m_Mapping.choices.front();
    }
    std::string getMaximum() override {
        return m_Mapping.choices.empty() ? shown(m_Feature->getMaximum()) : m_Mapping.choices.back();
    }
    std::string getValue() override { return m_Mapping.value ? m_Mapping.value() : shown(m_Feature->getValue()); }
    std::string getDefault() override { return getValue(); }
    bool isReadOnly() override { return m_Mapping.isReadOnly || m_Feature->isReadOnly(); }
    bool isAvailableForWriting() override { return !m_Mapping.isReadOnly && m_Feature->isAvailableForWriting(); }
    bool isDiscrete() override {
        return !m_Mapping.choices.empty() || (!m_Mapping.isReadOnly && m_Feature->isDiscrete());
    }
    std::vector<std::string> getValueList() override {
        return !isDiscrete() || !m_Mapping.choices.empty() ? m_Mapping.choices : m_Feature->getValueList();
    }
    std::string getUnit() override { return getType() == PROPERTY_TYPE::String ? "" : Property::getUnit(); }
    std::string getIncrement() override {
        const std::string step = m_Feature->getIncrement();
        return step.empty() || m_Mapping.value ? "" : shown(step);
    }
    /// The feature tells this property, which is linked to it.
    void setValue(const std::string& text) override {
        if (!isAvailableForWriting()) {
            return;
        }
        if (m_Mapping.write) {
            m_Mapping.write(text);
        } else {
            m_Feature->setValue(m_Mapping.written ? m_Mapping.written(text) : text);
        }
    }

private:
    std::string shown(const std::string& text) const {
        return m_Mapping.shown && !text.empty() ? m_Mapping.shown(text) : text;
    }

    Property* m_Feature;
    Mapping m_Mapping;
};

Mapping asItIs() {
    return {};
}

Mapping readOnly() {
    Mapping mapping;
    mapping.isReadOnly = true;
    return mapping;
}

/// Milliseconds, of a feature in microseconds.
Mapping inMilliseconds() {
    Mapping mapping;
    mapping.shown = [](const std::string& text) { return textOf(parseFloat(text) / 1000); };
    mapping.written = [](const std::string& text) { return textOf(parseFloat(text) * 1000); };
    return mapping;
}

/// A switch, of an enumeration with "Off" and "Continuous".
Mapping asSwitch() {
    Mapping mapping;
    mapping.shown = [](const std::string& text) { return States().toString(text != "Off"); };
    mapping.written = [](const std::string& text) { return States().toValue(text) ? "Continuous" : "Off"; };
    mapping.choices = States().getList();
    return mapping;
}

struct StandardRow {
    const char* name;
    PROPERTY_TYPE type;
    std::array<const char*, 3> features; ///< the first that is there serves
    Mapping (*mapping)();
};

constexpr StandardRow kStandardRows[] = {
    {PropertyNames::kExposure, PROPERTY_TYPE::Float, {"ExposureTime", "ExposureTimeAbs"}, inMilliseconds},
    {PropertyNames::kGain, PROPERTY_TYPE::Float, {"Gain", "GainAbs", "GainRaw"}, asItIs},
    {PropertyNames::kXOffset, PROPERTY_TYPE::Integer, {"OffsetX"}, asItIs},
    {PropertyNames::kYOffset, PROPERTY_TYPE::Integer, {"OffsetY"}, asItIs},
    {PropertyNames::kMaximumWidth, PROPERTY_TYPE::Integer, {"WidthMax", "SensorWidth"}, readOnly},
    {PropertyNames::kMaximumHeight, PROPERTY_TYPE::Integer, {"HeightMax", "SensorHeight"}, readOnly},
    {PropertyNames::kPixelFormat, PROPERTY_TYPE::String, {"PixelFormat"}, asItIs},
    {PropertyNames::kAutoExposure, PROPERTY_TYPE::Boolean, {"ExposureAuto"}, asSwitch},
    {PropertyNames::kBlackLevel, PROPERTY_TYPE::Float, {"BlackLevel", "BlackLevelRaw"}, asItIs},
    {PropertyNames::kTriggerMode, PROPERTY_TYPE::String, {"TriggerMode"}, asItIs},
    {PropertyNames::kCameraTemperature, PROPERTY_TYPE::Float, {"DeviceTemperature"}, readOnly},
    {PropertyNames::kSerialNumber, PROPERTY_TYPE::String, {"DeviceSerialNumber", "DeviceID"}, readOnly},
    {PropertyNames::kModelName, PROPERTY_TYPE::String, {"DeviceModelName"}, readOnly},
    {PropertyNames::kVendorName, PROPERTY_TYPE::String, {"DeviceVendorName"}, readOnly},
    {PropertyNames::kFirmwareVersion, PROPERTY_TYPE::String, {"DeviceFirmwareVersion", "DeviceVersion"}, readOnly},
};

class Builder {
public:
    Builder(GenICamCamera& camera, Properties& properties) : m_Camera(camera), m_Properties(properties) {}

    void build() {
        for (const StandardRow& row : kStandardRows) {
            if (Property* const feature = findFirst(row.features)) {
                add(row.name, row.type, *feature, row.mapping());
            }
        }
        buildFramerate();
        buildColorGains();
        buildSteps();
        buildColorFormat();
        buildFlipping();
        buildSampling();
        buildMemory();
    }

private:
    Property* find(const char* name) {
        const auto entry = m_Properties.find(name);
        return entry == m_Properties.end() ? nullptr : entry->second.get();
    }

    template <typename Names>
    Property* findFirst(const Names& names) {
        for (const char* name : names) {
            Property* const property = name == nullptr ? nullptr : find(name);
            if (property != nullptr) {
                return property;
            }
        }
        return nullptr;
    }

    void add(const char* name, PROPERTY_TYPE type, Property& feature, Mapping mapping) {
        if (find(name) == nullptr) {
            put(std::make_unique<StandardProperty>(name, type, feature, std::move(mapping)));
        }
    }

    void put(std::unique_ptr<Property> property) {
        const std::string name = property->getName();
        m_Properties.emplace(name, std::move(property));
    }

    void buildFramerate() {
        Property* const rate = findFirst(std::array{"AcquisitionFrameRate", "AcquisitionFrameRateAbs"});
        Property* const enable = find("AcquisitionFrameRateEnable");
        if (rate == nullptr) {
            return;
        }
        Mapping mapping;
        mapping.write = [rate, enable](const std::string& text) {
            if (enable != nullptr) {
                enable->setValue(States().toString(true));
            }
            rate->setValue(text);
        };
        add(PropertyNames::kFramerate, PROPERTY_TYPE::Float, *rate, std::move(mapping));
    }

    /// One colour of the gain, behind the selector, which keeps its value.
    void buildColorGains() {
        Property* const gain = find("Gain");
        auto* const selector = dynamic_cast<FeatureProperty*>(find("GainSelector"));
        if (gain == nullptr || selector == nullptr) {
            return;
        }
        const std::vector<std::string> choices = selector->getValueList();
        for (const auto& [name, color] :
             {std::pair{PropertyNames::kRedGain, "Red"}, std::pair{PropertyNames::kBlueGain, "Blue"}}) {
            if (std::find(choices.begin(), choices.end(), color) == choices.end()) {
                continue;
            }
            const auto selected = [selector, color = std::string(color)](const std::function<void()>& action) {
                const std::string former = selector->getValue();
                selector->setQuietly(color);
                try {
                    action();
                } catch (...) {
                    selector->setQuietly(former);
                    throw;
                }
                selector->setQuietly(former);
            };
            Mapping mapping;
            mapping.value = [gain, selected] {
                std::string value;
                selected([&] { value = gain->getValue(); });
                return value;
            };
            mapping.write = [gain, selected](const std::string& text) { selected([&] { gain->setValue(text); }); };
            add(name, PROPERTY_TYPE::Float, *gain, std::move(mapping));
        }
    }

    void buildSteps() {
        for (const auto& [name, feature] : {std::pair{PropertyNames::kUnitWidth, find("Width")},
                                            std::pair{PropertyNames::kUnitHeight, find("Height")}}) {
            if (feature != nullptr) {
                Mapping mapping = readOnly();
                mapping.value = [size = feature] { return size->getIncrement(); };
                add(name, PROPERTY_TYPE::Integer, *feature, std::move(mapping));
            }
        }
    }

    void buildColorFormat() {
        if (Property* const format = find("PixelFormat")) {
            Mapping mapping = readOnly();
            mapping.shown = colorFormatOf;
            add(PropertyNames::kColorFormat, PROPERTY_TYPE::String, *format, std::move(mapping));
        }
    }

    void buildFlipping() {
        Property* const x = find("ReverseX");
        Property* const y = find("ReverseY");
        Property* const any = x != nullptr ? x : y;
        if (any == nullptr) {
            return;
        }
        const auto isSet = [](Property* axis) { return axis != nullptr && States().toValue(axis->getValue()); };
        Mapping mapping;
        mapping.value = [x, y, isSet] {
            const std::string text = std::string(isSet(x) ? "X" : "") + (isSet(y) ? "Y" : "");
            return text.empty() ? "None" : text;
        };
        mapping.write = [x, y](const std::string& text) {
            std::map<std::string, int> sides{{"None", 0}};
            if (x != nullptr) {
                sides.emplace("X", 1);
            }
            if (y != nullptr) {
                sides.emplace("Y", 2);
            }
            if (sides.size() == 3) {
                sides.emplace("XY", 3);
            }
            const int side = PropertyValueEnumeration<int>(sides).toValue(text);
            for (const auto& [axis, bit] : {std::pair{x, 1}, std::pair{y, 2}}) {
                if (axis != nullptr) {
                    axis->setValue(States().toString((side & bit) != 0));
                }
            }
        };
        mapping.choices = x == nullptr   ? std::vector<std::string>{"None", "Y"}
                          : y == nullptr ? std::vector<std::string>{"None", "X"}
                                         : std::vector<std::string>{"None", "X", "XY", "Y"};
        add(PropertyNames::kFlipping, PROPERTY_TYPE::String, *any, std::move(mapping));
        if (y != nullptr && y != any) {
            y->addLinkedProperty(*m_Properties.at(PropertyNames::kFlipping));
        }
    }

    void buildSampling() {
        Property* const horizontal = findFirst(std::array{"BinningHorizontal", "DecimationHorizontal"});
        if (horizontal == nullptr) {
            return;
        }
        Property* const vertical = findFirst(std::array{"BinningVertical", "DecimationVertical"});
        const char* const label = find("BinningHorizontal") != nullptr ? "Binning" : "Subsampling";
        Mapping mapping = readOnly();
        mapping.value = [horizontal, vertical, label] {
            const std::string factors =
                horizontal->getValue() + "x" + (vertical == nullptr ? "1" : vertical->getValue());
            return (factors == "1x1" ? "None (" : std::string(label) + " (") + factors + ")";
        };
        add(PropertyNames::kSamplingDescription, PROPERTY_TYPE::String, *horizontal, std::move(mapping));
    }

    void buildMemory() {
        const auto constant = [this](const char* name, const std::string& value) {
            if (find(name) == nullptr) {
                put(std::make_unique<MemoryProperty<std::string>>(name, PROPERTY_TYPE::String, value, value, value,
                                                                  true, false, std::map<std::string, std::string>()));
            }
        };
        constant(PropertyNames::kEndianness, "Little Endian");
        constant(PropertyNames::kStreamingMode, "Video");
        constant(PropertyNames::kHardwareInterface, m_Camera.isOnNetwork() ? "GigE Vision" : "USB 3.0");
        if (find(PropertyNames::kTimeout) == nullptr) {
            put(std::make_unique<MemoryProperty<double>>(PropertyNames::kTimeout, PROPERTY_TYPE::Float, -1.0, 60000.0,
                                                         -1.0, false, false, std::map<std::string, double>()));
        }
    }

    GenICamCamera& m_Camera;
    Properties& m_Properties;
};

} // namespace

void addStandardProperties(GenICamCamera& camera, Properties& properties) {
    Builder(camera, properties).build();
}

} // namespace GenICamAdapter
