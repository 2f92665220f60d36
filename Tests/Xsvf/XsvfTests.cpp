// SPDX-License-Identifier: Apache-2.0

#include "Utilities/Xsvf.h"

#include <deque>
#include <limits>
#include <sstream>
#include <stdexcept>
#include <thread>

#include <gtest/gtest.h>

#include "Exceptions/KestrelException.h"
#include "Support/Event.h"
#include "Support/Throws.h"
#include "Xsvf/XsvfPlay.h"

namespace {

using namespace Utilities;
using Bytes = std::vector<unsigned char>;

/// The bytes of two-digit hexadecimal numbers, with or without blanks between them.
Bytes bytes(const std::string& text) {
    Bytes result;
    std::string digits;
    for (const char character : text) {
        if (character != ' ') {
            digits += character;
        }
        if (digits.size() == 2) {
            result.push_back(static_cast<unsigned char>(std::stoi(digits, nullptr, 16)));
            digits.clear();
        }
    }
    return result;
}

std::string hexadecimal(const unsigned char* data, std::size_t length) {
    std::ostringstream text;
    text << std::hex << std::uppercase;
    for (std::size_t index = 0; index < length; ++index) {
        text << (data[index] < 16 ? "0" : "") << int{data[index]};
    }
    return text.str();
}

/// Records the register accesses: control words and shifts ("<value>:<bytes>") in hexadecimal, separated by blanks.
class Recorder {
public:
    JtagTransport transport() { return {this, write, read}; }

    std::string words;
    std::deque<Bytes> answers; ///< of the shifts that ask, the last one for ever; none: zeros
    std::uint64_t calls = 0;
    std::uint64_t callsUntilPulled = std::numeric_limits<std::uint64_t>::max(); ///< calls fail from then on

    /// The record without opening, first reset and closing, which every play has.
    std::string played() const {
        const std::string head = "501 101 401 0 1 0 1 0 1 0 1 0 1 ";
        const std::string tail = "500 ";
        EXPECT_EQ(words.substr(0, head.size()), head);
        EXPECT_EQ(words.substr(words.size() - tail.size()), tail);
        return words.substr(head.size(), words.size() - head.size() - tail.size());
    }

private:
    static std::uint32_t write(void* handle, std::uint8_t target, std::uint32_t value, std::uint32_t length,
                               const std::uint8_t* data) {
        Recorder& self = *static_cast<Recorder*>(handle);
        EXPECT_EQ(target, length == 0 ? 0x19 : 0x1A);
        EXPECT_EQ(data == nullptr, length == 0);
        std::ostringstream word;
        word << std::hex << std::uppercase << value;
        self.words += word.str() + (length == 0 ? "" : ":" + hexadecimal(data, length)) + " ";
        return self.isPulled() ? 0 : 1;
    }

    static std::uint32_t read(void* handle, std::uint8_t target, std::uint32_t value, std::uint32_t length,
                              std::uint8_t* buffer) {
        Recorder& self = *static_cast<Recorder*>(handle);
        EXPECT_EQ(target, 0x1A);
        EXPECT_EQ((value + 7) / 8, length);
        const Bytes answer = self.answers.empty() ? Bytes(length) : self.answers.front();
        if (self.answers.size() > 1) {
            self.answers.pop_front();
        }
        std::copy_n(answer.begin(), std::min<std::size_t>(length, answer.size()), buffer);
        return self.isPulled() ? 0 : 1;
    }

    bool isPulled() { return calls++ >= callsUntilPulled; }
};

struct Case {
    const char* name;
    const char* file;
    const char* words;
    XsvfError error = XsvfError::None;
    std::vector<const char*> answers = {};
};

const char* const kToShiftDr = "400 401 400 400 ";
const char* const kToIdle = "401 400 ";

TEST(Xsvf, EachCommandMovesThePinsAsItsMeaningDemands) {
    using E = XsvfError;
    const std::string toShift = kToShiftDr;
    const std::string idle = kToIdle;
    const std::vector<Case> cases{
        {"complete", "00 FF", ""},
        {"comment to its zero", "16 41 00 42", "", E::IllegalCommand},
        {"comment to the end", "16 41", "", E::IllegalCommand},
        {"no completion", "07 02", "", E::IllegalCommand},
        {"empty", "", "", E::IllegalCommand},
        {"codes 5 and 6", "05 00", "", E::IllegalCommand},
        {"code above 17", "18 00", "", E::IllegalCommand},
        {"instruction", "02 0A 01F5 00", "400 401 401 400 400 C00A:F501 401 400 "},
        {"long instruction", "15 000A 01F5 00", "400 401 401 400 400 C00A:F501 401 400 "},
        {"instruction of 0 bits waits", "04 00000005 02 00 00", "400 304 "},
        {"too long an instruction", "15 DAC1 00", "", E::DataOverflow},
        {"instruction to pause", "13 01 02 02 03 00", "400 401 401 400 400 C002:03 400 "},
        {"pause again", "13 01 02 02 03 12 0D 00", "400 401 401 400 400 C002:03 400 401 401 401 401 400 401 400 "},
        {"end state 2", "14 02", "", E::IllegalState},
        {"end state missing", "13", "", E::IllegalState},
        {"data equal", "08 0000000C 01 0FFF 09 0ABC 0123 00", "800C:BC0A", E::None, {"2301"}},
        {"data under the mask", "08 00000008 01 F0 09 55 AB 00", "8008:55", E::None, {"A0"}},
        {"data unlike", "08 00000008 01 F0 09 55 AB 00", "8008:55", E::TdoMismatch, {"B0"}},
        {"nothing compared without a mask", "08 00000008 03 55 00", "8008:55", E::None, {"FF"}},
        {"too much data", "08 0000DAC1", "", E::DataOverflow},
        {"as much as counts", "08 FFFFFFFF", "", E::DataOverflow},
        {"waits in idle", "04 00000258 08 00000001 03 01 00", "8001:01 401 400 3FF 3FF 357", E::None},
        {"to a state", "12 04 12 05 12 08 00", "400 401 400 400 401 401 "},
        {"to reset again", "12 00 00", "401 0 1 0 1 0 1 0 1 0 1 "},
        {"second exit from elsewhere", "12 07", "", E::IllegalState},
        {"second exit from its pause", "12 06 12 07 12 04 00", "400 401 400 401 400 401 400 "},
        {"state 16", "12 10", "", E::IllegalState},
        {"wait elsewhere", "17 06 01 00000001 00", "400 401 400 401 400 300 401 401 400 "},
        {"wait where it is", "17 00 00 00000100 00", "3FF "},
        {"end of data state", "14 01 08 00000001 03 00 00", "8001:00 400 "},
    };
    for (const Case& row : cases) {
        SCOPED_TRACE(row.name);
        Recorder recorder;
        for (const char* answer : row.answers) {
            recorder.answers.push_back(bytes(answer));
        }
        XsvfReport report;
        EXPECT_EQ(playXsvf(recorder.transport(), bytes(row.file), report, {}), row.error == E::None);
        EXPECT_EQ(report.error, row.error);
        std::string words = row.words;
        if (!words.empty() && words[0] == '8') { // a data shift, from reset and back to idle unless specified
            words = toShift + words +
                    (words.find(' ') == std::string::npos ? " " + idle
                     : words.back() == ' '                ? ""
                                                          : " ");
        }
        EXPECT_EQ(recorder.played(), words);
    }
}

TEST(Xsvf, PiecesOfOneShiftStayInItsState) {
    Recorder recorder;
    recorder.answers = {bytes("11"), bytes("22"), bytes("33")};
    XsvfReport report;
    EXPECT_TRUE(playXsvf(recorder.transport(),
                         bytes("04 00000009 07 05 08 00000008 0C 01 0D 02 0E 03 0F 04 11 10 05 22 11 06 33 00"), report,
                         {}));
    EXPECT_EQ(recorder.played(), std::string(kToShiftDr) + "4008:01 4008:02 C008:03 " + kToIdle +
                                     "401 400 400 8:04 8:05 8008:06 " + kToIdle);
    // Whole bytes are compared, and nothing is retried.
    recorder.answers = {bytes("12")};
    EXPECT_FALSE(playXsvf(recorder.transport(), bytes("07 05 01 08 00000008 11 04 11 00"), report, {}));
    EXPECT_EQ(report.error, XsvfError::TdoMismatch);
}

TEST(Xsvf, LongShiftsGoInTransfersFromTheLeastSignificantEnd) {
    Bytes file = bytes("08 00001388 03"); // 5000 bits
    Bytes value(625);
    for (std::size_t index = 0; index < value.size(); ++index) {
        value[index] = static_cast<unsigned char>(index * 7);
    }
    file.insert(file.end(), value.begin(), value.end());
    file.push_back(0);
    Recorder recorder;
    XsvfReport report;
    EXPECT_TRUE(playXsvf(recorder.transport(), file, report, {}));
    const Bytes sent(value.rbegin(), value.rend());
    EXPECT_EQ(recorder.played(), std::string(kToShiftDr) + "800:" + hexadecimal(sent.data(), 256) +
                                     " 800:" + hexadecimal(sent.data() + 256, 256) +
                                     " 8388:" + hexadecimal(sent.data() + 512, 113) + " " + kToIdle);
}

TEST(Xsvf, AMismatchIsTriedAgainWithAQuarterMoreTime) {
    Recorder recorder;
    recorder.answers = {bytes("01")};
    XsvfReport report;
    const Bytes file = bytes("07 02 04 00000008 08 00000008 01 FF 09 55 AA 00");
    const std::string attempt = "8008:55 ";
    const std::string around = "400 401 400 "; // over the pause state
    EXPECT_FALSE(playXsvf(recorder.transport(), file, report, {}));
    EXPECT_EQ(recorder.played(),
              kToShiftDr + attempt + around + attempt + around + attempt + kToIdle + "30B "); // 8, 10, 12 microseconds
    EXPECT_EQ(report.error, XsvfError::RetriesExhausted);
    EXPECT_EQ(report.commandCount, 5U);
    EXPECT_EQ(report.commandOffset, 14U);
    EXPECT_EQ(report.expectedTdo, bytes("AA"));
    EXPECT_EQ(report.capturedTdo, bytes("01"));
    EXPECT_EQ(report.tdoMask, bytes("FF"));
    recorder = {};
    recorder.answers = {bytes("01"), bytes("AA")};
    EXPECT_TRUE(playXsvf(recorder.transport(), file, report, {}));
    EXPECT_EQ(recorder.played(), kToShiftDr + attempt + around + attempt + kToIdle + "309 ");
}

TEST(Xsvf, IncrementsAddressAndReplacesDataBits) {
    Recorder recorder;
    XsvfReport report;
    // Address in the upper byte with its carry, data in every other bit of the lower byte.
    EXPECT_TRUE(playXsvf(recorder.transport(), bytes("08 00000010 0A 0100 0055 0B 01FF 02 05 0A 00"), report, {}));
    const std::string again = "401 400 400 ";
    EXPECT_EQ(recorder.played(), std::string(kToShiftDr) + "8010:FF01 " + kToIdle + again + "8010:BB02 " + kToIdle +
                                     again + "8010:EE03 " + kToIdle);
}

TEST(Xsvf, AccessIsClosedWhateverHappens) {
    Recorder recorder;
    XsvfReport report;
    const Bytes file = bytes("08 00000001 03 01 00");
    const auto stop = [](double) { throw std::runtime_error("stop"); };
    TestSupport::expectStandard<std::runtime_error>([&] { playXsvf(recorder.transport(), file, report, stop); },
                                                    "stop");
    EXPECT_EQ(recorder.played(), "");
    // A long wait can be ended too: 2^32 - 1 pulses.
    recorder = {};
    int calls = 0;
    const auto stopSoon = [&](double done) {
        EXPECT_LE(done, 1.0);
        if (++calls == 3) {
            throw std::runtime_error("stop");
        }
    };
    TestSupport::expectStandard<std::runtime_error>(
        [&] { playXsvf(recorder.transport(), bytes("17 01 01 FFFFFFFF 00"), report, stopSoon); }, "stop");
    EXPECT_EQ(recorder.words.substr(recorder.words.size() - 8), "3FF 500 ");
}

TEST(Xsvf, FailedTransfersAreReportedAndThoseOfALostCameraEndThePlay) {
    // Repeat, size, a shift of one bit, a wait of 4096 words, complete.
    const Bytes file = bytes("07 01 08 00000001 03 01 17 01 01 00100000 00");
    Recorder whole;
    XsvfReport report;
    EXPECT_TRUE(playXsvf(whole.transport(), file, report, {}));
    const struct {
        std::uint64_t calls; ///< number that reach the camera
        std::uint32_t failedCommand;
        std::size_t failedOffset;
        std::uint64_t callsToTheEnd; ///< after the camera is gone, including closing
    } rows[] = {
        {1, 0, 0, 13},               // after opening: preparation, reset
        {17, 3, 7, 4},               // the shift, which is not read back then, and the path to idle
        {25, 4, 9, 2},               // a word of the wait
        {whole.calls - 1, 5, 16, 1}, // all except closing
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.calls);
        for (const bool gone : {false, true}) {
            Recorder recorder;
            recorder.callsUntilPulled = row.calls;
            EXPECT_FALSE(playXsvf(recorder.transport(), file, report, {}, [gone] { return gone; }));
            EXPECT_EQ(report.error, XsvfError::None);
            EXPECT_EQ(report.cameraGone, gone);
            EXPECT_EQ(report.failedCommand, row.failedCommand);
            EXPECT_EQ(report.failedOffset, row.failedOffset);
            EXPECT_EQ(report.failedTransfers, recorder.calls - row.calls);
            if (gone) {
                EXPECT_EQ(recorder.calls, row.calls + row.callsToTheEnd);
            } else {
                EXPECT_EQ(recorder.words, whole.words);
            }
        }
    }
}

TEST(Xsvf, WithoutADeviceAFileIsReadAndNothingWaited) {
    EXPECT_TRUE(playXsvf(nullptr, bytes("17 01 01 FFFFFFFF 08 00000008 01 FF 09 55 00 00")));
    XsvfReport report;
    EXPECT_FALSE(playXsvf(nullptr, bytes("08 00000008 01 FF 09 55 01 00"), report));
    EXPECT_EQ(report.error, XsvfError::TdoMismatch);
    EXPECT_TRUE(checkXsvf(bytes("08 00000008 01 FF 09 55 01 00")).succeeded());
}

TEST(Xsvf, OnePlayAtATimeInTheProcess) {
    TestSupport::Event second;
    std::string order;
    std::thread other;
    const auto first = [&](double) {
        if (!other.joinable()) {
            other = std::thread([&] {
                playXsvf(nullptr, bytes("00"));
                order += "second";
                second.raise();
            });
            EXPECT_EQ(TestSupport::expectThrown<KestrelExceptions::KestrelException>([] {
                          playXsvf(nullptr, bytes("00"));
                      }).who(),
                      std::string("WouldWaitForItself"));
            EXPECT_EQ(second.count(), 0);
        }
    };
    XsvfReport report;
    EXPECT_TRUE(playXsvf(nullptr, bytes("07 01 07 02 00"), report, first));
    EXPECT_TRUE(second.wait());
    other.join();
    EXPECT_EQ(order, "second");
}

} // namespace
