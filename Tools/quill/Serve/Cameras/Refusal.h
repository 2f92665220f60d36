// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <exception>
#include <stdexcept>
#include <string>
#include <utility>

namespace QuillTool::Serve {

/// The reason why a client does not get what it asked for, and what it can do.
class Refusal : public std::runtime_error {
public:
    /// @param status  of HTTP
    /// @param error  one word, such as "CameraNotFound"
    /// @param message  one sentence
    /// @param advice  what to do, one sentence; may be empty
    Refusal(int status, std::string error, const std::string& message, std::string advice = "")
        : std::runtime_error(message), status(status), error(std::move(error)), advice(std::move(advice)) {}

    int status;
    std::string error;
    std::string advice;
};

/// Makes a refusal of any exception.
Refusal refusalOf(const std::exception& failure);

} // namespace QuillTool::Serve
