// SPDX-License-Identifier: Apache-2.0

#include <algorithm>
#include <cctype>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <CLI/CLI.hpp>
#include <Quill.h>
#include <fmt/format.h>

#include "Commands/Command.h"
#include "Terminal/NumberArgument.h"
#include "Terminal/Numbers.h"

namespace QuillTool {

namespace {

namespace GenICam = CameraInterface::GenICam;
using GenICam::CameraNetwork;
using GenICam::Controller;
using GenICam::LinkFinding;
using GenICam::LinkVerdict;
using GenICam::NetworkPlace;

constexpr const char* kPlaceForm = "ADDRESS/MASK[,GATEWAY]";

/// "255.255.255.0" of "24"; other texts stay, for the library to judge.
std::string maskText(const std::string& text) {
    const std::optional<std::uint64_t> bits = parseWholeNumber(text);
    if (!bits || *bits == 0 || *bits > 32) {
        return text;
    }
    const std::uint32_t mask = ~std::uint32_t{0} << (32 - *bits);
    return fmt::format("{}.{}.{}.{}", mask >> 24, mask >> 16 & 255, mask >> 8 & 255, mask & 255);
}

NetworkPlace parsePlace(const std::string& option, const std::string& text) {
    const std::size_t slash = text.find('/');
    if (slash == std::string::npos) {
        throw ToolError(ExitCode::Usage, fmt::format("network: {}: '{}' has no mask; give {}, such as 192.168.1.5/24",
                                                     option, text, kPlaceForm));
    }
    const std::size_t comma = text.find(',', slash);
    NetworkPlace place;
    place.address = text.substr(0, slash);
    place.mask = maskText(text.substr(slash + 1, comma == std::string::npos ? comma : comma - slash - 1));
    if (comma != std::string::npos) {
        place.gateway = text.substr(comma + 1);
    }
    return place;
}

bool isHardwareAddress(const std::string& text) {
    constexpr std::size_t kLength = 17;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const bool isSeparator = text[i] == ':' || text[i] == '-';
        if (isSeparator != (i % 3 == 2) || (!isSeparator && std::isxdigit(static_cast<unsigned char>(text[i])) == 0)) {
            return false;
        }
    }
    return text.size() == kLength;
}

/// Runs an action that takes a place, and says in terms of the command line what is wrong with that.
template <typename Action>
void attemptPlace(const std::string& tried, const std::string& option, Action&& action) {
    try {
        action();
    } catch (const KestrelExceptions::KestrelException_InvalidArgument& failure) {
        throw ToolError(
            ExitCode::Usage,
            fmt::format("network: {}: {} Address and mask must fit a device, and the gateway be on its network", option,
                        QuillTool::reasonOf(failure)));
    } catch (const std::exception& failure) {
        throw describeFailure(tried, failure);
    }
}

std::string placeText(const NetworkPlace& place) {
    const std::string gateway = place.gateway == "0.0.0.0" ? "" : ", gateway " + place.gateway;
    return fmt::format("{}, mask {}{}", place.address, place.mask, gateway);
}

Json placeJson(const NetworkPlace& place) {
    return {{"address", place.address}, {"mask", place.mask}, {"gateway", place.gateway}};
}

template <typename Number>
Json jsonOf(const std::optional<Number>& number) {
    return number ? Json(*number) : Json(nullptr);
}

template <typename Number>
std::string textOf(const std::optional<Number>& number, const char* unit) {
    return number ? fmt::format("{} {}", *number, unit) : "";
}

const char* controllerName(Controller controller) {
    switch (controller) {
    case Controller::Nobody:
        return "nobody";
    case Controller::ThisProgram:
        return "this program";
    case Controller::AnotherProgram:
        break;
    }
    return "another program";
}

std::string controllerText(const CameraNetwork& network) {
    if (!network.controller) {
        return "";
    }
    const std::string at = network.controllerAddress.empty() ? "" : ", at " + network.controllerAddress;
    return controllerName(*network.controller) + at;
}

const char* modeText(bool isSupported, bool isEnabled) {
    return isEnabled ? "on" : isSupported ? "off" : "not supported";
}

Table networkTable(const CameraNetwork& network) {
    const bool isStored = network.persistent && network.persistent->address != "0.0.0.0";
    return {{"WHAT", "VALUE"},
            {{"Camera MAC Address", network.hardwareAddress},
             {"Camera IP Address", fmt::format("{} ({})", network.present.address, getOriginName(network.origin))},
             {"Camera Subnet Mask", network.present.mask},
             {"Camera Gateway", network.present.gateway},
             {"Persistent Address", modeText(network.isPersistentSupported, network.isPersistentEnabled)},
             {"Stored for it", isStored ? placeText(*network.persistent) : ""},
             {"DHCP", modeText(network.isDhcpSupported, network.isDhcpEnabled)},
             {"Network Card", network.card},
             {"Host IP Address", network.cardAddress},
             {"Host Subnet Mask", network.cardMask},
             {"Card Speed", textOf(network.cardSpeedMbps, "Mbit/s")},
             {"Camera Link Speed", textOf(network.linkSpeedMbps, "Mbit/s")},
             {"Packet Size", textOf(network.packetSize, "bytes")},
             {"Packet Delay", textOf(network.packetDelayNs, "ns")},
             {"Heartbeat Time-out", textOf(network.heartbeatMs, "ms")},
             {"Controlled by", controllerText(network)}}};
}

Json networkDocument(const std::string& serialNumber, const CameraNetwork& network) {
    Json camera = placeJson(network.present);
    camera["hardwareAddress"] = network.hardwareAddress;
    camera["origin"] = getOriginName(network.origin);
    camera["linkSpeedMbps"] = jsonOf(network.linkSpeedMbps);
    Json persistent = network.persistent ? placeJson(*network.persistent) : Json::object();
    persistent["supported"] = network.isPersistentSupported;
    persistent["enabled"] = network.isPersistentEnabled;
    return {{"serialNumber", serialNumber},
            {"camera", camera},
            {"persistent", persistent},
            {"dhcp", {{"supported", network.isDhcpSupported}, {"enabled", network.isDhcpEnabled}}},
            {"host",
             {{"card", network.card},
              {"address", network.cardAddress},
              {"mask", network.cardMask},
              {"speedMbps", jsonOf(network.cardSpeedMbps)}}},
            {"packetSize", jsonOf(network.packetSize)},
            {"packetDelayNs", jsonOf(network.packetDelayNs)},
            {"heartbeatMs", jsonOf(network.heartbeatMs)},
            {"controller", network.controller ? Json(controllerName(*network.controller)) : Json(nullptr)},
            {"controllerAddress", network.controllerAddress},
            {"obstacle", network.obstacle}};
}

class NetworkCommand : public Command {
public:
    void describe(CLI::App& parser) override {
        addCameraArgument(parser, m_Selector);
        parser.add_flag("--test", m_Test, "Examine the link to the camera");
        const auto addPlace = [&](const char* name, std::string& text, const char* what,
                                  const std::string& form = kPlaceForm) {
            return parser.add_option(name, text, what)->option_text(form)->check(notEmpty());
        };
        CLI::Option* const force = addPlace(
            "--force", m_Force, "Give the camera an address now, until it restarts; SERIAL may be its MAC address");
        CLI::Option* const persistent = addPlace(
            "--persistent", m_Persistent,
            "Store an address that the camera takes at its next start, and switch that on; 'no' switches it off",
            std::string(kPlaceForm) + "|no");
        CLI::Option* const dhcp =
            parser.add_option("--dhcp", m_Dhcp, "Whether the camera asks a server for its address at its next start")
                ->option_text("yes|no")
                ->check(CLI::IsMember({"yes", "no"}));
        m_PacketSizeOption = addNumber(parser, "--packet-size", m_PacketSize,
                                       "Bytes of a packet of an image with its headers", 220, 16384);
        m_DelayOption = addNumber(parser, "--packet-delay", m_DelayNs,
                                  "Pause between two packets of an image, in nanoseconds", 0, 100000000);
        m_HeartbeatOption =
            addNumber(parser, "--heartbeat", m_HeartbeatMs,
                      "Milliseconds without a sign of life after which the camera becomes free", 500, 3600000);
        m_ShareOption =
            addNumber(parser, "--share", m_Share, "Set the pause so that so many cameras share the link", 1, 1000)
                ->excludes(m_DelayOption);
        for (CLI::Option* const other :
             {persistent, dhcp, m_PacketSizeOption, m_DelayOption, m_HeartbeatOption, m_ShareOption}) {
            force->excludes(other);
        }
        addJsonFlag(parser, m_Json);
    }

    ExitCode run(Context& context) override {
        select(context);
        if (!change()) {
            if (!m_Test) {
                return print(context);
            }
        } else if (!m_Json) {
            for (const auto& [what, value] : m_Changes.items()) {
                context.output.printLine(
                    fmt::format("{} = {}", what, value.is_string() ? value.get<std::string>() : value.dump()));
            }
        } else if (!m_Test) {
            context.output.printJson(m_Changes);
        }
        return m_Test ? test(context) : ExitCode::Done;
    }

private:
    std::string about(const std::string& what) const { return fmt::format("camera {}: {}", m_SerialNumber, what); }

    void select(Context& context) {
        if (!m_Force.empty() && isHardwareAddress(m_Selector)) {
            static_cast<void>(context.session.listCameras()); // it may be one that is not listed
            m_SerialNumber = m_Selector;
            return;
        }
        m_SerialNumber = context.session.select(m_Selector);
        const auto kind = attempt(about("cannot be examined"),
                                  [this] { return CameraInterface::Camera::getCamera(m_SerialNumber).getKind(); });
        if (kind != CameraInterface::CameraKind::GenICam) {
            throw ToolError(
                ExitCode::Failed,
                about(fmt::format("is of kind '{}', and this command is for GenICam cameras on the network; "
                                  "'quill info {}' prints what is known of its network",
                                  getKindName(kind), m_SerialNumber)));
        }
    }

    CameraNetwork describeCamera() const {
        return attempt(about("its network cannot be described"),
                       [this] { return GenICam::describeNetwork(m_SerialNumber); });
    }

    /// Makes the changes that the options ask for. @return whether there are any
    bool change() {
        if (!m_Force.empty()) {
            const NetworkPlace place = parsePlace("--force", m_Force);
            attemptPlace(about("it cannot be given the address"), "--force",
                         [&] { GenICam::forceAddress(m_SerialNumber, place); });
            m_Changes["address"] = placeText(place);
        }
        if (!m_Persistent.empty() || !m_Dhcp.empty()) {
            changeAddressMode();
        }
        if (*m_PacketSizeOption) {
            m_Changes["packet size"] = attempt(about("its packet size cannot be set"),
                                               [this] { return GenICam::setPacketSize(m_SerialNumber, m_PacketSize); });
        }
        if (*m_ShareOption) {
            m_DelayNs = delayOfShare();
        }
        if (*m_DelayOption || *m_ShareOption) {
            m_Changes["packet delay in ns"] = attempt(about("its packet delay cannot be set"), [this] {
                return GenICam::setPacketDelayNs(m_SerialNumber, m_DelayNs);
            });
        }
        if (*m_HeartbeatOption) {
            m_Changes["heartbeat in ms"] = attempt(about("its heartbeat cannot be set"), [this] {
                return GenICam::setHeartbeatMs(m_SerialNumber, m_HeartbeatMs);
            });
        }
        return !m_Changes.empty();
    }

    void changeAddressMode() {
        const bool isOff = m_Persistent == "no";
        const bool isStored = !m_Persistent.empty() && !isOff;
        const NetworkPlace place = isStored ? parsePlace("--persistent", m_Persistent) : NetworkPlace{};
        const CameraNetwork network = describeCamera();
        const bool persistent = m_Persistent.empty() ? network.isPersistentEnabled : isStored;
        const bool dhcp = m_Dhcp.empty() ? network.isDhcpEnabled : m_Dhcp == "yes";
        if (isStored) {
            attemptPlace(about("its persistent address cannot be stored"), "--persistent",
                         [&] { GenICam::setPersistentAddress(m_SerialNumber, place); });
        }
        attempt(about("where it gets its address from cannot be stored"),
                [&] { GenICam::setAddressMode(m_SerialNumber, persistent, dhcp); });
        if (!m_Persistent.empty()) {
            m_Changes["persistent address from the next start on"] = isStored ? placeText(place) : "off";
        }
        if (!m_Dhcp.empty()) {
            m_Changes["DHCP from the next start on"] = dhcp ? "on" : "off";
        }
    }

    std::uint64_t delayOfShare() const {
        const CameraNetwork network = describeCamera();
        if (!network.cardSpeedMbps) {
            throw ToolError(ExitCode::Failed,
                            about(fmt::format("the speed of {} is not known; set the pause with --packet-delay",
                                              network.card.empty() ? "its card" : network.card)));
        }
        if (!network.packetSize) {
            throw ToolError(ExitCode::Failed, about("its packet size cannot be read: " + network.obstacle));
        }
        return GenICam::computePacketDelayNs(m_Share, *network.cardSpeedMbps, *network.packetSize,
                                             network.linkSpeedMbps.value_or(0));
    }

    ExitCode print(Context& context) const {
        const CameraNetwork network = describeCamera();
        if (m_Json) {
            context.output.printJson(networkDocument(m_SerialNumber, network));
        } else {
            context.output.printTable(networkTable(network));
        }
        if (!network.obstacle.empty()) {
            throw ToolError(ExitCode::Failed, about("its registers cannot be read: " + network.obstacle));
        }
        return ExitCode::Done;
    }

    ExitCode test(Context& context) const {
        const std::vector<LinkFinding> findings =
            attempt(about("its link cannot be examined"), [this] { return GenICam::examineLink(m_SerialNumber); });
        Table table{{"VERDICT", "WHAT", "FINDING"}, {}};
        Json document = Json::array();
        for (const LinkFinding& finding : findings) {
            const char* const verdict = getVerdictName(finding.verdict);
            table.rows.push_back({verdict, finding.subject, finding.sentence});
            if (!finding.remedy.empty()) {
                table.rows.push_back({"         " + finding.remedy});
            }
            document.push_back({{"subject", finding.subject},
                                {"verdict", verdict},
                                {"sentence", finding.sentence},
                                {"remedy", finding.remedy}});
        }
        if (m_Json) {
            context.output.printJson(Json{{"changes", m_Changes}, {"findings", document}});
        } else {
            context.output.printTable(table);
        }
        const auto faults = std::count_if(findings.begin(), findings.end(), [](const LinkFinding& finding) {
            return finding.verdict == LinkVerdict::Fault;
        });
        if (faults > 0) {
            throw ToolError(ExitCode::Failed,
                            about(fmt::format("its link has {}, with the {} above",
                                              faults == 1 ? "a fault" : fmt::format("{} faults", faults),
                                              faults == 1 ? "line that mends it" : "lines that mend them")));
        }
        return ExitCode::Done;
    }

    std::string m_Selector;
    std::string m_SerialNumber;
    bool m_Test = false;
    bool m_Json = false;
    std::string m_Force;
    std::string m_Persistent;
    std::string m_Dhcp;
    std::uint32_t m_PacketSize = 0;
    std::uint64_t m_DelayNs = 0;
    std::uint32_t m_HeartbeatMs = 0;
    std::uint32_t m_Share = 0;
    CLI::Option* m_PacketSizeOption = nullptr; // of the parser
    CLI::Option* m_DelayOption = nullptr;
    CLI::Option* m_HeartbeatOption = nullptr;
    CLI::Option* m_ShareOption = nullptr;
    Json m_Changes = Json::object();
};

} // namespace

CommandDescription networkCommand() {
    return {"network", "Show, set and examine the network of a GenICam camera",
            "Without an option that changes something, prints addresses at both ends, speeds,\n"
            "packet size and delay, and who controls the camera. It need not be free for\n"
            "that; for a change and for test packets it must be.\n\n"
            "A camera with an address of another network is listed, but can only be given\n"
            "another address. If a strict reverse-path filter drops its answers, so that it is\n"
            "not listed, its MAC address finds it.\n\n"
            "A MASK is a number of bits or four numbers. Packet size, delay and heartbeat\n"
            "last until the camera restarts, unless its user set stores them. --share needs\n"
            "the speed of the card. Where --persistent and --dhcp are both off, and where no\n"
            "server answers, the camera chooses an address from 169.254.0.0/16.\n\n"
            "--test looks at the card and its speed, addresses and routes, the reverse-path\n"
            "filter, the socket's buffer, the privilege for packet sockets, the round trip of\n"
            "20 control packets and, with test packets of several sizes, at firewall, packet\n"
            "size and MTU. It ends with 1 if it finds a fault, and prints for each the\n"
            "command line that mends it.\n\n"
            "Examples:\n"
            "  quill network Maker-1234\n"
            "  quill network Maker-1234 --test\n"
            "  quill network Maker-1234 --force 192.168.1.5/24\n"
            "  quill network 00:11:22:33:44:55 --force 192.168.1.5/24\n"
            "  quill network Maker-1234 --persistent 192.168.1.5/24,192.168.1.1 --dhcp no\n"
            "  quill network Maker-1234 --packet-size 8192 --share 3\n"
            "  quill network Maker-1234 --json | jq -r .camera.address\n",
            makeCommand<NetworkCommand>};
}

} // namespace QuillTool
