// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <deque>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "Cameras/Camera.h"
#include "Utilities/Mutex.h"

namespace CameraInterface {

/// The cameras of the process, one per serial number, and the retired ones. Thread-safe.
///
/// The mutex is never held while a camera's own code runs: cameras are held by shared pointers, and called and
/// destroyed outside the lock.
class CameraList {
public:
    using CameraPointer = std::shared_ptr<Camera>;

    /// The number of retired cameras kept alive, so that an application's references to them stay usable.
    static constexpr std::size_t kMaximumRetired = 64;

    /// Adds each camera whose serial number is not listed, in order, and destroys the others. A camera whose serial
    /// number cannot be read is not added.
    /// @return the number of cameras added
    unsigned int add(std::vector<std::unique_ptr<Camera>> cameras) QUILL_EXCLUDES(m_CameraListMutex);

    /// The camera with a serial number, or null.
    CameraPointer find(const std::string& serialNumber) const QUILL_EXCLUDES(m_CameraListMutex);

    /// All cameras, in the order in which they were added.
    std::vector<CameraPointer> inOrderAdded() const QUILL_EXCLUDES(m_CameraListMutex);
    /// All cameras and their serial numbers, in ascending order of the numbers.
    std::vector<std::pair<std::string, CameraPointer>> inOrderOfSerialNumber() const QUILL_EXCLUDES(m_CameraListMutex);

    /// Removes a camera from the list and retires it.
    /// @return whether it was listed
    bool retire(const std::string& serialNumber) QUILL_EXCLUDES(m_CameraListMutex);

    /// Retires every camera and destroys all of them, first to last.
    void clear() QUILL_EXCLUDES(m_CameraListMutex);

private:
    mutable Utilities::Mutex m_CameraListMutex; // guards the three tables, not the cameras in them
    std::vector<CameraPointer> m_Cameras QUILL_GUARDED_BY(m_CameraListMutex);
    std::map<std::string, CameraPointer> m_BySerialNumber QUILL_GUARDED_BY(m_CameraListMutex);
    std::deque<CameraPointer> m_Retired QUILL_GUARDED_BY(m_CameraListMutex); // oldest first
};

} // namespace CameraInterface
