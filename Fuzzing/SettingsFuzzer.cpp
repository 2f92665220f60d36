// SPDX-License-Identifier: Apache-2.0

// Documents with the settings of a camera.

#include <cstring>

#include "Settings/CameraSettings.h"
#include "Support/Input.h"

using namespace CameraInterface;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text = Fuzzing::Input(data, size).text();
    try {
        const CameraSettings settings = parseSettings(text);
        const CameraSettings again = parseSettings(toJson(settings));
        Fuzzing::require(again.kind == settings.kind && again.modelName == settings.modelName &&
                             again.serialNumber == settings.serialNumber && again.values == settings.values,
                         "settings come back from their document");
    } catch (const KestrelExceptions::KestrelException& failure) {
        Fuzzing::require(std::strcmp(failure.who(), "SettingsInvalid") == 0, "a refusal says what it is");
        Fuzzing::require(std::strlen(failure.why()) < 300, "a reason is short");
    }
    return 0;
}
