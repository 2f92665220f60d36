#include "Command.h"

namespace QuillTool {

void addCameraArgument(CLI::App& parser, std::string& selector) {
    parser.add_option("SERIAL", selector, "Serial number of the camera, or a unique beginning")->required();
}

void addFileArgument(CLI::App& parser, std::string& path, const std::string& what) {
    parser.add_option("FILE", path, what)->required();
}

void addJsonFlag(CLI::App& parser, bool& json) {
    parser.add_flag("--json", json, "Print the results as JSON");
}

} // namespace QuillTool
