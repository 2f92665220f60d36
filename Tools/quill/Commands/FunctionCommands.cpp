// SPDX-License-Identifier: Apache-2.0

#include <algorithm>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <CLI/CLI.hpp>
#include <Quill.h>
#include <fmt/format.h>

#include "Commands/Bytes.h"
#include "Commands/Command.h"
#include "Terminal/Numbers.h"

namespace QuillTool {

namespace {

using CameraInterface::Function;
using CameraInterface::PARAMETER_TYPE;
using CameraInterface::ParameterDescriptor;

std::string typeName(PARAMETER_TYPE type) {
    static const CameraInterface::ParameterTypes names;
    return names.toString(type);
}

std::string describe(const std::vector<ParameterDescriptor>& descriptors) {
    std::vector<std::string> texts;
    texts.reserve(descriptors.size());
    for (const ParameterDescriptor& descriptor : descriptors) {
        texts.push_back(fmt::format("{}:{}", descriptor.m_Label, typeName(descriptor.m_Type)));
    }
    return fmt::format("{}", fmt::join(texts, ", "));
}

Json toJson(const std::vector<ParameterDescriptor>& descriptors) {
    Json array = Json::array();
    for (const ParameterDescriptor& descriptor : descriptors) {
        array.push_back({{"label", descriptor.m_Label}, {"type", typeName(descriptor.m_Type)}});
    }
    return array;
}

class FunctionsCommand : public Command {
public:
    void describe(CLI::App& parser) override {
        addCameraArgument(parser, m_Camera);
        addJsonFlag(parser, m_Json);
    }

    ExitCode run(Context& context) override {
        const SelectedCamera camera = context.session.connect(m_Camera);
        Table table{{"NAME", "PARAMETERS", "RESULTS", "AVAILABLE"}, {}};
        Json functions = Json::array();
        camera.attempt("its functions cannot be listed", [&] {
            for (const std::string& name : camera->getSupportedFunctions()) {
                Function& function = camera->getFunction(name);
                const auto parameters = function.getParameters();
                const auto results = function.getReturnFormat();
                const bool available = function.isAvailable();
                table.rows.push_back(
                    {name, QuillTool::describe(parameters), QuillTool::describe(results), available ? "yes" : "no"});
                functions.push_back({{"name", name},
                                     {"parameters", toJson(parameters)},
                                     {"results", toJson(results)},
                                     {"available", available}});
            }
        });
        if (m_Json) {
            context.output.printJson(Json{{"camera", camera.serialNumber()}, {"functions", functions}});
        } else {
            context.output.printTable(table);
        }
        return ExitCode::Done;
    }

private:
    std::string m_Camera;
    bool m_Json = false;
};

/// Returns the text as a JSON string; null if it is not UTF-8.
Json textOrNull(const std::string& bytes) {
    try {
        Json text(bytes);
        text.dump();
        return text;
    } catch (const Json::type_error&) {
        return nullptr;
    }
}

bool isPrintable(const std::string& text) {
    return std::all_of(text.begin(), text.end(), [](char byte) { return byte >= 0x20 && byte < 0x7F; });
}

class PerformCommand : public Command {
public:
    void describe(CLI::App& parser) override {
        addCameraArgument(parser, m_Camera);
        parser.add_option("NAME", m_Name, "Name of the function")->required();
        addTexts(parser, "ARG", m_Arguments, "Text or number, @FILE, hex:BYTES or text:TEXT");
        parser.add_option("-o,--output", m_Output, "File for the bytes of the result")->check(notEmpty());
        addJsonFlag(parser, m_Json);
    }

    ExitCode run(Context& context) override {
        const SelectedCamera camera = context.session.connect(m_Camera);
        const auto [parameters, returnFormat] = camera.attempt(trouble(), [&] {
            Function& function = camera->getFunction(m_Name);
            return std::pair(function.getParameters(), function.getReturnFormat());
        });
        requireArguments(camera, parameters);
        std::vector<std::string> values = readArguments(camera, parameters);
        const std::vector<std::string> results =
            camera.attempt(trouble(), [&] { return camera->perform(m_Name, values); });
        if (!m_Output.empty()) {
            writeWholeFile(m_Output, fmt::format("{}", fmt::join(results, "")));
        } else if (m_Json) {
            context.output.printJson(toJson(camera, results, returnFormat));
        } else {
            printPlain(context.output, results, returnFormat);
        }
        return ExitCode::Done;
    }

private:
    /// Names the failed call with its arguments as typed; cuts long arguments.
    std::string trouble() const {
        constexpr std::size_t kLongest = 40;
        std::vector<std::string> shown;
        for (const std::string& argument : m_Arguments) {
            shown.push_back(argument.size() > kLongest ? fmt::format("'{}...'", argument.substr(0, kLongest))
                                                       : fmt::format("'{}'", argument));
        }
        return fmt::format("function '{}': cannot be performed{}{}", m_Name, shown.empty() ? "" : " with ",
                           fmt::join(shown, ", "));
    }

    void requireArguments(const SelectedCamera& camera, const std::vector<ParameterDescriptor>& parameters) const {
        const auto refuse = [&](const std::string& reason) {
            throw ToolError(ExitCode::Usage, camera.about(fmt::format("function '{}': {}", m_Name, reason)));
        };
        if (m_Arguments.size() < parameters.size()) {
            const std::vector<ParameterDescriptor> missing(
                parameters.begin() + static_cast<std::ptrdiff_t>(m_Arguments.size()), parameters.end());
            refuse("missing arguments: " + QuillTool::describe(missing));
        }
        if (m_Arguments.size() > parameters.size()) {
            refuse(fmt::format("too many arguments: it takes {}{}{}", parameters.size(), parameters.empty() ? "" : ", ",
                               QuillTool::describe(parameters)));
        }
    }

    std::vector<std::string> readArguments(const SelectedCamera& camera,
                                           const std::vector<ParameterDescriptor>& parameters) const {
        try {
            std::vector<std::string> values;
            std::transform(m_Arguments.begin(), m_Arguments.end(), parameters.begin(), std::back_inserter(values),
                           readValue);
            return values;
        } catch (const ToolError& failure) {
            throw ToolError(failure.code(), camera.about(fmt::format("{}: {}", trouble(), failure.what())));
        }
    }

    /// Converts numbers to plain decimal: functions read 010 as octal, and report a text that is not a number as a
    /// failure of the camera.
    static std::string readValue(const std::string& argument, const ParameterDescriptor& parameter) {
        std::string value = readArgument(argument);
        const bool whole = parameter.m_Type == PARAMETER_TYPE::Integer;
        if (!whole && parameter.m_Type != PARAMETER_TYPE::Float) {
            return value;
        }
        std::optional<std::string> number = decimalText(value, whole ? NumberKind::Whole : NumberKind::Real);
        if (!number) {
            throw ToolError(ExitCode::Usage, fmt::format("{} takes a {}number, decimal or hexadecimal as 0x...",
                                                         parameter.m_Label, whole ? "whole " : ""));
        }
        constexpr double kLeast = -2147483648.0;
        constexpr double kMost = 4294967295.0;
        const double size = parseNumber(*number, NumberKind::Real).value_or(0);
        if (whole && (size < kLeast || size > kMost)) {
            throw ToolError(ExitCode::Usage, fmt::format("{} takes a number of 32 bits", parameter.m_Label));
        }
        return *std::move(number);
    }

    static ParameterDescriptor descriptorOf(const std::vector<ParameterDescriptor>& returnFormat, std::size_t index) {
        return index < returnFormat.size() ? returnFormat[index] : ParameterDescriptor{};
    }

    Json toJson(const SelectedCamera& camera, const std::vector<std::string>& results,
                const std::vector<ParameterDescriptor>& returnFormat) const {
        Json array = Json::array();
        for (std::size_t index = 0; index < results.size(); ++index) {
            const ParameterDescriptor descriptor = descriptorOf(returnFormat, index);
            array.push_back({{"label", descriptor.m_Label},
                             {"type", typeName(descriptor.m_Type)},
                             {"text", textOrNull(results[index])},
                             {"hex", toHex(results[index])}});
        }
        return {{"camera", camera.serialNumber()}, {"function", m_Name}, {"results", array}};
    }

    /// Prints numbers, and dumps texts: they may hold any bytes.
    static void printPlain(Output& output, const std::vector<std::string>& results,
                           const std::vector<ParameterDescriptor>& returnFormat) {
        for (std::size_t index = 0; index < results.size(); ++index) {
            const ParameterDescriptor descriptor = descriptorOf(returnFormat, index);
            if (descriptor.m_Type != PARAMETER_TYPE::String && isPrintable(results[index])) {
                output.printLine(fmt::format("{} = {}", descriptor.m_Label, results[index]));
                continue;
            }
            output.printLine(fmt::format("{}: {} bytes", descriptor.m_Label, results[index].size()));
            output.print(hexDump(results[index]));
        }
    }

    std::string m_Camera;
    std::string m_Name;
    std::vector<std::string> m_Arguments;
    std::string m_Output;
    bool m_Json = false;
};

} // namespace

std::vector<CommandDescription> functionCommands() {
    return {
        {"functions", "List a camera's functions with parameters and results",
         "Examples:\n"
         "  quill functions 90001\n"
         "  quill functions 90001 --json | jq '.functions[] | {name, parameters}'\n",
         makeCommand<FunctionsCommand>},
        {"perform", "Perform a function",
         "Numbers are decimal, or hexadecimal as 0x.... Bytes come from a file (@FILE) or\n"
         "from hexadecimal digits (hex:...). text:... passes the rest unchanged. An\n"
         "argument that begins with '-' and is not a number, or is '++', follows '--'.\n"
         "Texts among the results are bytes: the tool dumps them, writes them to a file\n"
         "(-o) or prints them in hexadecimal (--json).\n\n"
         "Examples:\n"
         "  quill perform 90001 \"Read Flash\" 0x1000 64\n"
         "  quill perform 90001 \"Read Flash\" 0 4096 -o flash.bin\n"
         "  quill perform 90001 \"Write Flash\" 0x1000 @flash.bin\n"
         "  quill perform 90001 \"Write Flash Status\" 0 hex:8C\n",
         makeCommand<PerformCommand>},
    };
}

} // namespace QuillTool
