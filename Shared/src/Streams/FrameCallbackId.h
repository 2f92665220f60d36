// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <atomic>
#include <cstdint>
#include <memory>

#include "Streams/ModeOperations.h"

namespace OrvexAdapter {

/// The id under which the SDK has the frame callback of a stream, and what it calls under that id. The callback counts
/// received frames for as long as the statistics exist. What the SDK does not take back stays in memory for ever, as it
/// may still be called. Reentrant; the SDK may call at any time.
class FrameCallbackId {
public:
    FrameCallbackId() = default;
    FrameCallbackId(const FrameCallbackId&) = delete;
    FrameCallbackId& operator=(const FrameCallbackId&) = delete;
    ~FrameCallbackId();

    /// Registers the callback; one that is registered already is left to the SDK and counts no more.
    /// @return false: the SDK refuses
    bool add(const ModeOperations& mode, void* handle,
             const std::shared_ptr<CameraInterface::StreamStatistics>& statistics);
    /// Takes the callback back, if it is registered with this handle.
    /// @return false: the SDK refuses
    bool remove(const ModeOperations& mode, void* handle);

private:
    /// What the SDK passes to the callback.
    struct Context {
        std::weak_ptr<CameraInterface::StreamStatistics> statistics; // constant
        std::atomic<bool> counts{true};
        Context* next = nullptr; // of those that are left to the SDK
    };

    static void frameCallback(void* context, std::uint32_t unused1, std::uint32_t unused2);
    void leaveToTheSdk();

    void* m_Handle = nullptr; // while registered
    std::int32_t m_Id = -1;
    std::unique_ptr<Context> m_Context; // while registered
};

} // namespace OrvexAdapter
