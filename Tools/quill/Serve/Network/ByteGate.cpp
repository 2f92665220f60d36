// SPDX-License-Identifier: Apache-2.0

#include "Serve/Network/ByteGate.h"

#include <utility>

namespace QuillTool::Serve {

using Utilities::MutexLock;

namespace {

constexpr std::size_t kMaximumBytes = 4 * 1024 * 1024;

} // namespace

bool ByteGate::write(std::string_view bytes) {
    {
        MutexLock lock(m_Mutex);
        while (!m_IsClosed && m_Waiting.size() >= kMaximumBytes) {
            bool isWoken = false;
            lock.wait(m_Changed, [&isWoken] { return std::exchange(isWoken, true); });
        }
        if (m_IsClosed) {
            return false;
        }
        m_Waiting += bytes;
    }
    wake();
    return true;
}

void ByteGate::finish(bool isComplete) {
    {
        const MutexLock lock(m_Mutex);
        m_IsFinished = true;
        m_IsComplete = isComplete;
    }
    wake();
}

void ByteGate::onBytes(std::function<void()> wake) {
    {
        const MutexLock lock(m_Mutex);
        m_Wake = std::move(wake);
    }
    this->wake();
}

void ByteGate::wake() {
    std::function<void()> call;
    {
        const MutexLock lock(m_Mutex);
        call = m_Wake;
    }
    if (call) {
        call();
    }
}

ByteGate::Taken ByteGate::take() {
    const MutexLock lock(m_Mutex);
    m_Changed.notify_all();
    return {std::exchange(m_Waiting, {}), m_IsFinished, m_IsComplete};
}

void ByteGate::close() {
    const MutexLock lock(m_Mutex);
    m_IsClosed = true;
    m_Changed.notify_all();
}

} // namespace QuillTool::Serve
