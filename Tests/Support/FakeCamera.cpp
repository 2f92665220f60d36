// SPDX-License-Identifier: Apache-2.0

#include "Support/FakeCamera.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

#include "Exceptions/KestrelException.h"
#include "Properties/MemoryProperty.h"
#include "Streams/Stream.h"

namespace TestSupport {

namespace {

using namespace CameraInterface;

class FakeStream : public Stream {
public:
    explicit FakeStream(std::shared_ptr<FakeBus::Device> device) : m_Device(std::move(device)) {}

    bool isStreaming() override { return m_Streaming; }
    void startStream() override { m_Streaming = true; }
    void stopStream() override {
        m_Streaming = false;
        if (!m_Device->alive) {
            throw std::runtime_error("The device does not answer.");
        }
    }
    StreamMode getStreamType() override { return StreamMode::Video; }
    void setStreamType(StreamMode) override {}
    std::vector<unsigned char> getImageData() override { return {0}; }
    FrameGeometry getImageFormat() override { return {1, 1, 8}; }
    StreamStatistics& getStreamStatistics() override { return m_Statistics; }

private:
    std::shared_ptr<FakeBus::Device> m_Device;
    std::atomic<bool> m_Streaming{false};
    StreamStatistics m_Statistics;
};

class FakeCamera : public Camera {
public:
    explicit FakeCamera(std::shared_ptr<FakeBus::Device> device) : m_Device(std::move(device)) {
        ++m_Device->objects;
        m_Stream = std::make_unique<FakeStream>(m_Device);
    }
    FakeCamera(const FakeCamera&) = delete;
    FakeCamera& operator=(const FakeCamera&) = delete;
    ~FakeCamera() override { --m_Device->objects; }

    std::unique_ptr<Imaging::Image> getImage() override {
        return Imaging::createImage(1, 1, m_Stream->getImageData(), 8, true, Imaging::IMAGE_FORMAT::MONO);
    }
    std::map<std::string, std::string> getCameraInfo() override { return {}; }
    std::string getSerialNumber() override { return m_Device->serialNumber; }
    std::string getModelName() override {
        if (m_Device->unreadable) {
            throw std::runtime_error("The model name cannot be read.");
        }
        return m_Device->modelName;
    }
    bool isCameraAlive() override { return m_Device->alive; }
    void connect() override {
        requireTransition(CameraState::Connected, QUILL_HERE);
        buildProperties();
        m_State = CameraState::Connected;
    }
    void disconnect() override {
        requireTransition(CameraState::Disconnected, QUILL_HERE);
        m_State = CameraState::Disconnected;
    }
    void suspend() override {
        requireTransition(CameraState::Suspended, QUILL_HERE);
        m_State = CameraState::Suspended;
    }

protected:
    void buildProperties() override {
        m_Properties.emplace("Gain", std::make_unique<MemoryProperty<int>>("Gain", PROPERTY_TYPE::Integer, 0, 9, 1,
                                                                           false, false, std::map<std::string, int>{}));
        updatePropertyChangeCallback();
    }
    void buildFunctions() override {}

private:
    std::shared_ptr<FakeBus::Device> m_Device;
};

} // namespace

std::shared_ptr<FakeBus::Device> FakeBus::plug(const std::string& serialNumber, const std::string& modelName) {
    auto device = std::make_shared<Device>();
    device->serialNumber = serialNumber;
    device->modelName = modelName;
    const std::lock_guard lock(m_Mutex);
    m_Devices.push_back(device);
    return device;
}

void FakeBus::unplug(const std::string& serialNumber) {
    const std::lock_guard lock(m_Mutex);
    const auto gone = std::partition(m_Devices.begin(), m_Devices.end(),
                                     [&](const auto& device) { return device->serialNumber != serialNumber; });
    std::for_each(gone, m_Devices.end(), [](const auto& device) { device->alive = false; });
    m_Devices.erase(gone, m_Devices.end());
}

CameraAdapter FakeBus::adapter() {
    return {"fake cameras", [this] { return enumerate(); }};
}

std::vector<std::unique_ptr<Camera>> FakeBus::enumerate() {
    if (m_Fail) {
        throw KestrelExceptions::KestrelException::create("Bus", "Bus.cpp", 1, "The bus does not answer.");
    }
    const std::lock_guard lock(m_Mutex);
    std::vector<std::unique_ptr<Camera>> cameras;
    for (const auto& device : m_Devices) {
        cameras.push_back(std::make_unique<FakeCamera>(device));
    }
    return cameras;
}

} // namespace TestSupport
