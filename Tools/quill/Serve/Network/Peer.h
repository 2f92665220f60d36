// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <utility>

#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/post.hpp>
#include <boost/beast/core/tcp_stream.hpp>

#include "Serve/Interface/Answer.h"
#include "Serve/Network/Hosting.h"

namespace QuillTool::Serve {

/// A connection that bytes are sent to. Everything but end() happens on the strand of its stream.
class Peer : public Endable, public std::enable_shared_from_this<Peer> {
public:
    Peer(boost::beast::tcp_stream&& stream, Seats::Seat seat, Hosting& hosting);

    void end() override;

protected:
    /// Called on the strand once the peer has left or end() was called; nothing is sent after.
    virtual void onLeft() {}

    /// Sends texts, then calls @p next. If that fails, the peer has left, and next() is not called. One at a time.
    void send(std::string head, std::shared_ptr<const std::string> body, std::function<void()> next);
    /// Reads and ignores what the peer says, to learn that it leaves. For those that only listen.
    void watch();
    /// Closes the connection, at once.
    void leave();
    /// Says that nothing more comes and closes once the peer has closed or two seconds have passed, so that it gets
    /// what was sent even if it sent more than was read.
    void leavePolitely();
    /// Gives the stream away; this connection has left then.
    boost::beast::tcp_stream&& handOver() {
        m_HasLeft = true;
        return std::move(m_Stream);
    }
    bool hasLeft() const { return m_HasLeft; }
    /// Runs an action later, on the strand, if the connection is still there then.
    template <typename Class>
    static std::function<void()> later(const std::shared_ptr<Class>& connection, void (Class::*action)()) {
        return [weak = std::weak_ptr<Class>(connection), executor = connection->m_Executor, action] {
            boost::asio::post(executor, [weak, action] {
                if (const auto present = weak.lock()) {
                    (present.get()->*action)();
                }
            });
        };
    }

    boost::beast::tcp_stream m_Stream;
    const boost::beast::tcp_stream::executor_type m_Executor; // the strand; any thread may use it
    Seats::Seat m_Seat;
    Hosting& m_Hosting;

private:
    void sendPiece();
    void discard();

    std::string m_Head;
    std::shared_ptr<const std::string> m_Body;
    std::size_t m_Sent = 0; // bytes of the body
    std::function<void()> m_Next;
    std::string m_Ignored;
    std::size_t m_IgnoredBytes = 0;
    bool m_HasLeft = false;
};

/// Returns the head of an answer: the status line, the fields of every answer, and these.
std::string answerHead(unsigned status, const Fields& fields);

} // namespace QuillTool::Serve
