// SPDX-License-Identifier: Apache-2.0

#include "Cameras/CameraList.h"

#include <algorithm>
#include <exception>
#include <utility>

namespace CameraInterface {

using Utilities::MutexLock;

unsigned int CameraList::add(std::vector<std::unique_ptr<Camera>> cameras) {
    std::vector<std::pair<std::string, CameraPointer>> candidates;
    candidates.reserve(cameras.size());
    for (std::unique_ptr<Camera>& camera : cameras) {
        try {
            std::string serialNumber = camera->getSerialNumber();
            candidates.emplace_back(std::move(serialNumber), std::move(camera));
        } catch (const std::exception&) {
            // A camera without a serial number cannot be listed.
        }
    }
    unsigned int added = 0;
    const MutexLock lock(m_CameraListMutex); // released before the candidates are destroyed
    for (auto& [serialNumber, camera] : candidates) {
        if (m_BySerialNumber.emplace(serialNumber, camera).second) {
            m_Cameras.push_back(std::move(camera));
            ++added;
        }
    }
    return added;
}

CameraList::CameraPointer CameraList::find(const std::string& serialNumber) const {
    const MutexLock lock(m_CameraListMutex);
    const auto entry = m_BySerialNumber.find(serialNumber);
    return entry == m_BySerialNumber.end() ? nullptr : entry->second;
}

std::vector<CameraList::CameraPointer> CameraList::inOrderAdded() const {
    const MutexLock lock(m_CameraListMutex);
    return m_Cameras;
}

std::vector<std::pair<std::string, CameraList::CameraPointer>> CameraList::inOrderOfSerialNumber() const {
    const MutexLock lock(m_CameraListMutex);
    return {m_BySerialNumber.begin(), m_BySerialNumber.end()};
}

bool CameraList::retire(const std::string& serialNumber) {
    CameraPointer camera;
    std::vector<CameraPointer> expired; // destroyed after the mutex is released
    {
        const MutexLock lock(m_CameraListMutex);
        const auto entry = m_BySerialNumber.find(serialNumber);
        if (entry == m_BySerialNumber.end()) {
            return false;
        }
        camera = std::move(entry->second);
        camera->m_Retired = true;
        m_BySerialNumber.erase(entry);
        m_Cameras.erase(std::find(m_Cameras.begin(), m_Cameras.end(), camera));
        m_Retired.push_back(camera);
        while (m_Retired.size() > kMaximumRetired) {
            expired.push_back(std::move(m_Retired.front()));
            m_Retired.pop_front();
        }
    }
    camera->stopForGood();
    return true;
}

void CameraList::clear() {
    std::vector<CameraPointer> cameras;
    {
        const MutexLock lock(m_CameraListMutex);
        for (const CameraPointer& camera : m_Cameras) {
            camera->m_Retired = true;
        }
        cameras.swap(m_Cameras);
        m_BySerialNumber.clear();
        cameras.insert(cameras.end(), m_Retired.begin(), m_Retired.end());
        m_Retired.clear();
    }
    for (CameraPointer& camera : cameras) {
        // Another thread may still hold the object and destroy it a moment later: none of its threads may run then.
        camera->stopForGood();
        camera.reset();
    }
}

} // namespace CameraInterface
