// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>

#include <pthread.h>

namespace TestSupport {

/// Prevents the process from starting threads.
class NoThreads {
public:
    NoThreads() {
        pthread_getattr_default_np(&m_Default);
        pthread_attr_t impossible = m_Default;
        pthread_attr_setstacksize(&impossible, std::size_t{1} << 47); // more than an address space holds
        pthread_setattr_default_np(&impossible);
    }
    NoThreads(const NoThreads&) = delete;
    NoThreads& operator=(const NoThreads&) = delete;
    ~NoThreads() { pthread_setattr_default_np(&m_Default); }

private:
    pthread_attr_t m_Default{};
};

} // namespace TestSupport
