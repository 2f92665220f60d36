// SPDX-License-Identifier: Apache-2.0

#include "RegisterTable.h"

#include "GigEWire.h"

namespace GenICamDevices {

const std::vector<RegisterRow>& registerRows() {
    using namespace Address;
    constexpr Access kRead = Access::ReadOnly;
    constexpr Access kBoth = Access::ReadWrite;
    constexpr RegisterKind kInteger = RegisterKind::Integer;
    constexpr RegisterKind kReal = RegisterKind::Real;
    constexpr RegisterKind kCommand = RegisterKind::Command;
    static const std::vector<RegisterRow> rows{
        {kVersion, 16, kRead},
        {kSupportedIpConfiguration, 4, kRead},
        {kIpConfiguration, 4, kBoth, kInteger, Guard::None, 0, 7},
        {0x0018, 12, kRead}, // reserved registers are part of the answer to a discovery, and read as 0
        {kIp, 4, kRead},
        {0x0028, 12, kRead},
        {kMask, 4, kRead},
        {0x0038, 12, kRead},
        {kGateway, 4, kRead},
        {kVendor, 32, kRead},
        {kModel, 32, kRead},
        {kDeviceVersion, 32, kRead},
        {kManufacturerInfo, 48, kRead},
        {kSerial, 16, kRead},
        {kUserName, 16, kBoth},
        {kFirstUrl, 512, kRead},
        {kSecondUrl, 512, kRead},
        {kInterfaceCount, 4, kRead},
        {kPersistentIp, 4, kBoth},
        {kPersistentMask, 4, kBoth},
        {kPersistentGateway, 4, kBoth},
        {kLinkSpeed, 4, kRead},
        {kMessageChannelCount, 8, kRead}, // and the number of streams
        {kControlCapability, 4, kRead},
        {kHeartbeatTimeout, 4, kBoth, kInteger, Guard::None, 0},
        {kTickFrequency, 8, kRead},
        {kTimestampControl, 4, Access::WriteOnly, kInteger, Guard::None, 0, 3},
        {kTimestamp, 8, kRead},
        {kControlConfiguration, 4, kBoth, kInteger, Guard::None, 0, 1},
        {kPrivilege, 4, kBoth},
        {kStreamPort, 4, kBoth, kInteger, Guard::None, 0, 65535},
        {kStreamPacketSize, 4, kBoth},
        {kStreamPacketDelay, 4, kBoth, kInteger, Guard::None, 0, 1000000},
        {kStreamDestination, 4, kBoth},
        {kStreamSourcePort, 4, kRead},
        {kTemperature, 4, kRead},
        {kDeviceReset, 4, Access::WriteOnly, kCommand},
        {kIndicatorMode, 4, kBoth},
        {kUserNumber, 8, kBoth},
        {kSentFrameCount, 4, kRead},
        {kUserNote, 64, kBoth},
        {kUserData, 64, kBoth},
        {kWidth, 4, kBoth, kInteger, Guard::Format, 16, 65535, 4},
        {kHeight, 4, kBoth, kInteger, Guard::Format, 16, 65535, 2},
        {kOffsetX, 4, kBoth, kInteger, Guard::Format, 0, 65535, 4},
        {kOffsetY, 4, kBoth, kInteger, Guard::Format, 0, 65535, 2},
        {kWidthMax, 8, kRead}, // and the largest height
        {kPixelFormat, 4, kBoth, kInteger, Guard::Format},
        {kReverseX, 4, kBoth, kInteger, Guard::Settings, 0, 1},
        {kTestPattern, 4, kBoth, kInteger, Guard::Settings, 0, 3},
        {kSensorWidth, 8, kRead}, // and height
        {kAcquisitionMode, 4, kBoth, kInteger, Guard::Format, 0, 2},
        {kAcquisitionStart, 4, Access::WriteOnly, kCommand},
        {kAcquisitionStop, 4, Access::WriteOnly, kCommand},
        {kFrameRateEnable, 4, kBoth, kInteger, Guard::Settings, 0, 1},
        {kFrameRate, 8, kBoth, kReal, Guard::Settings, 0.1, 10000},
        {kExposureTime, 8, kBoth, kReal, Guard::Settings, 10, 1e6},
        {kExposureAuto, 4, kBoth, kInteger, Guard::Settings, 0, 2},
        {kAcquisitionFrameCount, 4, kBoth, kInteger, Guard::Format, 1, 65535},
        {kTriggerSelector, 4, kBoth, kInteger, Guard::None, 0, 1},
        {kTriggerSoftware, 4, Access::WriteOnly, kCommand},
        {kTriggerMode, 4, kBoth, kInteger, Guard::Settings, 0, 1},
        {kTriggerMode + 4, 4, kBoth, kInteger, Guard::Settings, 0, 1},
        {kTriggerSource, 4, kBoth, kInteger, Guard::Settings, 0, 1},
        {kTriggerSource + 4, 4, kBoth, kInteger, Guard::Settings, 0, 1},
        {kAcquisitionStatus, 4, kRead},
        {kGainSelector, 4, kBoth, kInteger, Guard::None, 0, 2},
        {kGain, 4, kBoth, kReal, Guard::Settings, 0, 24},
        {kGain + 4, 4, kBoth, kReal, Guard::Settings, 0, 24},
        {kGain + 8, 4, kBoth, kReal, Guard::Settings, 0, 24},
        {kBlackLevel, 4, kBoth, kReal, Guard::Settings, 0, 64},
        {kGamma, 4, kBoth, kReal, Guard::Settings, 0.25, 4},
        {kPayloadSize, 4, kRead},
        {kTlParamsLocked, 4, kBoth, kInteger, Guard::None, 0, 1},
        {kUserSetSelector, 4, kBoth, kInteger, Guard::None, 0, 2},
        {kUserSetLoad, 4, Access::WriteOnly, kCommand, Guard::Idle},
        {kUserSetSave, 4, Access::WriteOnly, kCommand, Guard::Idle},
    };
    return rows;
}

} // namespace GenICamDevices
