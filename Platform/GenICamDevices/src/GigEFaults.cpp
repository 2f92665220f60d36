// SPDX-License-Identifier: Apache-2.0

#include "GigEFaults.h"

#include <algorithm>
#include <charconv>
#include <stdexcept>

namespace GenICamDevices {

namespace {

template <double Faults::*Field>
bool setShare(Faults& faults, const std::string& text) {
    return readDecimal(text, 0, 100, faults.*Field);
}

template <bool Faults::*Field>
bool setSwitch(Faults& faults, const std::string& text) {
    if (text != "on" && text != "off") {
        return false;
    }
    faults.*Field = text == "on";
    return true;
}

template <std::uint32_t Faults::*Field>
bool setMilliseconds(Faults& faults, const std::string& text) {
    std::uint64_t milliseconds = 0;
    if (!readNumber(text, 60000, milliseconds)) {
        return false;
    }
    faults.*Field = static_cast<std::uint32_t>(milliseconds);
    return true;
}

bool setLie(Faults& faults, const std::string& text) {
    if (text != "off" && text != "size" && text != "width") {
        return false;
    }
    faults.lie = text == "size" ? Lie::Size : text == "width" ? Lie::Width : Lie::None;
    return true;
}

bool setStallAfter(Faults& faults, const std::string& text) {
    return readNumber(text, UINT64_MAX, faults.stallAfter);
}

std::string valuesOf(const FaultRow& row) {
    return row.argument == nullptr ? "on or off" : row.argument;
}

} // namespace

const std::vector<FaultRow>& faultRows() {
    static const std::vector<FaultRow> rows{
        {"loss", "PERCENT", "packets of frames that are not sent", setShare<&Faults::loss>},
        {"reorder", "PERCENT", "packets of frames that change places with the next one", setShare<&Faults::reorder>},
        {"duplicate", "PERCENT", "packets of frames that are sent twice", setShare<&Faults::duplicate>},
        {"late", "MS", "sends some packets of frames that much later; 0: none",
         setMilliseconds<&Faults::lateMilliseconds>},
        {"late-share", "PERCENT", "how many packets are late (default 1)", setShare<&Faults::lateShare>},
        {"no-resend", nullptr, "sends no packet again", setSwitch<&Faults::noResend>},
        {"deny", nullptr, "refuses control, as if another application had it", setSwitch<&Faults::deny>},
        {"lie", "size|width|off", "sends a quarter more bytes than announced; announces a width 4 too large", setLie},
        {"short-frames", nullptr, "ends each frame after three quarters", setSwitch<&Faults::shortFrames>},
        {"silent", nullptr, "answers nothing", setSwitch<&Faults::silent>},
        {"vary-height", nullptr, "sends every other frame with half the height", setSwitch<&Faults::varyHeight>},
        {"answer-late", "MS", "answers that much later", setMilliseconds<&Faults::answerMilliseconds>},
        {"discovery-late", "MS", "answers discoveries that much later",
         setMilliseconds<&Faults::discoveryMilliseconds>},
        {"gvcp-loss", "PERCENT", "requests that are lost, or whose answers are", setShare<&Faults::controlLoss>},
        {"gvcp-wrong", "PERCENT", "answers that are wrong: cut off, of another request, a refusal, or other bytes",
         setShare<&Faults::wrongAnswers>},
        {"stall-after", "N", "sends no more after N frames of an acquisition; 0: never", setStallAfter},
        {"no-test-packets", nullptr, "sends no test packets", setSwitch<&Faults::noTestPackets>},
    };
    return rows;
}

void setFault(Faults& faults, const std::string& name, const std::string& text) {
    const auto row = std::find_if(faultRows().begin(), faultRows().end(),
                                  [&name](const FaultRow& candidate) { return name == candidate.name; });
    if (row == faultRows().end()) {
        std::string names;
        for (const FaultRow& known : faultRows()) {
            names.append(names.empty() ? "" : ", ").append(known.name);
        }
        throw std::invalid_argument("'" + name + "' is unknown; known are " + names);
    }
    if (!row->set(faults, text)) {
        throw std::invalid_argument("'" + text + "' is no value of " + name + ", which takes " + valuesOf(*row));
    }
}

bool readNumber(const std::string& text, std::uint64_t maximum, std::uint64_t& number) {
    const bool hexadecimal = text.rfind("0x", 0) == 0;
    const char* const end = text.data() + text.size();
    std::uint64_t value = 0;
    const auto [next, error] = std::from_chars(text.data() + (hexadecimal ? 2 : 0), end, value, hexadecimal ? 16 : 10);
    if (error != std::errc() || next != end || value > maximum) {
        return false;
    }
    number = value;
    return true;
}

bool readDecimal(const std::string& text, double minimum, double maximum, double& number) {
    const char* const end = text.data() + text.size();
    double value = 0;
    const auto [next, error] = std::from_chars(text.data(), end, value);
    if (error != std::errc() || next != end || !(value >= minimum && value <= maximum)) {
        return false;
    }
    number = value;
    return true;
}

double percentOf(std::uint64_t seed, std::uint64_t subject, std::uint64_t purpose) {
    std::uint64_t value = seed * 0x9E3779B97F4A7C15U ^ subject * 0xD1B54A32D192ED03U ^ purpose * 0x8CB92BA72F3D8DD7U;
    value = (value ^ value >> 30) * 0xBF58476D1CE4E5B9U;
    value = (value ^ value >> 27) * 0x94D049BB133111EBU;
    value ^= value >> 31;
    return static_cast<double>(value >> 11) * 100 / 9007199254740992.0; // of 2^53
}

} // namespace GenICamDevices
