// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "ChildProcess.h"
#include "Support/TemporaryFolder.h"

namespace TestSupport {

using Words = std::vector<std::string>;

/// Runs the tool on a list of simulated cameras of its own, which is a copy of one beside this file.
class ToolFixture : public ::testing::Test {
protected:
    explicit ToolFixture(const std::string& cameraList) {
        m_Folder.write("list.json", readFile(std::filesystem::path(QUILL_TEST_CAMERA_LISTS) / cameraList));
    }

    /// @param device the device in software to plug in; TestCameras.cpp lists the names
    ChildProcess command(const Words& words, const std::string& device = "") const {
        return {QUILL_UNDER_TEST,
                words,
                {"QUILL_TEST_CAMERA_LIST=" + m_Folder.file("list.json"), "QUILL_TEST_DEVICE=" + device,
                 "LC_ALL=de_DE.UTF-8"}};
    }
    /// The tool in a command of the shell, which calls it $0.
    ChildProcess shellCommand(const std::string& text, const std::string& device = "") const {
        ChildProcess shell = command({"-c", text, QUILL_UNDER_TEST}, device);
        shell.program = "sh";
        return shell;
    }
    ChildResult run(const Words& words) const { return runChild(command(words)); }
    ChildResult runScript(const std::string& script) const { return runScript(script, command({"shell"})); }
    ChildResult runScript(const std::string& script, ChildProcess shell) const {
        shell.inputFile = m_Folder.write("script", script);
        return runChild(shell);
    }

    TemporaryFolder m_Folder;
};

} // namespace TestSupport
