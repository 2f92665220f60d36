// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Discovery.h"
#include "Reaper.h"
#include "Utilities/Mutex.h"

namespace GenICamAdapter {

/// What the adapter has once in a process. Never destroyed; a forked child has its own.
class Process {
public:
    static Process& instance();

    Discovery& discovery() { return m_Discovery; }
    Reaper& reaper() { return m_Reaper; }
    Utilities::Mutex& aravisMutex() { return m_AravisMutex; }

private:
    Discovery m_Discovery;
    Reaper m_Reaper;
    Utilities::Mutex m_AravisMutex; // serialises what Aravis does not; see Device.h
};

} // namespace GenICamAdapter
