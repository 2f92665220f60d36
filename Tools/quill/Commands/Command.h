// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "Camera/Context.h"
#include "Terminal/ParserFwd.h"
#include "Terminal/ToolError.h"

namespace QuillTool {

/// A command and the arguments of one command line.
class Command {
public:
    Command() = default;
    Command(const Command&) = delete;
    Command& operator=(const Command&) = delete;
    virtual ~Command() = default;

    /// Adds the arguments to the parser and binds them to members.
    virtual void describe(CLI::App& parser) = 0;
    /// @throws ToolError  names the failed action and the reason
    virtual ExitCode run(Context& context) = 0;
};

/// Names, explains and makes a command. A group of commands, such as "flash", has members instead of make().
struct CommandDescription {
    std::string name;
    std::string summary;
    std::string details; ///< explanation and examples; follow the list of arguments in the help
    std::unique_ptr<Command> (*make)() = nullptr;
    std::vector<CommandDescription> members{};

    bool isGroup() const { return make == nullptr; }
};

template <typename Class>
std::unique_ptr<Command> makeCommand() {
    return std::make_unique<Class>();
}

/// Refuses an empty text, such as that of an unset shell variable.
CLI::Validator notEmpty();

// Arguments that several commands share.
void addCameraArgument(CLI::App& parser, std::string& selector);
void addFileArgument(CLI::App& parser, std::string& path, const std::string& what);
void addJsonFlag(CLI::App& parser, bool& json);

/// Refuses "-" as the path of an input inside the shell, whose commands come from standard input.
/// @throws ToolError
void refuseCommandsAsInput(const Context& context, const std::string& path);

/// The names of all image formats.
std::vector<std::string> formatNames();

/// Adds an argument that takes all texts that follow, unchanged.
CLI::Option* addTexts(CLI::App& parser, const std::string& name, std::vector<std::string>& texts,
                      const std::string& description);

// The commands, in the order of the help.
std::vector<CommandDescription> cameraCommands();
std::vector<CommandDescription> propertyCommands();
std::vector<CommandDescription> functionCommands();
std::vector<CommandDescription> imageCommands();
CommandDescription flashCommands();
CommandDescription firmwareCommands();
CommandDescription jtagCommand();
CommandDescription rebootCommand();
CommandDescription usb3VisionCommands();
CommandDescription kitCommand();
CommandDescription networkCommand();
CommandDescription streamCommand();
CommandDescription watchCommand();
CommandDescription serveCommand();
CommandDescription conformCommand();
CommandDescription settingsCommands();
CommandDescription shellCommand();
CommandDescription checkCommand();
CommandDescription completionCommand();

} // namespace QuillTool
