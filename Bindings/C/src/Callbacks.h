// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <functional>
#include <memory>
#include <utility>

#include "Calls.h"

namespace CInterface {

/// Marks that this thread is inside a call that the end of the workspace would wait for.
class InsideCall {
public:
    InsideCall() { ++s_Depth; }
    InsideCall(const InsideCall&) = delete;
    InsideCall& operator=(const InsideCall&) = delete;
    ~InsideCall() { --s_Depth; }

    /// @throws KestrelException "WouldWaitForItself"
    static void refuse();

private:
    inline static thread_local int s_Depth = 0;
};

/// Owns the context of a callback: releases it once.
class CallbackContext {
public:
    CallbackContext(void* context, quill_release_function release) : m_Context(context), m_Release(release) {}
    CallbackContext(CallbackContext&& other) noexcept
        : m_Context(other.m_Context), m_Release(std::exchange(other.m_Release, nullptr)) {}
    CallbackContext(const CallbackContext&) = delete;
    CallbackContext& operator=(const CallbackContext&) = delete;
    CallbackContext& operator=(CallbackContext&&) = delete;
    ~CallbackContext() {
        if (m_Release != nullptr) {
            const InsideCall mark; // it may be released by a thread for which the end of the workspace waits
            m_Release(m_Context);
        }
    }

    void* get() const { return m_Context; }

private:
    void* m_Context;
    quill_release_function m_Release;
};

/// A C function and its context. Copies share the context.
template <typename Function>
class Callback {
public:
    Callback() = default;
    Callback(Function function, CallbackContext context)
        : m_Function(function),
          m_Context(function == nullptr ? nullptr : std::make_shared<CallbackContext>(std::move(context))) {}

    explicit operator bool() const { return m_Function != nullptr; }

    /// The context stays during the call, also if the callback is replaced meanwhile.
    template <typename... Arguments>
    void operator()(Arguments... arguments) const {
        const Function function = m_Function;
        const std::shared_ptr<CallbackContext> context = m_Context;
        function(context->get(), arguments...);
    }

private:
    Function m_Function = nullptr;
    std::shared_ptr<CallbackContext> m_Context;
};

/// Turns the answer of a progress function that does not continue into an exception.
inline std::function<void(double)> progressFunction(quill_progress_function progress, void* context) {
    if (progress == nullptr) {
        return {};
    }
    return [progress, context](double fraction) {
        if (!progress(context, fraction)) {
            throw Cancelled();
        }
    };
}

} // namespace CInterface
