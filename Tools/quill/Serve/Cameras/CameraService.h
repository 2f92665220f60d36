// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "Serve/Cameras/Refusal.h"
#include "Serve/Pictures/File.h"
#include "Serve/Pictures/LiveFeed.h"
#include "Terminal/Output.h"

namespace QuillTool::Serve {

/// Called on any thread with an event's name and data. Must not block.
using Sink = std::function<void(const std::string& event, const Json& data)>;

/// What the server offers of cameras. Calls on one camera take turns; those on different cameras do not wait for each
/// other. Every call throws a Refusal, and may block for as long as the camera takes. Thread-safe.
class CameraService {
public:
    /// Opens the library's workspace. One object at a time.
    CameraService(Sink sink, bool viewOnly);
    CameraService(const CameraService&) = delete;
    CameraService& operator=(const CameraService&) = delete;
    /// Ends all threads, feeds and cameras.
    ~CameraService();

    Json list();
    Json describe(const std::string& serialNumber);
    Json connect(const std::string& serialNumber);
    Json suspend(const std::string& serialNumber);
    Json disconnect(const std::string& serialNumber);
    Json startStream(const std::string& serialNumber);
    Json stopStream(const std::string& serialNumber);

    Json properties(const std::string& serialNumber);
    Json property(const std::string& serialNumber, const std::string& name);
    /// @param value  a text, a number or a boolean, which becomes the choice that means it
    Json writeProperty(const std::string& serialNumber, const std::string& name, const Json& value);
    Json resetProperty(const std::string& serialNumber, const std::string& name);

    Json region(const std::string& serialNumber);
    Json writeRegion(const std::string& serialNumber, const Json& region);
    Json statistics(const std::string& serialNumber);

    /// Returns the document of the settings.
    std::string settings(const std::string& serialNumber);
    Json loadSettings(const std::string& serialNumber, const std::string& document);
    Json compareSettings(const std::string& serialNumber, const std::string& document);

    std::shared_ptr<LiveFeed> live(const std::string& serialNumber);
    File capture(const std::string& serialNumber, const std::string& format);
    /// Records frames into a tar archive, part by part, until all are there or @p write returns false.
    void series(const std::string& serialNumber, unsigned frames, const std::string& format,
                const std::function<bool(std::string_view bytes)>& write);

    /// Ends captures and series, those under way and later ones, before their next frame.
    void endRecordings();

    /// Whether anybody gets events: properties are polled only then.
    void setListening(bool anybody);

private:
    class Core;
    std::unique_ptr<Core> m_Core;
};

} // namespace QuillTool::Serve
