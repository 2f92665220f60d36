// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <gio/gio.h>

#include <memory>
#include <string>

namespace GenICamAdapter {

struct ObjectRelease {
    void operator()(void* object) const { g_object_unref(object); }
};

/// A reference to a GObject.
template <typename T>
using ObjectPointer = std::unique_ptr<T, ObjectRelease>;

struct MemoryRelease {
    void operator()(void* memory) const { g_free(memory); }
};

template <typename T>
using MemoryPointer = std::unique_ptr<T, MemoryRelease>;

/// Receives the error of a call: `function(..., failure.out())`. One object serves one call after another.
class Failure {
public:
    Failure() = default;
    Failure(const Failure&) = delete;
    Failure& operator=(const Failure&) = delete;
    ~Failure() { g_clear_error(&m_Error); }

    /// The place for the error of the next call; forgets the error of the last.
    GError** out() {
        g_clear_error(&m_Error);
        return &m_Error;
    }
    explicit operator bool() const { return m_Error != nullptr; }
    std::string text() const { return m_Error == nullptr ? "" : m_Error->message; }

private:
    GError* m_Error = nullptr;
};

} // namespace GenICamAdapter
