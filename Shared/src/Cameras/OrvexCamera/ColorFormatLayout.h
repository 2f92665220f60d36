// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

#include "Exceptions/SourceLocation.h"
#include "Imaging/ImageFormat.h"

namespace OrvexAdapter {

/// The pixel layout of a camera's frames, from the text of its "Color Format".
/// @throws KestrelException_InvalidArgument "ArgumentUnhandled"  the text has no layout; it is the argument's name
Imaging::IMAGE_FORMAT getImageFormatFromColorFormat(const std::string& colorFormat,
                                                    const KestrelExceptions::SourceLocation& here);

} // namespace OrvexAdapter
