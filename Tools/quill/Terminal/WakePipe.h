// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <array>

namespace QuillTool {

/// Wakes a thread that polls file descriptors.
class WakePipe {
public:
    WakePipe();
    WakePipe(const WakePipe&) = delete;
    WakePipe& operator=(const WakePipe&) = delete;
    ~WakePipe();

    /// Is readable from wake() until drain().
    int descriptor() const { return m_Ends[0]; }
    /// Thread-safe, and safe in a signal handler.
    void wake() const noexcept;
    void drain() const noexcept;

private:
    std::array<int, 2> m_Ends{};
};

} // namespace QuillTool
