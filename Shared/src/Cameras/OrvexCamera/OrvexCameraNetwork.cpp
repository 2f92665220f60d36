// SPDX-License-Identifier: Apache-2.0

#include <exception>

#include "Cameras/OrvexCamera/OrvexCamera.h"
#include "Exceptions/Raise.h"
#include "OrvexApi/OrvexApi.h"
#include "Properties/OrvexEnumerations.h"
#include "PropertyNames.h"

namespace OrvexAdapter {

using namespace KestrelExceptions;
using Utilities::MutexLock;

namespace {

/// Reads a part of a description. The other parts are useful without it.
template <typename Read>
void readPart(GigEDescription& description, Read read) {
    try {
        read();
    } catch (const KestrelException&) {
        if (!description.failure) {
            description.failure = std::current_exception();
        }
    }
}

} // namespace

bool OrvexCamera::isOnNetwork() {
    try {
        // The value read at connection: another read could fail.
        const std::string interface = getProperty(CameraInterface::PropertyNames::kHardwareInterface).getValue();
        return HardwareInterfaces().toValue(interface) == static_cast<int>(kGigEInterface);
    } catch (const KestrelException&) {
        return false;
    }
}

std::optional<GigEDescription> OrvexCamera::describeNetwork() {
    const MutexLock lock(m_CameraEnumerationMutex);
    if (!isConnected() || !isOnNetwork()) {
        return std::nullopt;
    }
    GigEDescription description;
    readPart(description, [&] {
        CGigE settings;
        readNetworkSettings(settings);
        description.settings = settings;
    });
    readPart(description, [&] { description.statistics = CGigE().GetGigeCamStatsToString(m_Handle); });
    return description;
}

void OrvexCamera::readNetworkSettings(CGigE& settings) {
    for (int reading = 0; reading < kSearches; ++reading) {
        const unsigned int index = findCameraIndex();
        std::exception_ptr failure;
        try {
            settings.GetEthernetInfo(static_cast<int>(index));
        } catch (const KestrelException&) {
            failure = std::current_exception();
        }
        if (findCameraIndex() != index) {
            continue; // the settings may belong to another camera
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
