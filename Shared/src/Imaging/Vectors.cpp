// SPDX-License-Identifier: Apache-2.0

#include "Imaging/Vectors.h"

#include <opencv2/core.hpp>

namespace Imaging {

Vectors widestVectors() {
    static const bool wide = cv::checkHardwareSupport(CV_CPU_AVX2);
    return wide ? Vectors::Wide : Vectors::Portable;
}

} // namespace Imaging
