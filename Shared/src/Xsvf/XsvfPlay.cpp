// SPDX-License-Identifier: Apache-2.0

#include "Xsvf/XsvfPlay.h"

#include "Base/ForkedChild.h"
#include "Exceptions/Raise.h"
#include "Utilities/Mutex.h"

namespace Utilities {

namespace {

Mutex s_PlayMutex; // held for a whole play; only progress functions lock other mutexes under it
thread_local bool t_Plays = false;

/// Refuses a play within a play on the same thread, which would wait for itself.
class PlayOfThread {
public:
    PlayOfThread() {
        if (t_Plays) {
            using namespace KestrelExceptions;
            raise<KestrelException>(QUILL_HERE, Errors::kWouldWaitForItself);
        }
        t_Plays = true;
    }
    PlayOfThread(const PlayOfThread&) = delete;
    PlayOfThread& operator=(const PlayOfThread&) = delete;
    ~PlayOfThread() { t_Plays = false; }
};

} // namespace

void runXsvf(const JtagTransport& transport, const std::vector<unsigned char>& data, XsvfPlayer::Comparison comparison,
             XsvfReport& report, const std::function<void(double)>& progress,
             const std::function<bool()>& isCameraGone) {
    report = {};
    JtagPort port(transport);
    report.opened = port.isOpen();
    XsvfPlayer player(data, port, comparison, report, progress, isCameraGone);
    if (report.opened) {
        player.play();
        port.close();
    }
    player.countFailedTransfers();
}

bool playXsvf(const JtagTransport& transport, const std::vector<unsigned char>& data, XsvfReport& report,
              const std::function<void(double)>& progress, const std::function<bool()>& isCameraGone) {
    Base::renewInEveryForkedChild<s_PlayMutex>();
    const PlayOfThread thread;
    const MutexLock lock(s_PlayMutex);
    runXsvf(transport, data, XsvfPlayer::Comparison::Real, report, progress, isCameraGone);
    return report.succeeded();
}

} // namespace Utilities
