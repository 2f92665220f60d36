// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

namespace Fuzzing {

using Bytes = std::vector<unsigned char>;

/// The input bytes of a fuzzer, consumed from the front. Zeros follow their end.
class Input {
public:
    Input(const std::uint8_t* data, std::size_t size) : m_Next(data), m_Left(size) {}

    std::uint8_t byte() {
        const Bytes one = bytes(1);
        return one.empty() ? std::uint8_t{0} : one.front();
    }
    std::uint32_t word() {
        std::uint32_t word = 0;
        for (int count = 0; count < 4; ++count) {
            word = word << 8 | byte();
        }
        return word;
    }
    /// Takes @p count bytes, or as many as are left.
    Bytes bytes(std::size_t count) {
        count = std::min(count, m_Left);
        const Bytes taken(m_Next, m_Next + count);
        m_Next += count;
        m_Left -= count;
        return taken;
    }
    Bytes rest() { return bytes(m_Left); }
    std::string text() {
        const Bytes taken = rest();
        return {taken.begin(), taken.end()};
    }

private:
    const std::uint8_t* m_Next;
    std::size_t m_Left;
};

/// Ends the run if a condition that must always hold does not.
inline void require(bool holds, const char* what) {
    if (!holds) {
        std::fprintf(stderr, "Does not hold: %s\n", what);
        std::abort();
    }
}

/// Whether an action throws one of the permitted exceptions. Any other exception passes through and ends the run.
template <typename Exception, typename... Others, typename Action>
bool isRefused(const Action& action) {
    try {
        if constexpr (sizeof...(Others) > 0) {
            return isRefused<Others...>(action);
        } else {
            action();
            return false;
        }
    } catch (const Exception&) {
        return true;
    }
}

} // namespace Fuzzing
