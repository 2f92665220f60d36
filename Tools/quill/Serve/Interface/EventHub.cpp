// SPDX-License-Identifier: Apache-2.0

#include "Serve/Interface/EventHub.h"

#include <algorithm>
#include <utility>

#include "Serve/Protocol/Framing.h"

namespace QuillTool::Serve {

using Utilities::MutexLock;

void Subscription::onEvents(std::function<void()> wake) {
    bool isWaiting = false;
    {
        const MutexLock lock(m_Mutex);
        m_Wake = wake;
        isWaiting = !m_Waiting.empty();
    }
    if (isWaiting) {
        wake();
    }
}

std::string Subscription::take() {
    std::deque<std::shared_ptr<const std::string>> taken;
    {
        const MutexLock lock(m_Mutex);
        taken.swap(m_Waiting);
    }
    std::string texts;
    for (const auto& text : taken) {
        texts += *text;
    }
    return texts;
}

bool Subscription::hasOverflown() const {
    const MutexLock lock(m_Mutex);
    return m_HasOverflown;
}

void Subscription::add(const std::shared_ptr<const std::string>& text) {
    std::function<void()> wake;
    {
        const MutexLock lock(m_Mutex);
        if (m_HasOverflown) {
            return;
        }
        if (m_Waiting.size() == kMaximumWaiting) {
            m_HasOverflown = true;
            m_Waiting.clear();
        } else {
            m_Waiting.push_back(text);
        }
        wake = m_Wake;
    }
    if (wake) {
        wake();
    }
}

/// Whoever holds it listens. Publishing holds the subscription alone, so that no listener leaves within an event.
struct EventHub::Listener {
    explicit Listener(EventHub& of) : hub(of) { hub.countListeners(1); }
    Listener(const Listener&) = delete;
    Listener& operator=(const Listener&) = delete;
    ~Listener() { hub.countListeners(-1); }

    EventHub& hub;
    const std::shared_ptr<Subscription> subscription = std::make_shared<Subscription>();
};

std::shared_ptr<Subscription> EventHub::subscribe() {
    const auto listener = std::make_shared<Listener>(*this);
    {
        const MutexLock lock(m_Mutex);
        m_Subscriptions.erase(std::remove_if(m_Subscriptions.begin(), m_Subscriptions.end(),
                                             [](const auto& subscription) { return subscription.expired(); }),
                              m_Subscriptions.end());
        m_Subscriptions.push_back(listener->subscription);
    }
    return {listener, listener->subscription.get()};
}

void EventHub::publishTo(Subscription& subscription, std::string_view event, const Json& data) {
    subscription.add(compose(event, data));
}

void EventHub::publish(std::string_view event, const Json& data) {
    std::vector<std::shared_ptr<Subscription>> present;
    {
        const MutexLock lock(m_Mutex);
        for (const auto& subscription : m_Subscriptions) {
            if (auto kept = subscription.lock()) {
                present.push_back(std::move(kept));
            }
        }
    }
    if (present.empty()) {
        return;
    }
    const auto text = compose(event, data);
    for (const auto& subscription : present) {
        subscription->add(text);
    }
}

void EventHub::onListening(std::function<void(bool)> report) {
    const MutexLock lock(m_ReportMutex);
    m_Report = std::move(report);
}

std::shared_ptr<const std::string> EventHub::compose(std::string_view event, const Json& data) {
    std::uint64_t id = 0;
    {
        const MutexLock lock(m_Mutex);
        id = ++m_LastId;
    }
    return std::make_shared<const std::string>(eventText(id, event, data));
}

void EventHub::countListeners(int change) {
    const MutexLock lock(m_ReportMutex);
    const bool wasAnybody = m_Listeners > 0;
    m_Listeners += change;
    if (m_Report && wasAnybody != (m_Listeners > 0)) {
        m_Report(m_Listeners > 0);
    }
}

} // namespace QuillTool::Serve
