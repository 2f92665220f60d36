// SPDX-License-Identifier: Apache-2.0
#pragma once

namespace TestSupport {

/// Prevents the process from starting threads.
class NoThreads {
public:
    /// Whether the system lets itself be asked for that.
    static const bool isPossible;

    NoThreads();
    NoThreads(const NoThreads&) = delete;
    NoThreads& operator=(const NoThreads&) = delete;
    ~NoThreads();
};

} // namespace TestSupport
