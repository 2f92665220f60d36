// SPDX-License-Identifier: Apache-2.0

#include "Serve/Protocol/Access.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdint>
#include <random>
#include <utility>

#include "Serve/Cameras/Refusal.h"

namespace QuillTool::Serve {

namespace {

constexpr std::string_view kCookieName = "quill-token";
constexpr std::string_view kLetters = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-_";

std::string inSmallLetters(std::string_view text) {
    std::string small(text);
    std::transform(small.begin(), small.end(), small.begin(), [](char letter) {
        return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
    });
    return small;
}

struct HostAndPort {
    std::string host; ///< in small letters, without brackets
    std::optional<unsigned> port;
};

std::optional<HostAndPort> parseHost(std::string_view text) {
    HostAndPort parsed;
    const bool isBracketed = !text.empty() && text.front() == '[';
    const std::size_t end = isBracketed ? text.find(']') : text.find(':');
    if (isBracketed && end == std::string_view::npos) {
        return std::nullopt;
    }
    parsed.host = inSmallLetters(isBracketed ? text.substr(1, end - 1) : text.substr(0, end));
    const std::string_view rest = end == std::string_view::npos ? "" : text.substr(end + (isBracketed ? 1 : 0));
    if (!rest.empty()) {
        unsigned port = 0;
        const auto result = std::from_chars(rest.data() + 1, rest.data() + rest.size(), port);
        if (rest.front() != ':' || rest.size() == 1 || result.ec != std::errc() ||
            result.ptr != rest.data() + rest.size() || port > 65535) {
            return std::nullopt;
        }
        parsed.port = port;
    }
    return parsed.host.empty() ? std::nullopt : std::optional(parsed);
}

/// The values of a cookie in a "Cookie" field; more than one where another path of the host has set one, too.
std::vector<std::string_view> cookieValues(std::string_view field, std::string_view name) {
    std::vector<std::string_view> values;
    while (!field.empty()) {
        std::string_view pair = field.substr(0, field.find(';'));
        field.remove_prefix(std::min(field.size(), pair.size() + 1));
        pair.remove_prefix(std::min(pair.size(), pair.find_first_not_of(" \t")));
        const std::size_t equals = pair.find('=');
        if (equals != std::string_view::npos && pair.substr(0, equals) == name) {
            values.push_back(pair.substr(equals + 1, pair.find_last_not_of(" \t") - equals));
        }
    }
    return values;
}

/// The token of "Bearer TOKEN"; the scheme's case does not matter.
std::optional<std::string_view> bearerToken(std::string_view field) {
    constexpr std::string_view kScheme = "bearer ";
    if (inSmallLetters(field.substr(0, kScheme.size())) != kScheme) {
        return std::nullopt;
    }
    field.remove_prefix(std::min(field.find_first_not_of(' ', kScheme.size()), field.size()));
    return field;
}

} // namespace

AccessRules::AccessRules(unsigned port, std::string listenAddress, std::vector<std::string> allowedHosts,
                         std::string token)
    : m_Port(port), m_ListenAddress(std::move(listenAddress)), m_AllowedHosts(std::move(allowedHosts)),
      m_Token(std::move(token)) {}

void AccessRules::checkPlace(const Credentials& credentials) const {
    if (!credentials.host) {
        throw Refusal(400, "BadRequest", "The request has no field 'Host'.", "Send one.");
    }
    if (!isKnownHost(*credentials.host, credentials.localAddress)) {
        throw Refusal(421, "UnknownHost", "This server does not answer for the host of the request.",
                      "Use the address that the server printed, or start it with --allow-host NAME.");
    }
    // A page behind a proxy for TLS has "https" and the default port left out, as in its field "Host".
    const std::string_view origin = credentials.origin ? std::string_view(*credentials.origin) : "";
    const std::size_t scheme = origin.find("://");
    const bool isOther =
        credentials.origin && (scheme == std::string_view::npos ||
                               inSmallLetters(origin.substr(scheme + 3)) != inSmallLetters(*credentials.host));
    const bool isForeign = credentials.fetchSite && *credentials.fetchSite != "same-origin" &&
                           *credentials.fetchSite != "none" && !credentials.origin;
    if (isOther || isForeign) {
        throw Refusal(403, "ForeignOrigin", "The request comes from a page of another origin.",
                      "Only pages of this server may use it from a browser.");
    }
}

bool AccessRules::isKnownHost(const std::string& host, const std::string& localAddress) const {
    const std::optional<HostAndPort> asked = parseHost(host);
    if (!asked) {
        return false;
    }
    constexpr unsigned kDefaultPort = 80;
    if (asked->port.value_or(kDefaultPort) == m_Port &&
        (asked->host == "localhost" || isLoopback(asked->host) || asked->host == inSmallLetters(m_ListenAddress) ||
         asked->host == inSmallLetters(localAddress))) {
        return true;
    }
    return std::any_of(m_AllowedHosts.begin(), m_AllowedHosts.end(), [&asked](const std::string& allowed) {
        const std::optional<HostAndPort> known = parseHost(allowed);
        return known && known->host == asked->host && (!known->port || known->port == asked->port);
    });
}

void AccessRules::checkToken(const Credentials& credentials) const {
    if (m_Token.empty()) {
        return;
    }
    if (credentials.authorization) {
        const auto token = bearerToken(*credentials.authorization);
        if (token && isToken(*token)) {
            return;
        }
    }
    if (credentials.cookie) {
        const auto values = cookieValues(*credentials.cookie, kCookieName);
        if (std::any_of(values.begin(), values.end(), [this](std::string_view value) { return isToken(value); })) {
            return;
        }
    }
    throw Refusal(401, "TokenNeeded", "The request has no valid token.",
                  "Open the address that the server printed, or send 'Authorization: Bearer TOKEN'.");
}

bool AccessRules::isToken(std::string_view text) const {
    // The time depends on the length of what was sent alone.
    unsigned difference = text.size() == m_Token.size() ? 0 : 1;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char expected = m_Token.empty() ? '\0' : m_Token[i % m_Token.size()];
        difference |= static_cast<unsigned>(static_cast<unsigned char>(text[i] ^ expected));
    }
    volatile unsigned kept = difference; // keeps the loop from being left early
    return kept == 0 && !m_Token.empty();
}

std::string AccessRules::cookie() const {
    return std::string(kCookieName) + '=' + m_Token + "; HttpOnly; SameSite=Strict; Path=/";
}

bool isLoopback(std::string_view address) {
    return address == "::1" ||
           (address.substr(0, 4) == "127." && address.find_first_not_of("0123456789.") == std::string_view::npos);
}

std::string makeToken() {
    constexpr int kCharacters = 22;
    std::random_device source; // the system's generator
    std::string token;
    for (int i = 0; i < kCharacters; ++i) {
        token += kLetters[source() % kLetters.size()];
    }
    return token;
}

bool isUsableToken(std::string_view text) {
    return text.size() >= 16 && text.size() <= 256 && std::all_of(text.begin(), text.end(), [](char letter) {
               return kLetters.find(letter) != std::string_view::npos ||
                      std::string_view(".~+/=").find(letter) != std::string_view::npos;
           });
}

} // namespace QuillTool::Serve
