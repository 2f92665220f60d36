// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <deque>
#include <memory>
#include <string>

#include <boost/beast/core/flat_buffer.hpp>
#include <boost/beast/core/tcp_stream.hpp>
#include <boost/beast/http/message.hpp>
#include <boost/beast/http/string_body.hpp>
#include <boost/beast/websocket/stream.hpp>

#include "Serve/Network/Census.h"

namespace QuillTool::Serve {

/// A viewer of live pictures at the other end of a WebSocket. It gets the newest picture, and one only when it has said
/// that it can take one. Everything but end() happens on the strand of its stream.
class ViewerConnection : public Endable, public std::enable_shared_from_this<ViewerConnection> {
public:
    using Request = boost::beast::http::request<boost::beast::http::string_body>;

    ViewerConnection(boost::beast::tcp_stream&& stream, Seats::Seat seat, Seats::Seat viewerSeat,
                     std::shared_ptr<LiveFeed> feed);

    /// Accepts the upgrade; called once, on the strand.
    void start(Request request);
    void end() override;

private:
    using ErrorCode = boost::system::error_code;
    using CloseReason = boost::beast::websocket::close_reason;

    /// A message that waits to be sent.
    struct Message {
        std::string text; ///< or what precedes the picture
        std::shared_ptr<const LivePicture> picture;
    };

    void join();
    void read();
    void onMessage();
    void handle(const Ready& ready);
    void handle(const Look& look);
    void handle(const Hold& hold);
    void handle(const Release& release);
    void sendPicture();
    void sendText(const Json& message);
    void sendNext();
    void close(const CloseReason& reason);
    void leave();
    template <typename Action>
    auto onStrand(Action action);

    boost::beast::websocket::stream<boost::beast::tcp_stream, false> m_Socket; // pictures are compressed already
    const boost::beast::tcp_stream::executor_type m_Executor;
    const Seats::Seat m_Seat;
    const Seats::Seat m_ViewerSeat;
    const std::shared_ptr<LiveFeed> m_Feed;
    Request m_Request;
    boost::beast::flat_buffer m_Buffer;
    std::deque<Message> m_Messages; // the first one is being sent
    std::unique_ptr<LiveFeed::Viewer> m_Viewer;
    Look m_Look;
    unsigned m_Credits = 0;
    bool m_IsAsking = false; // a picture is demanded
    bool m_IsClosing = false;
};

} // namespace QuillTool::Serve
