// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <atomic>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

#include <Quill.h>

namespace QuillTool::Serve {

/// Something that lasts until end() is called.
class Endable {
public:
    Endable() = default;
    Endable(const Endable&) = delete;
    Endable& operator=(const Endable&) = delete;
    virtual ~Endable() = default;
    /// Ends it soon, without waiting. Thread-safe.
    virtual void end() = 0;
};

/// A number of places. Thread-safe; outlives its seats.
class Seats {
public:
    /// Occupies a place as long as it lives.
    class Seat {
    public:
        explicit Seat(Seats& of) : m_Seats(&of) {}
        Seat(Seat&& other) noexcept : m_Seats(std::exchange(other.m_Seats, nullptr)) {}
        Seat& operator=(Seat&& other) noexcept {
            std::swap(m_Seats, other.m_Seats);
            return *this;
        }
        ~Seat() {
            if (m_Seats != nullptr) {
                --m_Seats->m_Taken;
            }
        }

    private:
        Seats* m_Seats;
    };

    explicit Seats(int count) : m_Count(count) {}

    /// Returns a seat, or nothing if all are taken.
    std::optional<Seat> take() {
        if (++m_Taken <= m_Count) {
            return Seat(*this);
        }
        --m_Taken;
        return std::nullopt;
    }

private:
    const int m_Count;
    std::atomic<int> m_Taken{0};
};

/// Knows the connections, so that all can be ended. Thread-safe.
class Census {
public:
    /// Adds a connection; ends it at once if all have been ended.
    void add(const std::shared_ptr<Endable>& connection);
    void endAll();

private:
    Utilities::Mutex m_Mutex; // guards what follows
    bool m_IsEnding QUILL_GUARDED_BY(m_Mutex) = false;
    std::vector<std::weak_ptr<Endable>> m_Connections QUILL_GUARDED_BY(m_Mutex);
};

} // namespace QuillTool::Serve
