// SPDX-License-Identifier: Apache-2.0

#include "Commands/Completion.h"

#include <algorithm>
#include <exception>
#include <memory>
#include <sstream>
#include <string_view>

#include <CLI/CLI.hpp>
#include <Quill.h>
#include <fmt/format.h>

#include "Camera/PropertyAccess.h"
#include "Commands/Command.h"
#include "Commands/CommandLine.h"
#include "ImageFiles/ImageFile.h"

namespace QuillTool {

namespace {

using Candidates = std::vector<std::string>;

/// What is known of a command line before the word that is completed.
struct Place {
    Context& context;
    const std::string& command;
    const Candidates& arguments; ///< without options; of most commands, the first one selects the camera
    const std::string& begun;    ///< the word that is completed
};

/// The words of a list such as "png, pgm" or "{png,pgm}".
Candidates wordsOfList(std::string text) {
    std::replace_if(
        text.begin(), text.end(), [](char c) { return c == ',' || c == '{' || c == '}'; }, ' ');
    std::istringstream stream(text);
    Candidates words;
    for (std::string word; stream >> word;) {
        words.push_back(word);
    }
    return words;
}

Candidates serialNumbers(const Place& place) {
    Candidates found;
    for (const auto& camera : place.context.session.listCameras()) {
        found.push_back(camera.first);
    }
    return found;
}

SelectedCamera cameraOf(const Place& place) {
    return place.context.session.connect(place.arguments.empty() ? "" : place.arguments.front());
}

Candidates properties(const Place& place) {
    return cameraOf(place)->getSupportedProperties();
}

Candidates functions(const Place& place) {
    return cameraOf(place)->getSupportedFunctions();
}

/// Names with a sign of equality, then the values of a property that has a list of them.
Candidates assignments(const Place& place) {
    const SelectedCamera camera = cameraOf(place);
    Candidates found;
    if (const auto begun = splitAssignment(place.begun)) {
        for (const std::string& choice : readProperty(camera, begun->first).choices) {
            found.push_back(fmt::format("{}={}", begun->first, choice));
        }
        return found;
    }
    for (const std::string& name : camera->getSupportedProperties()) {
        if (!camera->getProperty(name).isReadOnly()) {
            found.push_back(name + '=');
        }
    }
    return found;
}

Candidates formats(const Place& /*place*/) {
    return formatNames();
}

Candidates fileTypes(const Place& /*place*/) {
    return wordsOfList(writableTypes());
}

/// What an argument of a command is; an empty command stands for all others.
struct ArgumentKind {
    std::string_view command;
    std::string_view argument;
    Candidates (*candidates)(const Place& place);
};

constexpr ArgumentKind kArgumentKinds[] = {
    {"", "SERIAL", serialNumbers},      {"get", "NAME", properties}, {"describe", "NAME", properties},
    {"perform", "NAME", functions},     {"", "--set", assignments},  {"", "--format", formats},
    {"set", "NAME=VALUE", assignments}, {"", "--from", formats},     {"", "--to", formats},
    {"", "--type", fileTypes},
};

Candidates candidatesOf(const CLI::Option& argument, const Place& place) {
    const std::string name = argument.get_name();
    for (const ArgumentKind& kind : kArgumentKinds) {
        if (kind.argument == name && (kind.command.empty() || kind.command == place.command)) {
            return kind.candidates(place);
        }
    }
    const std::string type = argument.get_type_name(); // that of a list of texts is "TEXT:{a,b}"
    const std::size_t list = type.find(":{");
    return list == std::string::npos ? Candidates{} : wordsOfList(type.substr(list + 1));
}

bool takesValue(const CLI::Option& option) {
    return option.get_expected_max() > 0;
}

/// Follows the words of a command's own arguments up to the last one.
Candidates argumentsOf(const CommandDescription& description, Candidates words, Context& context) {
    const std::unique_ptr<Command> command = description.make();
    CLI::App parser;
    command->describe(parser);
    const std::string begun = std::move(words.back());
    words.pop_back();

    Candidates arguments;
    const CLI::Option* awaiting = nullptr; // an option whose value follows
    bool onlyArguments = false;
    for (const std::string& word : words) {
        if (awaiting != nullptr) {
            awaiting = nullptr;
        } else if (onlyArguments || word.empty() || word.front() != '-' || word == "-") {
            arguments.push_back(word);
        } else if (word == "--") {
            onlyArguments = true;
        } else if (const CLI::Option* option = parser.get_option_no_throw(word); option != nullptr) {
            awaiting = takesValue(*option) ? option : nullptr;
        }
    }
    const Place place{context, description.name, arguments, begun};
    if (awaiting != nullptr) {
        return candidatesOf(*awaiting, place);
    }
    Candidates options;
    const CLI::Option* next = nullptr;
    std::size_t position = 0;
    for (const CLI::Option* option : parser.get_options()) {
        if (!option->get_positional()) {
            options.push_back(option->get_name());
        } else if (position++ <= arguments.size()) {
            next = option; // the last one, where it takes all that follow
        }
    }
    if (!onlyArguments && !begun.empty() && begun.front() == '-') {
        return options;
    }
    const bool isRoom = next != nullptr && (position > arguments.size() || next->get_expected_max() > 1);
    return isRoom ? candidatesOf(*next, place) : Candidates{};
}

Candidates candidatesFor(const Candidates& words, Context& context) {
    const std::vector<CommandDescription>* level = &allCommands();
    for (auto word = words.begin();; ++word) {
        if (word + 1 == words.end()) {
            Candidates names;
            for (const CommandDescription& command : *level) {
                names.push_back(command.name);
            }
            if (level == &allCommands()) {
                names.insert(names.end(), {"help", "--help", "--version", "--genicam"});
            }
            return names;
        }
        if (*word == "help") {
            continue;
        }
        const auto named = std::find_if(level->begin(), level->end(),
                                        [&](const CommandDescription& command) { return command.name == *word; });
        if (named == level->end()) {
            return {};
        }
        if (!named->isGroup()) {
            return argumentsOf(*named, {word + 1, words.end()}, context);
        }
        level = &named->members;
    }
}

} // namespace

std::vector<std::string> completions(std::vector<std::string> words, Context& context) {
    try {
        const std::string begun = words.empty() ? "" : words.back();
        if (!words.empty()) {
            words.pop_back();
        }
        useNetworkOf(words);
        words.push_back(begun);
        Candidates candidates = candidatesFor(words, context);
        candidates.erase(
            std::remove_if(candidates.begin(), candidates.end(),
                           [&](const std::string& one) { return one.compare(0, begun.size(), begun) != 0; }),
            candidates.end());
        std::sort(candidates.begin(), candidates.end());
        return candidates;
    } catch (const std::exception&) {
        return {}; // a camera that refuses, or is gone
    }
}

} // namespace QuillTool
