// SPDX-License-Identifier: Apache-2.0

#include <stdexcept>

#include "Device/Registry.h"
#include "Refusal.h"

// Implements SoftwareDevices.h.

namespace SoftwareDevices {

namespace {

Registry& registry() {
    return Registry::instance();
}

/// Turns a refusal into std::invalid_argument: on the control side it is a mistake in the test.
template <class Function>
auto orInvalidArgument(const char* what, Function function) {
    try {
        return function();
    } catch (const Refusal&) {
        throw std::invalid_argument(what);
    }
}

} // namespace

void startEmpty() {
    registry().startEmpty();
}

void plugDefaultDevices() {
    registry().plugMissing(defaultDevices());
}

std::uint32_t plug(const DeviceDescription& description) {
    registry().plug(std::make_shared<Hardware>(description));
    return description.serial;
}

void unplug(std::uint32_t serial) {
    if (!registry().leaveBus(serial)) {
        throw std::invalid_argument("No device with the serial number " + std::to_string(serial) + " is plugged in.");
    }
}

void replug(std::uint32_t serial) {
    registry().replug(serial);
}

void unplugAll() {
    registry().unplugAll();
}

std::vector<std::uint32_t> pluggedDevices() {
    std::vector<std::uint32_t> serials;
    for (const auto& device : registry().devices()) {
        serials.push_back(device->serial());
    }
    return serials;
}

bool hasProperty(std::uint32_t serial, std::uint32_t number) {
    return registry().device(serial)->hasProperty(number);
}

PropertyRow property(std::uint32_t serial, std::uint32_t number) {
    return orInvalidArgument("The device has no such property.",
                             [&] { return registry().device(serial)->property(number); });
}

void setProperty(std::uint32_t serial, const PropertyRow& row) {
    registry().device(serial)->replaceProperty(row);
}

void setWritable(std::uint32_t serial, std::uint32_t number, bool writable) {
    orInvalidArgument("The device has no such property.",
                      [&] { registry().device(serial)->setWritable(number, writable); });
}

ORVEX_FRAME_FORMAT frameFormat(std::uint32_t serial) {
    return orInvalidArgument("The device has no sensor.", [&] { return registry().device(serial)->format(); });
}

float frameRate(std::uint32_t serial) {
    return orInvalidArgument("The device has no sensor.", [&] { return registry().device(serial)->frameRate(); });
}

std::uint32_t powerMode(std::uint32_t serial) {
    return orInvalidArgument("The device has no power mode.", [&] { return registry().device(serial)->powerMode(); });
}

bool hardwareTrigger(std::uint32_t serial) {
    return registry().device(serial)->hardwareTrigger();
}

NetworkSettings network(std::uint32_t serial) {
    return orInvalidArgument("The device is not on the network.",
                             [&] { return registry().device(serial)->hardware().network(); });
}

bool isUsb3Vision(std::uint32_t serial) {
    return registry().device(serial)->library() == Library::Usb3Vision;
}

bool isOpen(std::uint32_t serial) {
    return !registry().sessionsOf(registry().device(serial)).empty();
}

bool isStreaming(std::uint32_t serial) {
    return registry().device(serial)->isStreaming();
}

std::vector<std::uint8_t> flash(std::uint32_t serial, std::uint32_t address, std::uint32_t length) {
    return orInvalidArgument("Outside the flash.", [&] {
        std::vector<std::uint8_t> bytes(length);
        registry().device(serial)->hardware().flash().read(address, bytes.data(), length);
        return bytes;
    });
}

void writeFlash(std::uint32_t serial, std::uint32_t address, const std::vector<std::uint8_t>& bytes) {
    orInvalidArgument("Outside the flash.", [&] {
        registry().device(serial)->hardware().flash().rewrite(address, bytes.data(),
                                                              static_cast<std::uint32_t>(bytes.size()));
    });
}

std::uint8_t flashStatus(std::uint32_t serial) {
    return registry().device(serial)->hardware().flash().status();
}

std::vector<std::uint8_t> ram(std::uint32_t serial, std::uint32_t address, std::uint32_t length) {
    return registry().device(serial)->hardware().ram(address, length);
}

std::optional<std::uint32_t> startedProgram(std::uint32_t serial) {
    return registry().device(serial)->hardware().startedProgram();
}

bool isJtagOpen(std::uint32_t serial) {
    return registry().device(serial)->jtag().isOpen();
}

TapState tapState(std::uint32_t serial) {
    return registry().device(serial)->jtag().state();
}

std::vector<std::uint8_t> jtagData(std::uint32_t serial) {
    return registry().device(serial)->jtag().data();
}

void startJtagLog(std::uint32_t serial) {
    registry().device(serial)->jtag().startLog();
}

std::vector<JtagClocks> takeJtagLog(std::uint32_t serial) {
    return registry().device(serial)->jtag().takeLog();
}

void presentScene(std::uint32_t serial, const Scene& scene) {
    if (scene.width == 0 || scene.height == 0 || scene.rgb.size() != std::uint64_t{scene.width} * scene.height * 3) {
        throw std::invalid_argument("A scene has width times height points of three bytes.");
    }
    registry().device(serial)->hardware().sensor().present(scene);
}

void setAsFastAsAsked(std::uint32_t serial, bool asFastAsAsked) {
    const auto device = registry().device(serial);
    device->hardware().setAsFastAsAsked(asFastAsAsked);
    for (const auto& session : registry().sessionsOf(device)) {
        session->capture->wake();
    }
}

bool triggerStill(std::uint32_t serial) {
    bool taken = false;
    for (const auto& session : registry().sessionsOf(registry().device(serial))) {
        taken = session->capture->trigger() || taken;
    }
    return taken;
}

void failNext(std::uint32_t serial, Operation operation, std::uint32_t count, std::uint32_t errorCode) {
    registry().faults().failNext(serial, operation, count, errorCode);
}

void failCall(std::uint64_t call, std::uint32_t errorCode) {
    registry().faults().failCall(boundaryCalls() + call, errorCode);
}

void delay(std::uint32_t serial, Operation operation, std::chrono::milliseconds time) {
    registry().faults().delay(serial, operation, time);
}

void dropFrames(std::uint32_t serial, std::uint32_t count) {
    registry().device(serial)->dropFrames(count);
}

void truncateFrames(std::uint32_t serial, std::uint32_t count, std::uint32_t bytes) {
    registry().device(serial)->truncateFrames(count, bytes);
}

void unplugDuring(std::uint32_t serial, Operation operation, std::uint32_t call) {
    registry().faults().unplugDuring(serial, operation, call);
}

void unplugCall(std::uint32_t serial, std::uint64_t call) {
    registry().faults().unplugCall(serial, boundaryCalls() + call);
}

void clearFaults() {
    registry().faults().clear();
}

void startLog() {
    registry().callLog().start();
}

std::vector<CallRecord> takeLog() {
    return registry().callLog().take();
}

std::uint64_t boundaryCalls() {
    return registry().callLog().calls();
}

std::uint64_t calls(Operation operation) {
    return registry().callLog().calls(operation);
}

} // namespace SoftwareDevices
