// SPDX-License-Identifier: Apache-2.0

#include "Serve/Cameras/Observer.h"

#include <chrono>
#include <exception>
#include <utility>

#include <fmt/format.h>

#include "Camera/CameraJson.h"
#include "Serve/Cameras/Reports.h"

namespace QuillTool::Serve {

using CameraInterface::Camera;
using Utilities::MutexLock;

namespace {

constexpr std::chrono::seconds kPeriod{1};

} // namespace

Observer::Registrations::Registrations(Observer& observer) {
    Camera::registerNewConnectCallback([&observer] { observer.tellArrivals(); });
    Camera::registerDisconnectCallback([&observer](const std::string& modelName, const std::string& serialNumber) {
        observer.tellDeparture(modelName, serialNumber);
    });
}

Observer::Registrations::~Registrations() {
    Camera::registerNewConnectCallback({});
    Camera::registerDisconnectCallback({});
}

Observer::Observer(KnownCameras& known, Sink sink)
    : m_Known(known), m_Sink(std::move(sink)), m_Present(Camera::getCamerasList()), m_Registrations(*this),
      m_Thread([this] { run(); }) {}

Observer::~Observer() {
    {
        const MutexLock lock(m_Mutex);
        m_IsEnding = true;
    }
    m_Changed.notify_all();
    m_Thread.join();
}

void Observer::setListening(bool anybody) {
    {
        const MutexLock lock(m_Mutex);
        m_IsListening = anybody;
    }
    if (anybody) {
        lookNow(); // reports what changes from now on
    }
}

void Observer::lookNow() {
    {
        const MutexLock lock(m_Mutex);
        m_IsDue = true;
    }
    m_Changed.notify_all();
}

void Observer::tellArrivals() {
    auto present = Camera::getCamerasList();
    std::map<std::string, std::string> before;
    {
        const MutexLock lock(m_Mutex);
        before = std::exchange(m_Present, present);
    }
    m_Sink("cameras", listReport(m_Known));
    for (const auto& [serialNumber, modelName] : present) {
        if (before.count(serialNumber) == 0) {
            m_Sink("log", logReport("info", serialNumber, fmt::format("{} has arrived.", modelName)));
        }
    }
}

void Observer::tellDeparture(const std::string& modelName, const std::string& serialNumber) {
    {
        const MutexLock lock(m_Mutex);
        m_Present.erase(serialNumber);
    }
    m_Sink("cameras", listReport(m_Known));
    m_Sink("log", logReport("warning", serialNumber, fmt::format("{} has left.", modelName)));
}

bool Observer::waitForTurn() {
    MutexLock lock(m_Mutex);
    const auto next = std::chrono::steady_clock::now() + kPeriod;
    lock.waitUntil(m_Changed, next, [this]() QUILL_REQUIRES(m_Mutex) { return m_IsEnding || m_IsDue; });
    m_IsDue = false;
    return !m_IsEnding;
}

void Observer::run() {
    while (waitForTurn()) {
        bool isListening = false;
        {
            const MutexLock lock(m_Mutex);
            isListening = m_IsListening;
        }
        if (!isListening) {
            m_Told.clear(); // who listens next reads all properties first
            continue;
        }
        for (const auto& camera : m_Known.all()) {
            try {
                look(camera);
            } catch (const std::exception&) {
                m_Told.erase(camera->serialNumber()); // not connected, or gone: the list says so
            }
        }
    }
}

void Observer::look(const std::shared_ptr<KnownCamera>& camera) {
    Json statistics;
    const bool isStreaming = camera->useConnected([&](const SelectedCamera& selected) {
        const bool streams = selected->isStreaming();
        if (streams) {
            statistics = statisticsReport(selected);
        }
        return streams;
    });
    if (camera->rememberStreaming(isStreaming)) {
        m_Sink("cameras", listReport(m_Known));
    }
    if (isStreaming) {
        m_Sink("statistics", statistics);
    }
    tellProperties(*camera);
}

void Observer::tellProperties(KnownCamera& camera) {
    const auto names =
        camera.useConnected([](const SelectedCamera& selected) { return selected->getSupportedProperties(); });
    const bool isFirst = m_Told.count(camera.serialNumber()) == 0;
    Told& told = m_Told[camera.serialNumber()];
    for (const std::string& name : names) {
        // A turn for each, so that nobody waits for all of a slow camera.
        Json property;
        try {
            property = camera.useConnected(
                [&](const SelectedCamera& selected) { return toJson(readProperty(selected, name)); });
        } catch (const ToolError&) {
            continue; // one that cannot be read now
        }
        Json& before = told[name];
        if (!isFirst && before != property) {
            m_Sink("property", {{"camera", camera.serialNumber()}, {"property", property}});
        }
        before = std::move(property);
    }
}

} // namespace QuillTool::Serve
