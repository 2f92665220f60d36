// SPDX-License-Identifier: Apache-2.0

#include "Serve/Interface/Routes.h"

#include <algorithm>
#include <optional>
#include <set>
#include <utility>

#include "Serve/Page/PageFiles.h"
#include "Serve/Protocol/Documents.h"

namespace QuillTool::Serve {

namespace {

constexpr std::size_t kSmall = 64 * 1024;
constexpr std::size_t kLarge = 1024 * 1024;
constexpr unsigned kMaximumFrames = 1000;
constexpr unsigned kLargestCoordinate = 1'000'000;
constexpr unsigned kMaximumPixels = 64; // of a side
constexpr const char* kNoStore = "no-store";

Answer json(const Json& document) {
    return Reply{200,
                 {{"Content-Type", "application/json"}, {"Cache-Control", kNoStore}},
                 std::make_shared<const std::string>(toText(document))};
}

/// The fields of a file to be saved under a name.
Fields fileFields(const std::string& name, const std::string& mediaType) {
    std::string plain = name;
    std::replace_if(
        plain.begin(), plain.end(),
        [](char letter) { return letter < ' ' || letter > '~' || letter == '"' || letter == '\\' || letter == '/'; },
        '_');
    return {{"Content-Type", mediaType},
            {"Content-Disposition", "attachment; filename=\"" + plain + "\""},
            {"Cache-Control", kNoStore}};
}

const std::string& camera(const Call& call) {
    return call.names.front();
}

// Calls that take nothing but a camera, and those that take an object of JSON besides.

template <Json (CameraService::*operation)(const std::string&)>
Answer ofCamera(const Surroundings& surroundings, const Call& call) {
    return json((surroundings.cameras.*operation)(camera(call)));
}

/// The same, with a body that says nothing.
template <Json (CameraService::*operation)(const std::string&)>
Answer commandCamera(const Surroundings& surroundings, const Call& call) {
    parseBody(call.body, call.contentType);
    return ofCamera<operation>(surroundings, call);
}

template <Json (CameraService::*operation)(const std::string&, const std::string&)>
Answer withDocument(const Surroundings& surroundings, const Call& call) {
    demandJson(call.body, call.contentType);
    return json((surroundings.cameras.*operation)(camera(call), call.body));
}

Answer sendFile(const PageFile& file, const char* caching, const Call& call) {
    const Fields fields{{"ETag", std::string(file.tag)}, {"Cache-Control", caching}};
    if (matchesTag(call.ifNoneMatch, file.tag)) {
        return Reply{304, fields};
    }
    Reply reply{200, fields, std::make_shared<const std::string>(file.bytes)};
    reply.fields.emplace_back("Content-Type", file.mediaType);
    return reply;
}

Answer page(const Surroundings& /*surroundings*/, const Call& call) {
    const PageFile* const file = findPageFile(call.names.empty() ? "index.html" : call.names.front());
    if (file == nullptr) {
        throw Refusal(404, "NotFound", "There is no such page.", "Open '/'.");
    }
    return sendFile(*file, "no-cache", call); // asks each time whether it is still the same
}

Answer description(const Surroundings& /*surroundings*/, const Call& call) {
    return sendFile(interfaceDescription(), kNoStore, call);
}

Answer openSession(const Surroundings& surroundings, const Call& call) {
    const Json body = parseBody(call.body, call.contentType);
    const auto token = body.find("token");
    if (token == body.end() || !token->is_string()) {
        throw Refusal(400, "BadBody", "The body has no text 'token'.", R"(Send {"token": "..."}.)");
    }
    if (!surroundings.access.isToken(token->get_ref<const std::string&>())) {
        throw Refusal(401, "TokenNeeded", "The token is not that of this server.",
                      "Open the address that the server printed.");
    }
    return Reply{204, {{"Set-Cookie", surroundings.access.cookie()}, {"Cache-Control", kNoStore}}};
}

Json serverDocument(const Surroundings& surroundings) {
    return {{"name", "Quill"},
            {"version", QUILL_TOOL_VERSION},
            {"viewOnly", surroundings.viewOnly},
            {"captureFormats", {"png", "tiff", "dng", "jpeg"}}};
}

Answer server(const Surroundings& surroundings, const Call& /*call*/) {
    return json(serverDocument(surroundings));
}

Answer list(const Surroundings& surroundings, const Call& /*call*/) {
    return json(surroundings.cameras.list());
}

Answer property(const Surroundings& surroundings, const Call& call) {
    return json(surroundings.cameras.property(camera(call), call.names[1]));
}

Answer writeProperty(const Surroundings& surroundings, const Call& call) {
    const Json body = parseBody(call.body, call.contentType);
    const auto value = body.find("value");
    if (value == body.end() || !(value->is_string() || value->is_number() || value->is_boolean())) {
        throw Refusal(400, "BadBody", "The body has no 'value' that is a text, a number, true or false.",
                      R"(Send {"value": "12.5"}.)");
    }
    return json(surroundings.cameras.writeProperty(camera(call), call.names[1], *value));
}

Answer resetProperty(const Surroundings& surroundings, const Call& call) {
    parseBody(call.body, call.contentType);
    return json(surroundings.cameras.resetProperty(camera(call), call.names[1]));
}

Answer writeRegion(const Surroundings& surroundings, const Call& call) {
    return json(surroundings.cameras.writeRegion(camera(call), parseBody(call.body, call.contentType)));
}

Answer settings(const Surroundings& surroundings, const Call& call) {
    return Reply{200, fileFields(camera(call) + "-settings.json", "application/json"),
                 std::make_shared<const std::string>(surroundings.cameras.settings(camera(call)))};
}

std::string format(const Call& call) {
    const std::string* const format = call.target.parameter("format");
    return format == nullptr ? "png" : *format;
}

Answer capture(const Surroundings& surroundings, const Call& call) {
    File file = surroundings.cameras.capture(camera(call), format(call));
    return Reply{200, fileFields(file.name, file.mediaType),
                 std::make_shared<const std::string>(std::move(file.bytes))};
}

Answer series(const Surroundings& surroundings, const Call& call) {
    const unsigned frames = call.target.wholeNumber("frames", 1, kMaximumFrames);
    return Download{fileFields(camera(call) + "-series.tar", "application/x-tar"),
                    [&cameras = surroundings.cameras, serialNumber = camera(call), frames, format = format(call)](
                        const WriteBytes& write) { cameras.series(serialNumber, frames, format, write); }};
}

Answer pixels(const Surroundings& surroundings, const Call& call) {
    const Target& target = call.target;
    std::optional<std::uint64_t> frame;
    if (target.parameter("frame") != nullptr) {
        frame = target.wholeNumber("frame", 0, ~0U);
    }
    return json(surroundings.cameras.live(camera(call))
                    ->pixels(target.wholeNumber("x", 0, kLargestCoordinate),
                             target.wholeNumber("y", 0, kLargestCoordinate),
                             target.wholeNumber("width", 1, kMaximumPixels),
                             target.wholeNumber("height", 1, kMaximumPixels), frame));
}

Answer live(const Surroundings& surroundings, const Call& call) {
    return LivePictures{surroundings.cameras.live(camera(call)), true, {}};
}

Answer motion(const Surroundings& surroundings, const Call& call) {
    Look look;
    look.scale = call.target.wholeNumber("scale", 1, 8, look.scale);
    look.quality = call.target.wholeNumber("quality", 10, 95, look.quality);
    checkLook(look);
    return LivePictures{surroundings.cameras.live(camera(call)), false, look};
}

Answer events(const Surroundings& surroundings, const Call& /*call*/) {
    // Listens before it lists, so that no change is missed.
    EventStream stream{surroundings.events.subscribe()};
    surroundings.events.publishTo(*stream.subscription, "hello",
                                  {{"version", QUILL_TOOL_VERSION}, {"viewOnly", surroundings.viewOnly}});
    surroundings.events.publishTo(*stream.subscription, "cameras", surroundings.cameras.list());
    return stream;
}

#define QUILL_SERVE_API "/api/v1"
#define QUILL_SERVE_CAMERA QUILL_SERVE_API "/cameras/{}"

// Method, pattern, needs the token, changes cameras, place, bytes of the body, answer.
const std::vector<Route>& routeTable() {
    using Service = CameraService;
    static const std::vector<Route> routes{
        {"GET", "/", false, false, Place::AtOnce, kSmall, page},
        {"GET", "/{}", false, false, Place::AtOnce, kSmall, page},
        {"GET", QUILL_SERVE_API "/openapi.json", true, false, Place::AtOnce, kSmall, description},
        {"POST", QUILL_SERVE_API "/session", false, false, Place::AtOnce, kSmall, openSession},
        {"GET", QUILL_SERVE_API "/server", true, false, Place::AtOnce, kSmall, server},
        {"GET", QUILL_SERVE_API "/events", true, false, Place::Calls, kSmall, events},
        {"GET", QUILL_SERVE_API "/cameras", true, false, Place::Calls, kSmall, list},
        {"GET", QUILL_SERVE_CAMERA, true, false, Place::Calls, kSmall, ofCamera<&Service::describe>},
        {"POST", QUILL_SERVE_CAMERA "/connect", true, true, Place::Calls, kSmall, commandCamera<&Service::connect>},
        {"POST", QUILL_SERVE_CAMERA "/suspend", true, true, Place::Calls, kSmall, commandCamera<&Service::suspend>},
        {"POST", QUILL_SERVE_CAMERA "/disconnect", true, true, Place::Calls, kSmall,
         commandCamera<&Service::disconnect>},
        {"GET", QUILL_SERVE_CAMERA "/properties", true, false, Place::Calls, kSmall, ofCamera<&Service::properties>},
        {"GET", QUILL_SERVE_CAMERA "/properties/{}", true, false, Place::Calls, kSmall, property},
        {"PUT", QUILL_SERVE_CAMERA "/properties/{}", true, true, Place::Calls, kSmall, writeProperty},
        {"POST", QUILL_SERVE_CAMERA "/properties/{}/reset", true, true, Place::Calls, kSmall, resetProperty},
        {"GET", QUILL_SERVE_CAMERA "/region", true, false, Place::Calls, kSmall, ofCamera<&Service::region>},
        {"PUT", QUILL_SERVE_CAMERA "/region", true, true, Place::Calls, kSmall, writeRegion},
        {"POST", QUILL_SERVE_CAMERA "/stream/start", true, true, Place::Calls, kSmall,
         commandCamera<&Service::startStream>},
        {"POST", QUILL_SERVE_CAMERA "/stream/stop", true, true, Place::Calls, kSmall,
         commandCamera<&Service::stopStream>},
        {"GET", QUILL_SERVE_CAMERA "/statistics", true, false, Place::Calls, kSmall, ofCamera<&Service::statistics>},
        {"GET", QUILL_SERVE_CAMERA "/capture", true, false, Place::Downloads, kSmall, capture},
        {"GET", QUILL_SERVE_CAMERA "/series", true, false, Place::Downloads, kSmall, series},
        {"GET", QUILL_SERVE_CAMERA "/pixels", true, false, Place::Calls, kSmall, pixels},
        {"GET", QUILL_SERVE_CAMERA "/settings", true, false, Place::Calls, kSmall, settings},
        {"PUT", QUILL_SERVE_CAMERA "/settings", true, true, Place::Calls, kLarge, withDocument<&Service::loadSettings>},
        {"POST", QUILL_SERVE_CAMERA "/settings/compare", true, false, Place::Calls, kLarge,
         withDocument<&Service::compareSettings>},
        {"GET", QUILL_SERVE_CAMERA "/live.mjpeg", true, false, Place::Calls, kSmall, motion},
        {"GET", QUILL_SERVE_CAMERA "/live", true, false, Place::Calls, kSmall, live},
    };
    return routes;
}

/// Returns the segments that the pattern leaves open, or nothing if it does not match.
std::optional<std::vector<std::string>> match(std::string_view pattern, const std::vector<std::string>& segments) {
    std::vector<std::string> open;
    for (const std::string& segment : segments) {
        if (pattern.empty()) {
            return std::nullopt;
        }
        pattern.remove_prefix(1);
        const std::string_view expected = pattern.substr(0, pattern.find('/'));
        pattern.remove_prefix(expected.size());
        if (expected == "{}" && !segment.empty()) {
            open.push_back(segment);
        } else if (expected != segment) {
            return std::nullopt;
        }
    }
    return pattern.empty() ? std::optional(open) : std::nullopt;
}

} // namespace

MethodRefusal::MethodRefusal(std::string allowed)
    : Refusal(405, "MethodNotAllowed", "The target does not have this method.", "Use one of: " + allowed + "."),
      methods(std::move(allowed)) {}

const Route& findRoute(std::string_view method, Call& call) {
    std::set<std::string_view> methods;
    for (const Route& route : routeTable()) {
        auto names = match(route.pattern, call.target.segments);
        if (!names) {
            continue;
        }
        const bool hasHead = route.method == "GET" && route.place == Place::AtOnce;
        if (route.method == method || (hasHead && method == "HEAD")) {
            call.names = std::move(*names);
            return route;
        }
        methods.insert(route.method);
        if (hasHead) {
            methods.insert("HEAD");
        }
    }
    if (methods.empty()) {
        throw Refusal(404, "NotFound", "There is nothing under this target.", "See " QUILL_SERVE_API "/openapi.json.");
    }
    std::string allowed = "OPTIONS";
    for (const std::string_view each : methods) {
        allowed += ", " + std::string(each);
    }
    throw MethodRefusal(allowed);
}

} // namespace QuillTool::Serve
