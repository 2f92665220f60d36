// SPDX-License-Identifier: Apache-2.0

#include "Boundary/Boundary.h"

// The flat camera SDK: each operation under its export number, with the devices in software behind it.

// The arguments that an operation passes on; the table of operations names the parameters together with their types.
#define ARGUMENTS_sdkSelectInterface (interfaceNumber)
#define ARGUMENTS_sdkNumCameras ()
#define ARGUMENTS_sdkEnumCameras (versions, count)
#define ARGUMENTS_sdkCameraOpen (index)
#define ARGUMENTS_sdkCameraClose (handle)
#define ARGUMENTS_sdkPostOpenSetup (handle, value)
#define ARGUMENTS_sdkQueryVersion (handle, version)
#define ARGUMENTS_sdkGetCameraId (handle, id)
#define ARGUMENTS_sdkGetHardwareRevision (handle, revision)
#define ARGUMENTS_sdkGetHardwareInterface (handle, interfaceNumber)
#define ARGUMENTS_sdkGetLastErrorForCamera (handle)
#define ARGUMENTS_sdkGetProperty (handle, number, value, flags)
#define ARGUMENTS_sdkSetProperty (handle, number, value, flags)
#define ARGUMENTS_sdkPropertyRange (handle, number, minimum, maximum, defaultValue, flags)
#define ARGUMENTS_sdkSetHardwareTrigger (handle, enable)
#define ARGUMENTS_sdkGetPowerMode (handle, mode)
#define ARGUMENTS_sdkSetPowerMode (handle, mode)
#define ARGUMENTS_sdkGetFormat (handle, format, frameRate)
#define ARGUMENTS_sdkSetFormat (handle, format, frameRate)
#define ARGUMENTS_sdkEnumAvailableFrameRates (handle, count, rates)
#define ARGUMENTS_sdkGetSamplingDescription (handle, description)
#define ARGUMENTS_sdkAddStreamingCallback (handle, callback, context)
#define ARGUMENTS_sdkRemoveStreamingCallback (handle, id)
#define ARGUMENTS_sdkAddStillCallback (handle, callback, context)
#define ARGUMENTS_sdkRemoveStillCallback (handle, id)
#define ARGUMENTS_sdkStreamVideoControl (handle, command, zero)
#define ARGUMENTS_sdkEnableStillMode (handle, snapshot)
#define ARGUMENTS_sdkDisableStillMode (handle)
#define ARGUMENTS_sdkCancelVideoCapture (handle)
#define ARGUMENTS_sdkCancelStillCapture (handle)
#define ARGUMENTS_sdkCaptureVideoFrames (handle, count, buffer)
#define ARGUMENTS_sdkCaptureStillFrame (handle, buffer)
#define ARGUMENTS_sdkGetVideoImageFormat (handle, format)
#define ARGUMENTS_sdkGetStillImageFormat (handle, format)
#define ARGUMENTS_sdkGetStreamStats (handle, kind, statistics, size)
#define ARGUMENTS_sdkConvertToMono8 (handle, destination, source, width, height, pixelFormat, parameters)
#define ARGUMENTS_sdkConvertToMono8Ex (handle, destination, source, format, parameters)
#define ARGUMENTS_sdkConvertToMono16 (handle, destination, source, width, height, pixelFormat, parameters)
#define ARGUMENTS_sdkConvertToMono16Ex (handle, destination, source, format, parameters)
#define ARGUMENTS_sdkConvertToBgr24 (handle, destination, source, width, height, pixelFormat, parameters)
#define ARGUMENTS_sdkConvertToBgr24Ex (handle, destination, source, format, parameters)
#define ARGUMENTS_sdkConvertToBgra32 (handle, destination, source, width, height, pixelFormat, parameters)
#define ARGUMENTS_sdkConvertToBgra32Ex (handle, destination, source, format, parameters)
#define ARGUMENTS_sdkConvertToBgr48 (handle, destination, source, width, height, pixelFormat, parameters)
#define ARGUMENTS_sdkConvertToBgr48Ex (handle, destination, source, format, parameters)
#define ARGUMENTS_sdkEraseFlash (handle, address, length)
#define ARGUMENTS_sdkReadFlash (handle, buffer, address, length)
#define ARGUMENTS_sdkWriteFlash (handle, data, address, length)
#define ARGUMENTS_sdkUpdateFlash (handle, data, address, length)
#define ARGUMENTS_sdkVendorRequest (handle, request, value, index, length, data)
#define ARGUMENTS_sdkCommandRead (handle, command, value, length, buffer)
#define ARGUMENTS_sdkCommandWrite (handle, command, value, length, data)
#define ARGUMENTS_sdkRegisterRead (handle, target, address, length, buffer)
#define ARGUMENTS_sdkRegisterWrite (handle, target, value, length, data)
#define ARGUMENTS_sdkGetEthernetInfo (index, cameraMac, cameraAddresses, hostMac, hostAddresses)
#define ARGUMENTS_sdkSetEthernetInfo (index, cameraAddresses)

#if defined(_WIN32)
#    define ORVEX_EXPORT // the build's list of exports has their numbers
#else
#    define ORVEX_EXPORT SOFTWARE_DEVICES_EXPORT
#endif

#define ORVEX_API_EXPORT(role, number, Result, failure, parameters)                                                    \
    ORVEX_EXPORT Result orvexapi_##number parameters {                                                                 \
        return SoftwareDevices::Boundary::role ARGUMENTS_##role;                                                       \
    }

extern "C" {
ORVEX_OPERATIONS(ORVEX_API_EXPORT)

ORVEX_EXPORT uint32_t orvexapi_softwareDevices(void) {
    return 1;
}
}
