// SPDX-License-Identifier: Apache-2.0
#pragma once

/**
 * @file
 * The numbers of GigE Vision's two protocols: GVCP, which reads and writes the registers of a camera, and GVSP, which
 * carries its frames. Both use UDP and send numbers with their highest byte first.
 */

#include <cstddef>
#include <cstdint>
#include <vector>

namespace GenICamDevices {

using Bytes = std::vector<std::uint8_t>;

inline constexpr std::uint16_t kControlPort = 3956;
inline constexpr std::uint8_t kControlKey = 0x42;    ///< first byte of every request
inline constexpr std::uint8_t kAnswerWanted = 0x01;  ///< in the second byte of a request
inline constexpr std::size_t kControlHeaderSize = 8; ///< of requests and answers
inline constexpr std::size_t kLargestControlPayload =
    540; ///< what follows the header, so that packets stay whole everywhere
inline constexpr std::uint32_t kDiscoveryAnswerSize = 0xF8; ///< the registers that a discovered device sends
inline constexpr std::uint32_t kPacketOverhead = 36;   ///< headers of IP, UDP and GVSP, which the packet size includes
inline constexpr std::uint32_t kDatagramOverhead = 28; ///< headers of IP and UDP

/// Requests; an answer has the next higher number.
enum class GigECommand : std::uint16_t {
    Discovery = 0x0002,
    ForceIp = 0x0004,
    PacketResend = 0x0040,
    ReadRegisters = 0x0080,
    WriteRegisters = 0x0082,
    ReadMemory = 0x0084,
    WriteMemory = 0x0086,
};

/// What an answer says of its request.
enum class GigEStatus : std::uint16_t {
    Success = 0,
    NotImplemented = 0x8001,
    InvalidParameter = 0x8002,
    InvalidAddress = 0x8003,
    WriteProtect = 0x8004,
    BadAlignment = 0x8005,
    AccessDenied = 0x8006,
    LocalProblem = 0x8008,
    PacketUnavailable = 0x800C,
    InvalidHeader = 0x800E,
};

/// Kind of a packet of a frame.
enum class GigEPacket : std::uint8_t { Leader = 1, Trailer = 2, Payload = 3 };

/// Addresses of registers. Those below 0xA000 are the same in every GigE Vision device.
namespace Address {
inline constexpr std::uint32_t kVersion = 0x0000;
inline constexpr std::uint32_t kDeviceMode = 0x0004;
inline constexpr std::uint32_t kMacHigh = 0x0008;
inline constexpr std::uint32_t kMacLow = 0x000C;
inline constexpr std::uint32_t kSupportedIpConfiguration = 0x0010;
inline constexpr std::uint32_t kIpConfiguration = 0x0014;
inline constexpr std::uint32_t kIp = 0x0024;
inline constexpr std::uint32_t kMask = 0x0034;
inline constexpr std::uint32_t kGateway = 0x0044;
inline constexpr std::uint32_t kVendor = 0x0048;
inline constexpr std::uint32_t kModel = 0x0068;
inline constexpr std::uint32_t kDeviceVersion = 0x0088;
inline constexpr std::uint32_t kManufacturerInfo = 0x00A8;
inline constexpr std::uint32_t kSerial = 0x00D8;
inline constexpr std::uint32_t kUserName = 0x00E8;
inline constexpr std::uint32_t kFirstUrl = 0x0200;
inline constexpr std::uint32_t kSecondUrl = 0x0400;
inline constexpr std::uint32_t kInterfaceCount = 0x0600;
inline constexpr std::uint32_t kPersistentIp = 0x064C;
inline constexpr std::uint32_t kPersistentMask = 0x065C;
inline constexpr std::uint32_t kPersistentGateway = 0x066C;
inline constexpr std::uint32_t kLinkSpeed = 0x0670;
inline constexpr std::uint32_t kMessageChannelCount = 0x0900;
inline constexpr std::uint32_t kStreamChannelCount = 0x0904;
inline constexpr std::uint32_t kControlCapability = 0x0934;
inline constexpr std::uint32_t kHeartbeatTimeout = 0x0938;
inline constexpr std::uint32_t kTickFrequency = 0x093C;
inline constexpr std::uint32_t kTimestampControl = 0x0944;
inline constexpr std::uint32_t kTimestamp = 0x0948;
inline constexpr std::uint32_t kControlConfiguration = 0x0954;
inline constexpr std::uint32_t kPrivilege = 0x0A00;
inline constexpr std::uint32_t kStreamPort = 0x0D00;
inline constexpr std::uint32_t kStreamPacketSize = 0x0D04;
inline constexpr std::uint32_t kStreamPacketDelay = 0x0D08;
inline constexpr std::uint32_t kStreamDestination = 0x0D18;
inline constexpr std::uint32_t kStreamSourcePort = 0x0D1C;
inline constexpr std::uint32_t kTemperature = 0xA000;
inline constexpr std::uint32_t kDeviceReset = 0xA004;
inline constexpr std::uint32_t kIndicatorMode = 0xA008;
inline constexpr std::uint32_t kUserNumber = 0xA010;
inline constexpr std::uint32_t kSentFrameCount = 0xA018;
inline constexpr std::uint32_t kUserNote = 0xA020;
inline constexpr std::uint32_t kUserData = 0xA060;
inline constexpr std::uint32_t kWidth = 0xA100;
inline constexpr std::uint32_t kHeight = 0xA104;
inline constexpr std::uint32_t kOffsetX = 0xA108;
inline constexpr std::uint32_t kOffsetY = 0xA10C;
inline constexpr std::uint32_t kWidthMax = 0xA110;
inline constexpr std::uint32_t kHeightMax = 0xA114;
inline constexpr std::uint32_t kPixelFormat = 0xA118;
inline constexpr std::uint32_t kReverseX = 0xA11C;
inline constexpr std::uint32_t kTestPattern = 0xA120;
inline constexpr std::uint32_t kSensorWidth = 0xA124;
inline constexpr std::uint32_t kSensorHeight = 0xA128;
inline constexpr std::uint32_t kAcquisitionMode = 0xA200;
inline constexpr std::uint32_t kAcquisitionStart = 0xA204;
inline constexpr std::uint32_t kAcquisitionStop = 0xA208;
inline constexpr std::uint32_t kFrameRateEnable = 0xA20C;
inline constexpr std::uint32_t kFrameRate = 0xA210;
inline constexpr std::uint32_t kExposureTime = 0xA218;
inline constexpr std::uint32_t kExposureAuto = 0xA220;
inline constexpr std::uint32_t kAcquisitionFrameCount = 0xA224;
inline constexpr std::uint32_t kTriggerSelector = 0xA228;
inline constexpr std::uint32_t kTriggerSoftware = 0xA22C;
inline constexpr std::uint32_t kTriggerMode = 0xA230;   ///< one of each trigger
inline constexpr std::uint32_t kTriggerSource = 0xA238; ///< one of each trigger
inline constexpr std::uint32_t kAcquisitionStatus = 0xA240;
inline constexpr std::uint32_t kGainSelector = 0xA300;
inline constexpr std::uint32_t kGain = 0xA304; ///< one of each selected gain
inline constexpr std::uint32_t kBlackLevel = 0xA310;
inline constexpr std::uint32_t kGamma = 0xA314;
inline constexpr std::uint32_t kPayloadSize = 0xA400;
inline constexpr std::uint32_t kTlParamsLocked = 0xA404;
inline constexpr std::uint32_t kUserSetSelector = 0xA500;
inline constexpr std::uint32_t kUserSetLoad = 0xA504;
inline constexpr std::uint32_t kUserSetSave = 0xA508;
inline constexpr std::uint32_t kDescription =
    0x100000; ///< the description of the features, up to the size that the URL gives
} // namespace Address

// Bits of registers.
inline constexpr std::uint32_t kExclusiveAccess = 0x1; ///< of the privilege: nobody else reads either
inline constexpr std::uint32_t kControlAccess = 0x2;   ///< of the privilege
inline constexpr std::uint32_t kFireTestPacket = 0x80000000;
inline constexpr std::uint32_t kDoNotFragment = 0x40000000;

/// A number of @p count bytes, the highest first.
inline std::uint64_t bigEndian(const std::uint8_t* bytes, std::size_t count) {
    std::uint64_t number = 0;
    for (std::size_t i = 0; i < count; ++i) {
        number = number << 8 | bytes[i];
    }
    return number;
}

/// Writes a number as @p count bytes, the highest first.
inline void putBigEndian(std::uint8_t* bytes, std::size_t count, std::uint64_t number) {
    for (std::size_t i = count; i > 0; --i, number >>= 8) {
        bytes[i - 1] = static_cast<std::uint8_t>(number);
    }
}

inline void appendBigEndian(Bytes& bytes, std::size_t count, std::uint64_t number) {
    bytes.resize(bytes.size() + count);
    putBigEndian(&bytes[bytes.size() - count], count, number);
}

} // namespace GenICamDevices
