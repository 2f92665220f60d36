// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <memory>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>

#include "Camera/Session.h"
#include "Terminal/Interrupt.h"
#include "Terminal/Output.h"
#include "Terminal/ToolError.h"

namespace QuillTool {

/// What every command works with.
struct Context {
    Session& session;
    Output& output;
    Interrupt& interrupt;
    bool inShell = false;
};

/// A command with the arguments of one command line.
class Command {
public:
    Command() = default;
    Command(const Command&) = delete;
    Command& operator=(const Command&) = delete;
    virtual ~Command() = default;

    /// Tells the parser which arguments there are and which members take them.
    virtual void describe(CLI::App& parser) = 0;
    /// @throws ToolError  what was tried and why it failed
    virtual ExitCode run(Context& context) = 0;
};

/// How a command is called, explained and made. A group of commands, such as "flash", makes nothing: the words that may
/// follow it are its members.
struct CommandDescription {
    std::string name;
    std::string summary;
    std::string details; ///< what follows the list of arguments in its help: explanation and examples
    std::unique_ptr<Command> (*make)() = nullptr;
    std::vector<CommandDescription> members{};

    bool isGroup() const { return make == nullptr; }
};

template <typename Class>
std::unique_ptr<Command> makeCommand() {
    return std::make_unique<Class>();
}

/// Refuses an empty text, such as a variable of the shell that is not set leaves.
CLI::Validator notEmpty();

/// The arguments that several commands share.
void addCameraArgument(CLI::App& parser, std::string& selector);
void addFileArgument(CLI::App& parser, std::string& path, const std::string& what);
void addJsonFlag(CLI::App& parser, bool& json);

/// Adds an argument that takes all texts that follow, each as it is.
CLI::Option* addTexts(CLI::App& parser, const std::string& name, std::vector<std::string>& texts,
                      const std::string& description);

// The commands, in groups and in the order of the help.
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
CommandDescription streamCommand();
CommandDescription watchCommand();
CommandDescription conformCommand();
CommandDescription shellCommand();

} // namespace QuillTool
