// SPDX-License-Identifier: Apache-2.0

#include "Commands/Command.h"

namespace QuillTool {

CLI::Validator notEmpty() {
    return {[](const std::string& text) { return std::string(text.empty() ? "an empty text is given" : ""); }, ""};
}

void addCameraArgument(CLI::App& parser, std::string& selector) {
    parser.add_option("SERIAL", selector, "Serial number of the camera, or a unique beginning")
        ->required()
        ->check(notEmpty());
}

void addFileArgument(CLI::App& parser, std::string& path, const std::string& what) {
    parser.add_option("FILE", path, what)->required()->check(notEmpty());
}

void addJsonFlag(CLI::App& parser, bool& json) {
    parser.add_flag("--json", json, "Print the results as JSON");
}

} // namespace QuillTool
