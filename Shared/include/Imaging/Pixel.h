// SPDX-License-Identifier: Apache-2.0
#pragma once

namespace Imaging {

/// The channel values of one pixel, unscaled. Channels that the pixel does not have are 0.
///
/// Mono: channel 0 is grey. Raw: the channel whose number is the site's BAYER_COLOR holds the sample. Colour images:
/// red, green, blue and alpha in channels 0 to 3, regardless of the order in memory.
struct Pixel {
    double channel[4] = {0.0, 0.0, 0.0, 0.0};
};

} // namespace Imaging
