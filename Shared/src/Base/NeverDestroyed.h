// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <new>
#include <utility>

namespace Base {

/// Process-wide state that is created on first use and outlives every static object of the application.
template <typename T>
class NeverDestroyed {
public:
    template <typename... Arguments>
    explicit NeverDestroyed(Arguments&&... arguments) {
        ::new (static_cast<void*>(m_Storage)) T(std::forward<Arguments>(arguments)...);
    }
    NeverDestroyed(const NeverDestroyed&) = delete;
    NeverDestroyed& operator=(const NeverDestroyed&) = delete;

    T& get() { return *std::launder(reinterpret_cast<T*>(m_Storage)); }

private:
    alignas(T) unsigned char m_Storage[sizeof(T)];
};

} // namespace Base
