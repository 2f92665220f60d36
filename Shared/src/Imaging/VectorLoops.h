// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Imaging/Vectors.h"

/// Only for source files that are compiled with the attribute QUILL_WIDE_VECTORS.
namespace Imaging {

/// Runs the version of an inlined loop that is compiled for Vectors::Wide.
template <auto loop, typename... Arguments>
QUILL_WIDE_VECTORS auto runWidely(Arguments... arguments) {
    return loop(arguments...);
}

/// Runs the version of an inlined loop that is compiled for these vectors.
template <auto loop, typename... Arguments>
auto run(Vectors vectors, Arguments... arguments) {
    return vectors == Vectors::Wide ? runWidely<loop>(arguments...) : loop(arguments...);
}

} // namespace Imaging
