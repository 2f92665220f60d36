// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <map>

#include "SoftwareDevices.h"

namespace SoftwareDevices {

/// SDK numbers of the properties that affect the devices.
namespace PropertyNumber {
constexpr std::uint32_t kGamma = 5;
constexpr std::uint32_t kVideoExposure = 20; ///< milliseconds
constexpr std::uint32_t kVideoGain = 40;
constexpr std::uint32_t kVideoGainRed = 41;
constexpr std::uint32_t kVideoGainBlue = 42;
constexpr std::uint32_t kVideoGainGreen1 = 43;
constexpr std::uint32_t kVideoGainGreen2 = 44;
constexpr std::uint32_t kColorFormat = 80;
constexpr std::uint32_t kMaximumWidth = 81;
constexpr std::uint32_t kMaximumHeight = 82;
constexpr std::uint32_t kUnitWidth = 83;
constexpr std::uint32_t kUnitHeight = 84;
constexpr std::uint32_t kBlackLevel = 86; ///< in sample values
constexpr std::uint32_t kVideoClockSpeed = 126;
} // namespace PropertyNumber

/// The numbered settings of one device. Not thread-safe.
class PropertyBank {
public:
    /// Takes the description's rows, and those that follow from its sensor.
    explicit PropertyBank(const DeviceDescription& description);

    /// @throws Refusal  the device lacks the property
    const PropertyRow& row(std::uint32_t number) const;

    /// @return null if the device lacks the property
    const PropertyRow* find(std::uint32_t number) const;

    float valueOr(std::uint32_t number, float otherwise) const;

    /// @throws Refusal  unsupported, read-only, not writable now, or a value outside the range; the property is
    ///     unchanged
    void write(std::uint32_t number, float value, std::int32_t flags);

    /// Replaces or adds a row without checks.
    void replace(const PropertyRow& row) { m_Rows[row.number] = row; }

    void setWritable(std::uint32_t number, bool writable);

private:
    std::map<std::uint32_t, PropertyRow> m_Rows;
};

} // namespace SoftwareDevices
