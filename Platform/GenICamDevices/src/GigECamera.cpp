// SPDX-License-Identifier: Apache-2.0

#include "GigECamera.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstddef>
#include <deque>
#include <stdexcept>
#include <thread>
#include <utility>
#include <vector>

#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include "FrameSender.h"
#include "GigEDevice.h"
#include "Socket.h"

namespace GenICamDevices {

namespace {

constexpr std::uint32_t kEveryone = 0xFFFFFFFF; // the address of all devices of a network
constexpr std::uint32_t kLargestSensor = 8192;
constexpr std::uint64_t kLocallyAdministered = 0x020000000000; // a MAC address that no maker has

void check(bool isGood, const std::string& what) {
    if (!isGood) {
        throw std::invalid_argument(what);
    }
}

/// The card that the camera answers broadcasts of, with the camera's address in place of the card's.
NetworkCard findCard(const CameraOptions& options) {
    const auto address = parseAddress(options.address);
    check(address || (options.address.empty() && !options.card.empty()),
          "'" + options.address + "' is no IPv4 address such as 127.0.0.1");
    for (const bool isExact : {true, false}) { // the whole network of the loopback device is this machine
        for (NetworkCard card : networkCards()) {
            const bool isNamed = card.name == options.card;
            const bool hasAddress = !address || card.place.address == *address ||
                                    (!isExact && ((card.place.address ^ *address) & card.place.mask) == 0);
            if ((options.card.empty() && hasAddress) || (isNamed && (hasAddress || !isExact))) {
                card.place.address = address.value_or(card.place.address);
                return card;
            }
        }
    }
    throw std::runtime_error(options.card.empty()
                                 ? "No network interface has the network of " + options.address + ", see 'ip address'"
                                 : "No network interface with an IPv4 address is called '" + options.card +
                                       "', see 'ip address'");
}

CameraOptions completed(CameraOptions options, const NetworkPlace& place) {
    check(options.width >= 16 && options.width <= kLargestSensor && options.width % 4 == 0,
          "The width must be a multiple of 4 from 16 to 8192");
    check(options.height >= 16 && options.height <= kLargestSensor && options.height % 2 == 0,
          "The height must be a multiple of 2 from 16 to 8192");
    check(options.fps >= 0 && options.fps <= 10000, "The frame rate must be from 0 to 10000");
    check(options.idStart != 0, "No frame has number 0");
    if (options.mac == 0) {
        options.mac = kLocallyAdministered | place.address;
    }
    if (options.serial.empty()) {
        options.serial = "SW" + hexadecimalOf(place.address);
    }
    return options;
}

} // namespace

/// Wakes a thread that polls.
class WakeUp {
public:
    WakeUp() : m_Descriptor(eventfd(0, EFD_CLOEXEC)) {
        if (m_Descriptor < 0) {
            throw std::runtime_error("No event can be made");
        }
    }
    WakeUp(const WakeUp&) = delete;
    WakeUp& operator=(const WakeUp&) = delete;
    ~WakeUp() { close(m_Descriptor); }
    int descriptor() const { return m_Descriptor; }
    void raise() const { eventfd_write(m_Descriptor, 1); }

private:
    const int m_Descriptor;
};

class GigECamera::Service {
public:
    explicit Service(const CameraOptions& options)
        : m_Card(findCard(options)), m_Requests(Socket::forRequests(m_Card.place.address)),
          m_Sender(m_Card.place.address, options.seed), m_Device(completed(options, m_Card.place), m_Card.place),
          m_Address(m_Card.place.address) {
        m_Device.setStreamSourcePort(m_Sender.port());
        m_Broadcasts.push_back(Socket::forBroadcasts(kEveryone));
        if (const std::uint32_t others = ~m_Card.place.mask; others > 1) { // smaller networks have no broadcast address
            m_Broadcasts.push_back(Socket::forBroadcasts(m_Card.place.address | others));
        }
        m_Streamer = std::thread([this] { stream(); });
        m_Listener = std::thread([this] { listen(); });
    }
    Service(const Service&) = delete;
    Service& operator=(const Service&) = delete;
    ~Service() {
        m_Device.shutDown();
        m_WakeUp.raise();
        m_Streamer.join();
        m_Listener.join();
    }

    GigEDevice& device() { return m_Device; }
    CameraCounts counts() const { return m_Sender.counts(); }
    std::string address() const { return formatAddress(m_Address); }

private:
    void stream() {
        while (!m_Device.isShutDown()) {
            if (const auto order = m_Device.waitForFrame(m_Sender.nextLatePacket())) {
                m_Sender.send(*order, [this, run = order->run] { return m_Device.isWanted(run); });
            }
            m_Sender.sendLatePackets(Clock::now());
        }
    }

    void listen() {
        while (!m_Device.isShutDown()) {
            std::vector<pollfd> waiting{{m_WakeUp.descriptor(), POLLIN, 0}, {m_Requests.descriptor(), POLLIN, 0}};
            for (const Socket& socket : m_Broadcasts) {
                waiting.push_back({socket.descriptor(), POLLIN, 0});
            }
            if (poll(waiting.data(), waiting.size(), sendLateAnswers()) <= 0) {
                continue;
            }
            while (const auto datagram = m_Requests.receive()) {
                serve(*datagram);
            }
            for (Socket& socket : m_Broadcasts) {
                while (const auto datagram = socket.receive()) {
                    if (datagram->card == m_Card.index) {
                        serve(*datagram);
                    }
                }
            }
        }
    }

    /// @return the milliseconds until the next one; negative if there is none
    int sendLateAnswers() {
        int next = -1;
        const Clock::time_point now = Clock::now();
        for (auto answer = m_LateAnswers.begin(); answer != m_LateAnswers.end();) {
            if (answer->due <= now) {
                m_Requests.send(answer->bytes, answer->to);
                answer = m_LateAnswers.erase(answer);
                continue;
            }
            const auto left = std::chrono::ceil<std::chrono::milliseconds>(answer->due - now).count();
            next = next < 0 ? static_cast<int>(left) : std::min(next, static_cast<int>(left));
            ++answer;
        }
        return next;
    }

    void serve(const Datagram& datagram) {
        Outcome outcome =
            m_Device.handlePacket(datagram.from, datagram.bytes.data(), datagram.bytes.size(), Clock::now());
        if (outcome.moveTo && !move(*outcome.moveTo) && !outcome.answer.empty()) {
            putBigEndian(outcome.answer.data(), 2, static_cast<std::uint16_t>(GigEStatus::LocalProblem));
        }
        const Faults faults = m_Device.faults();
        const bool isDiscovery = datagram.bytes.size() >= kControlHeaderSize &&
                                 bigEndian(&datagram.bytes[2], 2) == static_cast<std::uint16_t>(GigECommand::Discovery);
        const std::chrono::milliseconds late(isDiscovery ? faults.discoveryMilliseconds : faults.answerMilliseconds);
        if (!outcome.answer.empty() && late.count() > 0) {
            m_LateAnswers.push_back({Clock::now() + late, std::move(outcome.answer), datagram.from});
        } else if (!outcome.answer.empty()) {
            m_Requests.send(outcome.answer, datagram.from);
        }
        if (outcome.testPacket) {
            m_Sender.sendTestPacket(*outcome.testPacket);
        }
        if (outcome.resend) {
            m_Sender.resend(*outcome.resend, m_Device.faults());
        }
    }

    bool move(const NetworkPlace& place) {
        try {
            if (place.address != m_Address) {
                Socket requests = Socket::forRequests(place.address);
                m_Sender.setAddress(place.address);
                m_Requests = std::move(requests);
                m_Address = place.address;
                m_Device.setStreamSourcePort(m_Sender.port());
            }
        } catch (const std::runtime_error&) {
            return false; // another machine's address
        }
        m_Device.setPlace(place);
        return true;
    }

    struct LateAnswer {
        Clock::time_point due;
        Bytes bytes;
        Peer to;
    };

    const NetworkCard m_Card;
    Socket m_Requests;                    // of the thread that listens
    std::deque<LateAnswer> m_LateAnswers; // the same
    std::vector<Socket> m_Broadcasts;
    FrameSender m_Sender;
    GigEDevice m_Device;
    std::atomic<std::uint32_t> m_Address;
    const WakeUp m_WakeUp;
    std::thread m_Streamer;
    std::thread m_Listener;
};

GigECamera::GigECamera(const CameraOptions& options) : m_Service(std::make_unique<Service>(options)) {}

GigECamera::~GigECamera() = default;

std::string GigECamera::address() const {
    return m_Service->address();
}

Faults GigECamera::faults() const {
    return m_Service->device().faults();
}

void GigECamera::setFaults(const Faults& faults) {
    m_Service->device().setFaults(faults);
}

CameraCounts GigECamera::counts() const {
    return m_Service->counts();
}

} // namespace GenICamDevices
