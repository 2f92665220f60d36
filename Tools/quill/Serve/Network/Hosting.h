// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <chrono>

#include "Serve/Interface/Routes.h"
#include "Serve/Network/Census.h"
#include "Serve/Network/WorkerPool.h"

namespace QuillTool::Serve {

constexpr int kMaximumConnections = 64;
constexpr int kMaximumSurplus = 16; // connections beyond these, which learn that there are too many
constexpr int kMaximumViewers = 32;
constexpr std::size_t kMaximumHeader = 8 * 1024;
constexpr std::chrono::seconds kRequestLimit{10};
constexpr std::chrono::seconds kIdleLimit{60};
constexpr std::chrono::seconds kSendLimit{30}; // for a quarter of a MiB

/// What all connections of a server share. Outlives them.
struct Hosting {
    explicit Hosting(const Surroundings& of) : surroundings(of) {}

    const Surroundings surroundings;
    Seats connections{kMaximumConnections};
    Seats surplus{kMaximumSurplus};
    Seats viewers{kMaximumViewers};
    Census census;
    WorkerPool calls{8, 64};
    WorkerPool downloads{4, 8};
};

} // namespace QuillTool::Serve
