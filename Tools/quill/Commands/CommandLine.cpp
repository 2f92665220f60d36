// SPDX-License-Identifier: Apache-2.0

#include "Commands/CommandLine.h"

#include <algorithm>
#include <exception>
#include <iterator>
#include <utility>

#include <fmt/format.h>

namespace QuillTool {

namespace {

constexpr const char* kHelpHead = R"(quill: see, set and use cameras.

Usage: quill COMMAND [ARGUMENT...]
       quill COMMAND --help
       quill --version

Commands:
)";

constexpr const char* kHelpTail = R"(
A camera is named by its serial number, or by a beginning of it that fits no
other camera. With --json, commands that list or read print JSON. Results go to
standard output, everything else to standard error. Colour is used on a
terminal only, and not where the environment has NO_COLOR.

Exit codes:
  0    done
  1    the operation failed
  2    the command line is wrong, or a camera's name fits several
  3    no such camera, property or function, or no driver kit
  4    timed out
  5    the camera is gone
  6    what was read back is not what was written
  130  interrupted

Examples:
  quill list
  quill properties 90001
  quill set 90001 "Video Exposure" 12.5
  quill convert frame.raw --from BAYER_RGGB --width 640 --height 480 --to RGB \
      -o frame.png
  quill firmware write 41500101 update.img --dry-run
)";

const std::vector<CommandDescription>& allCommands() {
    static const std::vector<CommandDescription> commands = [] {
        std::vector<CommandDescription> all;
        for (auto& group : {cameraCommands(), propertyCommands(), functionCommands(), imageCommands()}) {
            std::copy(group.begin(), group.end(), std::back_inserter(all));
        }
        for (const auto& single : {streamCommand, watchCommand, conformCommand, flashCommands, firmwareCommands,
                                   jtagCommand, rebootCommand, usb3VisionCommands, kitCommand, shellCommand}) {
            all.push_back(single());
        }
        return all;
    }();
    return commands;
}

/// @param path  the words before @p name, such as "flash "
const CommandDescription& findCommand(const std::vector<CommandDescription>& commands, const std::string& path,
                                      const std::string& name) {
    const auto command = std::find_if(commands.begin(), commands.end(),
                                      [&](const CommandDescription& candidate) { return candidate.name == name; });
    if (command == commands.end()) {
        throw ToolError(ExitCode::Usage, fmt::format("unknown command '{0}{1}'; try 'quill {0}--help'", path, name));
    }
    return *command;
}

std::string listing(const std::vector<CommandDescription>& commands) {
    std::string text;
    for (const CommandDescription& command : commands) {
        fmt::format_to(std::back_inserter(text), "  {:<13}{}\n", command.name, command.summary);
    }
    return text;
}

std::string helpOf(const CommandDescription& group, const std::string& path) {
    return fmt::format(
        "{0}.\nUsage: quill {1} COMMAND [ARGUMENT...]\n       quill {1} COMMAND --help\n\nCommands:\n{2}\n{3}",
        group.summary, path, listing(group.members), group.details);
}

ExitCode printOverview(Context& context) {
    context.output.print(kHelpHead + listing(allCommands()) + kHelpTail);
    return ExitCode::Done;
}

ExitCode printVersion(Context& context) {
    context.output.printLine("quill " QUILL_TOOL_VERSION);
    return ExitCode::Done;
}

/// What stands in the place of a command.
struct GlobalOption {
    std::string_view name;
    ExitCode (*run)(Context& context);
};

constexpr GlobalOption kGlobalOptions[] = {
    {"--help", printOverview}, {"-h", printOverview}, {"help", printOverview}, {"--version", printVersion}};

/// The parser takes "[a,b]" for a list of two. An argument that starts so gets this mark in front until it is parsed.
constexpr char kLiteralMark = '\1';

std::string marked(const std::string& argument) {
    return argument.rfind('[', 0) == 0 ? kLiteralMark + argument : argument;
}

std::string unmarked(const std::string& argument) {
    return argument.rfind(kLiteralMark, 0) == 0 ? argument.substr(1) : argument;
}

/// @param path  the words that call the command
ExitCode runCommand(const CommandDescription& description, const std::string& path,
                    const std::vector<std::string>& arguments, Context& context) {
    const std::unique_ptr<Command> command = description.make();
    CLI::App parser(description.summary + ".", "quill " + path);
    parser.footer(description.details);
    command->describe(parser);
    for (CLI::Option* option : parser.get_options()) {
        option->transform(unmarked);
    }
    std::vector<std::string> reversed; // as the parser takes them
    std::transform(arguments.rbegin(), arguments.rend(), std::back_inserter(reversed), marked);
    try {
        parser.parse(std::move(reversed));
    } catch (const CLI::CallForHelp&) {
        context.output.print(parser.help());
        return ExitCode::Done;
    } catch (const CLI::ParseError& failure) {
        throw ToolError(ExitCode::Usage, fmt::format("{0}: {1}; try 'quill {0} --help'", path, failure.what()));
    }
    return command->run(context);
}

bool asksForHelp(const std::string& word) {
    return word == "--help" || word == "-h";
}

/// Follows the words through the groups to the command that they call.
ExitCode runWords(const std::vector<std::string>& words, Context& context) {
    const CommandDescription* command = &findCommand(allCommands(), "", words.front());
    std::string path = command->name;
    auto next = words.begin() + 1;
    for (; command->isGroup(); ++next) {
        if (next == words.end()) {
            throw ToolError(ExitCode::Usage, fmt::format("{0}: a command is missing; try 'quill {0} --help'", path));
        }
        if (asksForHelp(*next)) {
            context.output.print(helpOf(*command, path));
            return ExitCode::Done;
        }
        command = &findCommand(command->members, path + ' ', *next);
        path += ' ' + command->name;
    }
    return runCommand(*command, path, {next, words.end()}, context);
}

ExitCode dispatch(std::vector<std::string> words, Context& context) {
    if (words.empty()) {
        throw ToolError(ExitCode::Usage, "a command is missing; try 'quill --help'");
    }
    if (words.size() > 1 && words.front() == "help") {
        words.front() = "--help";
        std::rotate(words.begin(), words.begin() + 1, words.end());
    }
    for (const GlobalOption& option : kGlobalOptions) {
        if (option.name == words.front()) {
            return option.run(context);
        }
    }
    return runWords(words, context);
}

} // namespace

ExitCode runCommandLine(const std::vector<std::string>& words, Context& context) {
    try {
        const ExitCode code = dispatch(words, context);
        context.output.flush();
        return code;
    } catch (const ToolError& failure) {
        context.output.fail(failure.what());
        return failure.code();
    } catch (const std::exception& failure) {
        context.output.fail(fmt::format("{}: failed: {}", words.empty() ? "" : words.front(), reasonOf(failure)));
        return ExitCode::Failed;
    }
}

} // namespace QuillTool
