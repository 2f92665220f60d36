// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <exception>
#include <random>
#include <string>

namespace Storm {

/// The counts of the storm so far.
struct Tally {
    std::uint32_t seed = 1;
    std::atomic<std::uint64_t> operations{0};
    std::atomic<std::uint64_t> refusals{0};
    std::atomic<std::uint64_t> callbacks{0};
    std::atomic<bool> failed{false};
};
Tally& tally();

/// Reports the first condition that does not hold, with the seed.
void require(bool condition, const std::string& what);

/// Runs a call that may be refused. Any exception other than a std::exception ends the program.
template <typename Action>
void tolerant(Action action) {
    try {
        action();
    } catch (const std::exception&) {
        ++tally().refusals;
    }
}

using Random = std::mt19937;

inline std::size_t below(Random& random, std::size_t bound) {
    return random() % bound;
}

} // namespace Storm
