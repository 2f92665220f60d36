// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <exception>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>

namespace QuillTool {

/// What the tool tells the program that started it.
enum class ExitCode {
    Done = 0,
    Failed = 1,
    Usage = 2,
    NotFound = 3, ///< no such camera, property or function, or no driver kit
    TimedOut = 4,
    CameraGone = 5,
    Difference = 6, ///< what was read back is not what was written
    Interrupted = 130
};

/// A command that failed: its exit code and the one line that says what was tried and why it failed.
class ToolError : public std::runtime_error {
public:
    ToolError(ExitCode code, const std::string& sentence) : std::runtime_error(sentence), m_Code(code) {}

    ExitCode code() const { return m_Code; }

private:
    ExitCode m_Code;
};

/// A reason in the words of a person where it is in those of a parser or a conversion.
std::string readable(std::string_view reason);

/// Why an operation of the library failed, without the subject and the place that the exception names too.
std::string reasonOf(const std::exception& failure);

/// What the exception of the library is about, such as a function's name; may be empty.
std::string subjectOf(const std::exception& failure);

/// "@p tried: reason", with the exit code that fits the failure.
ToolError describeFailure(const std::string& tried, const std::exception& failure);

/// Runs an action of the library. What it throws becomes a ToolError.
template <typename Action>
auto attempt(const std::string& tried, Action&& action) {
    try {
        return std::forward<Action>(action)();
    } catch (const ToolError&) {
        throw;
    } catch (const std::exception& failure) {
        throw describeFailure(tried, failure);
    }
}

} // namespace QuillTool
