// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <thread>

namespace TestSupport {

/// The time that a test waits for an event that must happen, on any load.
inline constexpr std::chrono::seconds kLongEnough{300};

/// Waits for a condition.
/// @return whether it became true in time
template <typename Condition>
bool eventually(Condition condition) {
    const auto deadline = std::chrono::steady_clock::now() + kLongEnough;
    while (!condition() && std::chrono::steady_clock::now() < deadline) {
        std::this_thread::yield();
    }
    return condition();
}

/// A count that one thread increments and another waits for.
class Event {
public:
    void raise() {
        // Notified under the lock: a waiter may destroy the event as soon as it wakes.
        const std::lock_guard lock(m_Mutex);
        ++m_Count;
        m_Condition.notify_all();
    }
    /// Whether the count reached @p count in time.
    bool wait(int count = 1) {
        std::unique_lock lock(m_Mutex);
        return m_Condition.wait_for(lock, kLongEnough, [&] { return m_Count >= count; });
    }
    int count() {
        const std::lock_guard lock(m_Mutex);
        return m_Count;
    }

private:
    std::mutex m_Mutex;
    std::condition_variable m_Condition;
    int m_Count = 0;
};

} // namespace TestSupport
