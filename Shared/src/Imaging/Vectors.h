// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Export.h"

namespace Imaging {

/// The vector instructions that a loop over samples may use.
enum class Vectors {
    Portable, ///< those of every processor for which the library is built
    Wide      ///< AVX2
};

/// The widest vectors of this machine.
QUILL_ADAPTER_API Vectors widestVectors();

} // namespace Imaging
