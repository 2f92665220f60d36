// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "../Export.h"

namespace CameraInterface {

/// What a camera is, and how it is reached. Later versions may append kinds.
enum class CameraKind {
    Unknown,        ///< of an adapter that does not say
    SdkDevice,      ///< a device behind the maker's camera SDK
    SoftwareDevice, ///< a device in software behind the same interface
    Simulated,      ///< described in a file; its images are placeholders
    Usb3Vision,     ///< a device in USB3 Vision mode
    GenICam         ///< a GigE Vision or USB3 Vision camera of any maker, through its GenICam description
};

/// Returns the kind in words: "SDK device", "software device", "simulated", "USB3 Vision", "GenICam", otherwise
/// "unknown".
QUILL_API const char* getKindName(CameraKind kind);

} // namespace CameraInterface
