// SPDX-License-Identifier: Apache-2.0

// What is computed about networks: packets, addresses, pauses and findings. Nothing here uses a network.

#include <functional>

#include <gmock/gmock.h>

#include "CameraReach.h"
#include "Cameras/GenICam/Ipv4.h"
#include "Cameras/GenICamNetwork.h"
#include "Exceptions/KestrelExceptions.h"
#include "ForcedAddress.h"
#include "Gvcp.h"
#include "LinkFindings.h"
#include "NetworkDescription.h"
#include "Support/Throws.h"

namespace {

using namespace CameraInterface::GenICam;
using namespace GenICamAdapter;
using KestrelExceptions::KestrelException_InvalidArgument;
using testing::ElementsAreArray;
using testing::HasSubstr;

constexpr std::uint32_t kCardAddress = 0xC0A8010A; // 192.168.1.10
constexpr std::uint32_t kMask24 = 0xFFFFFF00;

TEST(ForceAddress, HasItsFieldsWhereTheProtocolWantsThem) {
    std::vector<std::uint8_t> expected(64, 0);
    const auto put = [&](std::size_t at, std::initializer_list<std::uint8_t> bytes) {
        std::copy(bytes.begin(), bytes.end(), expected.begin() + static_cast<std::ptrdiff_t>(at));
    };
    put(0, {0x42, 0x11, 0x00, 0x04, 0x00, 0x38, 0x12, 0x34});
    put(10, {0x00, 0x11, 0x22, 0x33, 0x44, 0x55});
    put(28, {192, 168, 1, 5});
    put(44, {255, 255, 255, 0});
    put(60, {192, 168, 1, 1});
    EXPECT_THAT(Gvcp::makeForceAddress(0x1234, 0x001122334455, 0xC0A80105, kMask24, 0xC0A80101),
                ElementsAreArray(expected));
}

TEST(ForceAddress, TakesHardwareAddressesAsPeopleWriteThem) {
    EXPECT_EQ(parseHardwareAddress("00:1a:2B:33:44:fF"), 0x001A2B3344FF);
    EXPECT_EQ(parseHardwareAddress("00-1a-2B-33-44-fF"), 0x001A2B3344FF);
    for (const char* text : {"", "00:1a:2B:33:44", "00:1a:2B:33:44:fF:", "0:1a:2B:33:44:fF0", "00:1a:2B:33:44:fG"}) {
        EXPECT_EQ(parseHardwareAddress(text), std::nullopt) << text;
    }
}

TEST(Discovery, TellsMaskGatewayAndWaysToAnAddress) {
    std::vector<std::uint8_t> packet(8 + 0xF8, 0);
    const auto put = [&](std::size_t at, std::initializer_list<std::uint8_t> bytes) {
        std::copy(bytes.begin(), bytes.end(), packet.begin() + static_cast<std::ptrdiff_t>(at));
    };
    put(2, {0x00, 0x03, 0x00, 0xF8});
    put(8 + 0x10, {0, 0, 0, 7, 0, 0, 0, 5});
    put(8 + 0x34, {255, 255, 0, 0});
    put(8 + 0x44, {10, 1, 0, 1});
    const auto answer = Gvcp::parseAnswer(packet.data(), packet.size());
    const auto record = Gvcp::parseDiscovery(answer.value());
    ASSERT_TRUE(record);
    EXPECT_EQ(record->mask, "255.255.0.0");
    EXPECT_EQ(record->gateway, "10.1.0.1");
    EXPECT_EQ(record->supportedConfigurations, 7);
    EXPECT_EQ(record->enabledConfigurations, 5);
}

TEST(Addresses, AreReadStrictly) {
    EXPECT_EQ(Ipv4::parse("192.168.1.10"), kCardAddress);
    for (const char* text : {"", "1.2.3", "1.2.3.4.5", "1.2.3.256", "1.2.3.-4", "1.2..4", " 1.2.3.4", "1.2.3.0004"}) {
        EXPECT_EQ(Ipv4::parse(text), std::nullopt) << text;
    }
}

TEST(Addresses, ThatNoDeviceHasAreRefusedBeforeAnythingIsSent) {
    const NetworkPlace places[] = {{"192.168.1.0", "255.255.255.0"},
                                   {"192.168.1.255", "255.255.255.0"},
                                   {"224.0.0.1", "255.0.0.0"},
                                   {"192.168.1.5", "255.0.255.0"},
                                   {"192.168.1.5", "24"},
                                   {"192.168.1", "255.255.255.0"},
                                   {"192.168.1.5", "255.255.255.0", "192.168.2.1"}};
    for (const NetworkPlace& place : places) {
        for (const auto& use : {setPersistentAddress, forceAddress}) {
            EXPECT_STREQ(
                TestSupport::expectThrown<KestrelException_InvalidArgument>([&] { use("camera", place); }).who(),
                "ArgumentUnhandled")
                << place.address << '/' << place.mask;
        }
    }
}

TEST(Addresses, ComeFromWhatIsEnabled) {
    constexpr std::uint32_t kPersistent = Gvcp::kPersistentConfiguration;
    constexpr std::uint32_t kDhcp = Gvcp::kDhcpConfiguration;
    EXPECT_EQ(originOf(5, kPersistent | kDhcp, 5), AddressOrigin::Persistent);
    EXPECT_EQ(originOf(5, kDhcp, 5), AddressOrigin::Dhcp);
    EXPECT_EQ(originOf(0xA9FE0105, kDhcp, 5), AddressOrigin::LinkLocal);
    EXPECT_EQ(originOf(6, kPersistent | kDhcp, 5), AddressOrigin::Temporary);
    EXPECT_EQ(originOf(6, 0, 0), AddressOrigin::Temporary);
}

TEST(Routes, AreDirectWithoutAGateway) {
    const char* const table = "Iface\tDestination\tGateway \tFlags\tRefCnt\tUse\tMetric\tMask\t\tMTU\tWindow\tIRTT\n"
                              "eth0\t00000000\t0101A8C0\t0003\t0\t0\t0\t00000000\t0\t0\t0\n"
                              "eth1\t0007A8C0\t00000000\t0001\t0\t0\t0\t00FFFFFF\t0\t0\t0\n";
    EXPECT_TRUE(hasDirectRoute(table, "eth1", 0xC0A80705));
    EXPECT_FALSE(hasDirectRoute(table, "eth1", 0xC0A80805));
    EXPECT_FALSE(hasDirectRoute(table, "eth0", 0xC0A80705));
    EXPECT_FALSE(hasDirectRoute("", "eth1", 0xC0A80705));
}

NetworkCard card() {
    NetworkCard card;
    card.name = "eth1";
    card.addresses = {{kCardAddress, kMask24}};
    card.isUp = card.hasLink = true;
    card.mtu = 9000;
    card.speedMbps = 1000;
    return card;
}

FoundCamera cameraAt(const std::string& address) {
    FoundCamera camera;
    camera.record.address = address;
    camera.record.mask = "255.255.255.0";
    camera.serialNumber = "Maker-1";
    camera.card = "eth1";
    return camera;
}

TEST(Reach, NamesWhatHelps) {
    const Route elsewhere{"eth0", 1};
    EXPECT_EQ(reachOf(cameraAt("192.168.1.77"), {card()}, {"eth1", kCardAddress}, false).obstacle, "");
    EXPECT_EQ(reachOf(cameraAt("10.0.0.5"), {card()}, elsewhere, true).obstacle, "");

    const CameraReach foreign = reachOf(cameraAt("10.0.0.5"), {card()}, elsewhere, false);
    EXPECT_EQ(foreign.obstacle, "Its address 10.0.0.5 is not on the network of eth1 (192.168.1.10/24).");
    EXPECT_EQ(foreign.remedy, "quill network Maker-1 --force 192.168.1.5/24");
    // Neither this computer's own address nor one that no device has.
    EXPECT_THAT(reachOf(cameraAt("10.0.0.10"), {card()}, elsewhere, false).remedy, HasSubstr("192.168.1.11/24"));
    EXPECT_THAT(reachOf(cameraAt("10.0.1.0"), {card()}, elsewhere, false).remedy, HasSubstr("192.168.1.1/24"));

    NetworkCard bare = card();
    bare.addresses.clear();
    EXPECT_EQ(reachOf(cameraAt("10.0.0.1"), {bare}, elsewhere, false).remedy,
              "sudo ip address add 10.0.0.2/24 dev eth1");
}

LinkFigures goodFigures() {
    LinkFigures figures;
    figures.serialNumber = "Maker-1";
    figures.address = "192.168.1.77";
    figures.reach.card = card();
    figures.reach.own = {kCardAddress, kMask24};
    figures.reach.routeCard = "eth1";
    figures.cameraSpeedMbps = 1000;
    figures.receiveBuffer = std::size_t{8} << 20;
    figures.mayUsePacketSocket = true;
    figures.program = "/usr/bin/quill";
    figures.roundTripsUs = {300, 100, 200};
    figures.sizes = {{576, true}, {1500, true}, {9000, true}};
    figures.packetSize = 1500;
    figures.largestSize = 9000;
    return figures;
}

TEST(LinkFindings, SayWhatIsWrongAndWhatMendsIt) {
    for (const LinkFinding& finding : judgeLink(goodFigures())) {
        EXPECT_EQ(finding.verdict, LinkVerdict::Good) << finding.subject << ": " << finding.sentence;
        EXPECT_EQ(finding.remedy, "") << finding.subject;
    }
    const struct {
        const char* subject;
        LinkVerdict verdict;
        const char* sentence;
        const char* remedy;
        std::function<void(LinkFigures& figures)> spoil;
    } cases[] = {
        {"card", LinkVerdict::Fault, "switched off", "sudo ip link set eth1 up",
         [](LinkFigures& figures) { figures.reach.card->isUp = false; }},
        {"card", LinkVerdict::Fault, "no link", "link show eth1",
         [](LinkFigures& figures) { figures.reach.card->hasLink = false; }},
        {"card", LinkVerdict::Fault, "No network card", "ip route get 192.168.1.77",
         [](LinkFigures& figures) { figures.reach.card.reset(); }},
        {"speed", LinkVerdict::Fault, "eth1 runs at 100 Mbit/s", "sudo ethtool -r eth1",
         [](LinkFigures& figures) { figures.reach.card->speedMbps = 100; }},
        {"speed", LinkVerdict::Fault, "camera's link runs at 100 Mbit/s", "sudo ethtool -r eth1",
         [](LinkFigures& figures) { figures.cameraSpeedMbps = 100; }},
        {"address", LinkVerdict::Fault, "Foreign.", "quill network Maker-1 --force 192.168.1.5/24",
         [](LinkFigures& figures) {
             figures.reach.obstacle = "Foreign.";
             figures.reach.remedy = "quill network Maker-1 --force 192.168.1.5/24";
         }},
        {"route", LinkVerdict::Fault, "leave on eth0", "sudo ip route add 192.168.1.77/32 dev eth1",
         [](LinkFigures& figures) { figures.reach.routeCard = "eth0"; }},
        {"reverse-path filter", LinkVerdict::Fault, "strict", "net.ipv4.conf.eth1.rp_filter=2",
         [](LinkFigures& figures) {
             figures.reach.routeCard = "eth0";
             figures.reach.card->reversePathFilter = 1;
         }},
        {"reverse-path filter", LinkVerdict::Hint, "are not found", "net.ipv4.conf.eth1.rp_filter=2",
         [](LinkFigures& figures) { figures.reach.card->reversePathFilter = 1; }},
        {"socket buffer", LinkVerdict::Fault, "208 KiB", "sudo sysctl -w net.core.rmem_max=33554432",
         [](LinkFigures& figures) { figures.receiveBuffer = 212992; }},
        {"packet socket", LinkVerdict::Hint, "no CAP_NET_RAW", "sudo setcap cap_net_raw+ep /usr/bin/quill",
         [](LinkFigures& figures) { figures.mayUsePacketSocket = false; }},
        {"packet socket", LinkVerdict::Fault, "settings ask", "sudo setcap cap_net_raw+ep /usr/bin/quill",
         [](LinkFigures& figures) {
             figures.mayUsePacketSocket = false;
             figures.wantsPacketSocket = true;
         }},
        {"round trip", LinkVerdict::Fault, "0.10 ms at least, 0.20 ms as a rule, 0.30 ms at most; 1 of 4 lost",
         "link show eth1", [](LinkFigures& figures) { figures.lostRoundTrips = 1; }},
        {"round trip", LinkVerdict::Fault, "none of 5", "link show eth1",
         [](LinkFigures& figures) {
             figures.roundTripsUs.clear();
             figures.lostRoundTrips = 5;
         }},
        {"firewall", LinkVerdict::Fault, "No test packet", "-i eth1 -s 192.168.1.77",
         [](LinkFigures& figures) {
             figures.sizes = {{576, false}, {1500, false}};
         }},
        {"firewall", LinkVerdict::Hint, "Not examined. The camera streams", "",
         [](LinkFigures& figures) { figures.whyNotTested = "The camera streams."; }},
        {"packet size", LinkVerdict::Fault, "sends packets of 9000 bytes, and eth1 takes 1500",
         "sudo ip link set eth1 mtu 9000",
         [](LinkFigures& figures) {
             figures.packetSize = 9000;
             figures.reach.card->mtu = 1500;
         }},
        {"packet size", LinkVerdict::Fault, "those of 1500 do, and the camera sends 9000",
         "quill network Maker-1 --packet-size 1500",
         [](LinkFigures& figures) {
             figures.packetSize = 9000;
             figures.sizes.back().hasArrived = false;
         }},
        {"packet size", LinkVerdict::Hint, "switch", "",
         [](LinkFigures& figures) { figures.sizes.back().hasArrived = false; }},
        {"MTU", LinkVerdict::Hint, "larger ones", "sudo ip link set eth1 mtu 8000",
         [](LinkFigures& figures) {
             figures.reach.card->mtu = 1500;
             figures.largestSize = 8000;
         }},
    };
    for (const auto& [subject, verdict, sentence, remedy, spoil] : cases) {
        LinkFigures figures = goodFigures();
        spoil(figures);
        const std::vector<LinkFinding> findings = judgeLink(figures);
        const auto place = std::find_if(findings.begin(), findings.end(),
                                        [name = std::string(subject)](const auto& one) { return one.subject == name; });
        ASSERT_NE(place, findings.end()) << subject;
        EXPECT_EQ(place->verdict, verdict) << subject << ": " << place->sentence;
        EXPECT_THAT(place->sentence, HasSubstr(sentence));
        EXPECT_THAT(place->remedy, HasSubstr(remedy));
    }
}

TEST(PacketDelay, LetsCamerasShareALinkWithATenthToSpare) {
    EXPECT_EQ(computePacketDelayNs(1, 1000, 1500), 0);
    EXPECT_EQ(computePacketDelayNs(2, 1000, 1500), 15039); // 2 x 12304 / 0.9 - 12304
    EXPECT_EQ(computePacketDelayNs(2, 10000, 1500, 1000), 0);
    EXPECT_EQ(computePacketDelayNs(20, 10000, 1500, 1000), 15039);
    for (const std::uint32_t cameras : {2, 3, 17, 1000}) {
        for (const std::uint32_t size : {576, 1500, 9000}) {
            const double packetNs = (size + 38.0) * 8;
            const double used =
                cameras * packetNs / (packetNs + static_cast<double>(computePacketDelayNs(cameras, 1000, size)));
            EXPECT_LE(used, 0.9);
            EXPECT_NEAR(used, 0.9, 0.001);
        }
    }
    TestSupport::expectThrown<KestrelException_InvalidArgument>([] { computePacketDelayNs(0, 1000, 1500); });
    TestSupport::expectThrown<KestrelException_InvalidArgument>([] { computePacketDelayNs(2, 0, 1500); });
}

TEST(PacketDelay, IsNeverShortenedByTheCamerasClock) {
    EXPECT_EQ(ticksOf(1000, 1000000000), 1000);
    EXPECT_EQ(ticksOf(1001, 125000000), 126); // of 8 ns
    EXPECT_EQ(nanosecondsOf(126, 125000000), 1008);
    EXPECT_EQ(ticksOf(0, 125000000), 0);
}

} // namespace
