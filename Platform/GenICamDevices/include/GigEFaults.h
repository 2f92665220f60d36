// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace GenICamDevices {

/// What a camera says wrongly about its frames.
enum class Lie { None, Size, Width };

/// How a camera misbehaves. Shares of packets are in percent.
struct Faults {
    double loss = 0;      ///< packets of frames that are not sent
    double reorder = 0;   ///< packets of frames that are sent after the following one
    double duplicate = 0; ///< packets of frames that are sent twice
    std::uint32_t lateMilliseconds = 0;
    double lateShare = 1;                    ///< packets of frames that are late
    double controlLoss = 0;                  ///< requests that are lost, or whose answers are
    std::uint32_t answerMilliseconds = 0;    ///< that answers come later
    std::uint32_t discoveryMilliseconds = 0; ///< the same of answers to discoveries
    double wrongAnswers = 0;                 ///< answers to requests that are wrong
    bool noResend = false;                   ///< sends no packet again
    bool deny = false;                       ///< somebody else has control
    bool silent = false;                     ///< answers nothing
    bool noTestPackets = false;              ///< sends no test packets
    bool shortFrames = false;                ///< ends each frame after three quarters, as its trailer says
    bool varyHeight = false;                 ///< every other frame has half the height, as its leader says
    Lie lie = Lie::None;          ///< size: a quarter more bytes than announced; width: the leader has a width 4 larger
    std::uint64_t stallAfter = 0; ///< frames after which an acquisition sends no more; 0: never
};

/// A fault as it is set by a name and a text.
struct FaultRow {
    const char* name;
    const char* argument; ///< what its text is; nullptr for a switch, which is "on" or "off"
    const char* help;
    /// @return whether the text is a value of the fault; otherwise nothing changes
    bool (*set)(Faults& faults, const std::string& text);
};

const std::vector<FaultRow>& faultRows();

/// Sets a fault.
/// @throws std::invalid_argument  there is no such fault, or the text is not one of its values; says what is
void setFault(Faults& faults, const std::string& name, const std::string& text);

/// Reads a number without sign, in the form of C with prefix 0x for hexadecimal numbers.
/// @return whether the whole text is one, and at most @p maximum
bool readNumber(const std::string& text, std::uint64_t maximum, std::uint64_t& number);

/// Reads a decimal number, independent of the locale.
/// @return whether the whole text is one between the bounds
bool readDecimal(const std::string& text, double minimum, double maximum, double& number);

/// Numbers that look random, but depend on a seed and on what they decide alone: neither time nor the order of threads
/// matters.
/// @return 0 up to, but without 100
double percentOf(std::uint64_t seed, std::uint64_t subject, std::uint64_t purpose);

} // namespace GenICamDevices
