#pragma once

#include <functional>
#include <vector>

#include "Utilities/JtagPort.h"
#include "Utilities/Xsvf.h"

namespace Utilities {

/// Plays an XSVF file through a transport; one play at a time in the process.
/// @param isCameraGone asked whenever transfers have failed; the play ends if so. Empty: it goes on
/// @throws KestrelException "WouldWaitForItself"  called by the progress function of another play
bool playXsvf(const JtagTransport& transport, const std::vector<unsigned char>& data, XsvfReport& report,
              const std::function<void(double)>& progress, const std::function<bool()>& isCameraGone = {});

} // namespace Utilities
