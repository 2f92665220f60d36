// SPDX-License-Identifier: Apache-2.0

#include "Features.h"

#include <cmath>

namespace GenICamDevices {

namespace {

using namespace Address;

constexpr double kGoodExposure = 10000; // microseconds
constexpr std::uint32_t kExposureOnce = 1;
constexpr std::uint32_t kExposureContinuous = 2;
constexpr std::uint32_t kSmallestPacket = 220;
constexpr std::uint32_t kLargestPacket = 16000;
constexpr std::uint32_t kPacketSizeMask = 0xFFFF;

/// A value that a register has when the device starts, unless it is 0.
struct StartValue {
    std::uint32_t address;
    std::uint32_t value;
};

constexpr StartValue kStartValues[] = {
    {kPixelFormat, kPixelFormats[0].code},
    {kTestPattern, static_cast<std::uint32_t>(TestPattern::MovingDiagonalRamp)},
    {kAcquisitionFrameCount, 10},
    {kIndicatorMode, 9}, // a value without a name
    {kHeartbeatTimeout, 3000},
    {kStreamPacketSize, 1500},
};

bool isSetting(const RegisterRow& row) {
    return row.guard == Guard::Settings || row.guard == Guard::Format;
}

bool isWithinBounds(const RegisterRow& row, const std::uint8_t* value) {
    if (row.kind == RegisterKind::Integer) {
        const auto number = static_cast<std::uint32_t>(bigEndian(value, 4));
        return number >= row.minimum && number <= row.maximum && number % row.increment == 0;
    }
    if (row.kind == RegisterKind::Real) {
        // A bound of a float of 4 bytes is the float nearest to it.
        const double number = realOf(value, row.length);
        const bool isShort = row.length == 4;
        return number >= (isShort ? static_cast<float>(row.minimum) : row.minimum) &&
               number <= (isShort ? static_cast<float>(row.maximum) : row.maximum);
    }
    return true;
}

bool isPacketSize(std::uint32_t size) {
    return size >= kSmallestPacket && size <= kLargestPacket && size % 4 == 0;
}

} // namespace

Features::Features(RegisterFile& registers, std::uint32_t sensorWidth, std::uint32_t sensorHeight, double fps)
    : m_Registers(registers), m_Fps(fps) {
    for (const auto& [width, height] : {std::pair{kSensorWidth, kSensorHeight}, {kWidthMax, kHeightMax}}) {
        m_Registers.setInteger(width, sensorWidth);
        m_Registers.setInteger(height, sensorHeight);
    }
    reset();
    m_UserSets[0] = settings();
}

void Features::reset() {
    for (const RegisterRow& row : registerRows()) {
        if (isSetting(row) || row.kind == RegisterKind::Integer) {
            const Bytes zeros(row.length);
            m_Registers.store(row.address, zeros.data(), zeros.size());
        }
    }
    for (const auto& [address, value] : kStartValues) {
        m_Registers.setInteger(address, value);
    }
    m_Registers.setInteger(kWidth, m_Registers.integer(kWidthMax));
    m_Registers.setInteger(kHeight, m_Registers.integer(kHeightMax));
    m_Registers.setInteger(kFrameRateEnable, m_Fps > 0 ? 1 : 0);
    m_Registers.setLongReal(kFrameRate, m_Fps > 0 ? m_Fps : 30);
    m_Registers.setLongReal(kExposureTime, kGoodExposure);
    m_Registers.setReal(kGamma, 1);
    m_Registers.setInteger(kIpConfiguration, 6); // an address from a server or a link-local one
    updatePayloadSize();
}

GigEStatus Features::check(const RegisterRow& row, const std::uint8_t* value, bool isActive) const {
    if (isActive && (row.guard == Guard::Idle || row.guard == Guard::Format)) {
        return GigEStatus::AccessDenied;
    }
    if (!isWithinBounds(row, value)) {
        return GigEStatus::InvalidParameter;
    }
    const auto number = static_cast<std::uint32_t>(bigEndian(value, 4));
    const auto fits = [this, number](std::uint32_t other, std::uint32_t maximum) {
        return number + m_Registers.integer(other) <= m_Registers.integer(maximum);
    };
    bool isGood = true;
    switch (row.address) {
    case kWidth:
        isGood = fits(kOffsetX, kWidthMax);
        break;
    case kHeight:
        isGood = fits(kOffsetY, kHeightMax);
        break;
    case kOffsetX:
        isGood = fits(kWidth, kWidthMax);
        break;
    case kOffsetY:
        isGood = fits(kHeight, kHeightMax);
        break;
    case kPixelFormat:
        isGood = findPixelFormat(number) != nullptr;
        break;
    case kExposureTime:
        if (m_Registers.integer(kExposureAuto) == kExposureContinuous) {
            return GigEStatus::AccessDenied;
        }
        break;
    case kStreamPacketSize: {
        const std::uint32_t size = number & kPacketSizeMask;
        if (isActive && size != (m_Registers.integer(kStreamPacketSize) & kPacketSizeMask)) {
            return GigEStatus::AccessDenied;
        }
        isGood = isPacketSize(size) && (number & ~(kPacketSizeMask | kFireTestPacket | kDoNotFragment)) == 0;
        break;
    }
    default:
        break;
    }
    return isGood ? GigEStatus::Success : GigEStatus::InvalidParameter;
}

void Features::update(const RegisterRow& row) {
    switch (row.address) {
    case kWidth:
    case kHeight:
    case kPixelFormat:
        updatePayloadSize();
        break;
    case kExposureAuto:
        if (m_Registers.integer(kExposureAuto) != 0) {
            m_Registers.setLongReal(kExposureTime, kGoodExposure);
        }
        if (m_Registers.integer(kExposureAuto) == kExposureOnce) {
            m_Registers.setInteger(kExposureAuto, 0);
        }
        break;
    case kHeartbeatTimeout:
        m_Registers.setInteger(kHeartbeatTimeout, std::max(500U, m_Registers.integer(kHeartbeatTimeout)));
        break;
    default:
        break;
    }
}

GigEStatus Features::loadUserSet() {
    const Bytes& saved = m_UserSets[m_Registers.integer(kUserSetSelector)];
    if (saved.empty()) {
        return GigEStatus::AccessDenied;
    }
    const std::uint8_t* next = saved.data();
    for (const RegisterRow& row : registerRows()) {
        if (isSetting(row)) {
            m_Registers.store(row.address, next, row.length);
            next += row.length;
        }
    }
    updatePayloadSize();
    return GigEStatus::Success;
}

GigEStatus Features::saveUserSet() {
    const std::uint32_t selected = m_Registers.integer(kUserSetSelector);
    if (selected == 0) {
        return GigEStatus::AccessDenied;
    }
    m_UserSets[selected] = settings();
    return GigEStatus::Success;
}

const PixelFormat& Features::pixelFormat() const {
    return *findPixelFormat(m_Registers.integer(kPixelFormat));
}

Picture Features::picture() const {
    Picture picture;
    picture.pattern = static_cast<TestPattern>(m_Registers.integer(kTestPattern));
    picture.sensorWidth = m_Registers.integer(kSensorWidth);
    picture.offsetX = m_Registers.integer(kOffsetX);
    picture.offsetY = m_Registers.integer(kOffsetY);
    picture.reverseX = m_Registers.integer(kReverseX) != 0;
    picture.exposureTime = m_Registers.longReal(kExposureTime);
    for (std::uint32_t i = 0; i < picture.gain.size(); ++i) {
        picture.gain[i] = m_Registers.real(kGain + 4 * i);
    }
    picture.blackLevel = m_Registers.real(kBlackLevel);
    picture.gamma = m_Registers.real(kGamma);
    return picture;
}

std::optional<double> Features::frameRate() const {
    return m_Registers.integer(kFrameRateEnable) != 0 ? std::optional(m_Registers.longReal(kFrameRate)) : std::nullopt;
}

std::optional<std::uint64_t> Features::frameLimit() const {
    const std::uint32_t mode = m_Registers.integer(kAcquisitionMode);
    if (mode == 0) {
        return std::nullopt;
    }
    return mode == 1 ? 1 : m_Registers.integer(kAcquisitionFrameCount);
}

bool Features::waitsForTrigger(std::uint32_t trigger) const {
    return m_Registers.integer(kTriggerMode + 4 * trigger) != 0;
}

bool Features::acceptsSoftwareTrigger(std::uint32_t trigger) const {
    return waitsForTrigger(trigger) && m_Registers.integer(kTriggerSource + 4 * trigger) == 0;
}

Bytes Features::settings() const {
    Bytes all;
    for (const RegisterRow& row : registerRows()) {
        if (isSetting(row)) {
            all.insert(all.end(), m_Registers.bytesOf(row.address), m_Registers.bytesOf(row.address) + row.length);
        }
    }
    return all;
}

void Features::updatePayloadSize() {
    const std::size_t size = pixelFormat().rowSize(m_Registers.integer(kWidth)) * m_Registers.integer(kHeight);
    m_Registers.setInteger(kPayloadSize, static_cast<std::uint32_t>(size));
}

} // namespace GenICamDevices
