// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <optional>

namespace QuillTool {

/// Wakes threads that wait in waitForAny(), now or later, until drain().
class Waker {
public:
    Waker();
    Waker(const Waker&) = delete;
    Waker& operator=(const Waker&) = delete;
    ~Waker();

    /// Thread-safe, and safe in a signal handler.
    void wake() const noexcept;
    void drain() const noexcept;
    /// What the system waits for.
    std::intptr_t waitable() const { return m_Ends[0]; }

private:
    std::array<std::intptr_t, 2> m_Ends{}; ///< of a pipe, or an event twice
};

/// Waits until one of the wakers is awake, at most for @p limit, and without end if there is none.
/// @return the place of the first one that is awake; nothing after the limit
std::optional<std::size_t> waitForAny(std::initializer_list<const Waker*> wakers,
                                      std::optional<std::chrono::milliseconds> limit = {});

} // namespace QuillTool
