// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <vector>

#include <Quill.h>

#include "Terminal/WakePipe.h"

namespace QuillTool {

struct Departure {
    std::string modelName;
    std::string serialNumber;
};

/// What the library's threads tell the command's thread about the list of cameras, from construction to destruction.
/// One object at a time.
class CameraChanges {
public:
    CameraChanges();
    CameraChanges(const CameraChanges&) = delete;
    CameraChanges& operator=(const CameraChanges&) = delete;
    /// When the registrations have ended, no callback runs any more.
    ~CameraChanges();

    /// Readable when something changed.
    int descriptor() const { return m_Pipe.descriptor(); }

    std::vector<Departure> takeDepartures();

private:
    WakePipe m_Pipe;
    Utilities::Mutex m_Mutex; // guards the departures
    std::vector<Departure> m_Departures QUILL_GUARDED_BY(m_Mutex);
};

} // namespace QuillTool
