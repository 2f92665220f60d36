// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <optional>
#include <vector>

#include "Cameras/SimulatedCamera/DescriptionFile.h"
#include "Utilities/Mutex.h"

namespace CameraInterface::SimulatedAdapter {

/// The identifications of the camera list, read once in the process. Thread-safe: a first reader that is reading makes
/// the others wait.
class IdentificationCache {
public:
    static IdentificationCache& instance();

    /// The identifications. A list that cannot be read throws the loader's exception and is tried again at the next
    /// call.
    std::vector<SimulatedCameraIdentification> get();

    /// Makes the next get() read the list again.
    void forget();

private:
    Utilities::Mutex m_Mutex; // guards the identifications, also while they are read
    std::optional<std::vector<SimulatedCameraIdentification>> m_Identifications QUILL_GUARDED_BY(m_Mutex);
};

} // namespace CameraInterface::SimulatedAdapter
