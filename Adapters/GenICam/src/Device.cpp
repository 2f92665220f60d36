// SPDX-License-Identifier: Apache-2.0

#include "Device.h"

#include <algorithm>
#include <array>
#include <fstream>
#include <stdexcept>
#include <utility>

#include "CameraReach.h"
#include "Process.h"
#include "Utilities/Mutex.h"

namespace GenICamAdapter {

namespace {

using Utilities::Mutex;
using Utilities::MutexLock;
using Channel = std::shared_ptr<ControlChannel>;

/// Five minutes: a program that stands in a debugger gives no signs of life.
constexpr std::uint32_t kHeartbeatWhileDebuggingMs = 300000;
/// Bytes of a description, possibly zipped; those of real cameras have at most a tenth.
constexpr std::uint64_t kLargestDescription = 16 << 20;

/// The channel of the device that is being constructed, under that mutex.
const Channel* channelOfOpening = nullptr;

GQuark channelQuark() {
    return g_quark_from_static_string("quill-control-channel");
}

Channel* channelOf(void* device) {
    return static_cast<Channel*>(g_object_get_qdata(G_OBJECT(device), channelQuark()));
}

gboolean report(const ControlChannel::Result& result, GError** error) {
    if (!result) {
        const auto code = result.kind == ControlChannel::Result::Kind::Silent ? ARV_DEVICE_ERROR_TIMEOUT
                          : result.status == Gvcp::kAccessDenied ? ARV_DEVICE_ERROR_PROTOCOL_ERROR_ACCESS_DENIED
                                                                 : ARV_DEVICE_ERROR_PROTOCOL_ERROR;
        g_set_error_literal(error, ARV_DEVICE_ERROR, code, result.text().c_str());
    }
    return static_cast<gboolean>(static_cast<bool>(result));
}

std::uint32_t registerAddress(guint64 address) {
    return static_cast<std::uint32_t>(address); // 32 bits wide in the protocol
}

gboolean readMemoryOf(ArvDevice* device, guint64 address, guint32 size, void* buffer, GError** error) {
    return report((*channelOf(device))->readMemory(registerAddress(address), static_cast<std::uint8_t*>(buffer), size),
                  error);
}

gboolean writeMemoryOf(ArvDevice* device, guint64 address, guint32 size, void* buffer, GError** error) {
    return report((*channelOf(device))->writeMemory(registerAddress(address), static_cast<std::uint8_t*>(buffer), size),
                  error);
}

gboolean readRegisterOf(ArvDevice* device, guint64 address, guint32* value, GError** error) {
    return report((*channelOf(device))->readRegister(registerAddress(address), *value), error);
}

gboolean writeRegisterOf(ArvDevice* device, guint64 address, guint32 value, GError** error) {
    return report((*channelOf(device))->writeRegister(registerAddress(address), value), error);
}

void initialiseClass(void* classStructure, void* /*data*/) {
    auto* const operations = ARV_DEVICE_CLASS(classStructure);
    operations->read_memory = readMemoryOf;
    operations->write_memory = writeMemoryOf;
    operations->read_register = readRegisterOf;
    operations->write_register = writeRegisterOf;
}

void initialiseInstance(GTypeInstance* instance, void* /*classStructure*/) {
    g_object_set_qdata_full(G_OBJECT(instance), channelQuark(), new Channel(*channelOfOpening),
                            [](void* channel) { delete static_cast<Channel*>(channel); });
}

/// Aravis' class of network cameras, with registers that are reached through a ControlChannel.
GType networkDeviceType() {
    static const GType type = [] {
        GTypeQuery base{};
        g_type_query(ARV_TYPE_GV_DEVICE, &base);
        GTypeInfo info{};
        info.class_size = static_cast<guint16>(base.class_size);
        info.instance_size = static_cast<guint16>(base.instance_size);
        info.class_init = initialiseClass;
        info.instance_init = initialiseInstance;
        return g_type_register_static(ARV_TYPE_GV_DEVICE, "QuillGvDevice", &info, GTypeFlags(0));
    }();
    return type;
}

bool isDebuggerAttached() {
    std::ifstream status("/proc/self/status");
    for (std::string word; status >> word;) {
        if (word == "TracerPid:") {
            int pid = 0;
            status >> pid;
            return pid != 0;
        }
    }
    return false;
}

ObjectPointer<ArvDevice> constructNetworkDevice(const Channel& channel, const std::string& address) {
    const ObjectPointer<GInetAddress> card(g_inet_address_new_from_string(channel->localAddress().c_str()));
    const ObjectPointer<GInetAddress> camera(g_inet_address_new_from_string(address.c_str()));
    Failure failure;
    const MutexLock lock(aravisMutex());
    channelOfOpening = &channel;
    ObjectPointer<ArvDevice> device(
        static_cast<ArvDevice*>(g_initable_new(networkDeviceType(), nullptr, failure.out(), "interface-address",
                                               card.get(), "device-address", camera.get(), nullptr)));
    channelOfOpening = nullptr;
    if (!device) {
        throw std::runtime_error(failure.text());
    }
    return device;
}

ObjectPointer<ArvDevice> constructUsbDevice(const std::string& id) {
    Failure failure;
    const MutexLock lock(aravisMutex());
    ObjectPointer<ArvDevice> device(
        arv_interface_open_device(arv_uv_interface_get_instance(), id.c_str(), failure.out()));
    if (!device) {
        throw std::runtime_error(failure ? failure.text() : "The camera is not there.");
    }
    return device;
}

void setPolicies(ArvDevice* device) {
    arv_device_set_register_cache_policy(device, ARV_REGISTER_CACHE_POLICY_DISABLE);
    arv_device_set_range_check_policy(device, ARV_RANGE_CHECK_POLICY_DISABLE); // the properties do more
    arv_device_set_access_check_policy(device, ARV_ACCESS_CHECK_POLICY_ENABLE);
}

void requireFree(ControlChannel& channel) {
    const std::string holder = channel.controller();
    if (!holder.empty()) {
        throw std::runtime_error(holder == "?" ? "Another program controls it."
                                               : "Another program controls it, at " + holder + ".");
    }
}

/// Refuses a description that Aravis would fetch from elsewhere, or for which it would ask for any amount of memory.
void requireOwnDescription(ControlChannel& channel) {
    for (const std::uint32_t address : {Gvcp::Registers::kFirstUrl, Gvcp::Registers::kSecondUrl}) {
        std::array<std::uint8_t, Gvcp::kUrlSize> bytes{};
        const auto result = channel.readMemory(address, bytes.data(), bytes.size());
        if (address == Gvcp::Registers::kSecondUrl && result.kind == ControlChannel::Result::Kind::Refused) {
            continue; // older cameras have one
        }
        if (!result) {
            throw std::runtime_error(result.text());
        }
        const std::string url(bytes.begin(), std::find(bytes.begin(), bytes.end(), 0));
        const auto size = Gvcp::sizeOfDescription(url);
        if (!url.empty() && (!size || *size == 0 || *size > kLargestDescription)) {
            throw std::runtime_error("Its description is not in the camera, or too large: " + url);
        }
    }
}

/// Aravis takes control when it opens a camera, and streams only from one that it believes to control. The camera,
/// which knows controllers by their sockets, gets the channel as its controller instead.
void takeControlFrom(ArvDevice* device, ControlChannel& channel, std::uint32_t heartbeatMs) {
    if (isDebuggerAttached()) {
        heartbeatMs = std::max(heartbeatMs, kHeartbeatWhileDebuggingMs);
    }
    Failure failure;
    const auto* const base = ARV_DEVICE_CLASS(g_type_class_peek(ARV_TYPE_GV_DEVICE));
    base->write_register(device, Gvcp::Registers::kControl, 0, failure.out());
    if (const auto result = channel.takeControl(heartbeatMs); !result) {
        throw std::runtime_error(result.status == Gvcp::kAccessDenied ? "Another program controls it." : result.text());
    }
}

} // namespace

Mutex& aravisMutex() {
    return Process::instance().aravisMutex();
}

std::shared_ptr<Device> Device::open(const FoundCamera& camera, std::uint32_t heartbeatMs) {
    if (!camera.usbId.empty()) {
        return std::shared_ptr<Device>(new Device(constructUsbDevice(camera.usbId), nullptr));
    }
    requireReachable(camera);
    const auto channel = std::make_shared<ControlChannel>(camera.record.address);
    requireFree(*channel);
    requireOwnDescription(*channel);
    ObjectPointer<ArvDevice> device = constructNetworkDevice(channel, camera.record.address);
    if (arv_gv_device_is_controller(ARV_GV_DEVICE(device.get())) == FALSE) { // in between
        throw std::runtime_error("Another program controls it.");
    }
    takeControlFrom(device.get(), *channel, heartbeatMs);
    return std::shared_ptr<Device>(new Device(std::move(device), channel));
}

Device::Device(ObjectPointer<ArvDevice> device, std::shared_ptr<ControlChannel> channel)
    : m_Device(std::move(device)), m_Channel(std::move(channel)), m_Lost(std::make_shared<std::atomic<bool>>(false)) {
    setPolicies(m_Device.get());
    if (!m_Channel) {
        using Lost = std::shared_ptr<std::atomic<bool>>;
        g_signal_connect_data(
            m_Device.get(), "control-lost", G_CALLBACK(+[](ArvDevice*, Lost* lost) { lost->get()->store(true); }),
            new Lost(m_Lost), [](void* lost, GClosure*) { delete static_cast<Lost*>(lost); }, GConnectFlags(0));
    }
}

Device::~Device() {
    close();
    if (m_IsGone) { // Aravis says good-bye on its own, and waits for the answer
        Process::instance().reaper().take([device = m_Device.release()] { g_object_unref(device); });
    }
}

void Device::close() {
    m_IsGone = m_Channel ? !m_Channel->leaveControl() : m_Lost->load();
}

bool Device::isAlive() {
    return m_Channel ? m_Channel->isAlive() : !*m_Lost;
}

} // namespace GenICamAdapter
