// SPDX-License-Identifier: Apache-2.0

#include "Network.h"

#include <pybind11/stl.h>

#include "Interpreter.h"
#include "Text.h"

namespace PythonBinding {

namespace py = pybind11;
using namespace CameraInterface::GenICam;
using namespace py::literals;

namespace {

void useGenICam(const std::vector<std::string>& cards, const std::vector<std::string>& addresses, bool usb,
                bool packetSocket, std::uint32_t heartbeatMs) {
    const Settings settings{cards, addresses, usb, packetSocket, heartbeatMs};
    const Released released;
    configure(settings);
}

py::dict present() {
    const Settings settings = getSettings();
    return py::dict("cards"_a = toPython(settings.cards), "addresses"_a = toPython(settings.addresses),
                    "usb"_a = settings.usb, "packet_socket"_a = settings.packetSocket,
                    "heartbeat_ms"_a = settings.heartbeatMs);
}

/// Asks a camera of the list, which Ctrl-C interrupts: the question then ends alone.
template <typename Question>
auto ask(Question question) {
    Process::present().requireWorkspace();
    return interruptibly(std::move(question));
}

py::tuple placeOf(const NetworkPlace& place) {
    return py::make_tuple(toPython(place.address), toPython(place.mask), toPython(place.gateway));
}

py::object controllerName(const std::optional<Controller>& controller) {
    if (!controller) {
        return py::none();
    }
    switch (*controller) {
    case Controller::Nobody:
        return py::str("nobody");
    case Controller::ThisProgram:
        return py::str("this program");
    case Controller::AnotherProgram:
        return py::str("another program");
    }
    return py::none();
}

py::dict describe(const std::string& serialNumber) {
    const CameraNetwork network = ask([=] { return describeNetwork(serialNumber); });
    return py::dict("hardware_address"_a = toPython(network.hardwareAddress), "present"_a = placeOf(network.present),
                    "origin"_a = getOriginName(network.origin),
                    "is_persistent_supported"_a = network.isPersistentSupported,
                    "is_persistent_enabled"_a = network.isPersistentEnabled,
                    "is_dhcp_supported"_a = network.isDhcpSupported, "is_dhcp_enabled"_a = network.isDhcpEnabled,
                    "persistent"_a = network.persistent ? py::object(placeOf(*network.persistent)) : py::none(),
                    "card"_a = toPython(network.card), "card_address"_a = toPython(network.cardAddress),
                    "card_mask"_a = toPython(network.cardMask), "card_speed_mbps"_a = network.cardSpeedMbps,
                    "obstacle"_a = toPython(network.obstacle), "link_speed_mbps"_a = network.linkSpeedMbps,
                    "packet_size"_a = network.packetSize, "packet_delay_ns"_a = network.packetDelayNs,
                    "heartbeat_ms"_a = network.heartbeatMs, "controller"_a = controllerName(network.controller),
                    "controller_address"_a = toPython(network.controllerAddress));
}

py::list examine(const std::string& serialNumber) {
    py::list result;
    for (const LinkFinding& finding : ask([=] { return examineLink(serialNumber); })) {
        result.append(py::make_tuple(toPython(finding.subject), getVerdictName(finding.verdict),
                                     toPython(finding.sentence), toPython(finding.remedy)));
    }
    return result;
}

template <typename Number>
auto setter(Number (*set)(const std::string&, Number)) {
    return
        [set](const std::string& serialNumber, Number value) { return ask([=] { return set(serialNumber, value); }); };
}

} // namespace

void bindNetwork(py::module_& module) {
    module.def("use_genicam", &useGenICam);
    module.def("genicam_settings", &present);
    module.def("describe_network", &describe);
    module.def("set_persistent_address", [](const std::string& serialNumber, const std::string& address,
                                            const std::string& mask, const std::string& gateway) {
        ask([=] { setPersistentAddress(serialNumber, {address, mask, gateway}); });
    });
    module.def("set_address_mode", [](const std::string& serialNumber, bool persistent, bool dhcp) {
        ask([=] { setAddressMode(serialNumber, persistent, dhcp); });
    });
    module.def("set_packet_size", setter(&setPacketSize));
    module.def("set_packet_delay_ns", setter(&setPacketDelayNs));
    module.def("set_heartbeat_ms", setter(&setHeartbeatMs));
    module.def("force_address", [](const std::string& camera, const std::string& address, const std::string& mask,
                                   const std::string& gateway) {
        ask([=] { forceAddress(camera, {address, mask, gateway}); });
    });
    module.def("examine_link", &examine);
    module.def("compute_packet_delay_ns", &computePacketDelayNs);
}

} // namespace PythonBinding
