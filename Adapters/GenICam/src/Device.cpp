// SPDX-License-Identifier: Apache-2.0

#include "Device.h"

#include <algorithm>
#include <chrono>
#include <cstring>
#include <fstream>
#include <future>
#include <iterator>
#include <new>
#include <optional>
#include <stdexcept>
#include <utility>

#include "CameraReach.h"
#include "DescriptionFile.h"
#include "Process.h"
#include "StandIn.h"
#include "Utilities/Mutex.h"

namespace GenICamAdapter {

namespace {

using Utilities::Mutex;
using Utilities::MutexLock;
using Channel = std::shared_ptr<ControlChannel>;

/// Five minutes: a program that stands in a debugger gives no signs of life.
constexpr std::uint32_t kHeartbeatWhileDebuggingMs = 300000;
/// A camera that needs longer is refused.
constexpr std::chrono::seconds kLongestOpening{10};
/// What Aravis asks of a camera while it constructs a device.
constexpr std::uint32_t kAskedByAravis[] = {Gvcp::Registers::kDeviceMode, Gvcp::Registers::kCapabilities};
constexpr const char* kAttributesOfDescription[] = {
    "ModelName",          "VendorName",           "ToolTip",      "StandardNameSpace", "ProductGuid",
    "VersionGuid",        "MajorVersion",         "MinorVersion", "SubMinorVersion",   "SchemaMajorVersion",
    "SchemaMinorVersion", "SchemaSubMinorVersion"};

/// What a device of Aravis has besides.
struct Extension {
    Channel channel;
    std::string description; // as a text
};

/// The channel of the device that is being constructed, under that mutex.
const Channel* channelOfOpening = nullptr;

GQuark extensionQuark() {
    return g_quark_from_static_string("quill-extension");
}

Extension& extensionOf(void* device) {
    return *static_cast<Extension*>(g_object_get_qdata(G_OBJECT(device), extensionQuark()));
}

ControlChannel* channelOf(void* device) {
    return extensionOf(device).channel.get();
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
    return report(channelOf(device)->readMemory(registerAddress(address), static_cast<std::uint8_t*>(buffer), size),
                  error);
}

gboolean writeMemoryOf(ArvDevice* device, guint64 address, guint32 size, void* buffer, GError** error) {
    return report(channelOf(device)->writeMemory(registerAddress(address), static_cast<std::uint8_t*>(buffer), size),
                  error);
}

gboolean readRegisterOf(ArvDevice* device, guint64 address, guint32* value, GError** error) {
    return report(channelOf(device)->readRegister(registerAddress(address), *value), error);
}

gboolean writeRegisterOf(ArvDevice* device, guint64 address, guint32 value, GError** error) {
    return report(channelOf(device)->writeRegister(registerAddress(address), value), error);
}

const char* descriptionOf(ArvDevice* device, std::size_t* size) {
    const std::string& description = extensionOf(device).description;
    *size = description.size();
    return description.c_str();
}

void initialiseClass(void* classStructure, void* /*data*/) {
    auto* const operations = ARV_DEVICE_CLASS(classStructure);
    operations->read_memory = readMemoryOf;
    operations->write_memory = writeMemoryOf;
    operations->read_register = readRegisterOf;
    operations->write_register = writeRegisterOf;
    operations->get_genicam_xml = descriptionOf;
}

void initialiseInstance(GTypeInstance* instance, void* /*classStructure*/) {
    g_object_set_qdata_full(G_OBJECT(instance), extensionQuark(), new Extension{*channelOfOpening, ""},
                            [](void* extension) { delete static_cast<Extension*>(extension); });
}

/// Aravis' class of network cameras, with a description and registers that are reached through a ControlChannel.
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

ObjectPointer<GInetAddress> inetAddressOf(const std::string& text) {
    return ObjectPointer<GInetAddress>(g_inet_address_new_from_string(text.c_str()));
}

/// Lets Aravis send to another address from now on: it takes one when it constructs a device, and refers to the object
/// for each packet.
void redirect(ArvDevice* device, const std::string& address) {
    GSocketAddress* const target = arv_gv_device_get_device_address(ARV_GV_DEVICE(device));
    GInetAddress* const present = g_inet_socket_address_get_address(G_INET_SOCKET_ADDRESS(target));
    const ObjectPointer<GInetAddress> wanted = inetAddressOf(address);
    std::uint32_t octets = 0;
    std::memcpy(&octets, g_inet_address_to_bytes(wanted.get()), sizeof octets);
    auto* const place = reinterpret_cast<std::uint32_t*>(const_cast<guint8*>(g_inet_address_to_bytes(present)));
    __atomic_store_n(place, octets, __ATOMIC_RELAXED); // Aravis' thread of the heartbeat may be sending
    if (g_inet_address_equal(present, wanted.get()) == FALSE) {
        throw std::runtime_error("Aravis cannot be directed to the camera.");
    }
}

/// Lets Aravis construct a device in front of a camera that the channel controls already: Aravis streams only from a
/// camera that it believes to control. The device has no description yet.
ObjectPointer<ArvDevice> constructNetworkDevice(const Channel& channel, const std::string& address) {
    const ObjectPointer<GInetAddress> card = inetAddressOf(channel->localAddress());
    const StandIn standIn(*channel, {std::begin(kAskedByAravis), std::end(kAskedByAravis)});
    const ObjectPointer<GInetAddress> place = inetAddressOf(standIn.address());
    Failure failure;
    const MutexLock lock(aravisMutex());
    channelOfOpening = &channel;
    ObjectPointer<ArvDevice> device(
        static_cast<ArvDevice*>(g_initable_new(networkDeviceType(), nullptr, failure.out(), "interface-address",
                                               card.get(), "device-address", place.get(), nullptr)));
    channelOfOpening = nullptr;
    if (!device) {
        throw std::runtime_error(failure.text());
    }
    redirect(device.get(), address);
    return device;
}

/// Adds a description to the empty one, to which Aravis has added registers of its own.
void describe(ArvDevice* device, std::string xml) {
    Failure failure;
    auto* const features = ARV_DOM_DOCUMENT(arv_device_get_genicam(device));
    const MutexLock lock(aravisMutex());
    arv_dom_document_append_from_memory(features, nullptr, xml.data(), static_cast<int>(xml.size()), failure.out());
    if (failure) {
        throw std::runtime_error(failure.text());
    }
    // Aravis looks for what is true of the whole in the first one.
    ArvDomElement* const whole = arv_dom_document_get_document_element(features);
    auto* const added = ARV_DOM_ELEMENT(arv_dom_node_get_last_child(ARV_DOM_NODE(features)));
    for (const char* name : kAttributesOfDescription) {
        if (const char* value = arv_dom_element_get_attribute(added, name)) {
            arv_dom_element_set_attribute(whole, name, value);
        }
    }
    extensionOf(device).description = std::move(xml);
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

/// @param obstacle  a sentence; empty if there is none
void refuseFor(const std::string& obstacle) {
    if (!obstacle.empty()) {
        throw std::runtime_error(obstacle);
    }
}

/// Ends a device whose camera is gone: it says good-bye to somebody who answers.
void release(ArvDevice* device, ControlChannel* channel) noexcept {
    std::optional<StandIn> standIn;
    try {
        if (channel != nullptr) {
            standIn.emplace(*channel);
            redirect(device, standIn->address());
        }
    } catch (const std::exception&) {
        // It takes some seconds.
    }
    g_object_unref(device);
}

/// @return whether the camera answered. Otherwise it hears the good-bye later: it would stay blocked for its time-out.
bool leaveControl(const Channel& channel) {
    const bool isAnswered = channel->leaveControl();
    if (channel->owesGoodBye()) {
        try {
            Process::instance().reaper().take([channel] { return channel->repeatGoodBye(); });
        } catch (const std::bad_alloc&) {
            // The camera's time-out frees it.
        }
    }
    return isAnswered;
}

void takeControl(ControlChannel& channel, std::uint32_t heartbeatMs) {
    if (isDebuggerAttached()) {
        heartbeatMs = std::max(heartbeatMs, kHeartbeatWhileDebuggingMs);
    }
    refuseFor(channel.takeControl(heartbeatMs));
}

} // namespace

Mutex& aravisMutex() {
    return Process::instance().aravisMutex();
}

std::shared_ptr<Device> Device::open(const FoundCamera& camera, std::uint32_t heartbeatMs) {
    if (!camera.usbId.empty()) {
        return std::shared_ptr<Device>(new Device(constructUsbDevice(camera.usbId), nullptr, ""));
    }
    requireReachable(camera);
    const auto channel = std::make_shared<ControlChannel>(camera.record.address);
    channel->setDeadline(std::chrono::steady_clock::now() + kLongestOpening);
    takeControl(*channel, heartbeatMs);
    try {
        // Most of an opening is waiting for the description. Without a thread for it, it is fetched at the end.
        auto description = std::async(std::launch::async | std::launch::deferred,
                                      [&channel = *channel] { return fetchDescription(channel); });
        auto device = constructNetworkDevice(channel, camera.record.address);
        describe(device.get(), description.get());
        channel->setDeadline(std::chrono::steady_clock::time_point::max());
        return std::shared_ptr<Device>(new Device(std::move(device), channel, camera.record.address));
    } catch (...) {
        channel->setDeadline(std::chrono::steady_clock::time_point::max()); // which would keep the good-bye back, too
        leaveControl(channel);
        throw;
    }
}

Device::Device(ObjectPointer<ArvDevice> device, std::shared_ptr<ControlChannel> channel, std::string address)
    : m_Device(std::move(device)), m_Channel(std::move(channel)), m_Address(std::move(address)),
      m_Lost(std::make_shared<std::atomic<bool>>(false)) {
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
        ArvDevice* const device = m_Device.release();
        try {
            Process::instance().reaper().take([device, channel = m_Channel] {
                release(device, channel.get());
                return true;
            });
        } catch (const std::bad_alloc&) {
            release(device, m_Channel.get());
        }
    }
}

void Device::close() {
    m_IsGone = m_Channel ? !leaveControl(m_Channel) : m_Lost->load();
}

std::optional<bool> Device::lockOfStream() const {
    const Lock lock = m_LockOfStream;
    return lock == Lock::Unknown ? std::nullopt : std::optional(lock == Lock::Locked);
}

void Device::rememberLockOfStream(std::optional<bool> isLocked) {
    m_LockOfStream = !isLocked ? Lock::Unknown : *isLocked ? Lock::Locked : Lock::Open;
}

void Device::prepareStream() const {
    if (!m_Channel) {
        return;
    }
    if (!m_Channel->isAlive()) {
        throw std::runtime_error("The camera does not answer, or lost its connection to this program.");
    }
    auto* const network = ARV_GV_DEVICE(m_Device.get());
    // Aravis gives control up in an outage of seconds, and takes it again here.
    if (arv_gv_device_is_controller(network) == FALSE) {
        const StandIn standIn(*m_Channel);
        redirect(m_Device.get(), standIn.address());
        Failure failure;
        arv_gv_device_take_control(network, failure.out());
        redirect(m_Device.get(), m_Address);
        if (failure) {
            throw std::runtime_error(failure.text());
        }
    }
}

bool Device::hasLostControl() const {
    return m_Channel ? m_Channel->hasLostControl() : m_Lost->load();
}

bool Device::isAlive() {
    return m_Channel ? m_Channel->isAlive() : !*m_Lost;
}

} // namespace GenICamAdapter
