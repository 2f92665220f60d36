// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "SoftwareDevices.h"

namespace SoftwareDevices {

/// The filters of a colour cell: the first green is in the red row, the second in the blue row.
enum Filter : std::uint8_t { kRed = 0, kGreen1 = 1, kGreen2 = 2, kBlue = 3, kFilterCount = 4 };

/// The four filters of a cell, row by row. On a monochrome sensor all are kRed, which means no filter.
using FilterCell = std::array<Filter, 4>;

constexpr FilterCell filterCell(ColorFormat format) {
    switch (format) {
    case ColorFormat::RGGB:
        return {kRed, kGreen1, kGreen2, kBlue};
    case ColorFormat::GRBG:
        return {kGreen1, kRed, kBlue, kGreen2};
    case ColorFormat::GBRG:
        return {kGreen2, kBlue, kRed, kGreen1};
    case ColorFormat::BGGR:
        return {kBlue, kGreen2, kGreen1, kRed};
    case ColorFormat::MONO:
        break;
    }
    return {kRed, kRed, kRed, kRed};
}

constexpr Filter filterAt(const FilterCell& cell, std::uint32_t x, std::uint32_t y) {
    return cell[(y & 1) * 2 + (x & 1)];
}

} // namespace SoftwareDevices
