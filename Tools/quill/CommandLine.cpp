#include "CommandLine.h"

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
  3    no such camera, property or function
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
)";

const std::vector<CommandDescription>& allCommands() {
    static const std::vector<CommandDescription> commands = [] {
        std::vector<CommandDescription> all;
        for (auto& group : {cameraCommands(), propertyCommands(), functionCommands(), imageCommands()}) {
            std::copy(group.begin(), group.end(), std::back_inserter(all));
        }
        all.push_back(streamCommand());
        all.push_back(watchCommand());
        all.push_back(shellCommand());
        return all;
    }();
    return commands;
}

const CommandDescription& findCommand(const std::string& name) {
    const auto& commands = allCommands();
    const auto command = std::find_if(commands.begin(), commands.end(),
                                      [&](const CommandDescription& candidate) { return candidate.name == name; });
    if (command == commands.end()) {
        throw ToolError(ExitCode::Usage, fmt::format("unknown command '{}'; try 'quill --help'", name));
    }
    return *command;
}

std::string overview() {
    std::string text = kHelpHead;
    for (const CommandDescription& command : allCommands()) {
        fmt::format_to(std::back_inserter(text), "  {:<13}{}\n", command.name, command.summary);
    }
    return text + kHelpTail;
}

ExitCode printOverview(Context& context) {
    context.output.print(overview());
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

ExitCode runCommand(const CommandDescription& description, const std::vector<std::string>& arguments,
                    Context& context) {
    const std::unique_ptr<Command> command = description.make();
    CLI::App parser(description.summary + ".", "quill " + description.name);
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
        throw ToolError(ExitCode::Usage,
                        fmt::format("{0}: {1}; try 'quill {0} --help'", description.name, failure.what()));
    }
    return command->run(context);
}

ExitCode dispatch(std::vector<std::string> words, Context& context) {
    if (words.empty()) {
        throw ToolError(ExitCode::Usage, "a command is missing; try 'quill --help'");
    }
    if (words.size() == 2 && words.front() == "help") {
        words = {words.back(), "--help"};
    }
    for (const GlobalOption& option : kGlobalOptions) {
        if (option.name == words.front()) {
            return option.run(context);
        }
    }
    return runCommand(findCommand(words.front()), {words.begin() + 1, words.end()}, context);
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
