#include <exception>

#include "Cameras/OrvexCamera/OrvexCamera.h"
#include "Exceptions/Raise.h"
#include "OrvexApi/OrvexApi.h"

namespace OrvexAdapter {

using namespace KestrelExceptions;
using Utilities::MutexLock;

namespace {

/// How often the settings are read while the indices keep moving.
constexpr int kReadings = 5;

} // namespace

std::optional<GigEDescription> OrvexCamera::describeNetwork() {
    const MutexLock lock(m_CameraEnumerationMutex);
    std::uint32_t interface = 0;
    if (!isConnected() || orvexApi().sdkGetHardwareInterface(m_Handle, &interface) == 0 ||
        interface != kGigEInterface) {
        return std::nullopt;
    }
    GigEDescription description;
    readNetworkSettings(description.settings);
    description.statistics = description.settings.GetGigeCamStatsToString(m_Handle);
    return description;
}

void OrvexCamera::readNetworkSettings(CGigE& settings) {
    for (int reading = 0; reading < kReadings; ++reading) {
        const unsigned int index = findCameraIndex();
        std::exception_ptr failure;
        try {
            settings.GetEthernetInfo(static_cast<int>(index));
        } catch (const KestrelException&) {
            failure = std::current_exception();
        }
        if (findCameraIndex() != index) {
            continue; // what was read may be another camera's
        }
        if (failure) {
            std::rethrow_exception(failure);
        }
        return;
    }
    raise<KestrelException>(QUILL_HERE, Errors::kCameraEnumeration);
}

std::optional<GigEDescription> readGigE(CameraInterface::Camera& camera) {
    auto* const sdkCamera = dynamic_cast<OrvexCamera*>(&camera);
    return sdkCamera == nullptr ? std::nullopt : sdkCamera->describeNetwork();
}

} // namespace OrvexAdapter
