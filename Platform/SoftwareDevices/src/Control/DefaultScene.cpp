// SPDX-License-Identifier: Apache-2.0

#include "Scene/SceneSize.h"
#include "SoftwareDevices.h"

// The file that the build has painted.
asm(".pushsection .rodata\n"
    ".globl quillDefaultScene\n"
    ".hidden quillDefaultScene\n"
    "quillDefaultScene:\n"
    ".incbin \"" QUILL_DEFAULT_SCENE "\"\n"
    ".popsection\n");

extern "C" __attribute__((visibility("hidden"))) const std::uint8_t quillDefaultScene[];

namespace SoftwareDevices {

Scene defaultScene() {
    return {kDefaultSceneWidth, kDefaultSceneHeight, {quillDefaultScene, quillDefaultScene + kDefaultSceneBytes}};
}

} // namespace SoftwareDevices
