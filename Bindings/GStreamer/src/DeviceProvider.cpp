// SPDX-License-Identifier: Apache-2.0

#include <chrono>
#include <condition_variable>
#include <exception>
#include <map>
#include <memory>
#include <string>
#include <thread>
#include <utility>

#include "QuillDevice.h"

namespace QuillGStreamer {

using Utilities::Mutex;
using Utilities::MutexLock;

namespace {

/// The period of the library's own check for cameras that went away.
constexpr std::chrono::milliseconds kPeriod{500};

struct Unreference {
    void operator()(gpointer object) const { gst_object_unref(object); }
};

using Device = std::unique_ptr<GstDevice, Unreference>;

/// Compares the list of cameras with the devices of a provider, from its construction to its destruction. The callbacks
/// of the list, of which there is one each, belong to the application.
class CameraWatch {
public:
    explicit CameraWatch(GstDeviceProvider& provider) : m_Provider(provider) {
        update();
        m_Thread = std::thread([this] { run(); });
    }
    CameraWatch(const CameraWatch&) = delete;
    CameraWatch& operator=(const CameraWatch&) = delete;
    ~CameraWatch() {
        {
            const MutexLock lock(m_Mutex);
            m_Ends = true;
        }
        m_Changed.notify_one();
        m_Thread.join();
    }

private:
    using Identity = std::pair<std::string, std::string>; // serial number and model

    void run() {
        while (!endsWithin(kPeriod)) {
            update();
        }
    }

    bool endsWithin(std::chrono::milliseconds limit) {
        MutexLock lock(m_Mutex);
        return lock.waitFor(m_Changed, limit, [this]() QUILL_REQUIRES(m_Mutex) { return m_Ends; });
    }

    /// Of the constructing thread, then of the watch's own.
    void update() {
        std::map<Identity, Device> devices;
        try {
            std::map<std::string, std::string> listed = CameraInterface::Camera::getCamerasList();
            if (listed == m_Listed) { // no camera is asked, which the application may be about to destroy
                return;
            }
            m_Listed.clear(); // if this comparison fails, the next one is made
            for (const ListedCamera& camera : listStreamingCameras()) {
                Device& device = devices[{camera.serialNumber, camera.modelName}];
                const auto known = m_Devices.find({camera.serialNumber, camera.modelName});
                if (known != m_Devices.end()) {
                    device = std::move(known->second);
                    m_Devices.erase(known);
                } else {
                    device.reset(GST_DEVICE(gst_object_ref_sink(makeDevice(camera))));
                    gst_device_provider_device_add(&m_Provider, device.get());
                }
            }
            m_Listed.swap(listed);
        } catch (const std::exception&) {
            // Out of memory: the next comparison makes up for it.
        }
        for (const auto& gone : m_Devices) {
            gst_device_provider_device_remove(&m_Provider, gone.second.get());
        }
        m_Devices = std::move(devices);
    }

    GstDeviceProvider& m_Provider;
    std::map<std::string, std::string> m_Listed; // with which the devices were compared last
    std::map<Identity, Device> m_Devices;
    Mutex m_Mutex; // guards whether the watch ends
    bool m_Ends QUILL_GUARDED_BY(m_Mutex) = false;
    std::condition_variable m_Changed;
    std::thread m_Thread;
};

struct QuillDeviceProvider {
    GstDeviceProvider parent;
    CameraWatch* watch; // owned; null while stopped
};

struct QuillDeviceProviderClass {
    GstDeviceProviderClass parent;
};

CameraWatch*& watchOf(GstDeviceProvider* provider) {
    return static_cast<QuillDeviceProvider*>(static_cast<gpointer>(provider))->watch;
}

GList* probe(GstDeviceProvider* /*provider*/) {
    GList* devices = nullptr;
    try {
        ensureWorkspace();
        for (const ListedCamera& camera : listStreamingCameras()) {
            devices = g_list_append(devices, gst_object_ref_sink(makeDevice(camera)));
        }
    } catch (const std::exception& failure) {
        GST_WARNING("The cameras cannot be listed: %s", reasonOf(failure).c_str());
    }
    return devices;
}

gboolean startProvider(GstDeviceProvider* provider) {
    try {
        ensureWorkspace();
        watchOf(provider) = new CameraWatch(*provider);
        return 1;
    } catch (const std::exception& failure) {
        GST_WARNING_OBJECT(provider, "The cameras cannot be watched: %s", reasonOf(failure).c_str());
        return 0;
    }
}

void stopProvider(GstDeviceProvider* provider) {
    delete std::exchange(watchOf(provider), nullptr);
}

void initialiseProviderClass(gpointer klass, gpointer /*data*/) {
    GstDeviceProviderClass* const providerClass = GST_DEVICE_PROVIDER_CLASS(klass);
    providerClass->probe = probe;
    providerClass->start = startProvider;
    providerClass->stop = stopProvider;
    gst_device_provider_class_set_static_metadata(providerClass, "Quill cameras", "Source/Video",
                                                  "Lists machine-vision cameras, and follows their coming and going",
                                                  "The Quill project");
}

} // namespace

GType getDeviceProviderType() {
    static const GType type = g_type_register_static_simple(
        GST_TYPE_DEVICE_PROVIDER, g_intern_static_string("QuillDeviceProvider"), sizeof(QuillDeviceProviderClass),
        initialiseProviderClass, sizeof(QuillDeviceProvider), nullptr, GTypeFlags{});
    return type;
}

} // namespace QuillGStreamer
