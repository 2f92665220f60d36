// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <memory>
#include <string>

#include <boost/asio/steady_timer.hpp>

#include "Serve/Network/ByteGate.h"
#include "Serve/Network/Peer.h"

namespace QuillTool::Serve {

/// A connection that gets bytes as they come into being, until it leaves.
class Sender : public Peer {
public:
    using Peer::Peer;

    /// Joins the connections that the server knows, and sends; called once, on the strand.
    void begin() {
        m_Hosting.census.add(shared_from_this());
        start();
    }

private:
    virtual void start() = 0;
};

/// Sends bytes that a worker makes.
class DownloadSender : public Sender {
public:
    DownloadSender(boost::beast::tcp_stream&& stream, Seats::Seat seat, Hosting& hosting,
                   std::shared_ptr<ByteGate> gate, Fields fields, bool isChunked);
    ~DownloadSender() override { m_Gate->close(); }

private:
    void start() override;
    void onLeft() override { m_Gate->close(); }
    void sendNext();

    const std::shared_ptr<ByteGate> m_Gate;
    Fields m_Fields;
    const bool m_IsChunked;
    bool m_IsSending = true;
};

/// Sends events. After a while without any, sends a comment, so that proxies and clients keep the connection.
class EventSender : public Sender {
public:
    EventSender(boost::beast::tcp_stream&& stream, Seats::Seat seat, Hosting& hosting,
                std::shared_ptr<Subscription> subscription);

private:
    void start() override;
    void onLeft() override;
    void sendNext();
    void awaitSilence();

    std::shared_ptr<Subscription> m_Subscription;
    boost::asio::steady_timer m_Silence;
    bool m_IsSending = true;
};

/// Sends pictures, always the newest one, as parts of a stream.
class MotionSender : public Sender {
public:
    MotionSender(boost::beast::tcp_stream&& stream, Seats::Seat seat, Seats::Seat viewerSeat, Hosting& hosting,
                 LivePictures&& pictures);

private:
    void start() override;
    void onLeft() override { m_Viewer.reset(); }
    void demandPicture();
    void sendPicture();

    const Seats::Seat m_ViewerSeat;
    const LivePictures m_Pictures;
    std::unique_ptr<LiveFeed::Viewer> m_Viewer;
    bool m_IsSending = true;
};

} // namespace QuillTool::Serve
