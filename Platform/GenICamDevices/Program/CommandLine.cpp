// SPDX-License-Identifier: Apache-2.0

#include "CommandLine.h"

#include <algorithm>
#include <fstream>
#include <functional>
#include <iterator>
#include <stdexcept>

namespace GigECameraProgram {

using namespace GenICamDevices;

namespace {

constexpr std::size_t kNameWidth = 26;
constexpr std::size_t kLargestDescription = std::size_t{64} << 20;

/// Something that the command line sets, besides faults.
struct OptionRow {
    const char* name;
    const char* argument; ///< nullptr: none
    const char* help;
    /// @return whether the text is a value of the option
    bool (*set)(CommandLine& line, const std::string& text);
};

template <std::string CameraOptions::*Field>
bool setText(CommandLine& line, const std::string& text) {
    line.camera.*Field = text;
    return true;
}

/// Of a register that holds so many bytes, with a zero at its end.
template <std::string CameraOptions::*Field, std::size_t Size>
bool setShortText(CommandLine& line, const std::string& text) {
    line.camera.*Field = text;
    return text.size() < Size;
}

template <bool CommandLine::*Field>
bool setFlag(CommandLine& line, const std::string& /*text*/) {
    line.*Field = true;
    return true;
}

bool setMac(CommandLine& line, const std::string& text) {
    std::string digits = "0x";
    for (std::size_t i = 0; i < text.size(); ++i) {
        const bool isSeparator = i % 3 == 2;
        if (isSeparator != (text[i] == ':')) {
            return false;
        }
        digits += isSeparator ? "" : std::string(1, text[i]);
    }
    return text.size() == 17 && readNumber(digits, 0xFFFFFFFFFFFF, line.camera.mac) && line.camera.mac != 0;
}

bool setCard(CommandLine& line, const std::string& text) {
    line.camera.card = text;
    return !text.empty();
}

bool setSize(CommandLine& line, const std::string& text) {
    const std::size_t cross = text.find('x');
    std::uint64_t width = 0;
    std::uint64_t height = 0;
    if (cross == std::string::npos || !readNumber(text.substr(0, cross), 8192, width) ||
        !readNumber(text.substr(cross + 1), 8192, height)) {
        return false;
    }
    line.camera.width = static_cast<std::uint32_t>(width);
    line.camera.height = static_cast<std::uint32_t>(height);
    return width >= 16 && height >= 16 && width % 4 == 0 && height % 2 == 0;
}

bool setFps(CommandLine& line, const std::string& text) {
    return readDecimal(text, 0, 10000, line.camera.fps) && (line.camera.fps == 0 || line.camera.fps >= 0.1);
}

bool setSeed(CommandLine& line, const std::string& text) {
    return readNumber(text, UINT64_MAX, line.camera.seed);
}

bool setIdStart(CommandLine& line, const std::string& text) {
    std::uint64_t id = 0;
    const bool isGood = readNumber(text, UINT16_MAX, id) && id != 0;
    line.camera.idStart = static_cast<std::uint16_t>(id);
    return isGood;
}

bool setDescription(CommandLine& line, const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    line.camera.description.assign(std::istreambuf_iterator<char>(file), {});
    if (!file || line.camera.description.empty()) {
        throw std::runtime_error("'" + path + "' cannot be read or is empty");
    }
    if (line.camera.description.size() > kLargestDescription) {
        throw std::runtime_error("'" + path + "' is larger than 64 MiB");
    }
    line.camera.descriptionName = path.substr(path.rfind('/') + 1);
    return true;
}

constexpr OptionRow kOptions[] = {
    {"address", "ADDRESS", "IPv4 address of this machine to answer at (default 127.0.0.1, or the first one of --card)",
     setText<&CameraOptions::address>},
    {"card", "NAME", "network interface whose broadcasts are answered (default: the one with the address)", setCard},
    {"vendor", "TEXT", "at most 31 bytes", setShortText<&CameraOptions::vendor, 32>},
    {"model", "TEXT", "at most 31 bytes", setShortText<&CameraOptions::model, 32>},
    {"serial", "TEXT", "at most 15 bytes (default: made from the address)", setShortText<&CameraOptions::serial, 16>},
    {"user-name", "TEXT", "at most 15 bytes", setShortText<&CameraOptions::userName, 16>},
    {"mac", "MAC", "six hexadecimal bytes such as 02:00:7F:00:00:01 (default: made from the address)", setMac},
    {"xml", "FILE", "description of the features, XML or zipped; the name of the file is that in the URL",
     setDescription},
    {"url", "TEXT", "where applications find the description (default: in the camera); at most 511 bytes",
     setShortText<&CameraOptions::url, 512>},
    {"size", "WxH", "size of the sensor, 16 to 8192, W a multiple of 4, H of 2 (default 1936x1216)", setSize},
    {"fps", "RATE", "frames per second at the start, 0.1 to 10000 (default 30); 0: as fast as it goes", setFps},
    {"seed", "N", "of what happens by chance: the same seed, the same packets (default 1)", setSeed},
    {"id-start", "N", "number of the first frame of an acquisition, 1 to 65535 (default 1)", setIdStart},
    {"until-eof", nullptr, "ends when standard input ends", setFlag<&CommandLine::untilEof>},
    {"version", nullptr, "prints the version", setFlag<&CommandLine::wantsVersion>},
    {"help", nullptr, "prints this", setFlag<&CommandLine::wantsHelp>},
};

std::string helpLine(const std::string& prefix, const char* name, const char* argument, const char* help) {
    std::string line = prefix + name + (argument != nullptr ? std::string(" ") + argument : "");
    line.resize(std::max(line.size() + 1, kNameWidth), ' ');
    return line + help + "\n";
}

[[noreturn]] void refuse(const std::string& what) {
    throw std::invalid_argument(what + "; try 'quill-gige-camera --help'");
}

/// What an option of the command line does.
struct Setting {
    const char* argument;
    const char* help;
    std::function<bool(CommandLine& line, const std::string& text)> set;
};

/// @param name  with its two hyphens
Setting findSetting(const std::string& name) {
    for (const OptionRow& row : kOptions) {
        if (name == std::string("--") + row.name) {
            return {row.argument, row.help, row.set};
        }
    }
    for (const FaultRow& row : faultRows()) {
        if (name == std::string("--") + row.name) {
            return {row.argument, row.help,
                    [&row](CommandLine& line, const std::string& text) { return row.set(line.camera.faults, text); }};
        }
    }
    refuse("'" + name + "' is no option");
}

[[noreturn]] void refuseValue(const std::string& name, const std::string& value, const Setting& setting) {
    refuse("'" + value + "' is no value of " + name + " " + setting.argument + ": " + setting.help);
}

} // namespace

CommandLine parseCommandLine(const std::vector<std::string>& words) {
    CommandLine line;
    bool hasAddress = false;
    for (auto word = words.begin(); word != words.end(); ++word) {
        const std::size_t equals = word->find('=');
        const std::string name = word->substr(0, equals);
        const Setting setting = findSetting(name);
        std::string value = "on";
        if (equals != std::string::npos) {
            value = word->substr(equals + 1);
        } else if (setting.argument != nullptr) {
            if (++word == words.end()) {
                refuse("'" + name + "' needs " + setting.argument);
            }
            value = *word;
        }
        if (setting.argument == nullptr && equals != std::string::npos) {
            refuse("'" + name + "' takes no value");
        }
        if (!setting.set(line, value)) {
            refuseValue(name, value, setting);
        }
        hasAddress |= name == "--address";
    }
    if (!hasAddress && !line.camera.card.empty()) {
        line.camera.address.clear();
    }
    return line;
}

std::string helpText() {
    std::string text = "Usage: quill-gige-camera [OPTION...]\n"
                       "A GigE Vision camera in software, for applications on this machine or in its network.\n"
                       "Prints 'ready ADDRESS' when it listens, and its counts as JSON at the end.\n\nOptions:\n";
    for (const OptionRow& row : kOptions) {
        text += helpLine("  --", row.name, row.argument, row.help);
    }
    text += "\nFaults:\n";
    for (const FaultRow& row : faultRows()) {
        text += helpLine("  --", row.name, row.argument, row.help);
    }
    return text + R"(
While it runs, it performs each line of standard input and prints a line that
begins with 'ok' or 'error':
  loss 1                  sets a fault by its name; switches are on or off
  counts                  prints the counts so far
  help                    lists the faults
  quit                    ends the camera, as SIGTERM and SIGINT do

Exit codes: 0 ended as asked, 1 it cannot run, 2 the command line is wrong

Examples:
  quill-gige-camera --fps 100 --loss 1
  quill-gige-camera --address 127.0.0.2 --serial B2 --size 640x480 --deny
)";
}

std::string faultHelp() {
    std::string text;
    for (const FaultRow& row : faultRows()) {
        text.append(text.empty() ? "" : ", ").append(row.name).append(" ");
        text.append(row.argument != nullptr ? row.argument : "on|off");
    }
    return text;
}

} // namespace GigECameraProgram
