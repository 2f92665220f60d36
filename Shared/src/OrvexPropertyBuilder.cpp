#include "OrvexPropertyBuilder.h"

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <utility>

#include "Cameras/OrvexCamera/OrvexCamera.h"
#include "Exceptions/Raise.h"
#include "OrvexApi/OrvexApi.h"
#include "OrvexPropertyTable.h"
#include "Properties/MakeConstant.h"
#include "Properties/OrvexHardwareTrigger.h"
#include "Properties/PropertyConditional.h"
#include "PropertyNames.h"
#include "Utilities/TextPieces.h"

namespace OrvexAdapter {

using namespace CameraInterface;
using namespace CameraInterface::PropertyNames;
using namespace KestrelExceptions;

namespace {

/// A property that stands for one of two others, by the streaming mode.
struct ConditionalDefinition {
    const char* name;
    const char* inVideoMode;
    const char* otherwise;
    bool sameTypes; ///< whether both must have the type of the row
};

constexpr ConditionalDefinition kConditionals[] = {
    {kExposure, kVideoExposure, kStillExposure, true},
    {kGain, kVideoGain, kStillGain, true},
    {kBlueGain, kBlueVideoGain, kBlueStillGain, true},
    {kGreenGainOne, kGreenVideoGainOne, kGreenStillGainOne, true},
    {kGreenGainTwo, kGreenVideoGainTwo, kGreenStillGainTwo, true},
    {kRedGain, kRedVideoGain, kRedStillGain, true},
    {kClockSpeed, kVideoClockSpeed, kStillClockSpeed, true},
    {kTapConfiguration, kVideoTapConfiguration, kStillTapConfiguration, true},
    {kSpeed, kFramerate, kStillClockSpeed, false},
};
static_assert(std::size(kConditionals) == 9);

struct PropertyLink {
    const char* first;
    const char* second;
    void (*link)(Property& first, Property& second);
};

constexpr PropertyLink kLinks[] = {
    {kFramerate, kVideoTapConfiguration, OrvexPropertyBuilder::linkBothWays},
    {kFramerate, kVideoClockSpeed, OrvexPropertyBuilder::linkBothWays},
};

/// The version record of a camera, all zero where it cannot be read.
ORVEX_VERSION queryVersion(OrvexCamera& camera) {
    ORVEX_VERSION version{};
    orvexApi().sdkQueryVersion(camera.getHandle(), &version);
    return version;
}

/// @return whether both are constants of this type
template <typename T>
bool takeOverConstant(Property& kept, Property& made) {
    auto* const constant = dynamic_cast<MemoryProperty<T>*>(&kept);
    auto* const newer = dynamic_cast<MemoryProperty<T>*>(&made);
    if (constant == nullptr || newer == nullptr || !kept.isReadOnly()) {
        return false;
    }
    *constant = *newer;
    return true;
}

/// What a property of an earlier connection says goes on: the device is told where making the new one has changed it. A
/// constant is what could be read this time.
void keep(Property& kept, Property& made) {
    if (auto* trigger = dynamic_cast<OrvexHardwareTrigger*>(&kept)) {
        trigger->setValue(trigger->getValue());
        return;
    }
    takeOverConstant<unsigned long>(kept, made) || takeOverConstant<std::string>(kept, made);
}

} // namespace

void OrvexPropertyBuilder::build(Properties& properties, OrvexCamera& camera) {
    for (const PropertyDefinition& row : getPropertyTable()) {
        try {
            std::unique_ptr<Property> property = row.m_Factory(row.m_Name, row.m_Type, camera, row.m_SdkProperty);
            const auto [entry, isNew] = properties.try_emplace(property->getName());
            if (isNew) {
                entry->second = std::move(property);
            } else {
                keep(*entry->second, *property); // one that is there already stays
            }
        } catch (const KestrelException&) {
            // The camera does not have this one.
        }
    }
    linkProperties(properties);
}

void OrvexPropertyBuilder::linkProperties(Properties& properties) {
    for (const PropertyLink& row : kLinks) {
        const auto first = properties.find(row.first);
        const auto second = properties.find(row.second);
        if (first != properties.end() && second != properties.end()) {
            row.link(*first->second, *second->second);
        }
    }
}

void OrvexPropertyBuilder::linkBothWays(Property& a, Property& b) {
    a.addLinkedProperty(b);
    b.addLinkedProperty(a);
}

std::unique_ptr<Property> OrvexPropertyBuilder::makeSerialNumber(const std::string& name, const PROPERTY_TYPE& type,
                                                                 OrvexCamera& camera, const unsigned long& /*number*/) {
    return makeConstant(name, type, camera.getSerialNumber());
}

std::unique_ptr<Property> OrvexPropertyBuilder::makeCameraId(const std::string& name, const PROPERTY_TYPE& type,
                                                             OrvexCamera& camera, const unsigned long& /*number*/) {
    return makeConstant<unsigned long>(name, type, queryVersion(camera).cameraid);
}

std::unique_ptr<Property> OrvexPropertyBuilder::makeModelName(const std::string& name, const PROPERTY_TYPE& type,
                                                              OrvexCamera& camera, const unsigned long& /*number*/) {
    return makeConstant(name, type, camera.getModelName());
}

std::unique_ptr<Property> OrvexPropertyBuilder::makeVendorName(const std::string& name, const PROPERTY_TYPE& type,
                                                               OrvexCamera& /*camera*/,
                                                               const unsigned long& /*number*/) {
    return makeConstant<std::string>(name, type, "Meridane");
}

std::unique_ptr<Property> OrvexPropertyBuilder::makeHardwareRevision(const std::string& name, const PROPERTY_TYPE& type,
                                                                     OrvexCamera& camera,
                                                                     const unsigned long& /*number*/) {
    std::uint32_t revision = 0;
    orvexApi().sdkGetHardwareRevision(camera.getHandle(), &revision);
    return makeConstant<unsigned long>(name, type, revision);
}

std::unique_ptr<Property> OrvexPropertyBuilder::makeDriverVersion(const std::string& name, const PROPERTY_TYPE& type,
                                                                  OrvexCamera& camera,
                                                                  const unsigned long& /*number*/) {
    return makeConstant(name, type, Utilities::dottedBytes(queryVersion(camera).driver, 4));
}

std::unique_ptr<Property> OrvexPropertyBuilder::makeApiVersion(const std::string& name, const PROPERTY_TYPE& type,
                                                               OrvexCamera& camera, const unsigned long& /*number*/) {
    return makeConstant(name, type, Utilities::dottedBytes(queryVersion(camera).api, 4));
}

std::unique_ptr<Property> OrvexPropertyBuilder::makeConditional(const std::string& name, const PROPERTY_TYPE& type,
                                                                OrvexCamera& camera, const unsigned long& /*number*/) {
    const auto* const row =
        std::find_if(std::begin(kConditionals), std::end(kConditionals),
                     [&](const ConditionalDefinition& candidate) { return name == candidate.name; });
    if (row == std::end(kConditionals)) {
        raise<KestrelException_Property>(QUILL_HERE, Errors::kPropertyUnsupported, name);
    }
    Property& inVideoMode = camera.getProperty(row->inVideoMode);
    Property& otherwise = camera.getProperty(row->otherwise);
    if (row->sameTypes && (inVideoMode.getType() != type || otherwise.getType() != type)) {
        raise<KestrelException_PropertyComparison>(QUILL_HERE, Errors::kPropertyTypeMismatch, otherwise.getName(),
                                                   inVideoMode.getName());
    }
    return std::make_unique<PropertyConditional>(name, type, camera.getProperty(kStreamingMode), "Video", inVideoMode,
                                                 otherwise);
}

} // namespace OrvexAdapter
