// SPDX-License-Identifier: Apache-2.0

// GenICam cameras and their network, and the network settings of the SDK's GigE cameras.

#include <exception>
#include <optional>
#include <string>
#include <vector>

#include <Quill.h>

#include "Blocks.h"
#include "Calls.h"
#include "Workspace.h"

using namespace CInterface;
namespace GenICam = CameraInterface::GenICam;

namespace {

static_assert(QUILL_ORIGIN_TEMPORARY == static_cast<int>(GenICam::AddressOrigin::Temporary));
static_assert(QUILL_CONTROLLER_ANOTHER_PROGRAM == static_cast<int>(GenICam::Controller::AnotherProgram));
static_assert(QUILL_LINK_FAULT == static_cast<int>(GenICam::LinkVerdict::Fault));

std::vector<std::string> textsOf(const char* const* list, size_t count) {
    requireData(list, count);
    std::vector<std::string> texts;
    for (size_t i = 0; i < count; ++i) {
        requireAll(list[i]);
        texts.emplace_back(list[i]);
    }
    return texts;
}

GenICam::NetworkPlace placeOf(const quill_network_place* theirs) {
    requireAll(theirs);
    const auto place = fromCaller(theirs, quill_network_place QUILL_NETWORK_PLACE_INIT);
    requireAll(place.address, place.mask, place.gateway);
    return {place.address, place.mask, place.gateway};
}

const quill_network_place* makePlace(Block& block, const GenICam::NetworkPlace& source) {
    return block.make(quill_network_place{sizeof(quill_network_place), block.text(source.address),
                                          block.text(source.mask), block.text(source.gateway)});
}

template <typename Number>
int64_t orUnknown(const std::optional<Number>& number) {
    return number ? static_cast<int64_t>(*number) : -1;
}

/// Calls an operation of a camera's network that returns what the camera took.
template <typename Number>
quill_status setOnNetwork(const char* serialNumber, Number wanted, Number* taken, quill_error* error,
                          Number (*set)(const std::string&, Number)) {
    return call(error, [&] {
        requireAll(serialNumber, taken);
        const Workspace::Stay stay(serialNumber);
        *taken = set(serialNumber, wanted);
    });
}

/// The sentence of a failure.
std::string sentenceOf(const std::exception_ptr& failure) {
    quill_error error = QUILL_ERROR_INIT;
    call(&error, [&] { std::rethrow_exception(failure); });
    return error.sentence;
}

} // namespace

const char* quill_get_origin_name(quill_address_origin origin) {
    return origin >= QUILL_ORIGIN_PERSISTENT && origin <= QUILL_ORIGIN_TEMPORARY
               ? GenICam::getOriginName(static_cast<GenICam::AddressOrigin>(origin))
               : "unknown";
}

const char* quill_get_verdict_name(quill_link_verdict verdict) {
    return verdict >= QUILL_LINK_GOOD && verdict <= QUILL_LINK_FAULT
               ? GenICam::getVerdictName(static_cast<GenICam::LinkVerdict>(verdict))
               : "unknown";
}

quill_status quill_genicam_configure(const quill_genicam_settings* settings, quill_error* error) {
    return call(error, [&] {
        requireAll(settings);
        const auto theirs = fromCaller(settings, quill_genicam_settings QUILL_GENICAM_SETTINGS_INIT);
        GenICam::Settings ours;
        ours.cards = textsOf(theirs.cards, theirs.card_count);
        ours.addresses = textsOf(theirs.addresses, theirs.address_count);
        ours.usb = theirs.usb;
        ours.packetSocket = theirs.packet_socket;
        ours.heartbeatMs = theirs.heartbeat_ms;
        GenICam::configure(ours);
    });
}

quill_status quill_genicam_get_settings(quill_genicam_settings** settings, quill_error* error) {
    return call(error, [&] {
        requireAll(settings);
        const GenICam::Settings source = GenICam::getSettings();
        Block block;
        auto* const result = block.make(quill_genicam_settings{});
        result->size = sizeof(*result);
        result->cards = block.texts(source.cards);
        result->card_count = source.cards.size();
        result->addresses = block.texts(source.addresses);
        result->address_count = source.addresses.size();
        result->usb = source.usb;
        result->packet_socket = source.packetSocket;
        result->heartbeat_ms = source.heartbeatMs;
        block.give(result, settings);
    });
}

quill_status quill_describe_network(const char* serial_number, quill_camera_network** network, quill_error* error) {
    return call(error, [&] {
        requireAll(serial_number, network);
        const Workspace::Stay stay(serial_number);
        const GenICam::CameraNetwork source = GenICam::describeNetwork(serial_number);
        Block block;
        auto* const result = block.make(quill_camera_network{});
        result->size = sizeof(*result);
        result->hardware_address = block.text(source.hardwareAddress);
        result->present = makePlace(block, source.present);
        result->persistent = source.persistent ? makePlace(block, *source.persistent) : nullptr;
        result->card = block.text(source.card);
        result->card_address = block.text(source.cardAddress);
        result->card_mask = block.text(source.cardMask);
        result->obstacle = block.text(source.obstacle);
        result->controller_address = block.text(source.controllerAddress);
        result->card_speed_mbps = orUnknown(source.cardSpeedMbps);
        result->link_speed_mbps = orUnknown(source.linkSpeedMbps);
        result->packet_size = orUnknown(source.packetSize);
        result->packet_delay_ns = orUnknown(source.packetDelayNs);
        result->heartbeat_ms = orUnknown(source.heartbeatMs);
        result->controller = source.controller ? static_cast<quill_controller>(*source.controller) : -1;
        result->origin = static_cast<quill_address_origin>(source.origin);
        result->is_persistent_supported = source.isPersistentSupported;
        result->is_persistent_enabled = source.isPersistentEnabled;
        result->is_dhcp_supported = source.isDhcpSupported;
        result->is_dhcp_enabled = source.isDhcpEnabled;
        block.give(result, network);
    });
}

quill_status quill_set_persistent_address(const char* serial_number, const quill_network_place* place,
                                          quill_error* error) {
    return call(error, [&] {
        requireAll(serial_number);
        const GenICam::NetworkPlace wanted = placeOf(place);
        const Workspace::Stay stay(serial_number);
        GenICam::setPersistentAddress(serial_number, wanted);
    });
}

quill_status quill_set_address_mode(const char* serial_number, bool persistent, bool dhcp, quill_error* error) {
    return call(error, [&] {
        requireAll(serial_number);
        const Workspace::Stay stay(serial_number);
        GenICam::setAddressMode(serial_number, persistent, dhcp);
    });
}

quill_status quill_set_packet_size(const char* serial_number, uint32_t bytes, uint32_t* taken, quill_error* error) {
    return setOnNetwork(serial_number, bytes, taken, error, GenICam::setPacketSize);
}

quill_status quill_set_packet_delay_ns(const char* serial_number, uint64_t nanoseconds, uint64_t* taken,
                                       quill_error* error) {
    return setOnNetwork(serial_number, nanoseconds, taken, error, GenICam::setPacketDelayNs);
}

quill_status quill_set_heartbeat_ms(const char* serial_number, uint32_t milliseconds, uint32_t* taken,
                                    quill_error* error) {
    return setOnNetwork(serial_number, milliseconds, taken, error, GenICam::setHeartbeatMs);
}

quill_status quill_force_address(const char* camera, const quill_network_place* place, quill_error* error) {
    return call(error, [&] {
        requireAll(camera);
        const GenICam::NetworkPlace wanted = placeOf(place);
        const Workspace::Stay stay(camera);
        GenICam::forceAddress(camera, wanted);
    });
}

quill_status quill_examine_link(const char* serial_number, quill_link_finding*** findings, size_t* count,
                                quill_error* error) {
    return call(error, [&] {
        requireAll(serial_number, findings, count);
        const Workspace::Stay stay(serial_number);
        giveList(
            GenICam::examineLink(serial_number),
            [](Block& block, const GenICam::LinkFinding& item) {
                return quill_link_finding{sizeof(quill_link_finding), block.text(item.subject),
                                          block.text(item.sentence), block.text(item.remedy),
                                          static_cast<quill_link_verdict>(item.verdict)};
            },
            findings, count);
    });
}

quill_status quill_compute_packet_delay_ns(uint32_t cameras, uint32_t link_speed_mbps, uint32_t packet_size,
                                           uint32_t camera_speed_mbps, uint64_t* nanoseconds, quill_error* error) {
    return call(error, [&] {
        requireAll(nanoseconds);
        *nanoseconds = GenICam::computePacketDelayNs(cameras, link_speed_mbps, packet_size, camera_speed_mbps);
    });
}

quill_status quill_read_gige(quill_camera camera, quill_gige_description** description, quill_error* error) {
    return call(error, [&] {
        requireAll(description);
        const CameraUse use(camera);
        const auto source = OrvexAdapter::readGigE(*use);
        if (!source) {
            *description = nullptr;
            return;
        }
        Block block;
        auto* const result = block.make(quill_gige_description{});
        result->size = sizeof(*result);
        if (source->settings) {
            result->camera_ip_address = block.text(source->settings->GetCamIPAddress());
            result->camera_mask_address = block.text(source->settings->GetCamMaskAddress());
            result->camera_gateway_address = block.text(source->settings->GetCamGatewayAddress());
            result->camera_mac_address = block.text(source->settings->GetCamMacAddress());
            result->host_ip_address = block.text(source->settings->GetHostIPAddress());
            result->host_mask_address = block.text(source->settings->GetHostMaskAddress());
            result->host_gateway_address = block.text(source->settings->GetHostGatewayAddress());
            result->host_mac_address = block.text(source->settings->GetHostMacAddress());
        }
        result->statistics = source->statistics ? block.text(*source->statistics) : nullptr;
        result->failure = source->failure ? block.text(sentenceOf(source->failure)) : nullptr;
        block.give(result, description);
    });
}
