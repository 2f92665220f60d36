// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <optional>
#include <vector>

#include "Cameras/SimulatedCamera/DescriptionFile.h"
#include "Utilities/Mutex.h"

namespace CameraInterface::SimulatedAdapter {

/// The identifications of the camera list, read once in the process. Thread-safe: while the first caller reads, others
/// wait.
class IdentificationCache {
public:
    static IdentificationCache& instance();

    /// Returns the identifications. If the list cannot be read, throws the loader's exception and retries at the next
    /// call.
    std::vector<SimulatedCameraIdentification> get();

    /// Makes the next get() read the list again.
    void forget();

private:
    Utilities::Mutex m_Mutex; // guards the identifications, also while they are read
    std::optional<std::vector<SimulatedCameraIdentification>> m_Identifications QUILL_GUARDED_BY(m_Mutex);
};

} // namespace CameraInterface::SimulatedAdapter
