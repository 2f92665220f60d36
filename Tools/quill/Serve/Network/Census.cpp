// SPDX-License-Identifier: Apache-2.0

#include "Serve/Network/Census.h"

#include <algorithm>

namespace QuillTool::Serve {

using Utilities::MutexLock;

void Census::add(const std::shared_ptr<Endable>& connection) {
    bool isEnding = false;
    {
        const MutexLock lock(m_Mutex);
        isEnding = m_IsEnding;
        m_Connections.erase(std::remove_if(m_Connections.begin(), m_Connections.end(),
                                           [](const auto& known) { return known.expired(); }),
                            m_Connections.end());
        m_Connections.push_back(connection);
    }
    if (isEnding) {
        connection->end();
    }
}

void Census::endAll() {
    std::vector<std::weak_ptr<Endable>> connections;
    {
        const MutexLock lock(m_Mutex);
        m_IsEnding = true;
        connections.swap(m_Connections);
    }
    for (const auto& known : connections) {
        if (const auto connection = known.lock()) {
            connection->end();
        }
    }
}

} // namespace QuillTool::Serve
