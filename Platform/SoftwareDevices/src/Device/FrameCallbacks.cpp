// SPDX-License-Identifier: Apache-2.0

#include "Device/FrameCallbacks.h"

#include <algorithm>

namespace SoftwareDevices {

std::int32_t FrameCallbacks::add(FrameKind kind, ORVEX_FRAME_CALLBACK callback, void* context) {
    const std::lock_guard<std::mutex> lock(m_Mutex);
    m_Registrations.push_back({m_NextId, kind, callback, context});
    return m_NextId++;
}

std::vector<FrameCallbacks::Registration>::iterator FrameCallbacks::findLocked(FrameKind kind, std::int32_t id) {
    return std::find_if(m_Registrations.begin(), m_Registrations.end(),
                        [&](const Registration& entry) { return entry.id == id && entry.kind == kind; });
}

bool FrameCallbacks::remove(FrameKind kind, std::int32_t id) {
    std::unique_lock<std::mutex> lock(m_Mutex);
    const auto found = findLocked(kind, id);
    if (found == m_Registrations.end()) {
        return false;
    }
    m_Registrations.erase(found);
    m_Returned.wait(lock, [&] { return m_RunningId != id || m_RunningThread == std::this_thread::get_id(); });
    return true;
}

void FrameCallbacks::run(FrameKind kind) {
    std::unique_lock<std::mutex> lock(m_Mutex);
    const std::vector<Registration> registered = m_Registrations;
    m_RunningThread = std::this_thread::get_id();
    for (const Registration& entry : registered) {
        if (entry.kind != kind || findLocked(kind, entry.id) == m_Registrations.end()) {
            continue; // of the other kind, or removed by an earlier callback
        }
        m_RunningId = entry.id;
        lock.unlock();
        entry.callback(entry.context, 0, 0);
        lock.lock();
        m_RunningId = kNone;
        m_Returned.notify_all();
    }
}

} // namespace SoftwareDevices
