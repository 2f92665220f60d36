// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <vector>

#include <Quill.h>

#include "Terminal/Waker.h"

namespace QuillTool {

struct Departure {
    std::string modelName;
    std::string serialNumber;
};

/// Passes changes of the camera list from the library's threads to the command's thread, from construction to
/// destruction. At most one object exists at a time.
class CameraChanges {
public:
    CameraChanges();
    CameraChanges(const CameraChanges&) = delete;
    CameraChanges& operator=(const CameraChanges&) = delete;
    /// Ends the registrations; no callback runs afterwards.
    ~CameraChanges();

    /// Becomes readable when the list changes.
    const Waker& waker() const { return m_Waker; }

    std::vector<Departure> takeDepartures();

private:
    Waker m_Waker;
    Utilities::Mutex m_Mutex; // guards the departures
    std::vector<Departure> m_Departures QUILL_GUARDED_BY(m_Mutex);
};

} // namespace QuillTool
