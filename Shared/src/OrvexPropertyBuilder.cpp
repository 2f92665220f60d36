// SPDX-License-Identifier: Apache-2.0

#include "OrvexPropertyBuilder.h"

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <optional>
#include <string_view>
#include <utility>

#include "Base/TextPieces.h"
#include "Cameras/OrvexCamera/OrvexCamera.h"
#include "Exceptions/Raise.h"
#include "OrvexApi/OrvexApi.h"
#include "OrvexPropertyTable.h"
#include "Properties/MakeConstant.h"
#include "Properties/OrvexBooleanProperties.h"
#include "Properties/OrvexMemoryProperties.h"
#include "Properties/PropertyConditional.h"
#include "PropertyNames.h"

namespace OrvexAdapter {

using namespace CameraInterface;
using namespace CameraInterface::PropertyNames;
using namespace KestrelExceptions;

namespace {

/// A property that stands for one of two others, depending on the streaming mode.
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

/// Returns null for the name of any other property.
const ConditionalDefinition* findConditional(std::string_view name) {
    const auto* const row =
        std::find_if(std::begin(kConditionals), std::end(kConditionals),
                     [name](const ConditionalDefinition& candidate) { return name == candidate.name; });
    return row == std::end(kConditionals) ? nullptr : row;
}

/// Whether a property stands for two others of which the camera lacks one. Its factory would say so by an exception.
bool lacksPartner(const PropertyDefinition& row, OrvexCamera& camera) {
    if (row.m_Factory != OrvexPropertyBuilder::makeConditional) {
        return false;
    }
    const ConditionalDefinition* const conditional = findConditional(row.m_Name);
    return conditional != nullptr && !(camera.isPropertySupported(conditional->inVideoMode) &&
                                       camera.isPropertySupported(conditional->otherwise));
}

/// The version record of a camera; empty if it cannot be read.
std::optional<ORVEX_VERSION> queryVersion(OrvexCamera& camera) {
    ORVEX_VERSION version{};
    return orvexApi().sdkQueryVersion(camera.getHandle(), &version) != 0 ? std::optional(version) : std::nullopt;
}

/// Makes a property of one of its dotted version numbers.
std::unique_ptr<Property> makeVersion(const std::string& name, const PROPERTY_TYPE& type, OrvexCamera& camera,
                                      std::uint32_t ORVEX_VERSION::*number) {
    const auto textOf = [number](const ORVEX_VERSION& version) { return Base::dottedBytes(version.*number, 4); };
    const std::optional<ORVEX_VERSION> version = queryVersion(camera);
    return std::make_unique<OrvexDeviceConstant<std::string>>(
        name, type, version ? std::optional(textOf(*version)) : std::nullopt, textOf({}));
}

template <typename T>
void takeOverConstant(Property& kept, Property& made) {
    auto* const constant = dynamic_cast<OrvexDeviceConstant<T>*>(&kept);
    auto* const later = dynamic_cast<OrvexDeviceConstant<T>*>(&made);
    if (constant != nullptr && later != nullptr) {
        constant->takeOver(*later);
    }
}

/// Makes a property if the camera has it. A property of an earlier connection stays, and takes over the present values
/// of the camera.
void make(const PropertyDefinition& row, OrvexPropertyBuilder::Properties& properties, OrvexCamera& camera) {
    if (lacksPartner(row, camera)) {
        return;
    }
    std::unique_ptr<Property> property = row.m_Factory(row.m_Name, row.m_Type, camera, row.m_SdkProperty);
    if (!property) {
        return;
    }
    const auto [entry, isNew] = properties.try_emplace(property->getName());
    if (isNew) {
        entry->second = std::move(property);
    } else {
        takeOverConstant<unsigned long>(*entry->second, *property);
        takeOverConstant<std::string>(*entry->second, *property);
    }
}

} // namespace

void OrvexPropertyBuilder::build(Properties& properties, OrvexCamera& camera) {
    for (const PropertyDefinition& row : getPropertyTable()) {
        try {
            make(row, properties, camera);
        } catch (const KestrelException&) {
            // The camera does not have this one.
        }
    }
    linkProperties(properties);
}

void OrvexPropertyBuilder::restoreTrigger(const Properties& properties) {
    const auto entry = properties.find(kHardwareTrigger);
    if (entry != properties.end()) {
        dynamic_cast<OrvexHardwareTrigger&>(*entry->second).restore();
    }
}

void OrvexPropertyBuilder::linkProperties(Properties& properties) {
    for (const PropertyLink& row : kLinks) {
        const auto first = properties.find(row.first);
        const auto second = properties.find(row.second);
        if (first != properties.end() && second != properties.end()) {
            row.link(*first->second, *second->second);
        }
    }
    const auto mode = properties.find(kStreamingMode);
    for (const ConditionalDefinition& row : kConditionals) {
        const auto conditional = properties.find(row.name);
        if (mode != properties.end() && conditional != properties.end()) {
            mode->second->addLinkedProperty(*conditional->second);
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
    const std::optional<ORVEX_VERSION> version = queryVersion(camera);
    return std::make_unique<OrvexDeviceConstant<unsigned long>>(
        name, type, version ? std::optional<unsigned long>(version->cameraid) : std::nullopt, 0);
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
    const bool wasRead = orvexApi().sdkGetHardwareRevision(camera.getHandle(), &revision) != 0;
    return std::make_unique<OrvexDeviceConstant<unsigned long>>(
        name, type, wasRead ? std::optional<unsigned long>(revision) : std::nullopt, 0);
}

std::unique_ptr<Property> OrvexPropertyBuilder::makeDriverVersion(const std::string& name, const PROPERTY_TYPE& type,
                                                                  OrvexCamera& camera,
                                                                  const unsigned long& /*number*/) {
    return makeVersion(name, type, camera, &ORVEX_VERSION::driver);
}

std::unique_ptr<Property> OrvexPropertyBuilder::makeApiVersion(const std::string& name, const PROPERTY_TYPE& type,
                                                               OrvexCamera& camera, const unsigned long& /*number*/) {
    return makeVersion(name, type, camera, &ORVEX_VERSION::api);
}

std::unique_ptr<Property> OrvexPropertyBuilder::makeConditional(const std::string& name, const PROPERTY_TYPE& type,
                                                                OrvexCamera& camera, const unsigned long& /*number*/) {
    const ConditionalDefinition* const row = findConditional(name);
    if (row == nullptr) {
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
