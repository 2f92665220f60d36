// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

#include "Serve/Interface/EventHub.h"
#include "Serve/Pictures/LiveFeed.h"
#include "Serve/Protocol/Framing.h"

namespace QuillTool::Serve {

using Fields = std::vector<std::pair<std::string, std::string>>;

/// A complete answer.
struct Reply {
    unsigned status = 200;
    Fields fields{};                                   ///< those of every answer are left out
    std::shared_ptr<const std::string> body = nullptr; ///< null: none
};

/// Takes the next bytes of a download; waits until the client has taken most of those before.
/// @return false: the client has left, nothing more is taken
using WriteBytes = std::function<bool(std::string_view bytes)>;

/// Bytes that are sent as they come into being.
struct Download {
    Fields fields;
    std::function<void(const WriteBytes& write)>
        produce; ///< blocks; a Refusal before the first bytes becomes the answer
};

/// Events until the client leaves.
struct EventStream {
    std::shared_ptr<Subscription> subscription;
};

/// Live pictures until the client leaves.
struct LivePictures {
    std::shared_ptr<LiveFeed> feed;
    bool isWebSocket; ///< otherwise a multipart stream with this look
    Look look;
};

using Answer = std::variant<Reply, Download, EventStream, LivePictures>;

} // namespace QuillTool::Serve
