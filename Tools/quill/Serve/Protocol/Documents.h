// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <string_view>

#include "Serve/Cameras/Refusal.h"
#include "Terminal/Output.h"

namespace QuillTool::Serve {

/// Returns JSON as it is sent. Bytes that are not UTF-8 become replacement characters.
std::string toText(const Json& document);

/// Returns {"status","error","message","advice"}, the body of a refusal.
std::string problemDocument(const Refusal& refusal);

/// Parses the body of a request, an object of JSON; an empty body is an empty object.
/// @param contentType  empty where the request has none
/// @throws Refusal  415: not "application/json"; 400: no such object, or nested deeper than 32
Json parseBody(std::string_view body, std::string_view contentType);

/// Refuses a body that is not said to be JSON.
/// @throws Refusal  415
void demandJson(std::string_view body, std::string_view contentType);

/// Whether a field's list of words, such as "keep-alive, Upgrade", holds this one; case does not matter.
bool holdsWord(std::string_view list, std::string_view word);

/// Whether one of the entity tags of a field "If-None-Match" is @p tag.
bool matchesTag(std::string_view field, std::string_view tag);

} // namespace QuillTool::Serve
