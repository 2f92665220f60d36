// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Imaging/Color.h"
#include "Imaging/FormatTable.h"
#include "Imaging/Mono.h"
#include "Imaging/PlanarColor.h"
#include "Imaging/Raw.h"

namespace Imaging {

/// Calls @p make with a null pointer to the class that fits a format, and with the constructor's arguments that follow
/// the byte order.
/// @throws std::runtime_error "Invalid image format."
template <typename Make>
auto withImageClass(IMAGE_FORMAT format, Make make) {
    const FormatDescription& description = describe(format);
    switch (description.layout) {
    case Layout::Mosaic:
        return make(static_cast<Raw*>(nullptr), format, description.channels, description.planes);
    case Layout::Interleaved:
        return make(static_cast<Color*>(nullptr), format, description.channels, description.planes);
    case Layout::Planar:
        return make(static_cast<PlanarColor*>(nullptr), format, description.channels, description.planes);
    default:
        return make(static_cast<Mono*>(nullptr));
    }
}

} // namespace Imaging
