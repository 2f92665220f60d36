// SPDX-License-Identifier: Apache-2.0

#include "Cameras/GenICam/GenICamSettings.h"

#include <charconv>
#include <fstream>
#include <iterator>
#include <optional>
#include <sstream>

#include "Base/ProcessWide.h"
#include "Cameras/GenICam/Ipv4.h"
#include "Exceptions/Raise.h"
#include "Process/Process.h"
#include "Utilities/Mutex.h"

namespace CameraInterface::GenICam {

using namespace KestrelExceptions;

namespace {

constexpr std::uint32_t kShortestHeartbeatMs = 500;
constexpr std::uint32_t kLongestHeartbeatMs = 3600000;
constexpr std::size_t kLongestCardName = 15; // of the kernel

const char* const kBlanks = " \t\r";

std::string trimmed(const std::string& text) {
    const std::size_t begin = text.find_first_not_of(kBlanks);
    return begin == std::string::npos ? "" : text.substr(begin, text.find_last_not_of(kBlanks) + 1 - begin);
}

bool isCardName(const std::string& text) {
    return !text.empty() && text.size() <= kLongestCardName && text.find_first_of(" \t/:,=#") == std::string::npos;
}

std::optional<std::uint32_t> heartbeatOf(const std::string& text) {
    std::uint32_t number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    const bool isInRange = number == 0 || (number >= kShortestHeartbeatMs && number <= kLongestHeartbeatMs);
    const bool isNumber = error == std::errc() && end == text.data() + text.size();
    return isNumber && isInRange ? std::optional(number) : std::nullopt;
}

std::optional<bool> switchOf(const std::string& text) {
    return text == "yes" ? std::optional(true) : text == "no" ? std::optional(false) : std::nullopt;
}

/// Takes one setting. @return whether its value is valid; nothing if there is no such setting
std::optional<bool> take(Settings& settings, const std::string& name, const std::string& value) {
    if (name == "card") {
        settings.cards.push_back(value);
        return isCardName(value);
    }
    if (name == "address") {
        settings.addresses.push_back(value);
        return Ipv4::parse(value).has_value();
    }
    if (name == "heartbeat") {
        const auto heartbeat = heartbeatOf(value);
        settings.heartbeatMs = heartbeat.value_or(0);
        return heartbeat.has_value();
    }
    if (name == "usb" || name == "packet-socket") {
        const auto isOn = switchOf(value);
        (name == "usb" ? settings.usb : settings.packetSocket) = isOn.value_or(false);
        return isOn.has_value();
    }
    return std::nullopt;
}

[[noreturn]] void raiseInvalid(const std::string& where, const std::string& why) {
    throw KestrelException::create(Errors::kSettingsInvalid.name, __FILE__, __LINE__, where + ": " + why);
}

Settings readAtStart() {
    Settings settings;
    if (std::ifstream file(QUILL_GENICAM_FILE, std::ios::binary); file) {
        settings = parseSettings({std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()});
    }
    if (const char* list = Process::environmentVariable("QUILL_GENICAM")) {
        replaceNetwork(settings, list);
    }
    return settings;
}

/// The settings of the process.
struct Present {
    Utilities::Mutex mutex; // guards the settings
    std::optional<Settings> settings QUILL_GUARDED_BY(mutex);
};

Present& present() {
    static Base::ProcessWide<Present> instance;
    return instance.get();
}

} // namespace

Settings parseSettings(const std::string& text) {
    Settings settings;
    std::istringstream lines(text);
    std::string line;
    for (int number = 1; std::getline(lines, line); ++number) {
        const std::string content = trimmed(line.substr(0, line.find('#')));
        if (content.empty()) {
            continue;
        }
        const std::string where = std::string(QUILL_GENICAM_FILE) + ", line " + std::to_string(number);
        const std::size_t sign = content.find('=');
        const std::string name = trimmed(content.substr(0, sign));
        const std::string value = sign == std::string::npos ? "" : trimmed(content.substr(sign + 1));
        const std::optional<bool> isValid = take(settings, name, value);
        if (!isValid) {
            raiseInvalid(where, "'" + name + "' is none of card, address, usb, packet-socket and heartbeat");
        }
        if (!*isValid) {
            raiseInvalid(where, std::string("'").append(value).append("' is no value of '").append(name).append("'"));
        }
    }
    return settings;
}

void replaceNetwork(Settings& settings, const std::string& list) {
    settings.cards.clear();
    settings.addresses.clear();
    std::istringstream words(list);
    std::string word;
    while (std::getline(words, word, ',')) {
        word = trimmed(word);
        if (Ipv4::parse(word)) {
            settings.addresses.push_back(word);
        } else if (isCardName(word)) {
            settings.cards.push_back(word);
        } else if (!word.empty()) {
            raiseInvalid("QUILL_GENICAM", "'" + word + "' is neither the name of a network card nor an IPv4 address");
        }
    }
}

void configure(const Settings& settings) {
    const auto refuse = [](const std::string& value) {
        raise<KestrelException_InvalidArgument>(QUILL_HERE, Errors::kArgumentUnhandled, value);
    };
    for (const std::string& card : settings.cards) {
        if (!isCardName(card)) {
            refuse(card);
        }
    }
    for (const std::string& address : settings.addresses) {
        if (!Ipv4::parse(address)) {
            refuse(address);
        }
    }
    if (!heartbeatOf(std::to_string(settings.heartbeatMs))) {
        refuse(std::to_string(settings.heartbeatMs));
    }
    const Utilities::MutexLock lock(present().mutex);
    present().settings = settings;
}

Settings getSettings() {
    const Utilities::MutexLock lock(present().mutex);
    if (!present().settings) {
        present().settings = readAtStart();
    }
    return *present().settings;
}

} // namespace CameraInterface::GenICam
