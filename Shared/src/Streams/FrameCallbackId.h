// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <atomic>
#include <cstdint>
#include <memory>

#include "Streams/ModeOperations.h"

namespace OrvexAdapter {

/// The registration of a stream's frame callback with the SDK. The callback counts received frames for as long as the
/// statistics exist. A callback that the SDK refuses to remove stays in memory for ever, because it may still be
/// called. Reentrant; the SDK may call at any time.
class FrameCallbackId {
public:
    FrameCallbackId() = default;
    FrameCallbackId(const FrameCallbackId&) = delete;
    FrameCallbackId& operator=(const FrameCallbackId&) = delete;
    ~FrameCallbackId();

    /// Registers the callback. An earlier registration is left to the SDK and no longer counts.
    /// @return false: the SDK refuses
    bool add(const ModeOperations& mode, void* handle,
             const std::shared_ptr<CameraInterface::StreamStatistics>& statistics);
    /// Removes the callback, if it is registered with this handle.
    /// @return false: the SDK refuses
    bool remove(const ModeOperations& mode, void* handle);

private:
    /// The context that the SDK passes to the callback.
    struct Context {
        std::weak_ptr<CameraInterface::StreamStatistics> statistics; // constant
        std::atomic<bool> counts{true};
        Context* next = nullptr; // of the contexts left to the SDK
    };

    static void frameCallback(void* context, std::uint32_t unused1, std::uint32_t unused2);
    void leaveToTheSdk();

    void* m_Handle = nullptr; // while registered
    std::int32_t m_Id = -1;
    std::unique_ptr<Context> m_Context; // while registered
};

} // namespace OrvexAdapter
