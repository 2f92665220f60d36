// SPDX-License-Identifier: Apache-2.0
#pragma once

namespace Imaging {

/// What a loop over samples may use of the processor.
enum class Vectors {
    Portable, ///< what every processor has that the library is built for
    Wide      ///< AVX2
};

/// The most that this machine has.
Vectors widestVectors();

} // namespace Imaging
