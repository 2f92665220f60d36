// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>

/// Loads a module that uses the library with a device, and unloads it while a stream and the watching threads run,
/// again and again. Returns whether all is then as it is to be on this platform.
bool unloadsAgainAndAgain(const char* module, const char* library, std::uint32_t serial);
