// SPDX-License-Identifier: Apache-2.0

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <csignal>
#include <memory>
#include <mutex>
#include <string>

#include <Quill.h>
#include <gtest/gtest.h>

#include "Camera/ImageSource.h"
#include "Camera/PropertyAccess.h"

namespace {

using namespace CameraInterface;
using namespace QuillTool;

/// Accepts every number, and keeps at most 10.
class LimitedProperty : public MemoryProperty<int> {
public:
    LimitedProperty() : MemoryProperty("Lines", PROPERTY_TYPE::Integer, 0, 100, 1, false, false, {}) {}

    void setValue(const std::string& value) override {
        MemoryProperty::setValue(std::to_string(std::min(10, std::stoi(value))));
    }
};

/// A camera that waits for a trigger while the user presses Ctrl-C.
class ObstinateCamera : public Camera {
public:
    ObstinateCamera() { m_Properties["Lines"] = std::make_unique<LimitedProperty>(); }

    std::unique_ptr<Imaging::Image> getImage() override {
        std::raise(SIGINT);
        std::unique_lock lock(m_Mutex);
        if (m_Changed.wait_for(lock, std::chrono::minutes(1), [this] { return m_Stopped; })) {
            throw std::runtime_error("The stream was stopped.");
        }
        return Imaging::createImage(1, 1, {}, 8, true, Imaging::IMAGE_FORMAT::MONO);
    }
    void stopStream() override {
        const std::lock_guard lock(m_Mutex);
        m_Stopped = true;
        m_Changed.notify_all();
    }
    std::map<std::string, std::string> getCameraInfo() override { return {}; }
    std::string getSerialNumber() override { return "1"; }
    std::string getModelName() override { return "Obstinate"; }
    bool isCameraAlive() override { return true; }
    void connect() override {}
    void disconnect() override {}
    void suspend() override {}

private:
    void buildProperties() override {}
    void buildFunctions() override {}

    std::mutex m_Mutex; // guards what follows
    std::condition_variable m_Changed;
    bool m_Stopped = false;
};

class ObstinateCameraTest : public ::testing::Test {
protected:
    ObstinateCamera m_Camera;
    SelectedCamera m_Selected{m_Camera, "1"};
};

TEST_F(ObstinateCameraTest, AnInterruptEndsTheWaitForAnImage) {
    Interrupt interrupt;
    EXPECT_EQ(ImageSource(interrupt, m_Selected).next(), nullptr);
    interrupt.clear();
}

TEST_F(ObstinateCameraTest, TheResultingValueIsPrinted) {
    const WrittenProperty written = writeProperty(m_Selected, "Lines", "0x0C");
    EXPECT_EQ(written.reading.value, "10");
    EXPECT_EQ(written.difference, "camera 1: property 'Lines': was set to '0x0C' and is now '10'");
    EXPECT_EQ(writeProperty(m_Selected, "Lines", "010").difference, "");
}

} // namespace
