// SPDX-License-Identifier: Apache-2.0

#include "Serve/Protocol/Documents.h"

#include <algorithm>
#include <cctype>

namespace QuillTool::Serve {

namespace {

constexpr int kMaximumDepth = 32;

std::string_view withoutBlanks(std::string_view text) {
    constexpr std::string_view kBlank = " \t";
    const std::size_t begin = text.find_first_not_of(kBlank);
    return begin == std::string_view::npos ? "" : text.substr(begin, text.find_last_not_of(kBlank) - begin + 1);
}

bool equalWords(std::string_view one, std::string_view other) {
    return std::equal(one.begin(), one.end(), other.begin(), other.end(), [](char left, char right) {
        return std::tolower(static_cast<unsigned char>(left)) == std::tolower(static_cast<unsigned char>(right));
    });
}

/// Whether one of the pieces between commas fulfils a condition.
template <typename Condition>
bool anyListed(std::string_view list, Condition&& condition) {
    while (!list.empty()) {
        const std::string_view piece = list.substr(0, list.find(','));
        if (condition(withoutBlanks(piece))) {
            return true;
        }
        list.remove_prefix(std::min(list.size(), piece.size() + 1));
    }
    return false;
}

Refusal badBody(const std::string& reason) {
    return {400, "BadBody", "The body of the request " + reason + ".", "Send an object of JSON."};
}

} // namespace

std::string toText(const Json& document) {
    return document.dump(-1, ' ', false, Json::error_handler_t::replace);
}

std::string problemDocument(const Refusal& refusal) {
    return toText(Json{
        {"status", refusal.status}, {"error", refusal.error}, {"message", refusal.what()}, {"advice", refusal.advice}});
}

void demandJson(std::string_view body, std::string_view contentType) {
    const bool isJson = equalWords(withoutBlanks(contentType.substr(0, contentType.find(';'))), "application/json");
    if (!isJson && !(body.empty() && contentType.empty())) {
        throw Refusal(415, "NotJson", "The body of the request is not JSON.", "Send 'Content-Type: application/json'.");
    }
}

Json parseBody(std::string_view body, std::string_view contentType) {
    demandJson(body, contentType);
    if (body.empty()) {
        return Json::object();
    }
    bool isTooDeep = false;
    Json document = Json::parse(
        body.begin(), body.end(),
        [&isTooDeep](int depth, Json::parse_event_t /*event*/, Json& /*parsed*/) {
            isTooDeep = isTooDeep || depth > kMaximumDepth;
            return depth <= kMaximumDepth;
        },
        false);
    if (isTooDeep) {
        throw badBody("is nested too deep");
    }
    if (!document.is_object()) {
        throw badBody("is no object of JSON");
    }
    return document;
}

bool holdsWord(std::string_view list, std::string_view word) {
    return anyListed(list, [word](std::string_view piece) { return equalWords(piece, word); });
}

bool matchesTag(std::string_view field, std::string_view tag) {
    return anyListed(field, [tag](std::string_view piece) {
        return piece == "*" || (piece.substr(0, 2) == "W/" ? piece.substr(2) : piece) == tag;
    });
}

} // namespace QuillTool::Serve
