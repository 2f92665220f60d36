// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <atomic>
#include <mutex>

#include "SoftwareDevices.h"

namespace SoftwareDevices {

/// Counts all boundary calls, and records them between start and take. Thread-safe.
class CallLog {
public:
    /// @return the call's number, counted from 1
    std::uint64_t count(Operation operation);
    std::uint64_t calls() const { return m_Calls; }
    std::uint64_t calls(Operation operation) const { return m_CallsOf[static_cast<std::size_t>(operation)]; }

    void start();
    std::vector<CallRecord> take();
    void record(Operation operation, std::uint32_t serial, std::initializer_list<double> numbers, bool succeeded);

private:
    std::atomic<std::uint64_t> m_Calls{0};
    std::array<std::atomic<std::uint64_t>, kOperationCount> m_CallsOf{};
    std::atomic<bool> m_Records{false};
    std::mutex m_Mutex;
    std::vector<CallRecord> m_Recorded; // guarded by m_Mutex
};

} // namespace SoftwareDevices
