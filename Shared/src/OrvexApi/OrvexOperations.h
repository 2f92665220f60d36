// SPDX-License-Identifier: Apache-2.0
#ifndef QUILL_ORVEX_OPERATIONS_H
#define QUILL_ORVEX_OPERATIONS_H

/*
 * The operations of the camera SDK that the library uses: role name, export number, result, the result that means
 * failure, and parameters. The flat library exports each under the name orvexapi_<export number>.
 *
 * A handle is a result of sdkCameraOpen, and stale after sdkCameraClose. Cameras that are not open are identified by
 * their place in the present enumeration, counted from 1.
 */

#include "OrvexRecords.h"

/* An export that a flat library need not have: a function without parameters whose result, a uint32_t, is 1 if the
 * devices are software. */
#define ORVEX_SOFTWARE_DEVICES "orvexapi_softwareDevices"

/* clang-format off */
#define ORVEX_OPERATIONS(OPERATION) \
    /* Enumeration, opening, identity. */ \
    OPERATION(sdkSelectInterface, 254, uint32_t, 0, (uint32_t interfaceNumber)) \
    OPERATION(sdkNumCameras, 206, int32_t, 0, (void)) \
    OPERATION(sdkEnumCameras, 181, int32_t, 0, (ORVEX_VERSION* versions, uint32_t count)) \
    OPERATION(sdkCameraOpen, 150, void*, 0, (uint32_t index)) \
    OPERATION(sdkCameraClose, 149, uint32_t, 0, (void* handle)) \
    OPERATION(sdkPostOpenSetup, 204, uint32_t, 0, (void* handle, uint32_t value)) \
    OPERATION(sdkQueryVersion, 236, uint32_t, 0, (void* handle, ORVEX_VERSION* version)) \
    OPERATION(sdkGetCameraId, 186, uint32_t, 0, (void* handle, uint32_t* id)) \
    OPERATION(sdkGetHardwareRevision, 190, uint32_t, 0, (void* handle, uint32_t* revision)) \
    OPERATION(sdkGetHardwareInterface, 232, uint32_t, 0, (void* handle, uint32_t* interfaceNumber)) \
    OPERATION(sdkGetLastErrorForCamera, 193, uint32_t, 0, (void* handle)) \
    /* Properties and frame format. */ \
    OPERATION(sdkGetProperty, 194, uint32_t, 0, (void* handle, uint32_t number, float* value, int32_t* flags)) \
    OPERATION(sdkSetProperty, 256, uint32_t, 0, (void* handle, uint32_t number, float value, int32_t flags)) \
    OPERATION(sdkPropertyRange, 229, uint32_t, 0, (void* handle, uint32_t number, float* minimum, float* maximum, float* defaultValue, int32_t* flags)) \
    OPERATION(sdkSetHardwareTrigger, 259, uint32_t, 0, (void* handle, uint32_t enable)) \
    OPERATION(sdkGetPowerMode, 386, uint32_t, 0, (void* handle, uint32_t* mode)) \
    OPERATION(sdkSetPowerMode, 385, uint32_t, 0, (void* handle, uint32_t mode)) \
    OPERATION(sdkGetFormat, 189, uint32_t, 0, (void* handle, ORVEX_FRAME_FORMAT* format, float* frameRate)) \
    OPERATION(sdkSetFormat, 255, uint32_t, 0, (void* handle, const ORVEX_FRAME_FORMAT* format, float frameRate)) \
    OPERATION(sdkEnumAvailableFrameRates, 180, uint32_t, 0, (void* handle, uint32_t count, float* rates)) \
    OPERATION(sdkGetSamplingDescription, 197, uint32_t, 0, (void* handle, ORVEX_SAMPLING_DESCRIPTION* description)) \
    /* Streaming and capture. */ \
    OPERATION(sdkAddStreamingCallback, 136, int32_t, -1, (void* handle, ORVEX_FRAME_CALLBACK callback, void* context)) \
    OPERATION(sdkRemoveStreamingCallback, 243, uint32_t, 0, (void* handle, int32_t id)) \
    OPERATION(sdkAddStillCallback, 135, int32_t, -1, (void* handle, ORVEX_FRAME_CALLBACK callback, void* context)) \
    OPERATION(sdkRemoveStillCallback, 242, uint32_t, 0, (void* handle, int32_t id)) \
    OPERATION(sdkStreamVideoControl, 271, uint32_t, 0, (void* handle, uint32_t command, uint32_t zero)) \
    OPERATION(sdkEnableStillMode, 178, uint32_t, 0, (void* handle, ORVEX_SNAPSHOT* snapshot)) \
    OPERATION(sdkDisableStillMode, 173, uint32_t, 0, (void* handle)) \
    OPERATION(sdkCancelVideoCapture, 153, uint32_t, 0, (void* handle)) \
    OPERATION(sdkCancelStillCapture, 152, uint32_t, 0, (void* handle)) \
    OPERATION(sdkCaptureVideoFrames, 277, uint32_t, 0, (void* handle, uint32_t count, uint8_t* buffer)) \
    OPERATION(sdkCaptureStillFrame, 273, uint32_t, 0, (void* handle, uint8_t* buffer)) \
    OPERATION(sdkGetVideoImageFormat, 199, uint32_t, 0, (void* handle, ORVEX_IMAGE_FORMAT* format)) \
    OPERATION(sdkGetStillImageFormat, 195, uint32_t, 0, (void* handle, ORVEX_IMAGE_FORMAT* format)) \
    OPERATION(sdkGetStreamStats, 235, uint32_t, 0, (void* handle, uint32_t kind, _ORVEX_STREAM_STATS* statistics, uint32_t size)) \
    /* Conversion of Bayer frames, plain and extended. */ \
    OPERATION(sdkConvertToMono8, 160, uint32_t, 0, (void* handle, uint8_t* destination, const uint8_t* source, uint32_t width, uint32_t height, uint32_t pixelFormat, const ORVEX_CONVERSION* parameters)) \
    OPERATION(sdkConvertToMono8Ex, 161, uint32_t, 0, (void* handle, uint8_t* destination, const uint8_t* source, const ORVEX_IMAGE_FORMAT* format, const ORVEX_CONVERSION_PARAMS* parameters)) \
    OPERATION(sdkConvertToMono16, 158, uint32_t, 0, (void* handle, uint8_t* destination, const uint8_t* source, uint32_t width, uint32_t height, uint32_t pixelFormat, const ORVEX_CONVERSION* parameters)) \
    OPERATION(sdkConvertToMono16Ex, 159, uint32_t, 0, (void* handle, uint8_t* destination, const uint8_t* source, const ORVEX_IMAGE_FORMAT* format, const ORVEX_CONVERSION_PARAMS* parameters)) \
    OPERATION(sdkConvertToBgr24, 162, uint32_t, 0, (void* handle, uint8_t* destination, const uint8_t* source, uint32_t width, uint32_t height, uint32_t pixelFormat, const ORVEX_CONVERSION* parameters)) \
    OPERATION(sdkConvertToBgr24Ex, 163, uint32_t, 0, (void* handle, uint8_t* destination, const uint8_t* source, const ORVEX_IMAGE_FORMAT* format, const ORVEX_CONVERSION_PARAMS* parameters)) \
    OPERATION(sdkConvertToBgra32, 164, uint32_t, 0, (void* handle, uint8_t* destination, const uint8_t* source, uint32_t width, uint32_t height, uint32_t pixelFormat, const ORVEX_CONVERSION* parameters)) \
    OPERATION(sdkConvertToBgra32Ex, 165, uint32_t, 0, (void* handle, uint8_t* destination, const uint8_t* source, const ORVEX_IMAGE_FORMAT* format, const ORVEX_CONVERSION_PARAMS* parameters)) \
    OPERATION(sdkConvertToBgr48, 166, uint32_t, 0, (void* handle, uint8_t* destination, const uint8_t* source, uint32_t width, uint32_t height, uint32_t pixelFormat, const ORVEX_CONVERSION* parameters)) \
    OPERATION(sdkConvertToBgr48Ex, 167, uint32_t, 0, (void* handle, uint8_t* destination, const uint8_t* source, const ORVEX_IMAGE_FORMAT* format, const ORVEX_CONVERSION_PARAMS* parameters)) \
    /* Flash, RAM, registers and commands. */ \
    OPERATION(sdkEraseFlash, 182, uint32_t, 0, (void* handle, uint32_t address, uint32_t length)) \
    OPERATION(sdkReadFlash, 184, uint32_t, 0, (void* handle, uint8_t* buffer, uint32_t address, uint32_t length)) \
    OPERATION(sdkWriteFlash, 183, uint32_t, 0, (void* handle, const uint8_t* data, uint32_t address, uint32_t length)) \
    OPERATION(sdkUpdateFlash, 285, uint32_t, 0, (void* handle, const uint8_t* data, uint32_t address, uint32_t length)) \
    OPERATION(sdkVendorRequest, 245, uint32_t, 0, (void* handle, uint8_t request, uint32_t value, uint32_t index, uint32_t length, uint8_t* data)) \
    OPERATION(sdkCommandRead, 266, uint32_t, 0, (void* handle, uint8_t command, uint32_t value, uint32_t length, uint8_t* buffer)) \
    OPERATION(sdkCommandWrite, 268, uint32_t, 0, (void* handle, uint8_t command, uint32_t value, uint32_t length, const uint8_t* data)) \
    OPERATION(sdkRegisterRead, 265, uint32_t, 0, (void* handle, uint8_t target, uint32_t address, uint32_t length, uint8_t* buffer)) \
    OPERATION(sdkRegisterWrite, 267, uint32_t, 0, (void* handle, uint8_t target, uint32_t value, uint32_t length, const uint8_t* data)) \
    /* Network. */ \
    OPERATION(sdkGetEthernetInfo, 126, uint32_t, 0, (int32_t index, uint8_t* cameraMac, uint32_t* cameraAddresses, uint8_t* hostMac, uint32_t* hostAddresses)) \
    OPERATION(sdkSetEthernetInfo, 127, uint32_t, 0, (int32_t index, const uint32_t* cameraAddresses))
/* clang-format on */

#endif
