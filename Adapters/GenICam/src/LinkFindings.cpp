// SPDX-License-Identifier: Apache-2.0

#include "LinkFindings.h"

#include <algorithm>
#include <cmath>
#include <initializer_list>
#include <iterator>

namespace GenICamAdapter {

using namespace CameraInterface::GenICam;

namespace {

constexpr std::size_t kEnoughBuffer = std::size_t{8} << 20;
constexpr std::uint32_t kGigabitMbps = 1000;
constexpr std::uint32_t kJumboSize = 9000;
constexpr double kSlowUs = 10000;
constexpr int kStrictFilter = 1;

LinkFinding good(const char* subject, const std::string& sentence) {
    return {subject, LinkVerdict::Good, sentence, ""};
}

LinkFinding hint(const char* subject, const std::string& sentence, const std::string& remedy = "") {
    return {subject, LinkVerdict::Hint, sentence, remedy};
}

LinkFinding fault(const char* subject, const std::string& sentence, const std::string& remedy) {
    return {subject, LinkVerdict::Fault, sentence, remedy};
}

std::string milliseconds(double microseconds) {
    const long hundredths = std::lround(microseconds / 10);
    const std::string fraction = std::to_string(100 + hundredths % 100).substr(1);
    return std::to_string(hundredths / 100) + '.' + fraction + " ms";
}

std::string setMtu(const std::string& card, std::uint32_t mtu) {
    return "sudo ip link set " + card + " mtu " + std::to_string(mtu);
}

LinkFinding judgeCard(const LinkFigures& figures) {
    constexpr const char* kSubject = "card";
    if (!figures.reach.card) {
        return fault(kSubject, "No network card leads to " + figures.address + ".", "ip route get " + figures.address);
    }
    const NetworkCard& card = *figures.reach.card;
    if (!card.isUp) {
        return fault(kSubject, card.name + " is switched off.", "sudo ip link set " + card.name + " up");
    }
    if (!card.hasLink) {
        return fault(kSubject, card.name + " has no link: no cable, or nothing at its other end.",
                     "ip -statistics link show " + card.name);
    }
    return good(kSubject, card.name + " is up.");
}

LinkFinding judgeSpeed(const LinkFigures& figures) {
    constexpr const char* kSubject = "speed";
    const NetworkCard& card = *figures.reach.card;
    if (!card.speedMbps && !figures.cameraSpeedMbps) {
        return hint(kSubject, "Neither " + card.name + " nor the camera says how fast its link is.");
    }
    const auto judge = [&](const std::string& whose, std::uint32_t speed) {
        const std::string sentence = whose + " runs at " + std::to_string(speed) + " Mbit/s";
        return speed >= kGigabitMbps
                   ? good(kSubject, sentence + ".")
                   : fault(kSubject, sentence + ": images need a gigabit, four pairs and a cable of Cat 5e.",
                           "sudo ethtool -r " + card.name);
    };
    if (figures.cameraSpeedMbps && figures.cameraSpeedMbps < card.speedMbps.value_or(kGigabitMbps)) {
        return judge("The camera's link", *figures.cameraSpeedMbps);
    }
    return card.speedMbps ? judge("The link of " + card.name, *card.speedMbps)
                          : judge("The camera's link", *figures.cameraSpeedMbps);
}

LinkFinding judgeAddress(const LinkFigures& figures) {
    constexpr const char* kSubject = "address";
    if (!figures.reach.obstacle.empty()) {
        return fault(kSubject, figures.reach.obstacle, figures.reach.remedy);
    }
    return good(kSubject, figures.address + " is reached from " + figures.reach.own.text() + ".");
}

LinkFinding judgeRoute(const LinkFigures& figures) {
    constexpr const char* kSubject = "route";
    const NetworkCard& card = *figures.reach.card;
    if (figures.reach.routeCard == card.name) {
        return good(kSubject, "Packets to the camera leave on " + card.name + ".");
    }
    const std::string elsewhere = figures.reach.routeCard.empty() ? "nowhere" : "on " + figures.reach.routeCard;
    const std::string sentence =
        "The camera is on " + card.name + ", but packets to it leave " + elsewhere +
        (card.reversePathFilter == kStrictFilter ? ", so that the reverse-path filter drops what it sends." : ".");
    return fault(kSubject, sentence, "sudo ip route add " + figures.address + "/32 dev " + card.name);
}

LinkFinding judgeFilter(const LinkFigures& figures) {
    constexpr const char* kSubject = "reverse-path filter";
    const NetworkCard& card = *figures.reach.card;
    const std::string remedy =
        "sudo sysctl -w net.ipv4.conf.all.rp_filter=2 net.ipv4.conf." + card.name + ".rp_filter=2";
    if (card.reversePathFilter != kStrictFilter) {
        return good(kSubject, "It is not strict.");
    }
    if (figures.reach.routeCard != card.name) {
        return fault(kSubject,
                     "The filter of " + card.name +
                         " is strict: it drops what comes from addresses that another way leads to.",
                     remedy);
    }
    return hint(
        kSubject,
        "The filter of " + card.name +
            " is strict: this camera comes through, but those with an address of another network are not found.",
        remedy);
}

LinkFinding judgeBuffer(const LinkFigures& figures) {
    const std::string sentence = "A socket gets a buffer of " + std::to_string(figures.receiveBuffer / 1024) + " KiB";
    return figures.receiveBuffer >= kEnoughBuffer ? good("socket buffer", sentence + ".")
                                                  : fault("socket buffer", sentence + ": in a burst, packets are lost.",
                                                          "sudo sysctl -w net.core.rmem_max=33554432");
}

LinkFinding judgePrivilege(const LinkFigures& figures) {
    constexpr const char* kSubject = "packet socket";
    const std::string remedy = "sudo setcap cap_net_raw+ep " + figures.program;
    if (figures.mayUsePacketSocket) {
        return good(kSubject, "This program may use one.");
    }
    return figures.wantsPacketSocket
               ? fault(kSubject, "The settings ask for one, and this program has no CAP_NET_RAW.", remedy)
               : hint(kSubject, "This program has no CAP_NET_RAW; with it, receiving can take less processor time.",
                      remedy);
}

LinkFinding judgeRoundTrips(const LinkFigures& figures) {
    constexpr const char* kSubject = "round trip";
    const std::size_t asked = figures.roundTripsUs.size() + figures.lostRoundTrips;
    const std::string remedy = "ip -statistics link show " + figures.reach.card->name;
    if (figures.roundTripsUs.empty()) {
        return fault(kSubject, "The camera answers none of " + std::to_string(asked) + " control packets.", remedy);
    }
    std::vector<double> times = figures.roundTripsUs;
    std::sort(times.begin(), times.end());
    const double median = times[times.size() / 2];
    const std::string sentence = milliseconds(times.front()) + " at least, " + milliseconds(median) + " as a rule, " +
                                 milliseconds(times.back()) + " at most; " + std::to_string(figures.lostRoundTrips) +
                                 " of " + std::to_string(asked) + " lost.";
    if (figures.lostRoundTrips > 0) {
        return fault(kSubject, sentence, remedy);
    }
    return median > kSlowUs ? hint(kSubject, sentence) : good(kSubject, sentence);
}

/// The largest size that arrived; 0 if none did.
std::uint32_t largestArrived(const LinkFigures& figures) {
    std::uint32_t largest = 0;
    for (const TestedSize& size : figures.sizes) {
        largest = size.hasArrived ? std::max(largest, size.bytes) : largest;
    }
    return largest;
}

LinkFinding judgeFirewall(const LinkFigures& figures) {
    constexpr const char* kSubject = "firewall";
    if (!figures.whyNotTested.empty()) {
        return hint(kSubject, "Not examined. " + figures.whyNotTested);
    }
    if (largestArrived(figures) != 0) {
        return good(kSubject, "Test packets of the camera arrive.");
    }
    return fault(kSubject, "No test packet of the camera arrives: a firewall drops them, unless the camera sends none.",
                 "sudo iptables -I INPUT -i " + figures.reach.card->name + " -s " + figures.address +
                     " -p udp -j ACCEPT");
}

LinkFinding judgePacketSize(const LinkFigures& figures) {
    constexpr const char* kSubject = "packet size";
    const NetworkCard& card = *figures.reach.card;
    const std::string present = std::to_string(figures.packetSize);
    if (figures.packetSize > card.mtu) {
        return fault(kSubject,
                     "The camera sends packets of " + present + " bytes, and " + card.name + " takes " +
                         std::to_string(card.mtu) + " at the most.",
                     setMtu(card.name, figures.packetSize));
    }
    const std::uint32_t arrived = largestArrived(figures);
    if (!figures.whyNotTested.empty() || arrived == 0) {
        return hint(kSubject,
                    "The camera sends packets of " + present + " bytes; whether they arrive was not examined.");
    }
    const std::uint32_t largest = figures.sizes.back().bytes;
    if (arrived == largest) {
        return good(kSubject, "The camera sends packets of " + present + " bytes; those of " + std::to_string(largest) +
                                  " bytes arrive.");
    }
    const std::string sentence = "Packets of " + std::to_string(largest) + " bytes do not arrive, though " + card.name +
                                 " takes them; those of " + std::to_string(arrived) + " do";
    return figures.packetSize > arrived
               ? fault(kSubject, sentence + ", and the camera sends " + present + ".",
                       "quill network " + figures.serialNumber + " --packet-size " + std::to_string(arrived))
               : hint(kSubject, sentence + ". A switch on the way may not let them through.");
}

LinkFinding judgeMtu(const LinkFigures& figures) {
    constexpr const char* kSubject = "MTU";
    const NetworkCard& card = *figures.reach.card;
    const std::string sentence = card.name + " takes packets of " + std::to_string(card.mtu) + " bytes";
    if (card.mtu >= kJumboSize || figures.largestSize <= card.mtu) {
        return good(kSubject, sentence + ".");
    }
    return hint(kSubject, sentence + ", and the camera can send larger ones, which take less processor time.",
                setMtu(card.name, std::min(kJumboSize, figures.largestSize)));
}

} // namespace

std::vector<LinkFinding> judgeLink(const LinkFigures& figures) {
    if (!figures.reach.card) {
        return {judgeCard(figures), judgeBuffer(figures), judgePrivilege(figures)};
    }
    std::vector<LinkFinding> findings{judgeCard(figures), judgeSpeed(figures), judgeAddress(figures)};
    const auto append = [&](std::initializer_list<LinkFinding (*)(const LinkFigures&)> judges) {
        std::transform(judges.begin(), judges.end(), std::back_inserter(findings),
                       [&figures](const auto judge) { return judge(figures); });
    };
    // Without a way to the camera there is no route either, and nothing was sent.
    const bool isReached = figures.reach.obstacle.empty();
    if (isReached) {
        append({judgeRoute, judgeFilter});
    }
    append({judgeBuffer, judgePrivilege});
    if (isReached) {
        append({judgeRoundTrips, judgeFirewall, judgePacketSize, judgeMtu});
    }
    return findings;
}

} // namespace GenICamAdapter
