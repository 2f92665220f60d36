// SPDX-License-Identifier: Apache-2.0

#include "Serve/Page/PageFiles.h"

#include <algorithm>

namespace QuillTool::Serve {

const PageFile* findPageFile(std::string_view name) {
    const auto& files = pageFiles();
    const auto found =
        std::find_if(files.begin(), files.end(), [name](const PageFile& file) { return file.name == name; });
    return found == files.end() ? nullptr : &*found;
}

} // namespace QuillTool::Serve
