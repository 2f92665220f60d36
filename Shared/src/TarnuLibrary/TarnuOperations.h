// SPDX-License-Identifier: Apache-2.0
#ifndef QUILL_TARNU_OPERATIONS_H
#define QUILL_TARNU_OPERATIONS_H

/*
 * The operations of the USB3 Vision access library: name, result, and parameters. The flat library exports each under
 * its name. A result of 0 or null means failure.
 *
 * Adapter and devices share this file; it is plain C.
 */

/* NOLINTBEGIN(modernize-*) */

#include <stddef.h>
#include <stdint.h>

/* One camera of the enumeration. */
typedef struct {
    char modelName[100]; /* zero-terminated */
    uint32_t serialNumber;
} Usb3VisionCameraRecord;

/* NOLINTEND(modernize-*) */

/* clang-format off */
#define TARNU_OPERATIONS(OPERATION) \
    /* The number of attached cameras; fills count records and returns the number filled. */ \
    OPERATION(TarnuNumCameras, uint32_t, (void)) \
    OPERATION(TarnuEnumCameras, uint32_t, (Usb3VisionCameraRecord* records, uint32_t count)) \
    /* Opens the camera of a record as it was enumerated; returns its handle. */ \
    OPERATION(TarnuOpenCamera, void*, (const Usb3VisionCameraRecord* record)) \
    OPERATION(TarnuCloseCamera, uint32_t, (void* handle)) \
    OPERATION(TarnuFlashRead, uint32_t, (void* handle, uint8_t* buffer, uint32_t address, uint32_t length)) \
    /* 1: the camera starts as a USB3 Vision device next time, 0: it does not. */ \
    OPERATION(TarnuWriteBootSequence, uint32_t, (void* handle, uint32_t usb3Vision)) \
    OPERATION(TarnuSglWrite, uint32_t, (void* handle, uint32_t first, uint32_t second, uint32_t value, uint32_t length, const uint8_t* data))
/* clang-format on */

#ifdef __cplusplus
static_assert(sizeof(Usb3VisionCameraRecord) == 104);
static_assert(offsetof(Usb3VisionCameraRecord, modelName) == 0);
static_assert(offsetof(Usb3VisionCameraRecord, serialNumber) == 100);
#endif

#endif
