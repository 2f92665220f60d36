// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace QuillTool::Serve {

/// A file that is part of the program.
struct PageFile {
    std::string_view name;      ///< "index.html"
    std::string_view mediaType; ///< with the charset of texts
    std::string_view tag;       ///< the quoted entity tag, which follows from the bytes
    std::string_view bytes;
};

/// The files of the page.
const std::vector<PageFile>& pageFiles();

/// Returns the description of the interface.
const PageFile& interfaceDescription();

/// Returns the file of this name, or null.
const PageFile* findPageFile(std::string_view name);

} // namespace QuillTool::Serve
