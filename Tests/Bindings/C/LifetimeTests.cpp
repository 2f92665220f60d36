// SPDX-License-Identifier: Apache-2.0

// What lives how long: handles, contexts of callbacks, and calls in which something ends.

#include <atomic>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <string>
#include <thread>
#include <vector>

#include <SoftwareDevices.h>
#include <gmock/gmock.h>
#include <quillcamera.h>
#if !defined(_WIN32)
#    include <sys/wait.h>
#    include <unistd.h>
#endif

#include "Support/Event.h"

namespace {

using testing::Each;
using TestSupport::Event;
using TestSupport::eventually;

constexpr std::uint32_t kSerial = 4711;

void plug(std::uint32_t serial) {
    SoftwareDevices::DeviceDescription device = SoftwareDevices::defaultDevices()[1];
    device.serial = serial;
    device.sensorWidth = 64;
    device.sensorHeight = 48;
    SoftwareDevices::plug(device);
    SoftwareDevices::setAsFastAsAsked(serial, true);
}

/// Begins the workspace with a connected camera.
class CInterfaceLifetime : public testing::Test {
protected:
    void SetUp() override {
        SoftwareDevices::startEmpty();
        plug(kSerial);
        ASSERT_EQ(quill_initialise_workspace(nullptr), QUILL_OK);
        m_Camera = find(kSerial);
        ASSERT_EQ(quill_camera_connect(m_Camera, nullptr), QUILL_OK);
    }
    void TearDown() override {
        EXPECT_EQ(quill_end_workspace(nullptr), QUILL_OK);
        SoftwareDevices::startEmpty();
    }

    static quill_camera find(std::uint32_t serial) {
        quill_camera camera{};
        EXPECT_EQ(quill_get_camera(std::to_string(serial).c_str(), &camera, nullptr), QUILL_OK);
        return camera;
    }
    static quill_status stateOf(quill_camera camera) {
        quill_camera_state state = 0;
        return quill_camera_get_state(camera, &state, nullptr);
    }
    quill_frame_queue openQueue() {
        quill_frame_queue queue{};
        EXPECT_EQ(quill_camera_open_frame_queue(m_Camera, nullptr, &queue, nullptr), QUILL_OK);
        return queue;
    }
    quill_image takeImage() {
        quill_image image{};
        EXPECT_EQ(quill_camera_get_image(m_Camera, &image, nullptr), QUILL_OK);
        return image;
    }

    quill_camera m_Camera{};
};

void countRelease(void* context) {
    ++*static_cast<std::atomic<int>*>(context);
}

using Register = quill_status (*)(quill_camera camera, bool clear, void* context);

/// Registers a callback, or clears it.
constexpr Register kRegistrations[] = {
    [](quill_camera camera, bool clear, void* context) {
        return quill_camera_register_property_change_callback(
            camera, clear ? nullptr : +[](void*, quill_camera, const char*) {}, context, countRelease, nullptr);
    },
    [](quill_camera camera, bool clear, void* context) {
        return quill_property_register_on_change_callback(
            camera, "Width", clear ? nullptr : +[](void*, quill_camera, const char*) {}, context, countRelease,
            nullptr);
    },
    [](quill_camera camera, bool clear, void* context) {
        return quill_camera_set_frame_callback(
            camera, nullptr, clear ? nullptr : +[](void*, quill_frame) {}, context, countRelease, nullptr);
    },
    [](quill_camera, bool clear, void* context) {
        return quill_register_new_connect_callback(
            clear ? nullptr : +[](void*) {}, context, countRelease, nullptr);
    },
    [](quill_camera, bool clear, void* context) {
        return quill_register_disconnect_callback(
            clear ? nullptr : +[](void*, const char*, const char*) {}, context, countRelease, nullptr);
    }};

TEST_F(CInterfaceLifetime, AContextIsReleasedOnceHoweverItsCallbackEnds) {
    std::vector<std::atomic<int>> ended(std::size(kRegistrations));
    for (std::size_t i = 0; i < std::size(kRegistrations); ++i) {
        std::atomic<int> replaced{0};
        std::atomic<int> cleared{0};
        std::atomic<int> ofNone{0};
        EXPECT_EQ(kRegistrations[i](m_Camera, false, &replaced), QUILL_OK);
        EXPECT_EQ(replaced, 0);
        EXPECT_EQ(kRegistrations[i](m_Camera, false, &cleared), QUILL_OK);
        EXPECT_EQ(kRegistrations[i](m_Camera, true, &ofNone), QUILL_OK);
        EXPECT_EQ(kRegistrations[i](m_Camera, false, &ended[i]), QUILL_OK);
        EXPECT_EQ(replaced, 1);
        EXPECT_EQ(cleared, 1);
        EXPECT_EQ(ofNone, 1);
        EXPECT_EQ(ended[i], 0);
    }
    EXPECT_EQ(quill_end_workspace(nullptr), QUILL_OK);
    for (const std::atomic<int>& count : ended) {
        EXPECT_EQ(count, 1);
    }
    for (std::size_t i = 0; i < 3; ++i) { // of cameras
        std::atomic<int> refused{0};
        EXPECT_EQ(kRegistrations[i](m_Camera, false, &refused), QUILL_INVALID_HANDLE);
        EXPECT_EQ(refused, 1);
    }
}

TEST_F(CInterfaceLifetime, CamerasThatLeftStayUsableUntil63MoreHaveLeft) {
    constexpr std::uint32_t kMany = 80;
    std::vector<quill_camera> cameras{m_Camera};
    for (std::uint32_t i = 1; i < kMany; ++i) {
        plug(kSerial + i);
    }
    unsigned added = 0;
    ASSERT_EQ(quill_search_for_new_cameras(&added, nullptr), QUILL_OK);
    for (std::uint32_t i = 1; i < kMany; ++i) {
        cameras.push_back(find(kSerial + i));
    }
    std::atomic<unsigned> departures{0};
    ASSERT_EQ(quill_register_disconnect_callback(
                  [](void* context, const char*, const char*) { ++*static_cast<std::atomic<unsigned>*>(context); },
                  &departures, nullptr, nullptr),
              QUILL_OK);
    std::atomic<quill_status> inRelease{QUILL_OK};
    ASSERT_EQ(quill_camera_register_property_change_callback(
                  m_Camera, [](void*, quill_camera, const char*) {}, &inRelease,
                  [](void* context) { // on the watching thread
                      *static_cast<std::atomic<quill_status>*>(context) = quill_end_workspace(nullptr);
                  },
                  nullptr),
              QUILL_OK);
    std::thread user([&] { // of a camera that is destroyed meanwhile
        while (stateOf(m_Camera) == QUILL_OK) {
            bool alive = false;
            quill_camera_is_camera_alive(m_Camera, &alive, nullptr);
        }
    });
    SoftwareDevices::unplugAll();
    user.join();
    EXPECT_TRUE(eventually([&] { return departures == kMany; }));
    EXPECT_EQ(quill_register_disconnect_callback(nullptr, nullptr, nullptr, nullptr), QUILL_OK); // a barrier
    int usable = 0;
    for (const quill_camera camera : cameras) {
        usable += stateOf(camera) == QUILL_OK ? 1 : 0;
    }
    EXPECT_EQ(usable, 63);
    EXPECT_EQ(inRelease, QUILL_EXCEPTION);
    quill_error error = QUILL_ERROR_INIT;
    EXPECT_EQ(quill_camera_connect(cameras.back(), &error), QUILL_EXCEPTION_CAMERA);
    EXPECT_STREQ(error.word, "CameraConnection");
}

TEST_F(CInterfaceLifetime, TheEndOfTheWorkspaceEndsWaitsOfOtherThreads) {
    ASSERT_EQ(quill_property_set_value(m_Camera, "Timeout", "100000000", nullptr), QUILL_OK);
    const quill_frame_queue queue = openQueue();
    SoftwareDevices::truncateFrames(kSerial, 1000000000, 100);
    std::atomic<bool> waits{false};
    std::thread image([&] {
        quill_image image{};
        waits = true;
        EXPECT_NE(quill_camera_get_image(m_Camera, &image, nullptr), QUILL_OK);
    });
    quill_frame_queue_status status = -1;
    std::thread frame([&] {
        EXPECT_EQ(quill_frame_queue_wait_for_run(queue, QUILL_NO_LIMIT, &status, nullptr), QUILL_OK);
        quill_frame none{};
        EXPECT_EQ(quill_frame_queue_pop(queue, QUILL_NO_LIMIT, &status, &none, nullptr), QUILL_OK);
    });
    EXPECT_TRUE(eventually([&] { return waits && SoftwareDevices::isStreaming(kSerial); }));
    EXPECT_EQ(quill_end_workspace(nullptr), QUILL_OK);
    image.join();
    frame.join();
    EXPECT_EQ(stateOf(m_Camera), QUILL_INVALID_HANDLE);
    quill_frame none{};
    EXPECT_EQ(quill_frame_queue_pop(queue, QUILL_NO_LIMIT, &status, &none, nullptr), QUILL_OK);
    EXPECT_EQ(status, QUILL_QUEUE_CAMERA_GONE);
    EXPECT_EQ(quill_frame_queue_release(queue, nullptr), QUILL_OK);
}

TEST_F(CInterfaceLifetime, AReleaseEndsTheWaitsInTheQueue) {
    const quill_frame_queue queue = openQueue();
    Event begun;
    quill_frame_queue_status status = -1;
    std::thread waiter([&] {
        begun.raise();
        const quill_status result = quill_frame_queue_wait_for_run(queue, QUILL_NO_LIMIT, &status, nullptr);
        EXPECT_TRUE((result == QUILL_OK && status == QUILL_QUEUE_CLOSED) || result == QUILL_INVALID_HANDLE);
    });
    EXPECT_TRUE(begun.wait());
    EXPECT_EQ(quill_frame_queue_release(queue, nullptr), QUILL_OK);
    waiter.join();
}

TEST_F(CInterfaceLifetime, OfThreadsThatReleaseOneHandleOnlyOneSucceeds) {
    constexpr int kImages = 1000;
    std::atomic<int> released{0};
    std::atomic<std::uint64_t> present{0};
    std::atomic<bool> ended{false};
    std::vector<std::thread> others;
    for (int i = 0; i < 3; ++i) {
        others.emplace_back([&] {
            while (!ended) {
                const quill_image image{present};
                quill_image_layout layout = QUILL_IMAGE_LAYOUT_INIT;
                if (quill_image_get_layout(image, &layout, nullptr) == QUILL_OK) {
                    EXPECT_EQ(layout.width, layout.height);
                }
                released += quill_image_release(image, nullptr) == QUILL_OK ? 1 : 0;
                std::this_thread::yield();
            }
        });
    }
    for (int created = 1; created <= kImages; ++created) {
        const auto size = static_cast<std::uint32_t>(created % 5 + 1);
        quill_image image{};
        EXPECT_EQ(quill_create_image(size, size, nullptr, 0, 8, true, QUILL_MONO, &image, nullptr), QUILL_OK);
        present = image.id;
        EXPECT_TRUE(eventually([&] { return released >= created; }));
        EXPECT_EQ(quill_image_release(image, nullptr), QUILL_INVALID_HANDLE);
    }
    ended = true;
    for (std::thread& other : others) {
        other.join();
    }
    EXPECT_EQ(released, kImages);
}

#if !defined(QUILL_SANITIZED) &&                                                                                       \
    !defined(_WIN32) // ThreadSanitizer allows no threads in a forked child, and leaks are meant there
TEST_F(CInterfaceLifetime, AForkedChildHasImagesButNeitherCamerasNorQueues) {
    const quill_image image = takeImage();
    const quill_frame_queue queue = openQueue();
    const pid_t process = fork();
    if (process == 0) {
        quill_image_layout layout = QUILL_IMAGE_LAYOUT_INIT;
        quill_image converted{};
        quill_entry* cameras = nullptr;
        std::size_t count = 1;
        const bool isRight = stateOf(m_Camera) == QUILL_INVALID_HANDLE &&
                             quill_frame_queue_release(queue, nullptr) == QUILL_INVALID_HANDLE &&
                             quill_convert_image(image, QUILL_RGB, &converted, nullptr) == QUILL_OK &&
                             quill_image_get_layout(converted, &layout, nullptr) == QUILL_OK && layout.width == 64 &&
                             quill_get_cameras_list(&cameras, &count, nullptr) == QUILL_OK && count == 0 &&
                             quill_end_workspace(nullptr) == QUILL_OK;
        std::_Exit(isRight ? EXIT_SUCCESS : EXIT_FAILURE);
    }
    int status = -1;
    EXPECT_EQ(waitpid(process, &status, 0), process);
    EXPECT_EQ(status, 0);
    EXPECT_EQ(quill_image_release(image, nullptr), QUILL_OK);
    EXPECT_EQ(quill_frame_queue_release(queue, nullptr), QUILL_OK);
}
#endif

TEST(CInterface, StructsOfOtherVersionsAreFilledAsFarAsBothKnow) {
    struct Later {
        quill_image_layout known;
        std::uint64_t appended;
    };
    quill_image image{};
    ASSERT_EQ(quill_create_image(3, 2, nullptr, 0, 8, true, QUILL_MONO, &image, nullptr), QUILL_OK);
    Later later{};
    later.known.size = sizeof later;
    later.appended = 7;
    EXPECT_EQ(quill_image_get_layout(image, &later.known, nullptr), QUILL_OK);
    EXPECT_EQ(later.known.size, sizeof later.known);
    EXPECT_EQ(later.known.width, 3U);
    EXPECT_EQ(later.appended, 7U);
    later.known.size = 8;
    EXPECT_EQ(quill_image_get_layout(image, &later.known, nullptr), QUILL_INVALID_SIZE);
    EXPECT_EQ(quill_image_release(image, nullptr), QUILL_OK);
}

TEST(CInterface, ALongSentenceIsCutBetweenCharacters) {
    std::string name;
    for (int i = 0; i < 1000; ++i) {
        name += "ä";
    }
    quill_error error = QUILL_ERROR_INIT;
    quill_camera camera{};
    EXPECT_EQ(quill_get_camera(name.c_str(), &camera, &error), QUILL_EXCEPTION_CAMERA);
    const std::string sentence = error.sentence;
    EXPECT_GE(sentence.size(), sizeof error.sentence - 2);
    EXPECT_EQ(sentence.substr(sentence.size() - 2), "ä");
    error.size = 0;
    error.status = QUILL_OK;
    EXPECT_EQ(quill_get_camera(name.c_str(), &camera, &error), QUILL_EXCEPTION_CAMERA);
    EXPECT_EQ(error.status, QUILL_OK) << "written without a size";
}

} // namespace
