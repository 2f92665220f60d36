// SPDX-License-Identifier: Apache-2.0
#ifndef QUILL_ORVEX_RECORDS_H
#define QUILL_ORVEX_RECORDS_H

/* The records that cross the boundary of the camera SDK. C and C++; sizes and offsets are the SDK's binary format. */

#include <stdint.h> /* NOLINT(modernize-deprecated-headers): C as well */

#include "Internal/OrvexVersion.h"

/* NOLINTBEGIN(modernize-use-using,*-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp): C as well; the SDK's own names */

/** One delivered frame. */
typedef struct ORVEX_IMAGE_FORMAT {
    uint32_t size; /**< always 52 */
    uint32_t width;
    uint32_t height;
    uint32_t pixelFormat; /**< pixel-format code */
    uint32_t imageSize;   /**< bytes of image data */
    uint32_t reserved[8]; /**< any bit set selects the extended conversions */
} ORVEX_IMAGE_FORMAT;

/** Parameters of the extended conversions. */
typedef struct ORVEX_CONVERSION_PARAMS {
    uint32_t size; /**< always 44 */
    int32_t demosaicMethod;
    int32_t correctionMatrix;
    uint32_t flipX;
    uint32_t flipY;
    float hue;
    float saturation;
    uint32_t useColorGainsOverWhiteBalance;
    float digitalGain;
    float digitalWhiteBalanceU;
    float digitalWhiteBalanceV;
} ORVEX_CONVERSION_PARAMS;

/** Parameters of the plain conversions. */
typedef struct ORVEX_CONVERSION {
    int32_t demosaicMethod;
    int32_t correctionMatrix;
} ORVEX_CONVERSION;

/** The region, pixel format and sampling of a camera. A flags field is 1 for binning, 0 for subsampling or none. */
typedef struct ORVEX_FRAME_FORMAT {
    uint32_t xOffset;
    uint32_t yOffset;
    uint32_t width;
    uint32_t height;
    uint32_t pixelFormat;
    uint16_t samplingX;
    uint16_t flagsX;
    uint16_t samplingY;
    uint16_t flagsY;
} ORVEX_FRAME_FORMAT;

/** The settings of still captures. */
typedef struct ORVEX_SNAPSHOT {
    float exposure;
    float gain;
    float gainRed;
    float gainBlue;
    float gainGreen1;
    float gainGreen2;
    uint32_t strobeFlags; /**< bit 31: strobe; bit 29: from the start of the exposure */
    float strobeDelay;
    uint32_t useHardwareTrigger;
    float timeout;
    ORVEX_FRAME_FORMAT format;
    uint32_t shutterType; /**< 0 global, 1 rolling */
    float exposureDelay;
    uint32_t bufferLastFrame;
    uint8_t reserved[12];
} ORVEX_SNAPSHOT;

/** The sampling factors of a camera. */
typedef struct ORVEX_SAMPLING_DESCRIPTION {
    uint8_t flags; /**< bit 7: the horizontal and vertical factors are always equal */
    uint8_t reserved;
    uint8_t subsamplingCount;
    uint8_t binningCount;
    uint8_t subsamplingFactors[8];
    uint8_t binningFactors[8];
} ORVEX_SAMPLING_DESCRIPTION;

/** The SDK's 24 counters of a stream, in its order. */
typedef struct _ORVEX_STREAM_STATS {
    uint32_t counters[24];
} _ORVEX_STREAM_STATS;

/** Called on a thread of the SDK for every frame; the first argument is the context given at registration. */
typedef void (*ORVEX_FRAME_CALLBACK)(void* context, uint32_t unused1, uint32_t unused2);

/* NOLINTEND(modernize-use-using,*-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp) */

#ifdef __cplusplus
#    include <cstddef>

static_assert(sizeof(ORVEX_VERSION) == 24);
static_assert(offsetof(ORVEX_VERSION, firmware) == 0);
static_assert(offsetof(ORVEX_VERSION, fpga) == 4);
static_assert(offsetof(ORVEX_VERSION, api) == 8);
static_assert(offsetof(ORVEX_VERSION, driver) == 12);
static_assert(offsetof(ORVEX_VERSION, serialnumber) == 16);
static_assert(offsetof(ORVEX_VERSION, cameraid) == 20);
static_assert(sizeof(ORVEX_IMAGE_FORMAT) == 52);
static_assert(offsetof(ORVEX_IMAGE_FORMAT, size) == 0);
static_assert(offsetof(ORVEX_IMAGE_FORMAT, width) == 4);
static_assert(offsetof(ORVEX_IMAGE_FORMAT, height) == 8);
static_assert(offsetof(ORVEX_IMAGE_FORMAT, pixelFormat) == 12);
static_assert(offsetof(ORVEX_IMAGE_FORMAT, imageSize) == 16);
static_assert(offsetof(ORVEX_IMAGE_FORMAT, reserved) == 20);
static_assert(sizeof(ORVEX_CONVERSION_PARAMS) == 44);
static_assert(offsetof(ORVEX_CONVERSION_PARAMS, size) == 0);
static_assert(offsetof(ORVEX_CONVERSION_PARAMS, demosaicMethod) == 4);
static_assert(offsetof(ORVEX_CONVERSION_PARAMS, correctionMatrix) == 8);
static_assert(offsetof(ORVEX_CONVERSION_PARAMS, flipX) == 12);
static_assert(offsetof(ORVEX_CONVERSION_PARAMS, flipY) == 16);
static_assert(offsetof(ORVEX_CONVERSION_PARAMS, hue) == 20);
static_assert(offsetof(ORVEX_CONVERSION_PARAMS, saturation) == 24);
static_assert(offsetof(ORVEX_CONVERSION_PARAMS, useColorGainsOverWhiteBalance) == 28);
static_assert(offsetof(ORVEX_CONVERSION_PARAMS, digitalGain) == 32);
static_assert(offsetof(ORVEX_CONVERSION_PARAMS, digitalWhiteBalanceU) == 36);
static_assert(offsetof(ORVEX_CONVERSION_PARAMS, digitalWhiteBalanceV) == 40);
static_assert(sizeof(ORVEX_CONVERSION) == 8);
static_assert(offsetof(ORVEX_CONVERSION, demosaicMethod) == 0);
static_assert(offsetof(ORVEX_CONVERSION, correctionMatrix) == 4);
static_assert(sizeof(ORVEX_FRAME_FORMAT) == 28);
static_assert(offsetof(ORVEX_FRAME_FORMAT, xOffset) == 0);
static_assert(offsetof(ORVEX_FRAME_FORMAT, yOffset) == 4);
static_assert(offsetof(ORVEX_FRAME_FORMAT, width) == 8);
static_assert(offsetof(ORVEX_FRAME_FORMAT, height) == 12);
static_assert(offsetof(ORVEX_FRAME_FORMAT, pixelFormat) == 16);
static_assert(offsetof(ORVEX_FRAME_FORMAT, samplingX) == 20);
static_assert(offsetof(ORVEX_FRAME_FORMAT, flagsX) == 22);
static_assert(offsetof(ORVEX_FRAME_FORMAT, samplingY) == 24);
static_assert(offsetof(ORVEX_FRAME_FORMAT, flagsY) == 26);
static_assert(sizeof(ORVEX_SNAPSHOT) == 92);
static_assert(offsetof(ORVEX_SNAPSHOT, exposure) == 0);
static_assert(offsetof(ORVEX_SNAPSHOT, gain) == 4);
static_assert(offsetof(ORVEX_SNAPSHOT, gainRed) == 8);
static_assert(offsetof(ORVEX_SNAPSHOT, gainBlue) == 12);
static_assert(offsetof(ORVEX_SNAPSHOT, gainGreen1) == 16);
static_assert(offsetof(ORVEX_SNAPSHOT, gainGreen2) == 20);
static_assert(offsetof(ORVEX_SNAPSHOT, strobeFlags) == 24);
static_assert(offsetof(ORVEX_SNAPSHOT, strobeDelay) == 28);
static_assert(offsetof(ORVEX_SNAPSHOT, useHardwareTrigger) == 32);
static_assert(offsetof(ORVEX_SNAPSHOT, timeout) == 36);
static_assert(offsetof(ORVEX_SNAPSHOT, format) == 40);
static_assert(offsetof(ORVEX_SNAPSHOT, shutterType) == 68);
static_assert(offsetof(ORVEX_SNAPSHOT, exposureDelay) == 72);
static_assert(offsetof(ORVEX_SNAPSHOT, bufferLastFrame) == 76);
static_assert(offsetof(ORVEX_SNAPSHOT, reserved) == 80);
static_assert(sizeof(ORVEX_SAMPLING_DESCRIPTION) == 20);
static_assert(offsetof(ORVEX_SAMPLING_DESCRIPTION, flags) == 0);
static_assert(offsetof(ORVEX_SAMPLING_DESCRIPTION, reserved) == 1);
static_assert(offsetof(ORVEX_SAMPLING_DESCRIPTION, subsamplingCount) == 2);
static_assert(offsetof(ORVEX_SAMPLING_DESCRIPTION, binningCount) == 3);
static_assert(offsetof(ORVEX_SAMPLING_DESCRIPTION, subsamplingFactors) == 4);
static_assert(offsetof(ORVEX_SAMPLING_DESCRIPTION, binningFactors) == 12);
static_assert(sizeof(_ORVEX_STREAM_STATS) == 96);
static_assert(offsetof(_ORVEX_STREAM_STATS, counters) == 0);
#endif

#endif
