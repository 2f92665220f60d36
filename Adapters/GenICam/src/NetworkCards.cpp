// SPDX-License-Identifier: Apache-2.0

#include "NetworkCards.h"

#include <arpa/inet.h>
#include <ifaddrs.h>
#include <linux/ethtool.h>
#include <linux/sockios.h>
#include <net/if.h>
#include <netinet/in.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <fstream>
#include <iterator>
#include <map>
#include <new>
#include <sstream>
#include <system_error>
#include <utility>

#include "Cameras/GenICam/Ipv4.h"
#include "UdpSocket.h"

namespace GenICamAdapter {

using namespace CameraInterface::GenICam;

namespace {

/// Asks the kernel about cards. The file system of devices would show those of another network namespace.
class CardQuestions {
public:
    CardQuestions() : m_Socket(socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0)) {}
    CardQuestions(const CardQuestions&) = delete;
    CardQuestions& operator=(const CardQuestions&) = delete;
    ~CardQuestions() { close(m_Socket); }

    std::uint32_t mtu(const std::string& card) const {
        ifreq request = requestAbout(card);
        return ioctl(m_Socket, SIOCGIFMTU, &request) == 0 ? static_cast<std::uint32_t>(request.ifr_mtu) : 0;
    }

    std::optional<std::uint32_t> speedMbps(const std::string& card) const {
        // The kernel first tells, as a negative number, how many words each of its three sets of modes needs.
        constexpr std::size_t kMostWords = 3 * 127;
        alignas(ethtool_link_settings)
            std::array<char, sizeof(ethtool_link_settings) + kMostWords * sizeof(std::uint32_t)>
                answer{};
        auto* const settings = new (answer.data()) ethtool_link_settings{};
        ifreq request = requestAbout(card);
        request.ifr_data = answer.data();
        settings->cmd = ETHTOOL_GLINKSETTINGS;
        if (ioctl(m_Socket, SIOCETHTOOL, &request) != 0 || settings->link_mode_masks_nwords >= 0) {
            return std::nullopt;
        }
        settings->cmd = ETHTOOL_GLINKSETTINGS;
        settings->link_mode_masks_nwords = static_cast<__s8>(-settings->link_mode_masks_nwords);
        const bool isTold = ioctl(m_Socket, SIOCETHTOOL, &request) == 0 && settings->speed != 0 &&
                            settings->speed != static_cast<std::uint32_t>(SPEED_UNKNOWN);
        return isTold ? std::optional<std::uint32_t>(settings->speed) : std::nullopt;
    }

private:
    static ifreq requestAbout(const std::string& card) {
        ifreq request{};
        card.copy(request.ifr_name, sizeof request.ifr_name - 1);
        return request;
    }

    int m_Socket;
};

int filterOf(const std::string& card) {
    int value = 0;
    std::ifstream("/proc/sys/net/ipv4/conf/" + card + "/rp_filter") >> value;
    return value;
}

std::uint32_t ipv4Of(const sockaddr* address) {
    sockaddr_in ipv4{};
    std::memcpy(&ipv4, address, sizeof ipv4);
    return ntohl(ipv4.sin_addr.s_addr);
}

} // namespace

std::string CardAddress::text() const {
    return Ipv4::format(address) + '/' + std::to_string(Ipv4::prefixLength(mask));
}

const CardAddress* NetworkCard::addressFor(std::uint32_t other) const {
    const auto place = std::find_if(addresses.begin(), addresses.end(),
                                    [other](const CardAddress& own) { return own.isInNetwork(other); });
    return place == addresses.end() ? nullptr : &*place;
}

std::vector<NetworkCard> networkCards() {
    ifaddrs* list = nullptr;
    if (getifaddrs(&list) != 0) {
        throw std::system_error(errno, std::generic_category(), "getifaddrs");
    }
    std::map<std::string, NetworkCard> cards;
    for (const ifaddrs* entry = list; entry != nullptr; entry = entry->ifa_next) {
        // Further addresses of a card may have names of their own, such as "eth1:1".
        const std::string name(entry->ifa_name, std::strcspn(entry->ifa_name, ":"));
        NetworkCard& card = cards[name];
        card.name = name;
        card.isUp |= (entry->ifa_flags & IFF_UP) != 0;
        card.hasLink |= (entry->ifa_flags & IFF_RUNNING) != 0;
        if (entry->ifa_addr != nullptr && entry->ifa_addr->sa_family == AF_INET && entry->ifa_netmask != nullptr) {
            card.addresses.push_back({ipv4Of(entry->ifa_addr), ipv4Of(entry->ifa_netmask)});
        }
    }
    freeifaddrs(list);
    std::vector<NetworkCard> result;
    result.reserve(cards.size());
    for (auto& entry : cards) {
        result.push_back(std::move(entry.second));
    }
    return result;
}

void addLimits(NetworkCard& card) {
    const CardQuestions questions;
    card.mtu = questions.mtu(card.name);
    card.speedMbps = card.hasLink ? questions.speedMbps(card.name) : std::nullopt;
    card.reversePathFilter = std::max(filterOf("all"), filterOf(card.name));
}

Route routeTo(std::uint32_t address, const std::vector<NetworkCard>& cards) {
    Route route;
    try {
        UdpSocket socket;
        socket.connect(Ipv4::format(address), 9); // sends nothing
        route.from = Ipv4::parse(socket.localAddress()).value_or(0);
    } catch (const std::system_error&) {
        return route;
    }
    for (const NetworkCard& card : cards) {
        for (const CardAddress& own : card.addresses) {
            if (own.address == route.from || (route.card.empty() && own.isInNetwork(route.from))) {
                route.card = card.name;
            }
        }
    }
    return route;
}

bool isRoutedOnCard(const std::string& card, std::uint32_t address) {
    std::ifstream table("/proc/net/route", std::ios::binary);
    return hasDirectRoute({std::istreambuf_iterator<char>(table), std::istreambuf_iterator<char>()}, card, address);
}

bool hasDirectRoute(const std::string& table, const std::string& card, std::uint32_t address) {
    std::istringstream lines(table);
    std::string line;
    std::getline(lines, line); // the titles
    while (std::getline(lines, line)) {
        std::istringstream words(line);
        std::string name;
        std::string skipped;
        std::uint32_t destination = 0; // as it lies in memory
        std::uint32_t gateway = 0;
        std::uint32_t mask = 0;
        words >> name >> std::hex >> destination >> gateway >> skipped >> skipped >> skipped >> skipped >> mask;
        if (words && name == card && gateway == 0 && ((ntohl(destination) ^ address) & ntohl(mask)) == 0) {
            return true;
        }
    }
    return false;
}

} // namespace GenICamAdapter
