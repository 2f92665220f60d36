// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <chrono>
#include <exception>
#include <functional>
#include <future>
#include <memory>
#include <thread>
#include <type_traits>
#include <utility>

#include <pybind11/pybind11.h>

#include "Process.h"

namespace PythonBinding {

/// How long Python waits before it looks for Ctrl-C again.
constexpr std::chrono::milliseconds kSignalPeriod{50};

/// Lets other threads of Python go on, uncounted.
class WithoutInterpreter {
public:
    WithoutInterpreter() : m_State(PyEval_SaveThread()) {}
    WithoutInterpreter(const WithoutInterpreter&) = delete;
    WithoutInterpreter& operator=(const WithoutInterpreter&) = delete;
    ~WithoutInterpreter() { PyEval_RestoreThread(m_State); }

private:
    PyThreadState* m_State;
};

/// Runs the library without the interpreter, so that other threads of Python go on. Counted, so that the workspace ends
/// only when every thread is back; after the end at exit, keeps the interpreter, which threads do not get back then.
class Released {
public:
    Released() : m_Process(Process::present()) {
        if (m_Process.enterCall()) {
            m_State = PyEval_SaveThread();
        }
    }
    Released(const Released&) = delete;
    Released& operator=(const Released&) = delete;
    ~Released() {
        if (m_State) {
            PyEval_RestoreThread(m_State);
            m_Process.leaveCall();
        }
    }

    /// Throws what a signal handler throws, such as KeyboardInterrupt. Does nothing on other than the main thread.
    void checkSignals() {
        if (!m_State || !m_Process.isMainThread()) {
            return;
        }
        PyEval_RestoreThread(m_State);
        std::exception_ptr raised;
        if (PyErr_CheckSignals() != 0) {
            raised = std::make_exception_ptr(pybind11::error_already_set());
        }
        m_State = PyEval_SaveThread();
        if (raised) {
            std::rethrow_exception(raised);
        }
    }

private:
    Process& m_Process;
    PyThreadState* m_State = nullptr;
};

/// Runs code of Python on a thread of the library.
class Acquired {
public:
    Acquired() : m_State(PyGILState_Ensure()) { ++s_Depth; }
    Acquired(const Acquired&) = delete;
    Acquired& operator=(const Acquired&) = delete;
    ~Acquired() {
        --s_Depth;
        PyGILState_Release(m_State);
    }
    /// Whether the calling thread is in a callback.
    static bool isHere() { return s_Depth > 0; }

private:
    static thread_local int s_Depth;
    PyGILState_STATE m_State;
};

/// A function of Python that the library may keep, copy, call and destroy on every thread.
class Callback {
public:
    explicit Callback(const pybind11::object& function);
    /// Calls it with what @p makeArguments returns, a tuple. Its exception passes through.
    template <typename Arguments>
    void callThrough(Arguments makeArguments) const {
        const Acquired interpreter;
        invoke(makeArguments());
    }
    /// The same, where the library has no use for an exception: sys.unraisablehook gets it.
    template <typename Arguments>
    void call(Arguments makeArguments) const {
        const Acquired interpreter;
        try {
            invoke(makeArguments());
        } catch (pybind11::error_already_set& failure) {
            failure.discard_as_unraisable(*m_Function);
        }
    }

private:
    void invoke(const pybind11::tuple& arguments) const;

    std::shared_ptr<pybind11::object> m_Function;
};

/// A function of Python, or None, that the library calls while it works: ends the work after Ctrl-C, and when the
/// workspace ends.
class ProgressFunction {
public:
    explicit ProgressFunction(const pybind11::object& function) : m_Function(function), m_IsNone(function.is_none()) {}

    template <typename Arguments>
    void operator()(Arguments makeArguments) const {
        checkForEnd();
        if (!m_IsNone) {
            m_Function.callThrough(makeArguments);
        }
    }
    /// For the fraction that is done.
    void operator()(double fraction) const {
        (*this)([fraction] { return pybind11::make_tuple(fraction); });
    }

private:
    static void checkForEnd();

    Callback m_Function;
    bool m_IsNone;
};

/// Runs @p work, which has no bound that a caller could set, so that Ctrl-C ends the wait at once: on the main thread
/// of Python, another thread runs it. Whatever @p work uses must belong to it. @p interrupted is called after Ctrl-C,
/// before the wait is given up.
template <typename Work>
auto interruptibly(Work work, const std::function<void()>& interrupted = {}) -> std::invoke_result_t<Work> {
    using Result = std::invoke_result_t<Work>;
    Process& process = Process::present();
    Released released;
    if (!process.isMainThread() || process.isAtExit()) {
        return work();
    }
    std::packaged_task<Result()> task(std::move(work));
    std::future<Result> future = task.get_future();
    process.enterCall(); // for the other thread, which may go on alone
    try {
        std::thread([&process, task = std::move(task)]() mutable {
            task();
            process.leaveCall();
        }).detach();
    } catch (...) {
        process.leaveCall();
        throw;
    }
    while (future.wait_for(kSignalPeriod) == std::future_status::timeout) {
        try {
            released.checkSignals();
        } catch (...) {
            if (interrupted) {
                interrupted();
            }
            throw;
        }
    }
    return future.get();
}

} // namespace PythonBinding
