// SPDX-License-Identifier: Apache-2.0

#include "NetworkPlug.h"

#include <algorithm>
#include <exception>
#include <memory>
#include <optional>
#include <stdexcept>
#include <utility>

#include "CameraReach.h"
#include "ControlChannel.h"
#include "Exceptions/Raise.h"
#include "ForcedAddress.h"
#include "GenICamCamera.h"
#include "LinkExamination.h"
#include "LinkFindings.h"
#include "NetworkChanges.h"
#include "NetworkDescription.h"
#include "Process.h"

namespace GenICamAdapter::Network {

using namespace CameraInterface;
using namespace KestrelExceptions;

namespace {

[[noreturn]] void raiseNetwork(const std::string& camera, const ErrorKind& kind, const std::string& reason, int line) {
    throw KestrelException_Camera(kind.name, __FILE__, line, std::string(kind.description) + " " + reason, camera);
}

std::vector<FoundCamera> presentCameras(const Settings& settings) {
    return Process::instance().discovery().cameras(settings);
}

FoundCamera requireOnNetwork(const Settings& settings, const std::string& serialNumber) {
    for (FoundCamera& camera : presentCameras(settings)) {
        if (camera.serialNumber == serialNumber) {
            if (!camera.usbId.empty()) {
                raiseNetwork(serialNumber, Errors::kNetworkSettings, "It is a USB camera.", __LINE__);
            }
            return std::move(camera);
        }
    }
    raise<KestrelException_Camera>(QUILL_HERE, Errors::kCameraNotFound, serialNumber);
}

/// The camera as this program has it open, or null.
std::shared_ptr<Device> findOpenDevice(const std::string& serialNumber) {
    try {
        const auto* const camera = dynamic_cast<GenICamCamera*>(&Camera::getCamera(serialNumber));
        std::shared_ptr<Device> device = camera == nullptr ? nullptr : camera->device();
        return device && device->channel() != nullptr && device->isAlive() ? device : nullptr;
    } catch (const KestrelException&) {
        return nullptr; // the application has not listed it
    }
}

/// A way to the registers: the channel of the open camera, or one of its own.
class Access {
public:
    /// @throws std::exception  no way leads there
    explicit Access(const FoundCamera& camera) : m_Open(findOpenDevice(camera.serialNumber)) {
        requireReachable(camera);
        if (!m_Open) {
            m_Own.emplace(camera.record.address);
        }
    }

    ControlChannel& channel() { return m_Open ? *m_Open->channel() : *m_Own; }
    bool isOpenHere() const { return m_Open != nullptr; }

    /// Takes control until the end, unless this program has it.
    /// @return why it cannot be taken, as a sentence; empty if it was
    std::string takeControl() { return m_Open ? "" : m_Own->takeControl(0); }

private:
    std::shared_ptr<Device> m_Open;
    std::optional<ControlChannel> m_Own;
};

/// Changes a camera while this program has control of it.
template <typename Change>
auto changeCamera(const Settings& settings, const std::string& serialNumber, Change change) {
    const FoundCamera camera = requireOnNetwork(settings, serialNumber);
    try {
        Access access(camera);
        if (const std::string reason = access.takeControl(); !reason.empty()) {
            throw std::runtime_error(reason);
        }
        return change(access.channel(), camera);
    } catch (const std::exception& failure) {
        raiseNetwork(serialNumber, Errors::kNetworkSettings, failure.what(), __LINE__);
    }
}

} // namespace

CameraNetwork describe(const Settings& settings, const std::string& serialNumber) {
    const FoundCamera camera = requireOnNetwork(settings, serialNumber);
    try {
        const CameraReach reach = reachOf(camera);
        CameraNetwork network = describeFromOutside(camera, reach);
        if (reach.obstacle.empty()) {
            Access access(camera);
            addRegisters(network, access.channel(), access.isOpenHere());
        } else if (!reach.remedy.empty()) {
            network.obstacle += " This helps: " + reach.remedy;
        }
        return network;
    } catch (const std::exception& failure) {
        raiseNetwork(serialNumber, Errors::kNetworkSettings, failure.what(), __LINE__);
    }
}

void setPersistentAddress(const Settings& settings, const std::string& serialNumber, const NetworkPlace& place) {
    changeCamera(settings, serialNumber, [&place](ControlChannel& channel, const FoundCamera& camera) {
        storeAddress(channel, camera.record.supportedConfigurations, place);
    });
}

void setAddressMode(const Settings& settings, const std::string& serialNumber, bool persistent, bool dhcp) {
    changeCamera(settings, serialNumber, [=](ControlChannel& channel, const FoundCamera& camera) {
        storeAddressMode(channel, camera.record.supportedConfigurations, persistent, dhcp);
    });
}

std::uint32_t setPacketSize(const Settings& settings, const std::string& serialNumber, std::uint32_t bytes) {
    return changeCamera(settings, serialNumber, [bytes](ControlChannel& channel, const FoundCamera&) {
        return writePacketSize(channel, bytes);
    });
}

std::uint64_t setPacketDelay(const Settings& settings, const std::string& serialNumber, std::uint64_t nanoseconds) {
    return changeCamera(settings, serialNumber, [nanoseconds](ControlChannel& channel, const FoundCamera&) {
        return writePacketDelay(channel, nanoseconds);
    });
}

std::uint32_t setHeartbeat(const Settings& settings, const std::string& serialNumber, std::uint32_t milliseconds) {
    return changeCamera(settings, serialNumber, [milliseconds](ControlChannel& channel, const FoundCamera&) {
        return writeHeartbeat(channel, milliseconds);
    });
}

void forceAddress(const Settings& settings, const std::string& camera, const NetworkPlace& place) {
    const auto hardwareAddress = parseHardwareAddress(camera);
    const std::vector<FoundCamera> present = presentCameras(settings);
    const auto found = std::find_if(present.begin(), present.end(), [&](const FoundCamera& candidate) {
        return candidate.usbId.empty() &&
               (candidate.serialNumber == camera ||
                (hardwareAddress && parseHardwareAddress(candidate.record.hardwareAddress) == hardwareAddress));
    });
    std::vector<std::string> cards = settings.cards;
    std::string presentAddress;
    if (found != present.end()) {
        if (findOpenDevice(found->serialNumber)) {
            raiseNetwork(camera, Errors::kNetworkSettings, "It is connected: disconnect it first.", __LINE__);
        }
        const CameraReach reach = reachOf(*found);
        presentAddress = reach.obstacle.empty() ? found->record.address : "";
        if (!found->card.empty()) {
            cards = {found->card};
        }
    } else if (!hardwareAddress || cards.empty()) {
        raise<KestrelException_Camera>(QUILL_HERE, Errors::kCameraNotFound, camera);
    }
    const auto target = found == present.end() ? hardwareAddress : parseHardwareAddress(found->record.hardwareAddress);
    ForcedResult result;
    try {
        result = forceOnCards(target.value_or(0), place, cards, presentAddress);
    } catch (const std::exception& failure) {
        raiseNetwork(camera, Errors::kNetworkSettings, failure.what(), __LINE__);
    }
    if (!result.refusal.empty()) {
        raiseNetwork(camera, Errors::kNetworkSettings, "The camera refuses: " + result.refusal + ".", __LINE__);
    }
    if (!result.hasMoved) {
        raiseNetwork(camera, Errors::kNetworkTimeout, "It does not answer at " + place.address + " after ten seconds.",
                     __LINE__);
    }
}

std::vector<LinkFinding> examine(const Settings& settings, const std::string& serialNumber) {
    const FoundCamera camera = requireOnNetwork(settings, serialNumber);
    try {
        LinkFigures figures;
        figures.serialNumber = serialNumber;
        figures.address = camera.record.address;
        figures.reach = reachOf(camera);
        figures.wantsPacketSocket = settings.packetSocket;
        measureComputer(figures);
        if (figures.reach.card && figures.reach.obstacle.empty()) {
            measureRoundTrips(figures);
            Access access(camera);
            CameraNetwork network;
            addRegisters(network, access.channel(), access.isOpenHere());
            figures.cameraSpeedMbps = network.linkSpeedMbps;
            figures.packetSize = network.packetSize.value_or(0);
            figures.whyNotTested = access.takeControl();
            if (figures.whyNotTested.empty()) {
                measureTestPackets(figures, access.channel());
            }
        }
        return judgeLink(figures);
    } catch (const std::exception& failure) {
        raiseNetwork(serialNumber, Errors::kNetworkSettings, failure.what(), __LINE__);
    }
}

} // namespace GenICamAdapter::Network
