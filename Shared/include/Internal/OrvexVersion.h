/* SPDX-License-Identifier: Apache-2.0 */
#ifndef QUILL_ORVEX_VERSION_H
#define QUILL_ORVEX_VERSION_H

/* The version record of a camera in the SDK. C and C++; the order of the fields is the SDK's binary format. */

#include <stdint.h> /* NOLINT(modernize-deprecated-headers): C as well */

/** Identifies a camera. The enumeration fills an array of these records. */
typedef struct ORVEX_VERSION { /* NOLINT(modernize-use-using): C as well */
    uint32_t firmware;
    uint32_t fpga;
    uint32_t api;
    uint32_t driver;
    uint32_t serialnumber;
    uint32_t cameraid;
} ORVEX_VERSION;

#endif
