// SPDX-License-Identifier: Apache-2.0

#include "Commands/ServeDescription.h"

#include <CLI/CLI.hpp>

#include "Commands/Command.h"

namespace QuillTool {

void ServeOptions::describe(CLI::App& parser) {
    constexpr unsigned kHighestPort = 65535;
    parser.add_option("--listen", address, "Numeric address to listen on")->capture_default_str();
    parser.add_option("--port", port, "Port to listen on; 0: a free one")
        ->check(CLI::Range(0U, kHighestPort))
        ->capture_default_str();
    parser.add_option("--token-file", tokenFile, "File whose first line is the token that clients need")
        ->check(notEmpty());
    parser.add_flag("--view-only", isViewOnly, "Refuse everything that changes a camera");
    parser.add_option("--allow-host", allowedHosts, "Name under which a proxy makes the page known; repeatable")
        ->type_name("NAME")
        ->check(notEmpty());
}

} // namespace QuillTool
