// SPDX-License-Identifier: Apache-2.0

#include "Device/PropertyBank.h"

#include "Refusal.h"

namespace SoftwareDevices {

namespace {

constexpr std::int32_t kLittleEndianData = INT32_MIN; // bit 31

PropertyRow constantRow(std::uint32_t number, std::uint32_t value, std::int32_t flags = 0) {
    const auto constant = static_cast<float>(value);
    return {number, constant, constant, constant, constant, flags, kRangeReadOnly, true};
}

} // namespace

PropertyBank::PropertyBank(const DeviceDescription& description) {
    if (description.sensorWidth > 0) {
        replace(constantRow(PropertyNumber::kColorFormat, static_cast<std::uint32_t>(description.colorFormat),
                            description.bigEndian ? 0 : kLittleEndianData));
        replace(constantRow(PropertyNumber::kMaximumWidth, description.sensorWidth));
        replace(constantRow(PropertyNumber::kMaximumHeight, description.sensorHeight));
        replace(constantRow(PropertyNumber::kUnitWidth, description.unitWidth));
        replace(constantRow(PropertyNumber::kUnitHeight, description.unitHeight));
    }
    for (const PropertyRow& row : description.properties) {
        replace(row);
    }
}

const PropertyRow& PropertyBank::row(std::uint32_t number) const {
    const PropertyRow* found = find(number);
    require(found != nullptr, kPropertyUnsupported);
    return *found;
}

const PropertyRow* PropertyBank::find(std::uint32_t number) const {
    const auto found = m_Rows.find(number);
    return found == m_Rows.end() ? nullptr : &found->second;
}

float PropertyBank::valueOr(std::uint32_t number, float otherwise) const {
    const PropertyRow* found = find(number);
    return found ? found->value : otherwise;
}

void PropertyBank::write(std::uint32_t number, float value, std::int32_t flags) {
    const PropertyRow& present = row(number);
    require((present.rangeFlags & kRangeReadOnly) == 0, kReadOnly);
    require(present.writable, kPropertyNotWritable);
    require(value >= present.minimum && value <= present.maximum, kOutOfRange); // refuses NaN too
    PropertyRow& changed = m_Rows[number];
    changed.value = value;
    changed.flags = flags;
}

void PropertyBank::setWritable(std::uint32_t number, bool writable) {
    row(number);
    m_Rows[number].writable = writable;
}

} // namespace SoftwareDevices
