// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace QuillTool {

/// Something in a list of simulated cameras that the library does not take, or takes otherwise than was meant.
struct CameraListFinding {
    std::size_t line;
    std::string place; ///< such as: Cameras[0] / Properties[3] "Gain"
    std::string text;
};

struct CameraListReport {
    std::size_t cameras = 0;
    std::size_t properties = 0;
    std::size_t functions = 0;
    std::vector<CameraListFinding> findings; ///< in the order of lines
};

/// Examines the document of a list of simulated cameras. The library itself drops what it cannot read without a word.
CameraListReport examineCameraList(const std::string& document);

} // namespace QuillTool
