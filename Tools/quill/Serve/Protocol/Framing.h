// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <variant>

#include "Terminal/Output.h"

namespace QuillTool::Serve {

/// Returns "QLP1", the length of the description as 32 bits in little-endian order, and the description as JSON; the
/// bytes of a JPEG picture follow it in a message.
std::string pictureHeader(const Json& description);

/// Returns an event of a text/event-stream.
/// @param event  a word
std::string eventText(std::uint64_t id, std::string_view event, const Json& data);

/// A multipart stream of pictures: the boundary, then for each picture its header, its bytes and the boundary, which
/// shows viewers at once that the picture is whole.
constexpr std::string_view kPictureBoundary = "quill-picture";
std::string pictureBoundary();
std::string partHeader(std::size_t size);

/// Returns the line with the size of a chunk; the chunk and kChunkEnd follow it.
std::string chunkHeader(std::size_t size);
constexpr std::string_view kChunkEnd = "\r\n";
constexpr std::string_view kLastChunk = "0\r\n\r\n";

/// What a viewer of live pictures says.
struct Ready {
    unsigned credits = 1; ///< pictures that it can take, 1 or 2
};
struct Look {
    unsigned scale = 1;    ///< 1, 2, 4 or 8: the size is divided by it
    unsigned quality = 80; ///< 10 to 95
};
struct Hold {};
struct Release {};
using ViewerMessage = std::variant<Ready, Look, Hold, Release>;

/// Parses a message of a viewer.
/// @param present  what a message that gives one of scale and quality leaves as it is
/// @throws Refusal  400
ViewerMessage parseViewerMessage(std::string_view text, const Look& present);

/// @throws Refusal  400: a scale other than 1, 2, 4 or 8, or a quality outside 10 to 95
void checkLook(const Look& look);

} // namespace QuillTool::Serve
