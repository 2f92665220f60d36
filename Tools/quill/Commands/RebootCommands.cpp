// SPDX-License-Identifier: Apache-2.0

#include <cstring>
#include <optional>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>
#include <Quill.h>
#include <fmt/format.h>

#include "Camera/CameraKind.h"
#include "Camera/CameraReturn.h"
#include "Camera/PropertyAccess.h"
#include "Commands/Command.h"

namespace QuillTool {

namespace {

constexpr const char* kModeProperty = CameraInterface::PropertyNames::kUsb3VisionMode;

/// Restarts a camera and, unless --no-wait is given, waits for its return.
/// @return whether the camera left and returned
bool reboot(Context& context, const SelectedCamera& camera, const std::string& mode, const ReturnOptions& options) {
    CameraReturn back(context, camera, options);
    std::vector<std::string> parameters{mode};
    camera.attempt("it cannot be restarted", [&] { camera->perform("Reboot", parameters); });
    return !options.noWait && back.await();
}

constexpr const char* kReadFlash = "Read Flash";
constexpr const char* kNoValidFile = "its flash holds no valid USB3 Vision file";

std::string readFlash(const SelectedCamera& camera, std::uint32_t address, std::size_t length) {
    std::vector<std::string> parameters{std::to_string(address), std::to_string(length)};
    const std::vector<std::string> results =
        camera.attempt("its USB3 Vision file cannot be read", [&] { return camera->perform(kReadFlash, parameters); });
    return results.empty() ? "" : results.front();
}

/// Returns whether the flash of an SDK camera holds a valid USB3 Vision file. The property reports this only while the
/// mode is off.
bool hasValidFile(const SelectedCamera& camera) {
    QuillInternal::Usb3VisionInfo info{};
    const std::string block = readFlash(camera, QuillInternal::kUsb3VisionInfoAddress, sizeof info);
    if (block.size() != sizeof info) {
        return false;
    }
    std::memcpy(&info, block.data(), sizeof info);
    if (!QuillInternal::isUsb3VisionInfoValid(info)) {
        return false;
    }
    const std::string file = readFlash(camera, QuillInternal::kUsb3VisionFileAddress, info.fileSize);
    return QuillInternal::isUsb3VisionFileValid({file.begin(), file.end()}, info);
}

/// Returns whether the mode is on, but the camera lacks a valid file and therefore starts as an SDK camera.
bool cannotStart(const SelectedCamera& camera, CameraKind kind, const PropertyReading& mode) {
    return kind == CameraKind::Sdk && mode.value == "Enabled" && !hasValidFile(camera);
}

class RebootCommand : public Command {
public:
    void describe(CLI::App& parser) override {
        addCameraArgument(parser, m_Camera);
        parser.add_flag("--bootloader", m_Bootloader, "Start the boot loader instead of the firmware");
        m_Return.describe(parser);
    }

    ExitCode run(Context& context) override {
        reboot(context, context.session.connect(m_Camera), m_Bootloader ? "Bootloader" : "Firmware", m_Return);
        return ExitCode::Done;
    }

private:
    std::string m_Camera;
    bool m_Bootloader = false;
    ReturnOptions m_Return;
};

class Usb3VisionSwitchCommand : public Command {
public:
    explicit Usb3VisionSwitchCommand(bool on) : m_On(on) {}

    void describe(CLI::App& parser) override {
        addCameraArgument(parser, m_Camera);
        CLI::Option* now = parser.add_flag("--reboot", m_Reboot, "Restart the camera and wait for it in its new mode");
        m_Return.describeTimeout(parser)->needs(now);
    }

    ExitCode run(Context& context) override {
        const SelectedCamera camera = context.session.connect(m_Camera);
        const PropertyReading before = readProperty(camera, kModeProperty);
        requirePossible(camera, before);
        if (before.value != wanted()) {
            writeProperty(context.output, camera, kModeProperty, wanted());
        }
        context.output.printLine(fmt::format("{} = {}", kModeProperty, wanted()));
        context.output.flush();
        if (!m_Reboot) {
            context.output.notify(camera.about("the mode takes effect at the next restart"));
            return ExitCode::Done;
        }
        if (!reboot(context, camera, "Firmware", m_Return)) {
            throw ToolError(ExitCode::TimedOut, camera.about("did not restart, so its mode has no effect yet"));
        }
        requireKind(camera, kindOf(*context.session.connect(camera.serialNumber())));
        return ExitCode::Done;
    }

private:
    const char* wanted() const { return m_On ? "Enabled" : "Disabled"; }

    void requirePossible(const SelectedCamera& camera, const PropertyReading& mode) const {
        const CameraKind kind = kindOf(*camera);
        const char* const reason = kind == CameraKind::Simulated ? "it is a simulated camera"
                                   : !mode.availableForWriting || (m_On && cannotStart(camera, kind, mode))
                                       ? kNoValidFile
                                       : nullptr;
        if (reason != nullptr) {
            throw ToolError(ExitCode::Failed, camera.about(fmt::format("{} cannot be switched {}: {}", mode.name,
                                                                       m_On ? "on" : "off", reason)));
        }
    }

    void requireKind(const SelectedCamera& camera, CameraKind kind) const {
        const CameraKind expected = m_On ? CameraKind::Usb3Vision : CameraKind::Sdk;
        if (kind != expected) {
            throw ToolError(ExitCode::Difference, camera.about(fmt::format("was expected as {} and returned as {}",
                                                                           nameOf(expected), nameOf(kind))));
        }
    }

    bool m_On;
    std::string m_Camera;
    bool m_Reboot = false;
    ReturnOptions m_Return;
};

template <bool On>
std::unique_ptr<Command> makeSwitch() {
    return std::make_unique<Usb3VisionSwitchCommand>(On);
}

class Usb3VisionStatusCommand : public Command {
public:
    void describe(CLI::App& parser) override {
        addCameraArgument(parser, m_Camera);
        addJsonFlag(parser, m_Json);
    }

    ExitCode run(Context& context) override {
        const SelectedCamera camera = context.session.connect(m_Camera);
        const PropertyReading mode = readProperty(camera, kModeProperty);
        const CameraKind kind = kindOf(*camera);
        if (cannotStart(camera, kind, mode)) {
            context.output.warn(camera.about(fmt::format("{}: it starts as an SDK camera", kNoValidFile)));
        }
        if (m_Json) {
            context.output.printJson(Json{{"camera", camera.serialNumber()},
                                          {"mode", mode.value},
                                          {"availableForWriting", mode.availableForWriting},
                                          {"isUsb3VisionCamera", kind == CameraKind::Usb3Vision}});
        } else {
            context.output.printTable(
                {{"MODE", "WRITABILITY", "AT PRESENT"}, {{mode.value, mode.writability(), nameOf(kind)}}});
        }
        return ExitCode::Done;
    }

private:
    std::string m_Camera;
    bool m_Json = false;
};

} // namespace

CommandDescription rebootCommand() {
    return {"reboot", "Restart a camera and wait for its return",
            "Reports on standard error when the camera leaves and returns. A camera that\n"
            "does not leave, such as a simulated camera, keeps responding. Ends with 4 if\n"
            "the camera does not return in time.\n\n"
            "Examples:\n"
            "  quill reboot 41500101\n"
            "  quill reboot 41500101 --bootloader --no-wait\n",
            makeCommand<RebootCommand>};
}

CommandDescription usb3VisionCommands() {
    return {"usb3vision",
            "Switch a camera between USB3 Vision and SDK mode",
            "The mode takes effect when the camera restarts. Switching it on requires a\n"
            "valid USB3 Vision file in the camera's flash. The tool describes, switches and\n"
            "restarts USB3 Vision cameras, but takes no images from them.\n",
            nullptr,
            {
                {"on", "Use USB3 Vision mode from the next restart on",
                 "Examples:\n"
                 "  quill usb3vision on 41500101\n"
                 "  quill usb3vision on 41500101 --reboot\n",
                 makeSwitch<true>},
                {"off", "Use SDK mode from the next restart on",
                 "Examples:\n"
                 "  quill usb3vision off 41500101 --reboot\n",
                 makeSwitch<false>},
                {"status", "Print the mode, its writability and the present kind of camera",
                 "Examples:\n"
                 "  quill usb3vision status 41500101\n",
                 makeCommand<Usb3VisionStatusCommand>},
            }};
}

} // namespace QuillTool
