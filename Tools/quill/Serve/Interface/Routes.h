// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "Serve/Cameras/CameraService.h"
#include "Serve/Interface/Answer.h"
#include "Serve/Protocol/Access.h"
#include "Serve/Protocol/Target.h"

namespace QuillTool::Serve {

/// What answers are made from. All of it outlives every request.
struct Surroundings {
    CameraService& cameras;
    EventHub& events;
    const AccessRules& access;
    bool viewOnly;
};

/// A request that has been let in.
struct Call {
    Target target;
    std::vector<std::string> names{}; ///< the segments of the path that the pattern leaves open
    std::string contentType{};
    std::string ifNoneMatch{};
    std::string body{};
};

/// Where a request's answer is made.
enum class Place {
    AtOnce,   ///< from memory
    Calls,    ///< on a thread that may wait for a camera
    Downloads ///< likewise, and for long
};

/// What the server does for a method and a pattern of targets.
struct Route {
    std::string_view method;
    std::string_view pattern; ///< "/cameras/{}/live"; "{}" stands for any segment that is not empty
    bool needsToken;
    bool changesCameras; ///< is refused in view-only mode
    Place place;
    std::size_t maximumBody; ///< bytes
    /// Blocks unless AtOnce. Throws Refusal, or what the library throws.
    Answer (*answer)(const Surroundings& surroundings, const Call& call);
};

/// The refusal of a method, with those that the target has.
class MethodRefusal : public Refusal {
public:
    explicit MethodRefusal(std::string methods);
    std::string methods; ///< the value of the field "Allow"
};

/// Finds the route of a request and fills in the call's names. "HEAD" takes the route of "GET" where the answer comes
/// at once.
/// @throws Refusal  404; MethodRefusal  405, also for OPTIONS, whose answer are the methods
const Route& findRoute(std::string_view method, Call& call);

} // namespace QuillTool::Serve
