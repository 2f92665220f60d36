// SPDX-License-Identifier: Apache-2.0

#include "Scene/SceneSize.h"
#include "SoftwareDevices.h"

#if defined(_WIN32)
#    define CONSTANTS ".section .rdata,\"dr\"\n"
#else
#    define CONSTANTS ".section .rodata\n"
#endif

// The file that the build has painted.
asm(CONSTANTS "quillDefaultScene:\n"
              ".incbin \"" QUILL_DEFAULT_SCENE "\"\n"
              ".text\n");

// Named in assembly as in C++ on every system.
extern "C" __attribute__((visibility("hidden"))) const std::uint8_t quillDefaultScene[] asm("quillDefaultScene");

namespace SoftwareDevices {

Scene defaultScene() {
    return {kDefaultSceneWidth, kDefaultSceneHeight, {quillDefaultScene, quillDefaultScene + kDefaultSceneBytes}};
}

} // namespace SoftwareDevices
