// SPDX-License-Identifier: Apache-2.0

#include "Device/Faults.h"

#include <algorithm>
#include <utility>

#include "Device/Registry.h"

namespace SoftwareDevices {

namespace {

// In the static TLS block, although this library is loaded late: the dynamic block of a late library is freed by the
// thread that next clears the C library's cache of stacks, which ThreadSanitizer takes for a race.
[[gnu::tls_model("initial-exec")]] thread_local std::uint32_t serialToUnplug = kNoDevice;

} // namespace

void Faults::plan(const Planned& planned) {
    const std::lock_guard<std::mutex> lock(m_Mutex);
    m_Planned.push_back(planned);
    m_Any = true;
}

void Faults::failNext(std::uint32_t serial, Operation operation, std::uint32_t count, std::uint32_t errorCode) {
    plan({serial, operation, count, errorCode, std::chrono::milliseconds(0), false});
}

void Faults::failCall(std::uint64_t callNumber, std::uint32_t errorCode) {
    const std::lock_guard<std::mutex> lock(m_Mutex);
    m_FailingCall = callNumber;
    m_FailingCode = errorCode;
    m_Any = true;
}

void Faults::delay(std::uint32_t serial, Operation operation, std::chrono::milliseconds time) {
    {
        const std::lock_guard<std::mutex> lock(m_Mutex);
        const auto isReplaced = [&](const Planned& planned) {
            return planned.serial == serial && planned.operation == operation && planned.delay.count() > 0;
        };
        m_Planned.erase(std::remove_if(m_Planned.begin(), m_Planned.end(), isReplaced), m_Planned.end());
    }
    if (time.count() > 0) {
        plan({serial, operation, 0, kNoError, time, false});
    }
}

void Faults::unplugDuring(std::uint32_t serial, Operation operation, std::uint32_t call) {
    plan({serial, operation, call, kNoError, std::chrono::milliseconds(0), true});
}

void Faults::unplugCall(std::uint32_t serial, std::uint64_t callNumber) {
    const std::lock_guard<std::mutex> lock(m_Mutex);
    m_UnpluggedSerial = serial;
    m_UnpluggingCall = callNumber;
    m_Any = true;
}

void Faults::clear() {
    const std::lock_guard<std::mutex> lock(m_Mutex);
    m_Planned.clear();
    m_FailingCall = 0;
    m_UnpluggingCall = 0;
    m_Any = false;
}

Faults::Effect Faults::onCall(std::uint32_t serial, Operation operation, std::uint64_t callNumber) {
    Effect effect;
    if (!m_Any) {
        return effect;
    }
    const std::lock_guard<std::mutex> lock(m_Mutex);
    for (Planned& planned : m_Planned) {
        if (planned.serial != serial || planned.operation != operation) {
            continue;
        }
        effect.delay += planned.delay;
        if (planned.count > 0) {
            --planned.count;
            if (planned.unplugs) {
                effect.unplugged = planned.count == 0 ? serial : effect.unplugged;
            } else {
                effect.errorCode = planned.errorCode; // the latest fault wins
            }
        }
    }
    const auto isOver = [](const Planned& planned) { return planned.count == 0 && planned.delay.count() == 0; };
    m_Planned.erase(std::remove_if(m_Planned.begin(), m_Planned.end(), isOver), m_Planned.end());
    if (callNumber == m_FailingCall) {
        effect.errorCode = m_FailingCode;
        m_FailingCall = 0;
    }
    if (callNumber == m_UnpluggingCall) {
        effect.unplugged = m_UnpluggedSerial;
        m_UnpluggingCall = 0;
    }
    return effect;
}

void Faults::unplugInMiddle(std::uint32_t serial) {
    serialToUnplug = serial;
}

bool Faults::reachMiddleOfCall() {
    const std::uint32_t serial = std::exchange(serialToUnplug, kNoDevice);
    if (serial != kNoDevice) {
        Registry::instance().leaveBus(serial);
    }
    return serial != kNoDevice;
}

} // namespace SoftwareDevices
