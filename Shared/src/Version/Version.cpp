// SPDX-License-Identifier: Apache-2.0

#include "Version.h"

namespace CameraInterface {

const char* getQuillVersion() noexcept {
    return QUILL_VERSION_TEXT;
}

} // namespace CameraInterface
