// SPDX-License-Identifier: Apache-2.0

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "Cameras/GenICam/GenICamSettings.h"
#include "Exceptions/KestrelException.h"
#include "Support/Throws.h"

namespace {

using namespace CameraInterface;
using KestrelExceptions::KestrelException;
using Words = std::vector<std::string>;

TEST(GenICamSettingsTest, ReadsTheLinesOfTheFile) {
    const GenICam::Settings settings =
        GenICam::parseSettings("# where the cameras are\ncard = eth1\n\n card=enp3s0f1 # the second\r\n"
                               "address = 192.168.1.20\nusb = no\npacket-socket = yes\nheartbeat = 3000");
    EXPECT_EQ(settings.cards, (Words{"eth1", "enp3s0f1"}));
    EXPECT_EQ(settings.addresses, Words{"192.168.1.20"});
    EXPECT_FALSE(settings.usb);
    EXPECT_TRUE(settings.packetSocket);
    EXPECT_EQ(settings.heartbeatMs, 3000U);
    EXPECT_TRUE(GenICam::parseSettings("").cards.empty());
}

TEST(GenICamSettingsTest, NamesTheLineThatIsWrong) {
    for (const char* line : {"card", "card =", "crad = eth1", "address = 192.168.1", "address = 192.168.1.256",
                             "address = 1.2.3.4.5", "usb = maybe", "heartbeat = 12", "heartbeat = 3e3", "eth1"}) {
        const auto failure = TestSupport::expectThrown<KestrelException>(
            [&] { GenICam::parseSettings(std::string("usb = yes\n") + line); });
        EXPECT_STREQ(failure.who(), "SettingsInvalid") << line;
        EXPECT_NE(std::string(failure.why()).find("line 2"), std::string::npos) << failure.why();
    }
}

TEST(GenICamSettingsTest, AListReplacesCardsAndAddresses) {
    GenICam::Settings settings = GenICam::parseSettings("card = eth9\nheartbeat = 900");
    GenICam::replaceNetwork(settings, "eth1, 10.0.0.7,,lo");
    EXPECT_EQ(settings.cards, (Words{"eth1", "lo"}));
    EXPECT_EQ(settings.addresses, Words{"10.0.0.7"});
    EXPECT_EQ(settings.heartbeatMs, 900U);
    EXPECT_THROW(GenICam::replaceNetwork(settings, "eth 1"), KestrelException);
}

} // namespace
