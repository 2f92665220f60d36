// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <atomic>

#include "Base/NeverDestroyed.h"

namespace Base {

/// The table of operations that is called at a boundary: the platform's own, which is created on first use, or a
/// replacement. Thread-safe.
template <typename Table, Table (*makeOwn)()>
class TableInUse {
public:
    const Table& get() {
        if (const Table* table = m_Replacement.load(std::memory_order_acquire)) {
            return *table;
        }
        static NeverDestroyed<Table> own(makeOwn());
        return own.get();
    }
    /// Installs another table, which must outlive its use; null restores the own one.
    void replace(const Table* table) { m_Replacement.store(table, std::memory_order_release); }

private:
    std::atomic<const Table*> m_Replacement{nullptr};
};

} // namespace Base
