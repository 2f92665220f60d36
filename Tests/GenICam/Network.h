// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <vector>

#include <sys/types.h>

namespace TestSupport {

/// Moves this process into a network of its own, which has only the loopback card, with addresses from 127.0.0.1 to
/// 127.0.0.7. Called before any thread starts.
/// @return whether the system permits it
bool enterOwnNetwork();

/// A camera in a process of its own; ends with this object.
class CameraProcess {
public:
    /// @param words program and arguments
    explicit CameraProcess(std::vector<std::string> words);
    CameraProcess(const CameraProcess&) = delete;
    CameraProcess& operator=(const CameraProcess&) = delete;
    ~CameraProcess();

    /// Takes the camera away without a word.
    void pull();
    void putBack();
    /// Sends a line to its standard input.
    void tell(const std::string& line) const;
    pid_t process() const { return m_Process; }

private:
    std::vector<std::string> m_Words;
    pid_t m_Process = -1;
    int m_Input = -1;
};

} // namespace TestSupport
