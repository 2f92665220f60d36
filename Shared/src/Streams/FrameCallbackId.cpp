// SPDX-License-Identifier: Apache-2.0

#include "Streams/FrameCallbackId.h"

#include <utility>

namespace OrvexAdapter {

using CameraInterface::STREAM_TYPE;
using CameraInterface::StreamStatistics;

namespace {

constexpr std::int32_t kNoCallback = -1;

} // namespace

FrameCallbackId::~FrameCallbackId() {
    leaveToTheSdk();
}

bool FrameCallbackId::add(const ModeOperations& mode, void* handle,
                          const std::shared_ptr<StreamStatistics>& statistics) {
    leaveToTheSdk();
    auto context = std::make_unique<Context>();
    context->statistics = statistics;
    m_Id = (orvexApi().*mode.addCallback)(handle, frameCallback, context.get());
    if (m_Id == kNoCallback) {
        return false;
    }
    m_Handle = handle;
    m_Context = std::move(context);
    return true;
}

bool FrameCallbackId::remove(const ModeOperations& mode, void* handle) {
    if (!m_Context || m_Handle != handle) {
        return true;
    }
    if ((orvexApi().*mode.removeCallback)(handle, m_Id) == 0) {
        return false;
    }
    m_Context.reset();
    return true;
}

void FrameCallbackId::leaveToTheSdk() {
    static std::atomic<Context*> left{nullptr};
    if (Context* const context = m_Context.release()) {
        context->counts = false;
        context->next = left.exchange(context);
    }
}

void FrameCallbackId::frameCallback(void* context, std::uint32_t /*unused1*/, std::uint32_t /*unused2*/) {
    const auto& own = *static_cast<const Context*>(context);
    try {
        const std::shared_ptr<StreamStatistics> statistics = own.statistics.lock();
        if (statistics && own.counts) {
            statistics->incrementFrameCount(STREAM_TYPE::Received);
        }
    } catch (...) {
        // No memory to store the time: the frame counts in the total but not in the rate. No exception may reach the
        // SDK.
    }
}

} // namespace OrvexAdapter
