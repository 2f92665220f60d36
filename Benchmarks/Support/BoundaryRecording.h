// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <functional>
#include <vector>

#include "OrvexApi/OrvexApi.h"

namespace Benchmarks {

/// The calls of the SDK's boundary that an action makes, to replay without the code around them.
class BoundaryRecording {
public:
    /// The arguments that replace the recorded pointers.
    struct Context {
        void* handle = nullptr; ///< of the camera opened last
        void* memory = nullptr; ///< receives results; large enough for a whole flash
    };
    using Call = std::function<void(const OrvexAdapter::OrvexApi& api, Context& context)>;

    /// Records while @p action runs on this thread. No other thread may call the SDK meanwhile.
    explicit BoundaryRecording(const std::function<void()>& action);

    std::size_t size() const { return m_Calls.size(); }
    /// @param handle the open camera's, for calls before the first that opens one
    void replay(void* handle) const;

private:
    std::vector<Call> m_Calls;
};

} // namespace Benchmarks
