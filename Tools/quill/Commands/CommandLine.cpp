// SPDX-License-Identifier: Apache-2.0

#include "Commands/CommandLine.h"

#include <algorithm>
#include <exception>
#include <iterator>
#include <sstream>
#include <utility>

#include <CLI/CLI.hpp>
#include <Quill.h>
#include <fmt/format.h>
#include <fmt/ranges.h>

#include "Commands/Command.h"

namespace QuillTool {

namespace {

constexpr const char* kFooter = R"('quill COMMAND --help' explains a command, and so does 'quill help COMMAND'.

GigE Vision cameras of any maker are looked for where --genicam, the environment
variable QUILL_GENICAM or /etc/quillcamera/genicam.conf says: network cards and
addresses, as in 'quill list --genicam eth1,192.168.7.2'. USB3 Vision cameras are
always listed.

A serial number, or a unique prefix of it, identifies a camera. With --json,
commands that list or read print JSON. Results go to standard output, everything
else to standard error. Colour appears on terminals only, unless the environment
variable NO_COLOR is set.

Exit codes:
  0    done
  1    the operation failed
  2    the command line is wrong, or a serial number's prefix is ambiguous
  3    no such camera, property or function, or no driver kit
  4    the operation timed out
  5    the camera is gone
  6    reading back, or comparing, found a difference
  130  interrupted

Examples:
  quill list
  quill properties 90001
  quill set 90001 "Video Exposure" 12.5
  quill convert frame.raw --from BAYER_RGGB --width 640 --height 480 --to RGB \
      -o frame.png
  quill firmware write 41500101 update.img --dry-run
)";

} // namespace

const std::vector<CommandDescription>& allCommands() {
    static const std::vector<CommandDescription> commands = [] {
        std::vector<CommandDescription> all;
        for (auto& group : {cameraCommands(), propertyCommands(), functionCommands(), imageCommands()}) {
            std::copy(group.begin(), group.end(), std::back_inserter(all));
        }
        for (const auto& single : {settingsCommands, streamCommand, watchCommand, serveCommand, conformCommand,
                                   flashCommands, firmwareCommands, jtagCommand, rebootCommand, usb3VisionCommands,
                                   networkCommand, kitCommand, shellCommand, checkCommand, completionCommand}) {
            all.push_back(single());
        }
        return all;
    }();
    return commands;
}

namespace {

class HelpFormatter : public CLI::Formatter {
    std::string make_description(const CLI::App* parser) const override { return parser->get_description() + ".\n"; }
    std::string make_footer(const CLI::App* parser) const override { return parser->get_footer(); }
    /// Commands take a narrower column than options, so that most summaries fit on a line of a terminal.
    std::string make_subcommand(const CLI::App* command) const override {
        return fmt::format("  {:<13}{}\n", command->get_name(), command->get_description());
    }
};

/// Adds a parser for each command. What lies below it, members or arguments, is added when the words reach it: to
/// describe everything delays every start.
/// @param called  receives the command that the words call
void addCommands(CLI::App& parent, const std::vector<CommandDescription>& commands, std::unique_ptr<Command>& called) {
    parent.require_subcommand(1);
    for (const CommandDescription& description : commands) {
        CLI::App* const parser = parent.add_subcommand(description.name, description.summary);
        parser->footer(description.details);
        parser->preparse_callback([&description, &called, parser](std::size_t /*remainingWords*/) {
            if (description.isGroup()) {
                addCommands(*parser, description.members, called);
            } else {
                called = description.make();
                called->describe(*parser);
            }
        });
    }
}

bool isGroup(const CLI::App& parser) {
    return parser.get_require_subcommand_min() != 0;
}

/// The words that call a parser, each after a blank.
std::string pathOf(const CLI::App& parser) {
    return parser.get_parent() == nullptr ? "" : pathOf(*parser.get_parent()) + ' ' + parser.get_name();
}

ToolError wrongUsage(const CLI::App& parser, const std::string& reason) {
    return {ExitCode::Usage, fmt::format("{}; try 'quill{} --help'", reason, pathOf(parser))};
}

/// Follows the words to the last command that they name. By hand, because the parser reports a missing or unknown
/// command without its group, and after the errors of a command that follows it.
/// @throws ToolError  a word is not a command
const CLI::App& lastCommand(const CLI::App& parser) {
    const std::vector<std::string> unknown = parser.remaining();
    if (isGroup(parser) && !unknown.empty()) {
        throw wrongUsage(parser,
                         fmt::format("unknown command '{}'", (pathOf(parser) + ' ' + unknown.front()).substr(1)));
    }
    const std::vector<CLI::App*> named = parser.get_subcommands();
    return named.empty() ? parser : lastCommand(*named.front());
}

ToolError explain(const CLI::App& root, const CLI::ParseError& failure) {
    const CLI::App& parser = lastCommand(root);
    const std::string path = pathOf(parser);
    const std::string reason = isGroup(parser) ? "a command is missing" : failure.what();
    return wrongUsage(parser, path.empty() ? reason : fmt::format("{}: {}", path.substr(1), reason));
}

constexpr const char* kNetworkOption = "--genicam";

/// Takes the places of the network where GenICam cameras are looked for out of the words, wherever they are: the parser
/// would take an option of the tool only before the command.
std::vector<std::string> takeNetwork(std::vector<std::string>& words) {
    std::vector<std::string> places;
    const std::string assigned = std::string(kNetworkOption) + '=';
    for (auto word = words.begin(); word != words.end() && *word != "--";) {
        const bool isNext = *word == kNetworkOption;
        if (!isNext && word->compare(0, assigned.size(), assigned) != 0) {
            ++word;
            continue;
        }
        if (isNext && word + 1 == words.end()) {
            throw ToolError(ExitCode::Usage,
                            fmt::format("{}: a network card or an address is missing", kNetworkOption));
        }
        std::istringstream list(isNext ? *(word + 1) : word->substr(assigned.size()));
        for (std::string place; std::getline(list, place, ',');) {
            places.push_back(place);
        }
        word = words.erase(word, word + (isNext ? 2 : 1));
    }
    return places;
}

/// Looks for GenICam cameras at these places of the network, instead of those of the environment and the file.
void useNetwork(const std::vector<std::string>& places) {
    namespace GenICam = CameraInterface::GenICam;
    GenICam::Settings settings = GenICam::getSettings();
    settings.cards.clear();
    settings.addresses.clear();
    for (const std::string& place : places) {
        const bool isAddress = place.find_first_not_of("0123456789.") == std::string::npos;
        (isAddress ? settings.addresses : settings.cards).push_back(place);
    }
    try {
        GenICam::configure(settings);
    } catch (const KestrelExceptions::KestrelException_InvalidArgument&) {
        throw ToolError(ExitCode::Usage, fmt::format("{}: '{}' are not names of network cards and IPv4 addresses",
                                                     kNetworkOption, fmt::join(places, ",")));
    }
}

ExitCode dispatch(std::vector<std::string> words, Context& context) {
    std::unique_ptr<Command> called;
    CLI::App root("quill: see, set and use cameras", "quill");
    root.set_version_flag("--version", "quill " QUILL_TOOL_VERSION);
    const std::vector<std::string> network = takeNetwork(words);
    root.add_option_function<std::string>(
            kNetworkOption, [](const std::string& /*taken before*/) {},
            "Network cards, and addresses of cameras, where GigE Vision cameras are")
        ->type_name("CARD_OR_ADDRESS,...");
    root.formatter(std::make_shared<HelpFormatter>())->get_formatter()->label("SUBCOMMAND", "COMMAND [ARGUMENT...]");
    root.group("Commands"); // the heading of the list, which the commands inherit
    root.footer(kFooter);
    addCommands(root, allCommands(), called);
    for (auto word = words.begin(); word != words.end() && *word == "help"; ++word) {
        *word = "--help"; // for which the parser prints the help of the command that follows
    }
    std::reverse(words.begin(), words.end()); // as the parser takes them
    try {
        root.parse(std::move(words));
    } catch (const CLI::CallForHelp&) {
        lastCommand(root);
        context.output.print(root.help());
        return ExitCode::Done;
    } catch (const CLI::CallForVersion& version) {
        context.output.printLine(version.what());
        return ExitCode::Done;
    } catch (const CLI::ParseError& failure) {
        throw explain(root, failure);
    }
    if (!network.empty()) {
        useNetwork(network);
    }
    return called->run(context);
}

} // namespace

void useNetworkOf(std::vector<std::string>& words) {
    if (const std::vector<std::string> network = takeNetwork(words); !network.empty()) {
        useNetwork(network);
    }
}

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
