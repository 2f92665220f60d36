// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace QuillTool::Serve {

/// What a request says about who sent it and where to. A field that is not there is absent; fields that are there more
/// than once are refused before.
struct Credentials {
    std::optional<std::string> host;
    std::optional<std::string> origin;
    std::optional<std::string> fetchSite; ///< Sec-Fetch-Site: what a browser says about the page that asks
    std::optional<std::string> authorization;
    std::optional<std::string> cookie;
    std::string localAddress; ///< of the socket: "127.0.0.1", "::1"
};

/// Decides which requests are answered. Immutable, therefore thread-safe.
class AccessRules {
public:
    /// @param port          where the server listens
    /// @param listenAddress  numeric
    /// @param allowedHosts  further names, "name" for any port or "name:port"
    /// @param token         empty: none is asked for
    AccessRules(unsigned port, std::string listenAddress, std::vector<std::string> allowedHosts, std::string token);

    /// Refuses requests for other hosts, such as names that another page's maker resolves to this machine, and requests
    /// of other pages.
    /// @throws Refusal  400 without a host, 421 for another one, 403 for another origin
    void checkPlace(const Credentials& credentials) const;
    /// @throws Refusal  401
    void checkToken(const Credentials& credentials) const;
    /// Compares in a time that does not depend on where the texts differ.
    bool isToken(std::string_view text) const;
    /// Returns the value of a "Set-Cookie" that carries the token.
    std::string cookie() const;

private:
    bool isKnownHost(const std::string& host, const std::string& localAddress) const;

    unsigned m_Port;
    std::string m_ListenAddress;
    std::vector<std::string> m_AllowedHosts;
    std::string m_Token;
};

/// Whether a numeric address is one of this machine's loopback.
bool isLoopback(std::string_view address);

/// Returns 128 random bits as 22 characters of base64url.
std::string makeToken();

/// Whether a text may be a token: 16 to 256 letters, digits and "-._~+/=".
bool isUsableToken(std::string_view text);

} // namespace QuillTool::Serve
