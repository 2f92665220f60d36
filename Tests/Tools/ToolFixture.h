// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <filesystem>
#include <iterator>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "ChildProcess.h"
#include "Support/TemporaryFolder.h"

namespace TestSupport {

using Words = std::vector<std::string>;

/// Runs the tool on its own list of simulated cameras.
class ToolFixture : public ::testing::Test {
protected:
    explicit ToolFixture(const std::string& cameraList) { m_Folder.write("list.json", cameraList); }

    /// @param device the device in software to plug in; TestCameras.cpp lists the names
    ChildProcess command(const Words& words, const std::string& device = "") const {
        return {QUILL_UNDER_TEST,
                words,
                {"QUILL_TEST_CAMERA_LIST=" + m_Folder.file("list.json"), "QUILL_TEST_DEVICE=" + device,
                 "LC_ALL=de_DE.UTF-8"}};
    }
    /// The tool in a command of the shell, which calls it $0.
    ChildProcess shellCommand(const std::string& text) const {
        ChildProcess shell = command({"-c", text, QUILL_UNDER_TEST});
        shell.program = "sh";
        return shell;
    }
    ChildResult run(const Words& words) const { return runChild(command(words)); }
    ChildResult runScript(const std::string& script) const { return runScript(script, command({"shell"})); }
    ChildResult runScript(const std::string& script, ChildProcess shell) const {
        shell.inputFile = m_Folder.write("script", script);
        return runChild(shell);
    }
    std::size_t filesInFolder() const {
        return static_cast<std::size_t>(std::distance(std::filesystem::directory_iterator(m_Folder.path()), {}));
    }

    TemporaryFolder m_Folder;
};

} // namespace TestSupport
