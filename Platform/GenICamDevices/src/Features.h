// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <array>
#include <cstdint>
#include <optional>

#include "GigEPattern.h"
#include "RegisterFile.h"

namespace GenICamDevices {

/// Triggers, in the order of TriggerSelector.
inline constexpr std::uint32_t kFrameTrigger = 0;
inline constexpr std::uint32_t kAcquisitionTrigger = 1;

/// What the registers of the features may be set to, and what follows from them.
class Features {
public:
    /// @param fps  0: as fast as possible
    Features(RegisterFile& registers, std::uint32_t sensorWidth, std::uint32_t sensorHeight, double fps);

    /// Gives the features the values that they have when the device starts. Saved user sets stay.
    void reset();

    /// Whether a value may be written to a register now.
    /// @param isActive  whether frames are sent
    GigEStatus check(const RegisterRow& row, const std::uint8_t* value, bool isActive) const;
    /// Computes what follows from a register that was written.
    void update(const RegisterRow& row);

    /// @return AccessDenied if the selected set cannot be loaded or saved
    GigEStatus loadUserSet();
    GigEStatus saveUserSet();

    const PixelFormat& pixelFormat() const;
    Picture picture() const;
    /// Frames per second.
    /// @return nothing: as fast as possible
    std::optional<double> frameRate() const;
    /// Frames of an acquisition.
    /// @return nothing: no limit
    std::optional<std::uint64_t> frameLimit() const;
    bool waitsForTrigger(std::uint32_t trigger) const;
    bool acceptsSoftwareTrigger(std::uint32_t trigger) const;

private:
    static constexpr std::size_t kUserSetCount = 3; ///< the default and two more

    Bytes settings() const;
    void updatePayloadSize();

    RegisterFile& m_Registers;
    const double m_Fps;
    std::array<Bytes, kUserSetCount> m_UserSets; ///< empty: never saved
};

} // namespace GenICamDevices
