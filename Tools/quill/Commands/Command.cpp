// SPDX-License-Identifier: Apache-2.0

#include "Commands/Command.h"

#include <CLI/CLI.hpp>
#include <Quill.h>

#include "ImageFiles/ImageFile.h"

namespace QuillTool {

CLI::Validator notEmpty() {
    return {[](const std::string& text) { return std::string(text.empty() ? "the text is empty" : ""); }, ""};
}

void addCameraArgument(CLI::App& parser, std::string& selector) {
    parser.add_option("SERIAL", selector, "Serial number of the camera, or a unique prefix of it")
        ->required()
        ->check(notEmpty());
}

void addFileArgument(CLI::App& parser, std::string& path, const std::string& what) {
    parser.add_option("FILE", path, what)->required()->check(notEmpty());
}

void addJsonFlag(CLI::App& parser, bool& json) {
    parser.add_flag("--json", json, "Print the results as JSON");
}

void refuseCommandsAsInput(const Context& context, const std::string& path) {
    if (context.inShell && path == kStandardStream) {
        throw ToolError(ExitCode::Usage, "standard input holds the commands of the shell, not a file");
    }
}

std::vector<std::string> formatNames() {
    std::vector<std::string> names;
    for (int format = static_cast<int>(Imaging::IMAGE_FORMAT::MONO);
         format <= static_cast<int>(Imaging::IMAGE_FORMAT::BGRA_PLANAR); ++format) {
        names.push_back(Imaging::getFormatName(static_cast<Imaging::IMAGE_FORMAT>(format)));
    }
    return names;
}

CLI::Option* addTexts(CLI::App& parser, const std::string& name, std::vector<std::string>& texts,
                      const std::string& description) {
    constexpr int kUnlimited = CLI::detail::expected_max_vector_size;
    // The parser takes "[a,b]" for two texts where extra ones are allowed, so all of them are expected ones.
    return parser.add_option(name, texts, description)
        ->expected(kUnlimited, kUnlimited)
        ->allow_extra_args(false)
        ->take_all();
}

} // namespace QuillTool
