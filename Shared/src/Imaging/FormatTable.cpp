// SPDX-License-Identifier: Apache-2.0

#include "Imaging/FormatTable.h"

#include <algorithm>
#include <stdexcept>

namespace Imaging {

namespace {

[[noreturn]] void raiseInvalidFormat() {
    throw std::runtime_error("Invalid image format.");
}

} // namespace

const FormatDescription* findDescription(IMAGE_FORMAT format) {
    const auto index = static_cast<std::size_t>(format);
    return index < kFormats.size() ? &kFormats[index] : nullptr;
}

const FormatDescription& describe(IMAGE_FORMAT format) {
    const FormatDescription* description = findDescription(format);
    if (description == nullptr) {
        raiseInvalidFormat();
    }
    return *description;
}

const FormatDescription& describe(IMAGE_FORMAT format, Layout layout) {
    const FormatDescription& description = describe(format);
    if (description.layout != layout) {
        raiseInvalidFormat();
    }
    return description;
}

std::string getFormatName(IMAGE_FORMAT format) {
    return describe(format).name;
}

std::optional<IMAGE_FORMAT> findFormat(const std::string& name) {
    const auto row = std::find_if(kFormats.begin(), kFormats.end(),
                                  [&](const FormatDescription& description) { return name == description.name; });
    if (row == kFormats.end()) {
        return std::nullopt;
    }
    return static_cast<IMAGE_FORMAT>(row - kFormats.begin());
}

} // namespace Imaging
