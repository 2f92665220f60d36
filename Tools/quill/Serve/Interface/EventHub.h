// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include <Quill.h>

#include "Terminal/Output.h"

namespace QuillTool::Serve {

/// The events that wait for one listener. Thread-safe.
class Subscription {
public:
    /// Events that wait at most. One more ends the subscription: the listener connects again and gets everything anew.
    static constexpr std::size_t kMaximumWaiting = 256;

    /// Calls @p wake, on any thread, whenever there is something to take; at once where there is something already.
    /// @p wake must not block.
    void onEvents(std::function<void()> wake);
    /// Takes the texts of all events that wait.
    std::string take();
    /// Whether events were lost.
    bool hasOverflown() const;

private:
    friend class EventHub;
    void add(const std::shared_ptr<const std::string>& text);

    mutable Utilities::Mutex m_Mutex; // guards what follows
    std::deque<std::shared_ptr<const std::string>> m_Waiting QUILL_GUARDED_BY(m_Mutex);
    bool m_HasOverflown QUILL_GUARDED_BY(m_Mutex) = false;
    std::function<void()> m_Wake QUILL_GUARDED_BY(m_Mutex);
};

/// Hands events to all listeners. Thread-safe.
class EventHub {
public:
    /// Adds a listener, which leaves when it drops what is returned. The hub must outlive all of them.
    std::shared_ptr<Subscription> subscribe();
    /// Hands an event to one listener alone.
    void publishTo(Subscription& subscription, std::string_view event, const Json& data);
    /// Hands an event to all listeners. Does not block.
    void publish(std::string_view event, const Json& data);
    /// Calls @p report with whether there is a listener, when the first one comes and when the last one leaves.
    void onListening(std::function<void(bool)> report);

private:
    struct Listener;

    void countListeners(int change);
    std::shared_ptr<const std::string> compose(std::string_view event, const Json& data);

    Utilities::Mutex m_ReportMutex; // guards what follows; is held during reports, which thus come in order
    std::function<void(bool)> m_Report QUILL_GUARDED_BY(m_ReportMutex);
    int m_Listeners QUILL_GUARDED_BY(m_ReportMutex) = 0;
    Utilities::Mutex m_Mutex; // guards what follows
    std::vector<std::weak_ptr<Subscription>> m_Subscriptions QUILL_GUARDED_BY(m_Mutex);
    std::uint64_t m_LastId QUILL_GUARDED_BY(m_Mutex) = 0;
};

} // namespace QuillTool::Serve
