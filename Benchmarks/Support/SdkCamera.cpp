// SPDX-License-Identifier: Apache-2.0

#include "Support/SdkCamera.h"

#include "Base/SharedLibrary.h"

namespace Benchmarks {

using namespace OrvexAdapter;

namespace {

constexpr unsigned int kInterface = 2; // the interface of the default devices

} // namespace

SdkCamera::SdkCamera(const std::function<void(OrvexApi&)>& replace, const SoftwareDevices::DeviceDescription& device)
    : m_Api(orvexApi()) {
    SoftwareDevices::startEmpty();
    SoftwareDevices::plug(device);
    if (replace) {
        replace(m_Api);
    }
    useOrvexApi(&m_Api);
    orvexApi().sdkSelectInterface(kInterface);
    orvexApi().sdkEnumCameras(&m_Version, 1);
    m_Camera = makeDisconnected();
    m_Camera->connect();
}

SdkCamera::~SdkCamera() {
    m_Camera.reset();
    useOrvexApi(nullptr);
    SoftwareDevices::startEmpty();
}

std::unique_ptr<OrvexCamera> SdkCamera::makeDisconnected() const {
    return std::make_unique<OrvexCamera>(m_Version, kInterface);
}

} // namespace Benchmarks

// Replaces the definition of a library file that is not linked here.
std::string Base::getLibraryFolder() {
    return QUILL_BENCHMARK_LIBRARY_FOLDER;
}
