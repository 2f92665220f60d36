#include <string>
#include <vector>

#include <Quill.h>
#include <fmt/format.h>

#include "CameraReturn.h"
#include "Command.h"
#include "PropertyAccess.h"

namespace QuillTool {

namespace {

constexpr const char* kModeProperty = CameraInterface::PropertyNames::kUsb3VisionMode;

/// Restarts a camera and, unless told otherwise, waits until it is back.
/// @return whether it came back after it had left
bool reboot(Context& context, const SelectedCamera& camera, const std::string& mode, const ReturnOptions& options) {
    CameraReturn back(context, camera, options);
    std::vector<std::string> parameters{mode};
    camera.attempt("it cannot be restarted", [&] { camera->perform("Reboot", parameters); });
    return !options.noWait && back.await();
}

class RebootCommand : public Command {
public:
    void describe(CLI::App& parser) override {
        addCameraArgument(parser, m_Camera);
        parser.add_flag("--bootloader", m_Bootloader, "Into its boot loader instead of its firmware");
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
        CLI::Option* now =
            parser.add_flag("--reboot", m_Reboot, "Restart the camera, and wait until it is back in its mode");
        parser.add_option("--timeout", m_Return.timeoutSeconds, "Seconds to wait until the camera is back")
            ->capture_default_str()
            ->check(CLI::Range(1U, 3600U))
            ->needs(now);
    }

    ExitCode run(Context& context) override {
        const SelectedCamera camera = context.session.connect(m_Camera);
        const PropertyReading before = readProperty(camera, kModeProperty);
        if (before.value != wanted()) {
            requireAvailable(camera, before);
            writeProperty(context.output, camera, kModeProperty, wanted());
        }
        context.output.printLine(fmt::format("{} = {}", kModeProperty, wanted()));
        context.output.flush();
        if (!m_Reboot) {
            context.output.tell(camera.about("a reboot makes it effective"));
            return ExitCode::Done;
        }
        if (!reboot(context, camera, "Firmware", m_Return)) {
            throw ToolError(ExitCode::TimedOut, camera.about("did not restart, so that its mode is not effective"));
        }
        requireMode(camera, isUsb3VisionCamera(context.session.connect(camera.serialNumber())));
        return ExitCode::Done;
    }

private:
    const char* wanted() const { return m_On ? "Enabled" : "Disabled"; }

    void requireAvailable(const SelectedCamera& camera, const PropertyReading& mode) const {
        if (!mode.availableForWriting) {
            throw ToolError(ExitCode::Failed, camera.about(fmt::format("{} cannot be switched {}: its flash holds no "
                                                                       "valid USB3 Vision file",
                                                                       mode.name, m_On ? "on" : "off")));
        }
    }

    void requireMode(const SelectedCamera& camera, bool isOn) const {
        if (isOn != m_On) {
            throw ToolError(ExitCode::Difference,
                            camera.about(fmt::format("was to come back as {} and is {}", kindOf(m_On), kindOf(isOn))));
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
        const bool isOn = isUsb3VisionCamera(camera);
        if (m_Json) {
            context.output.printJson(Json{{"camera", camera.serialNumber()},
                                          {"mode", mode.value},
                                          {"availableForWriting", mode.availableForWriting},
                                          {"isUsb3VisionCamera", isOn}});
        } else {
            context.output.printTable(
                {{"MODE", "WRITABILITY", "AT PRESENT"}, {{mode.value, mode.writability(), kindOf(isOn)}}});
        }
        return ExitCode::Done;
    }

private:
    std::string m_Camera;
    bool m_Json = false;
};

} // namespace

CommandDescription rebootCommand() {
    return {"reboot", "Restart a camera and wait until it is back",
            "Tells on standard error that the camera leaves and comes back. One that does\n"
            "not leave, such as a simulated one, answers all the time. One that does not\n"
            "come back in time is exit code 4.\n\n"
            "Examples:\n"
            "  quill reboot 41500101\n"
            "  quill reboot 41500101 --bootloader --no-wait\n",
            makeCommand<RebootCommand>};
}

CommandDescription usb3VisionCommands() {
    return {"usb3vision",
            "Make a camera a USB3 Vision camera, or an SDK camera again",
            "The mode takes effect when the camera restarts. It can be switched on only where\n"
            "the camera's flash holds a valid USB3 Vision file. A USB3 Vision camera gives\n"
            "no images here: it is described, switched and restarted.\n",
            nullptr,
            {
                {"on", "Start as a USB3 Vision camera from the next restart on",
                 "Examples:\n"
                 "  quill usb3vision on 41500101\n"
                 "  quill usb3vision on 41500101 --reboot\n",
                 makeSwitch<true>},
                {"off", "Start as an SDK camera from the next restart on",
                 "Examples:\n"
                 "  quill usb3vision off 41500101 --reboot\n",
                 makeSwitch<false>},
                {"status", "Show the mode, whether it can be switched, and what the camera is at present",
                 "Examples:\n"
                 "  quill usb3vision status 41500101\n",
                 makeCommand<Usb3VisionStatusCommand>},
            }};
}

} // namespace QuillTool
