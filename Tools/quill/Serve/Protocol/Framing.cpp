// SPDX-License-Identifier: Apache-2.0

#include "Serve/Protocol/Framing.h"

#include <array>
#include <limits>
#include <utility>

#include "Serve/Protocol/Documents.h"

namespace QuillTool::Serve {

namespace {

constexpr unsigned kMaximumCredits = 2;

Refusal badMessage(const std::string& reason) {
    return {400, "BadMessage", reason, "See the description of the live pictures."};
}

unsigned memberNumber(const Json& message, const char* name, unsigned otherwise) {
    const auto member = message.find(name);
    if (member == message.end()) {
        return otherwise;
    }
    if (!member->is_number_unsigned() || member->get<std::uint64_t>() > std::numeric_limits<unsigned>::max()) {
        throw badMessage(std::string("The member '") + name + "' is no whole number.");
    }
    return member->get<unsigned>();
}

ViewerMessage parseReady(const Json& message, const Look& /*present*/) {
    const unsigned credits = memberNumber(message, "credits", 1);
    if (credits < 1 || credits > kMaximumCredits) {
        throw badMessage("The credits are not 1 or 2.");
    }
    return Ready{credits};
}

ViewerMessage parseLook(const Json& message, const Look& present) {
    const Look look{memberNumber(message, "scale", present.scale), memberNumber(message, "quality", present.quality)};
    checkLook(look);
    return look;
}

constexpr std::array<std::pair<std::string_view, ViewerMessage (*)(const Json&, const Look&)>, 4> kMessages{{
    {"ready", parseReady},
    {"view", parseLook},
    {"hold", [](const Json& /*message*/, const Look& /*present*/) -> ViewerMessage { return Hold{}; }},
    {"release", [](const Json& /*message*/, const Look& /*present*/) -> ViewerMessage { return Release{}; }},
}};

} // namespace

void checkLook(const Look& look) {
    if (look.scale != 1 && look.scale != 2 && look.scale != 4 && look.scale != 8) {
        throw badMessage("The scale is not 1, 2, 4 or 8.");
    }
    if (look.quality < 10 || look.quality > 95) {
        throw badMessage("The quality is not between 10 and 95.");
    }
}

std::string pictureHeader(const Json& description) {
    const std::string text = toText(description);
    std::string header = "QLP1";
    for (unsigned shift = 0; shift < 32; shift += 8) {
        header += static_cast<char>(text.size() >> shift & 255);
    }
    return header + text;
}

std::string eventText(std::uint64_t id, std::string_view event, const Json& data) {
    return "id: " + std::to_string(id) + "\nevent: " + std::string(event) + "\ndata: " + toText(data) + "\n\n";
}

std::string pictureBoundary() {
    return "\r\n--" + std::string(kPictureBoundary) + "\r\n";
}

std::string partHeader(std::size_t size) {
    return "Content-Type: image/jpeg\r\nContent-Length: " + std::to_string(size) + "\r\n\r\n";
}

std::string chunkHeader(std::size_t size) {
    constexpr std::string_view kDigits = "0123456789abcdef";
    std::string digits;
    for (; size != 0 || digits.empty(); size /= 16) {
        digits.insert(digits.begin(), kDigits[size % 16]);
    }
    return digits + "\r\n";
}

ViewerMessage parseViewerMessage(std::string_view text, const Look& present) {
    const Json message = parseBody(text, "application/json");
    const auto type = message.find("type");
    if (type != message.end() && type->is_string()) {
        for (const auto& [name, parse] : kMessages) {
            if (type->get_ref<const std::string&>() == name) {
                return parse(message, present);
            }
        }
    }
    throw badMessage("The message has no known type.");
}

} // namespace QuillTool::Serve
