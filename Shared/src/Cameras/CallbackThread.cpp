// SPDX-License-Identifier: Apache-2.0

#include "Cameras/CallbackThread.h"

#include "Exceptions/Raise.h"

namespace CameraInterface {

namespace {

thread_local bool t_IsCallbackThread = false;

} // namespace

CallbackThread::CallbackThread() {
    t_IsCallbackThread = true;
}

CallbackThread::~CallbackThread() {
    t_IsCallbackThread = false;
}

bool CallbackThread::isHere() {
    return t_IsCallbackThread;
}

void CallbackThread::refuse() {
    if (t_IsCallbackThread) {
        using namespace KestrelExceptions;
        raise<KestrelException>(QUILL_HERE, Errors::kWouldWaitForItself);
    }
}

} // namespace CameraInterface
