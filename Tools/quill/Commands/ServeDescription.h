// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <vector>

#include "Terminal/ParserFwd.h"

namespace QuillTool {

// What the help says about the command, whether or not it was built.

constexpr const char* kServeSummary = "Serve a page with live pictures, and an interface by HTTP";

constexpr const char* kServeDetails =
    "Prints one line with the address of the page, then serves until it is interrupted,\n"
    "and ends with 130. Several people may use the page at once; all see what each of\n"
    "them does. docs/serve.md has the guide, /api/v1/openapi.json the interface.\n\n"
    "On a loopback address, which other machines cannot reach, no token is needed\n"
    "unless --token-file names one. On other addresses one is: that of the file, or a\n"
    "new one, which the printed line holds. There is no encryption; beyond a network\n"
    "that you trust, put a proxy with TLS before it and name it by --allow-host.\n\n"
    "Examples:\n"
    "  quill serve\n"
    "  quill serve --port 0 --view-only\n"
    "  quill serve --listen 192.168.1.5 --token-file ~/quill-token\n"
    "  quill serve --allow-host cameras.example.org\n";

/// The arguments of the command.
struct ServeOptions {
    std::string address = "127.0.0.1";
    unsigned port = 8080;
    std::string tokenFile;
    bool isViewOnly = false;
    std::vector<std::string> allowedHosts;

    void describe(CLI::App& parser);
};

} // namespace QuillTool
