// SPDX-License-Identifier: Apache-2.0

#include "Serve/Cameras/CameraService.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <exception>
#include <optional>
#include <utility>
#include <vector>

#include <Quill.h>
#include <fmt/format.h>

#include "Camera/CameraJson.h"
#include "Camera/Region.h"
#include "Serve/Cameras/KnownCamera.h"
#include "Serve/Cameras/Observer.h"
#include "Serve/Cameras/Recording.h"
#include "Serve/Cameras/Reports.h"
#include "Serve/Cameras/SensorRegion.h"

namespace QuillTool::Serve {

using CameraInterface::Camera;
using CameraInterface::SettingDifference;

namespace {

/// Exposures of a minute are the longest that a page waits for.
constexpr std::chrono::seconds kLongestWait{70};
/// Of a series: what may wait while frames are encoded and sent.
constexpr std::size_t kWaitingFrames = 16;

/// Returns the text of a value: of true and false, the choice that means it.
std::string textOf(const Json& value, const PropertyReading& property) {
    if (value.is_string()) {
        return value.get<std::string>();
    }
    if (!value.is_boolean()) {
        return value.dump();
    }
    const bool isOn = value.get<bool>();
    for (const char* word : {isOn ? "Enabled" : "Disabled", isOn ? "On" : "Off", isOn ? "True" : "False"}) {
        if (std::find(property.choices.begin(), property.choices.end(), word) != property.choices.end()) {
            return word;
        }
    }
    return isOn ? "true" : "false";
}

void requireWritable(const SelectedCamera& camera, const PropertyReading& property) {
    if (property.readOnly) {
        throw Refusal(409, "ReadOnly", camera.about(fmt::format("property '{}' is read-only", property.name)));
    }
    if (!property.availableForWriting) {
        throw Refusal(409, "Locked", camera.about(fmt::format("property '{}' cannot be written now", property.name)),
                      camera->isStreaming() ? "Stop the stream, then try again."
                                            : "Another property locks it: look at modes and automatic functions.");
    }
}

Json toJson(const std::vector<SettingDifference>& differences) {
    Json rows = Json::array();
    for (const SettingDifference& one : differences) {
        rows.push_back({{"name", one.name}, {"wanted", one.wanted}, {"present", one.present}, {"reason", one.reason}});
    }
    return rows;
}

ImageOrigin originOf(const KnownCamera& camera, const Recording& recording) {
    return {recording.modelName(), camera.serialNumber()};
}

} // namespace

class CameraService::Core {
public:
    Core(Sink sink, bool viewOnly) : m_Sink(sink), m_ViewOnly(viewOnly), m_Observer(m_Known, std::move(sink)) {}

    KnownCameras& known() { return m_Known; }
    Observer& observer() { return m_Observer; }
    bool mayChange() const { return !m_ViewOnly; }
    std::atomic<bool>& isEnding() { return m_IsEnding; }

    /// Calls an action with what is known of a camera. Turns its exceptions into a Refusal.
    template <typename Action>
    auto with(const std::string& serialNumber, Action&& action) {
        try {
            return std::forward<Action>(action)(*m_Known.find(serialNumber));
        } catch (const std::exception& failure) {
            throw refusalOf(failure);
        }
    }

    /// Changes the state of a camera, and reports the change to all listeners.
    template <typename Action>
    Json change(const std::string& serialNumber, const char* done, Action&& action) {
        try {
            Json report = with(serialNumber, [&](KnownCamera& camera) {
                return camera.use([&](const SelectedCamera& selected) {
                    action(camera, selected);
                    return cameraReport(camera, selected);
                });
            });
            tell("info", serialNumber, done);
            return report;
        } catch (const Refusal& refusal) {
            tell("error", serialNumber, refusal.what());
            throw;
        }
    }

    /// Writes a property by an action, and reports what changed with it to all listeners.
    template <typename Action>
    Json write(const std::string& serialNumber, const std::string& name, Action&& action) {
        std::vector<Json> changed;
        Json report = with(serialNumber, [&](KnownCamera& camera) {
            return camera.useConnected([&](const SelectedCamera& selected) {
                const PropertyReading before = readProperty(selected, name);
                requireWritable(selected, before);
                std::vector<std::string> names;
                selected->registerPropertyChangeCallback(
                    [&names](CameraInterface::Property& property) { names.push_back(property.getName()); });
                std::optional<Refusal> refusal;
                WrittenProperty written;
                try {
                    written = action(selected, before);
                } catch (const std::exception& failure) {
                    refusal = refusalOf(failure);
                }
                selected->registerPropertyChangeCallback({});
                if (refusal) {
                    const bool isOfValue = refusal->status == 409;
                    throw Refusal(isOfValue ? 422 : refusal->status, isOfValue ? "InvalidValue" : refusal->error,
                                  refusal->what(),
                                  isOfValue ? "Look at the property's range and choices." : refusal->advice);
                }
                for (const std::string& other : names) {
                    try {
                        changed.push_back(QuillTool::toJson(readProperty(selected, other)));
                    } catch (const ToolError&) {
                        // One that cannot be read now; it comes as an event once it can.
                    }
                }
                return Json{{"camera", serialNumber},
                            {"property", QuillTool::toJson(written.reading)},
                            {"difference", written.difference}};
            });
        });
        for (const Json& property : changed) {
            m_Sink("property", {{"camera", serialNumber}, {"property", property}});
        }
        return report;
    }

private:
    /// Opens the workspace. Drops a failure to close it, since the process ends.
    class Workspace {
    public:
        Workspace() { Camera::initialiseWorkspace(); }
        Workspace(const Workspace&) = delete;
        Workspace& operator=(const Workspace&) = delete;
        ~Workspace() {
            try {
                Camera::unitialisedWorkpace();
            } catch (const std::exception&) {
                // The process ends.
            }
        }
    };

    void tell(const char* level, const std::string& serialNumber, const std::string& text) {
        m_Sink("cameras", listReport(m_Known));
        m_Sink("log", logReport(level, serialNumber, text));
    }

    const Sink m_Sink;
    const bool m_ViewOnly;
    std::atomic<bool> m_IsEnding{false};
    const Workspace m_Workspace;
    KnownCameras m_Known;
    Observer m_Observer;
};

CameraService::CameraService(Sink sink, bool viewOnly) : m_Core(std::make_unique<Core>(std::move(sink), viewOnly)) {}

CameraService::~CameraService() = default;

Json CameraService::list() {
    return listReport(m_Core->known());
}

Json CameraService::describe(const std::string& serialNumber) {
    return m_Core->with(serialNumber, [](KnownCamera& camera) {
        return camera.use([&](const SelectedCamera& selected) {
            Json report = cameraReport(camera, selected);
            report["information"] = selected->getCameraInfo();
            return report;
        });
    });
}

Json CameraService::connect(const std::string& serialNumber) {
    return m_Core->change(serialNumber, "Connected.",
                          [](KnownCamera&, const SelectedCamera& camera) { camera->connect(); });
}

Json CameraService::suspend(const std::string& serialNumber) {
    return m_Core->change(serialNumber, "Suspended.", [](KnownCamera& known, const SelectedCamera& camera) {
        known.isStreamWanted = false;
        camera->suspend();
    });
}

Json CameraService::disconnect(const std::string& serialNumber) {
    return m_Core->change(serialNumber, "Disconnected.", [](KnownCamera& known, const SelectedCamera& camera) {
        known.isStreamWanted = false;
        camera->disconnect();
    });
}

Json CameraService::startStream(const std::string& serialNumber) {
    return m_Core->change(serialNumber, "The stream runs.", [](KnownCamera& known, const SelectedCamera& camera) {
        KnownCamera::requireConnected(camera);
        attemptStart(camera, "it cannot stream", [&] { camera->startStream(); });
        known.isStreamWanted = true;
    });
}

Json CameraService::stopStream(const std::string& serialNumber) {
    return m_Core->change(serialNumber, "The stream has stopped.",
                          [](KnownCamera& known, const SelectedCamera& camera) {
                              KnownCamera::requireConnected(camera);
                              known.isStreamWanted = false;
                              camera->stopStream();
                          });
}

Json CameraService::properties(const std::string& serialNumber) {
    return m_Core->with(serialNumber, [&](KnownCamera& camera) {
        return camera.useConnected([&](const SelectedCamera& selected) {
            Json rows = Json::array();
            for (const std::string& name : selected->getSupportedProperties()) {
                try {
                    rows.push_back(QuillTool::toJson(readProperty(selected, name)));
                } catch (const ToolError& failure) {
                    if (failure.code() == ExitCode::CameraGone) {
                        throw;
                    }
                    // One that cannot be read now; it comes as an event once it can.
                }
            }
            return Json{{"camera", serialNumber}, {"properties", rows}};
        });
    });
}

Json CameraService::property(const std::string& serialNumber, const std::string& name) {
    return m_Core->with(serialNumber, [&](KnownCamera& camera) {
        return camera.useConnected([&](const SelectedCamera& selected) {
            return Json{{"camera", serialNumber}, {"property", QuillTool::toJson(readProperty(selected, name))}};
        });
    });
}

Json CameraService::writeProperty(const std::string& serialNumber, const std::string& name, const Json& value) {
    return m_Core->write(serialNumber, name, [&](const SelectedCamera& camera, const PropertyReading& before) {
        return QuillTool::writeProperty(camera, name, textOf(value, before));
    });
}

Json CameraService::resetProperty(const std::string& serialNumber, const std::string& name) {
    return m_Core->write(serialNumber, name, [&](const SelectedCamera& camera, const PropertyReading& /*before*/) {
        camera.attempt(fmt::format("property '{}': cannot be reset", name),
                       [&] { camera->getProperty(name).resetToDefault(); });
        return WrittenProperty{readProperty(camera, name), ""};
    });
}

Json CameraService::region(const std::string& serialNumber) {
    return m_Core->with(serialNumber, [](KnownCamera& camera) { return camera.useConnected(readRegion); });
}

Json CameraService::writeRegion(const std::string& serialNumber, const Json& region) {
    Json report = m_Core->with(serialNumber, [&](KnownCamera& camera) {
        return camera.useConnected(
            [&](const SelectedCamera& selected) { return Serve::writeRegion(selected, region); });
    });
    m_Core->observer().lookNow();
    return report;
}

Json CameraService::statistics(const std::string& serialNumber) {
    return m_Core->with(serialNumber, [](KnownCamera& camera) { return camera.useConnected(statisticsReport); });
}

std::string CameraService::settings(const std::string& serialNumber) {
    return m_Core->with(serialNumber, [](KnownCamera& camera) {
        return camera.useConnected(
            [](const SelectedCamera& selected) { return CameraInterface::toJson(readSettings(*selected)); });
    });
}

Json CameraService::loadSettings(const std::string& serialNumber, const std::string& document) {
    Json written = m_Core->with(serialNumber, [&](KnownCamera& camera) {
        const CameraInterface::CameraSettings wanted = CameraInterface::parseSettings(document);
        return camera.useConnected([&](const SelectedCamera& selected) {
            const auto report = writeSettings(*selected, wanted);
            if (report.interruption) {
                std::rethrow_exception(report.interruption);
            }
            return Json{{"written", report.written},
                        {"different", toJson(report.different)},
                        {"failed", toJson(report.failed)}};
        });
    });
    m_Core->observer().lookNow();
    return written;
}

Json CameraService::compareSettings(const std::string& serialNumber, const std::string& document) {
    return m_Core->with(serialNumber, [&](KnownCamera& camera) {
        const CameraInterface::CameraSettings wanted = CameraInterface::parseSettings(document);
        return camera.useConnected([&](const SelectedCamera& selected) {
            return Json{{"differences", toJson(CameraInterface::compareSettings(*selected, wanted))}};
        });
    });
}

std::shared_ptr<LiveFeed> CameraService::live(const std::string& serialNumber) {
    return m_Core->with(serialNumber, [](KnownCamera& camera) { return camera.feed(); });
}

File CameraService::capture(const std::string& serialNumber, const std::string& format) {
    return m_Core->with(serialNumber, [&](KnownCamera& camera) {
        Recording recording(camera, 1, m_Core->mayChange());
        const auto frame = recording.next(kLongestWait, m_Core->isEnding());
        return encodeFile(Imaging::cloneImage(*frame.image), format,
                          fmt::format("{}-{:05}", serialNumber, frame.information.number), originOf(camera, recording));
    });
}

void CameraService::series(const std::string& serialNumber, unsigned frames, const std::string& format,
                           const std::function<bool(std::string_view bytes)>& write) {
    m_Core->with(serialNumber, [&](KnownCamera& camera) {
        Recording recording(camera, kWaitingFrames, m_Core->mayChange());
        bool isWanted = true;
        for (unsigned number = 1; number <= frames && isWanted; ++number) {
            const auto frame = recording.next(kLongestWait, m_Core->isEnding());
            const File file = encodeFile(Imaging::cloneImage(*frame.image), format,
                                         fmt::format("{}-{:05}", serialNumber, frame.information.number),
                                         originOf(camera, recording));
            const auto time = std::chrono::system_clock::to_time_t(frame.information.arrivalWallTime);
            isWanted = write(tarHeader(file.name, file.bytes.size(), time)) && write(file.bytes) &&
                       write(tarPadding(file.bytes.size()));
        }
        if (isWanted) {
            write(std::string(kTarEndSize, '\0'));
        }
    });
}

void CameraService::endRecordings() {
    m_Core->isEnding() = true;
}

void CameraService::setListening(bool anybody) {
    m_Core->observer().setListening(anybody);
}

} // namespace QuillTool::Serve
