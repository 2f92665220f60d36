// SPDX-License-Identifier: Apache-2.0

#include "Discovery.h"

#include <arv.h>
#include <net/if.h>

#include <algorithm>
#include <array>
#include <system_error>
#include <utility>

#include "Cameras/GenICam/Ipv4.h"
#include "Device.h"
#include "NetworkCards.h"

namespace GenICamAdapter {

using Utilities::MutexLock;
namespace GenICam = CameraInterface::GenICam;
using namespace std::chrono_literals;

namespace {

constexpr auto kPeriod = 500ms;
/// How long answers are waited for, in all.
constexpr auto kPatience = 150ms;
/// A camera that does not answer is asked again after each of these parts, so that a lost packet does not matter.
constexpr auto kPauseBetweenQuestions = 30ms;
/// More cameras than a network of this kind has.
constexpr std::size_t kMostCameras = 1024;

bool isEqual(const Discovery::Settings& one, const Discovery::Settings& other) {
    return one.cards == other.cards && one.addresses == other.addresses && one.usb == other.usb;
}

std::string nameOf(const Gvcp::DeviceRecord& record) {
    const std::string& number = record.serialNumber.empty() ? record.hardwareAddress : record.serialNumber;
    std::string name = record.vendor.empty() ? number : record.vendor + "-" + number;
    std::replace(name.begin(), name.end(), ' ', '_');
    return name;
}

std::string nameOfCard(unsigned index) {
    std::array<char, IF_NAMESIZE> name{};
    return if_indextoname(index, name.data()) == nullptr ? "" : name.data();
}

std::string textOrEmpty(const char* text) {
    return text == nullptr ? "" : text;
}

} // namespace

std::vector<FoundCamera> Discovery::cameras(const Settings& settings) {
    while (true) {
        const std::uint64_t thread = startThread(settings);
        MutexLock lock(m_Mutex);
        lock.wait(m_Changed, [&]() QUILL_REQUIRES(m_Mutex) { return m_HasAnswers || m_Ended >= thread; });
        if (m_Ended >= thread) {
            continue; // by another caller, with other settings
        }
        std::vector<FoundCamera> found;
        found.reserve(m_Cameras.size());
        for (const auto& entry : m_Cameras) {
            found.push_back(entry.second);
        }
        return found;
    }
}

std::uint64_t Discovery::startThread(const Settings& settings) {
    const MutexLock control(m_ControlMutex);
    if (m_Thread.joinable() && !isEqual(settings, m_Settings)) {
        stopThread();
    }
    if (!m_Thread.joinable()) {
        m_Settings = settings;
        m_Thread = std::thread([this, settings] { run(settings); });
        ++m_Started;
    }
    return m_Started;
}

void Discovery::stop() {
    const MutexLock control(m_ControlMutex);
    stopThread();
}

void Discovery::stopThread() {
    if (!m_Thread.joinable()) {
        return;
    }
    {
        const MutexLock lock(m_Mutex);
        m_End = true;
    }
    m_Changed.notify_all();
    m_Thread.join();
    m_Thread = {};
    const MutexLock lock(m_Mutex);
    m_End = false;
    m_HasAnswers = false;
    m_Cameras.clear();
    m_Ended = m_Started;
    m_Changed.notify_all();
}

bool Discovery::waitUntil(Clock::time_point end) {
    MutexLock lock(m_Mutex);
    return lock.waitUntil(m_Changed, end, [this]() QUILL_REQUIRES(m_Mutex) { return m_End; });
}

void Discovery::run(const Settings& settings) {
    Cameras present;
    std::optional<UdpSocket> socket; // kept for late answers
    bool isEnding = false;
    while (!isEnding) {
        const Clock::time_point begin = Clock::now();
        Cameras found;
        try {
            if (!settings.cards.empty() || !settings.addresses.empty()) {
                if (!socket) {
                    socket.emplace();
                }
                found = askNetwork(*socket, settings, present);
            }
            if (settings.usb) {
                found.merge(askUsb());
            }
            present = std::move(found);
            const MutexLock lock(m_Mutex);
            m_Cameras = present;
        } catch (const std::exception&) {
            // No socket or no memory: what is known stays until the next round.
        }
        {
            const MutexLock lock(m_Mutex);
            m_HasAnswers = true;
        }
        m_Changed.notify_all();
        isEnding = waitUntil(begin + kPeriod);
    }
}

Discovery::Cameras Discovery::askNetwork(const UdpSocket& socket, const Settings& settings, const Cameras& before) {
    m_Id = static_cast<std::uint16_t>(m_Id % 0xFFFF + 1); // never 0
    const Gvcp::Packet question = Gvcp::makeDiscovery(m_Id);
    std::vector<unsigned> cards;
    for (const std::string& card : settings.cards) {
        if (const unsigned index = if_nametoindex(card.c_str())) { // otherwise it may come later
            cards.push_back(index);
        }
    }
    const auto askAll = [&] {
        for (const unsigned card : cards) {
            socket.broadcast(card, Gvcp::kPort, question);
        }
        for (const std::string& address : settings.addresses) {
            socket.sendTo(address, Gvcp::kPort, question);
        }
    };
    Cameras found;
    const auto askMissing = [&] {
        if (before.empty()) {
            askAll(); // a lost packet must not make the first answer an empty one
        }
        for (const auto& [key, camera] : before) {
            const std::uint32_t address = GenICam::Ipv4::parse(camera.record.address).value_or(0);
            // A camera with an address of another network hears broadcasts alone; the question would leave by a
            // gateway.
            const bool isNear = camera.card.empty() || isRoutedOnCard(camera.card, address);
            if (found.count(key) == 0 && camera.usbId.empty() && isNear) {
                socket.sendTo(camera.record.address, Gvcp::kPort, question);
            }
        }
    };
    askAll();
    const Clock::time_point begin = Clock::now();
    Clock::time_point next = begin + kPauseBetweenQuestions;
    std::vector<std::uint8_t> packet(Gvcp::kPacketSize);
    PacketSource source;
    while (Clock::now() < begin + kPatience) {
        switch (socket.receive(packet, std::min(next, begin + kPatience), source)) {
        case UdpSocket::Arrival::Packet:
            break;
        case UdpSocket::Arrival::TimedOut:
            askMissing();
            next += kPauseBetweenQuestions;
            continue;
        case UdpSocket::Arrival::Refused:
            continue;
        }
        const auto answer = Gvcp::parseAnswer(packet.data(), std::min(source.size, packet.size()));
        const bool isOurs = answer && answer->kind == static_cast<std::uint16_t>(Gvcp::Command::Discovery) + 1;
        const auto record = isOurs ? Gvcp::parseDiscovery(*answer) : std::nullopt;
        const bool isOnCard = std::find(cards.begin(), cards.end(), source.cardIndex) != cards.end();
        const bool isNamed =
            std::find(settings.addresses.begin(), settings.addresses.end(), source.address) != settings.addresses.end();
        if (!record || (!isOnCard && !isNamed) || found.size() >= kMostCameras) {
            continue;
        }
        FoundCamera camera{*record, nameOf(*record), "", isOnCard ? nameOfCard(source.cardIndex) : ""};
        if (isNamed) {
            camera.record.address = source.address; // the way that is known to work
        }
        found[record->hardwareAddress + ' ' + camera.serialNumber] = std::move(camera);
    }
    return found;
}

Discovery::Cameras Discovery::askUsb() {
    Cameras found;
    const MutexLock lock(aravisMutex());
    ArvInterface* const usb = arv_uv_interface_get_instance();
    arv_interface_update_device_list(usb);
    for (unsigned i = 0; i < arv_interface_get_n_devices(usb); ++i) {
        FoundCamera camera;
        camera.usbId = textOrEmpty(arv_interface_get_device_id(usb, i));
        camera.record.vendor = textOrEmpty(arv_interface_get_device_vendor(usb, i));
        camera.record.model = textOrEmpty(arv_interface_get_device_model(usb, i));
        camera.record.serialNumber = textOrEmpty(arv_interface_get_device_serial_nbr(usb, i));
        camera.record.hardwareAddress = textOrEmpty(arv_interface_get_device_physical_id(usb, i));
        camera.serialNumber = nameOf(camera.record);
        found["usb " + camera.usbId] = std::move(camera);
    }
    return found;
}

} // namespace GenICamAdapter
