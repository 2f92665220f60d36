// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <functional>
#include <vector>

#include "Utilities/Xsvf.h"
#include "Xsvf/JtagPort.h"
#include "Xsvf/XsvfPlayer.h"

namespace Utilities {

/// Plays an XSVF file through a transport, whoever else plays one.
/// @param isCameraGone asked whenever transfers have failed; the play ends if so. Empty: it goes on
void runXsvf(const JtagTransport& transport, const std::vector<unsigned char>& data, XsvfPlayer::Comparison comparison,
             XsvfReport& report, const std::function<void(double)>& progress,
             const std::function<bool()>& isCameraGone);

/// The same, every comparison real; one play at a time in the process.
/// @return XsvfReport::succeeded()
/// @throws KestrelException "WouldWaitForItself"  called by the progress function of another play
bool playXsvf(const JtagTransport& transport, const std::vector<unsigned char>& data, XsvfReport& report,
              const std::function<void(double)>& progress, const std::function<bool()>& isCameraGone = {});

} // namespace Utilities
