// SPDX-License-Identifier: Apache-2.0

#include "Cameras/SimulatedCamera/IdentificationCache.h"

#include "Base/ProcessWide.h"

namespace CameraInterface::SimulatedAdapter {

IdentificationCache& IdentificationCache::instance() {
    static Base::ProcessWide<IdentificationCache> cache;
    return cache.get();
}

std::vector<SimulatedCameraIdentification> IdentificationCache::get() {
    const Utilities::MutexLock lock(m_Mutex);
    if (!m_Identifications) {
        m_Identifications = loadSimulatedCameraList();
    }
    return *m_Identifications;
}

void IdentificationCache::forget() {
    const Utilities::MutexLock lock(m_Mutex);
    m_Identifications.reset();
}

} // namespace CameraInterface::SimulatedAdapter
