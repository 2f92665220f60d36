// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <exception>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>

namespace QuillTool {

/// Exit codes of the tool.
enum class ExitCode {
    Done = 0,
    Failed = 1,
    Usage = 2,
    NotFound = 3, ///< no such camera, property or function, or no driver kit
    TimedOut = 4,
    CameraGone = 5,
    Difference = 6, ///< reading back, or comparing, found a difference
    Interrupted = 130
};

/// The failure of a command: its exit code, and one line with the failed action and the reason.
class ToolError : public std::runtime_error {
public:
    ToolError(ExitCode code, const std::string& sentence) : std::runtime_error(sentence), m_Code(code) {}

    ExitCode code() const { return m_Code; }

private:
    ExitCode m_Code;
};

/// Rephrases the reasons of parsers and conversions for people.
std::string readable(std::string_view reason);

/// Returns the reason of a failed operation of the library, without the subject and the place in the exception.
std::string reasonOf(const std::exception& failure);

/// Returns the subject of the library's exception, such as a function's name; may be empty.
std::string subjectOf(const std::exception& failure);

/// Returns "@p tried: reason" with the exit code of the failure.
ToolError describeFailure(const std::string& tried, const std::exception& failure);

/// Runs an action of the library. Turns its exceptions into a ToolError.
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
