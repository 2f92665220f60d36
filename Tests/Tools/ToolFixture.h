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

/// Runs the tool on a list of simulated cameras of its own.
class ToolFixture : public ::testing::Test {
protected:
    explicit ToolFixture(const std::string& cameraList) { m_Folder.write("list.json", cameraList); }

    ChildProcess command(const Words& words) const {
        return {
            QUILL_UNDER_TEST, words, {"QUILL_TEST_CAMERA_LIST=" + m_Folder.file("list.json"), "LC_ALL=de_DE.UTF-8"}};
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
