// SPDX-License-Identifier: Apache-2.0

// What the server of the tool takes from clients besides HTTP itself: targets, hosts and origins, bodies, and the
// messages of viewers. The first byte chooses which of them the rest is.

#include <algorithm>
#include <array>
#include <cctype>
#include <string>
#include <variant>

#include "Serve/Protocol/Access.h"
#include "Serve/Protocol/Documents.h"
#include "Serve/Protocol/Framing.h"
#include "Serve/Protocol/Target.h"
#include "Support/Input.h"

namespace {

using namespace Fuzzing;
using namespace QuillTool::Serve;

/// Runs an action, and checks what it refuses.
template <typename Action>
void attempt(const Action& action) {
    try {
        action();
    } catch (const Refusal& refusal) {
        require(refusal.status >= 400 && refusal.status < 500, "the client is at fault");
        const std::string document = problemDocument(refusal);
        require(document.size() < 1000 && isPlainText(document), "a refusal is short and plain");
    }
}

void parseTargets(const std::string& text) {
    const Target target = parseTarget(text);
    std::string again;
    for (const std::string& segment : target.segments) {
        require(isPlainText(segment), "segments are plain");
        again += '/' + percentEncoded(segment);
    }
    char separator = '?';
    for (const auto& [name, value] : target.parameters) {
        again += separator + percentEncoded(name) + '=' + percentEncoded(value);
        separator = '&';
    }
    const Target same = parseTarget(again);
    require(same.segments == target.segments && same.parameters == target.parameters, "a target comes back");
}

/// A line each: host, origin, cookie, authorization.
void checkAccess(const std::string& text) {
    std::array<std::string, 4> lines;
    std::size_t begin = 0;
    for (std::string& line : lines) {
        const std::size_t end = std::min(text.find('\n', begin), text.size());
        line = text.substr(begin, end - begin);
        begin = std::min(end + 1, text.size());
    }
    const std::string token = "AAAAAAAAAAAAAAAAAAAAAA";
    const AccessRules rules(8080, "192.168.1.5", {"cameras.example"}, token);
    const std::string& origin = lines[1];
    attempt([&] {
        rules.checkPlace({lines[0], origin, std::nullopt, std::nullopt, std::nullopt, "192.168.1.5"});
        std::string host = lines[0];
        std::transform(host.begin(), host.end(), host.begin(),
                       [](unsigned char letter) { return std::tolower(letter); });
        const std::array known{"localhost:8080", "127.", "[::1]:8080", "192.168.1.5", "cameras.example"};
        require(std::any_of(known.begin(), known.end(),
                            [&host](const char* name) { return host.find(name) != std::string::npos; }),
                "only known hosts are let in");
        require(origin.size() == origin.find("://") + 3 + host.size(), "an origin is a scheme and the host");
    });
    attempt([&] {
        rules.checkToken({lines[0], origin, std::nullopt, lines[3], lines[2], ""});
        require(lines[2].find(token) != std::string::npos || lines[3].find(token) != std::string::npos,
                "only the token lets in");
    });
}

void parseBodies(const std::string& text) {
    require(parseBody(text, "application/json").is_object(), "a body is an object");
}

void parseMessages(const std::string& text) {
    const ViewerMessage message = parseViewerMessage(text, {});
    if (const auto* const look = std::get_if<Look>(&message)) {
        require(look->quality >= 10 && look->quality <= 95 && look->scale >= 1 && look->scale <= 8,
                "a look is within its limits");
    } else if (const auto* const ready = std::get_if<Ready>(&message)) {
        require(ready->credits == 1 || ready->credits == 2, "credits are one or two");
    }
}

constexpr std::array kParsers{parseTargets, checkAccess, parseBodies, parseMessages};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Input input(data, size);
    const auto parse = kParsers[input.byte() % kParsers.size()];
    const std::string text = input.text();
    attempt([&parse, &text] { parse(text); });
    return 0;
}
