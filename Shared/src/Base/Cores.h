// SPDX-License-Identifier: Apache-2.0
#pragma once

namespace Base {

/// The core on which this thread runs now; negative if that is not known.
int currentCore();

/// Moves this thread from a core, if it runs there, to another one on which it may run. It may run on all of them
/// afterwards as before.
// Some kernels wake a thread that slept for milliseconds on the core of the thread that woke it, and move it only
// milliseconds later: both would take turns meanwhile.
void leaveCore(int core);

} // namespace Base
