// SPDX-License-Identifier: Apache-2.0

#include "Serve/Network/Server.h"

#include <array>
#include <optional>
#include <thread>
#include <utility>

#include <boost/asio/executor_work_guard.hpp>
#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/steady_timer.hpp>
#include <boost/asio/strand.hpp>

#include "Serve/Network/Connection.h"
#include "Terminal/ToolError.h"

namespace QuillTool::Serve {

namespace asio = boost::asio;
using asio::ip::tcp;
using ErrorCode = boost::system::error_code;

struct Listening::Sockets {
    asio::io_context context;
    tcp::acceptor acceptor{context};
    tcp::endpoint endpoint;
};

Listening::Listening(const std::string& address, unsigned port) : m_Sockets(std::make_unique<Sockets>()) {
    ErrorCode error;
    const auto numeric = asio::ip::make_address(address, error);
    if (error) {
        throw ToolError(ExitCode::Usage, "serve: --listen: '" + address + "' is not a numeric address");
    }
    tcp::acceptor& acceptor = m_Sockets->acceptor;
    const tcp::endpoint endpoint(numeric, static_cast<unsigned short>(port));
    acceptor.open(endpoint.protocol(), error);
    if (!error) {
        acceptor.set_option(tcp::acceptor::reuse_address(true), error);
        acceptor.bind(endpoint, error);
    }
    if (!error) {
        acceptor.listen(asio::socket_base::max_listen_connections, error);
    }
    if (error) {
        throw ToolError(ExitCode::Failed,
                        "serve: cannot listen on " + address + ", port " + std::to_string(port) + ": " +
                            error.message() +
                            (error == asio::error::address_in_use ? "; --port 0 takes a free one" : ""));
    }
    m_Sockets->endpoint = acceptor.local_endpoint();
}

Listening::~Listening() = default;

unsigned Listening::port() const {
    return m_Sockets->endpoint.port();
}

std::string Listening::address() const {
    return m_Sockets->endpoint.address().to_string();
}

std::string Listening::urlHost() const {
    const asio::ip::address bound = m_Sockets->endpoint.address();
    const std::string loopback = bound.is_v6() ? "::1" : "127.0.0.1";
    const std::string host = bound.is_unspecified() ? loopback : address();
    return bound.is_v6() ? '[' + host + ']' : host;
}

/// The connections and the threads of a server.
class Server::Work {
public:
    Work(Listening::Sockets& sockets, const Surroundings& surroundings)
        : m_Sockets(sockets), m_AcceptStrand(asio::make_strand(sockets.context)), m_Pause(m_AcceptStrand),
          m_Hosting(surroundings), m_Guard(sockets.context.get_executor()) {
        asio::post(m_AcceptStrand, [this] { accept(); });
        for (std::thread& thread : m_Threads) {
            thread = std::thread([this] { run(); });
        }
    }
    Work(const Work&) = delete;
    Work& operator=(const Work&) = delete;

    ~Work() {
        try {
            asio::post(m_AcceptStrand, [this] { endAccepting(); });
        } catch (const std::exception&) {
            m_Sockets.context.stop(); // no memory is left to end in order
        }
        m_Hosting.census.endAll();
        m_Hosting.calls.stop();
        m_Hosting.downloads.stop();
        m_Guard.reset();
        for (std::thread& thread : m_Threads) {
            thread.join(); // once the last connection is gone
        }
    }

private:
    void run() {
        for (;;) {
            try {
                m_Sockets.context.run();
                return;
            } catch (const std::exception&) {
                // A handler ran out of memory: its connection is gone, the others stay.
                continue;
            }
        }
    }

    void endAccepting() {
        m_IsEnding = true;
        m_Pause.cancel();
        ErrorCode ignored;
        m_Sockets.acceptor.close(ignored);
    }

    void accept() {
        if (m_IsEnding) {
            return;
        }
        m_Sockets.acceptor.async_accept(
            asio::make_strand(m_Sockets.context),
            asio::bind_executor(m_AcceptStrand, [this](ErrorCode error, tcp::socket socket) {
                if (m_IsEnding) {
                    return;
                }
                if (error) { // no descriptors are left, or the client left before it was taken
                    m_Pause.expires_after(std::chrono::milliseconds(100));
                    m_Pause.async_wait([this](ErrorCode) { accept(); });
                    return;
                }
                welcome(std::move(socket));
                accept();
            }));
    }

    void welcome(tcp::socket socket) {
        ErrorCode ignored;
        socket.set_option(tcp::no_delay(true), ignored);
        auto seat = m_Hosting.connections.take();
        const bool isSurplus = !seat;
        if (isSurplus) {
            seat = m_Hosting.surplus.take();
        }
        if (seat) { // else the socket closes
            const auto connection = std::make_shared<Connection>(boost::beast::tcp_stream(std::move(socket)),
                                                                 std::move(*seat), m_Hosting, isSurplus);
            m_Hosting.census.add(connection);
            connection->start();
        }
    }

    Listening::Sockets& m_Sockets;
    asio::strand<asio::io_context::executor_type> m_AcceptStrand;
    asio::steady_timer m_Pause;
    bool m_IsEnding = false; // on the strand
    Hosting m_Hosting;
    asio::executor_work_guard<asio::io_context::executor_type> m_Guard;
    std::array<std::thread, 2> m_Threads;
};

Server::Server(Listening& listening, const Surroundings& surroundings)
    : m_Work(std::make_unique<Work>(*listening.m_Sockets, surroundings)) {}

Server::~Server() = default;

} // namespace QuillTool::Serve
