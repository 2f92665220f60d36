// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <memory>
#include <string>

#include "Serve/Interface/Routes.h"

namespace QuillTool::Serve {

/// A port on which the system takes connections, for a server to answer.
class Listening {
public:
    /// @param address  numeric
    /// @param port     0: the system chooses one
    /// @throws ToolError  the address is none, or cannot be listened on
    Listening(const std::string& address, unsigned port);
    Listening(const Listening&) = delete;
    Listening& operator=(const Listening&) = delete;
    ~Listening();

    unsigned port() const;
    /// The address that a browser of this machine opens, as a URL has it: that of loopback if connections are taken on
    /// all addresses.
    std::string urlHost() const;
    /// The numeric address in its shortest form.
    std::string address() const;

private:
    friend class Server;
    struct Sockets;

    std::unique_ptr<Sockets> m_Sockets;
};

/// Answers requests from its construction to its destruction, on threads of its own.
class Server {
public:
    /// Everything that is given outlives the server.
    Server(Listening& listening, const Surroundings& surroundings);
    Server(const Server&) = delete;
    Server& operator=(const Server&) = delete;
    /// Ends all connections, and waits for the calls of cameras that run.
    ~Server();

private:
    class Work;

    std::unique_ptr<Work> m_Work;
};

} // namespace QuillTool::Serve
