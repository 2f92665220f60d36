// SPDX-License-Identifier: Apache-2.0

#include "Device/CallLog.h"

namespace SoftwareDevices {

std::uint64_t CallLog::count(Operation operation) {
    ++m_CallsOf[static_cast<std::size_t>(operation)];
    return ++m_Calls;
}

void CallLog::start() {
    const std::lock_guard<std::mutex> lock(m_Mutex);
    m_Recorded.clear();
    m_Records = true;
}

std::vector<CallRecord> CallLog::take() {
    const std::lock_guard<std::mutex> lock(m_Mutex);
    m_Records = false;
    return std::move(m_Recorded);
}

void CallLog::record(Operation operation, std::uint32_t serial, std::initializer_list<double> numbers, bool succeeded) {
    if (!m_Records) {
        return;
    }
    const std::lock_guard<std::mutex> lock(m_Mutex);
    if (m_Records) {
        m_Recorded.push_back({operation, operationName(operation), serial, numbers, succeeded});
    }
}

const char* operationName(Operation operation) {
    static constexpr const char* kNames[] = {
#define SOFTWARE_DEVICES_NAME(role, ...) #role,
        ORVEX_OPERATIONS(SOFTWARE_DEVICES_NAME) TARNU_OPERATIONS(SOFTWARE_DEVICES_NAME)
#undef SOFTWARE_DEVICES_NAME
    };
    return kNames[static_cast<std::size_t>(operation)];
}

} // namespace SoftwareDevices
