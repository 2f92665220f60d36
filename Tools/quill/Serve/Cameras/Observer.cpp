// SPDX-License-Identifier: Apache-2.0

#include "Serve/Cameras/Observer.h"

#include <chrono>
#include <exception>
#include <system_error>
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
      m_Starter([this] { startWatching(); }) {}

Observer::~Observer() {
    {
        const MutexLock lock(m_Mutex);
        m_IsEnding = true;
    }
    m_Changed.notify_all();
    m_Starter.join();
    for (auto& watch : m_Watches) {
        watch.second.join();
    }
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
        ++m_Looks;
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

bool Observer::waitForTurn(unsigned& knownLook) {
    MutexLock lock(m_Mutex);
    const auto next = std::chrono::steady_clock::now() + kPeriod;
    lock.waitUntil(m_Changed, next, [&]() QUILL_REQUIRES(m_Mutex) { return m_IsEnding || m_Looks != knownLook; });
    knownLook = m_Looks;
    return !m_IsEnding;
}

bool Observer::isListening() {
    const MutexLock lock(m_Mutex);
    return m_IsListening;
}

void Observer::startWatching() {
    unsigned knownLook = 0;
    while (waitForTurn(knownLook)) {
        if (!isListening()) {
            continue;
        }
        for (const auto& camera : m_Known.all()) {
            std::thread& thread = m_Watches[camera->serialNumber()];
            try {
                if (!thread.joinable()) {
                    thread = std::thread([this, camera] { watch(*camera); });
                }
            } catch (const std::system_error&) {
                // No thread is left now; the next turn tries again.
            }
        }
    }
}

void Observer::watch(KnownCamera& camera) {
    Told told;
    unsigned knownLook = 0;
    do {
        try {
            if (isListening()) {
                look(camera, told);
            } else {
                told.reset(); // who listens next reads all properties first
            }
        } catch (const std::exception&) {
            told.reset(); // not connected, or gone: the list says so
        }
    } while (waitForTurn(knownLook));
}

void Observer::look(KnownCamera& camera, Told& told) {
    Json statistics;
    const bool isStreaming = camera.useConnected([&](const SelectedCamera& selected) {
        const bool streams = selected->isStreaming();
        if (streams) {
            statistics = statisticsReport(selected);
        }
        return streams;
    });
    if (camera.rememberStreaming(isStreaming)) {
        m_Sink("cameras", listReport(m_Known));
    }
    if (isStreaming) {
        m_Sink("statistics", statistics);
    }
    tellProperties(camera, told);
}

void Observer::tellProperties(KnownCamera& camera, Told& told) {
    const auto names =
        camera.useConnected([](const SelectedCamera& selected) { return selected->getSupportedProperties(); });
    const bool isFirst = !told.has_value();
    auto& known = isFirst ? told.emplace() : *told;
    for (const std::string& name : names) {
        // A turn for each, so that nobody waits for all of a slow camera.
        Json property;
        try {
            property = camera.useConnected(
                [&](const SelectedCamera& selected) { return toJson(readProperty(selected, name)); });
        } catch (const ToolError&) {
            continue; // one that cannot be read now
        }
        Json& before = known[name];
        if (!isFirst && before != property) {
            m_Sink("property", {{"camera", camera.serialNumber()}, {"property", property}});
        }
        before = std::move(property);
    }
}

} // namespace QuillTool::Serve
