// SPDX-License-Identifier: Apache-2.0

#include "Terminal/Waker.h"

#include <algorithm>
#include <system_error>
#include <vector>

#include <windows.h>

#include <fmt/format.h>

#include "Terminal/ToolError.h"

namespace QuillTool {

namespace {

HANDLE handleOf(std::intptr_t end) {
    return reinterpret_cast<HANDLE>(end);
}

} // namespace

Waker::Waker() {
    const HANDLE event = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    if (event == nullptr) {
        const std::error_code failure(static_cast<int>(GetLastError()), std::system_category());
        throw ToolError(ExitCode::Failed, fmt::format("cannot create an event: {}", failure.message()));
    }
    m_Ends.fill(reinterpret_cast<std::intptr_t>(event));
}

Waker::~Waker() {
    CloseHandle(handleOf(m_Ends[0]));
}

void Waker::wake() const noexcept {
    SetEvent(handleOf(m_Ends[0]));
}

void Waker::drain() const noexcept {
    ResetEvent(handleOf(m_Ends[0]));
}

std::optional<std::size_t> waitForAny(std::initializer_list<const Waker*> wakers,
                                      std::optional<std::chrono::milliseconds> limit) {
    std::vector<HANDLE> waiting;
    for (const Waker* waker : wakers) {
        waiting.push_back(handleOf(waker->waitable()));
    }
    const DWORD limitMs = limit ? static_cast<DWORD>(std::max<long long>(0, limit->count())) : INFINITE;
    const DWORD awake = WaitForMultipleObjects(static_cast<DWORD>(waiting.size()), waiting.data(), FALSE, limitMs);
    return awake < waiting.size() ? std::optional<std::size_t>(awake) : std::nullopt;
}

} // namespace QuillTool
