// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <memory>
#include <vector>

#include "Imaging/Image.h"
#include "Imaging/Vectors.h"

namespace TestSupport {

/// All thirteen formats, in the order of their numbers.
std::vector<Imaging::IMAGE_FORMAT> allFormats();

/// An image of seeded noise within the bit depth, the same at every call.
std::unique_ptr<Imaging::Image> patternImage(unsigned width, unsigned height, unsigned bitDepth,
                                             Imaging::IMAGE_FORMAT format, bool littleEndian);

/// The vectors that this machine has.
std::vector<Imaging::Vectors> kindsOfVectors();

} // namespace TestSupport
