// SPDX-License-Identifier: Apache-2.0

#include "Flash/FlashJob.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <stdexcept>

#include <CLI/CLI.hpp>
#include <Quill.h>
#include <fmt/format.h>

#include "Terminal/NumberArgument.h"

namespace QuillTool {

using Utilities::Programmer;

namespace {

constexpr std::size_t kHeaderBytes = 4; // of a boot image

/// The words of messages about a stage.
struct StageWords {
    const char* name;
    const char* doing;
    const char* done;
    const char* function; ///< that the camera needs for it
};

// In the order of FlashStage.
constexpr std::array kStages{
    StageWords{"read", "reading", "read", "Read Flash"},
    StageWords{"erase", "erasing", "erased", "Erase Flash"},
    StageWords{"write", "writing", "written", "Write Flash"},
    StageWords{"verify", "verifying", "verified", "Read Flash"},
    StageWords{"compare", "comparing", "compared", "Read Flash"},
};
static_assert(kStages.size() == static_cast<std::size_t>(FlashStage::Compare) + 1);

const StageWords& wordsOf(FlashStage stage) {
    return kStages[static_cast<std::size_t>(stage)];
}

std::vector<std::string> perform(const SelectedCamera& camera, FlashStage stage, std::vector<std::string> parameters) {
    return camera->perform(wordsOf(stage).function, parameters);
}

} // namespace

std::string FlashRange::text() const {
    return fmt::format("0x{:X}..0x{:X}", address, end());
}

void FlashOptions::describeReading(CLI::App& parser) {
    addNumber(parser, "--chunk", chunkSize, "Bytes to move at a time", 1, kFlashEnd)->capture_default_str();
    progress.describe(parser);
}

void FlashOptions::describeWriting(CLI::App& parser) {
    describeReading(parser);
    parser.add_flag("--no-verify", noVerify, "Do not read the flash back");
    parser.add_flag("--dry-run", dryRun, "Print the plan and leave the camera untouched");
}

void FlashOptions::describeMaximumSize(CLI::App& parser) {
    addNumber(parser, "--maximum-size", maximumSize, "Largest accepted file, in bytes", 1, kFlashEnd)
        ->capture_default_str();
}

FlashJob::FlashJob(Context& context, const SelectedCamera& camera, const FlashRange& range, const FlashOptions& options,
                   const std::vector<FlashStage>& stages)
    : m_Context(context), m_Camera(camera), m_Range(range), m_Options(options), m_Stages(stages),
      m_Job(context, camera, options.progress) {
    if (m_Options.noVerify && m_Stages.back() == FlashStage::Verify) {
        m_Stages.pop_back();
    }
    requireInside();
    requireFunctions();
}

void FlashJob::requireInside() const {
    if (m_Range.end() > kFlashEnd) {
        throw ToolError(ExitCode::Usage,
                        m_Camera.about(fmt::format("{} cannot be {}: the flash ends at 0x{:X}", m_Range.text(),
                                                   wordsOf(m_Stages.front()).done, kFlashEnd)));
    }
}

void FlashJob::requireFunctions() const {
    for (const FlashStage stage : m_Stages) {
        const StageWords& words = wordsOf(stage);
        m_Camera.attempt(fmt::format("{} cannot be {}: function '{}'", m_Range.text(), words.done, words.function),
                         [&] { m_Camera->getFunction(words.function); });
    }
}

void FlashJob::printPlan() const {
    Json plan = Json::array();
    for (const FlashStage stage : m_Stages) {
        plan.push_back(wordsOf(stage).name);
        if (!m_Options.progress.json) {
            m_Context.output.printLine(
                m_Camera.about(fmt::format("{} would be {}", m_Range.text(), wordsOf(stage).done)));
        }
    }
    if (m_Options.progress.json) {
        m_Context.output.printJsonLine(Json{{"result", "dry run"},
                                            {"camera", m_Camera.serialNumber()},
                                            {"address", m_Range.address},
                                            {"length", m_Range.length},
                                            {"stages", plan}});
    }
}

std::string FlashJob::read() {
    std::string bytes;
    run(FlashStage::Read, [&] {
        bytes.reserve(m_Range.length);
        const auto progress = progressOf(FlashStage::Read);
        while (bytes.size() < m_Range.length) {
            bytes += readChunk(bytes.size());
            progress(static_cast<double>(bytes.size()) / static_cast<double>(m_Range.length));
        }
    });
    return bytes;
}

void FlashJob::erase() {
    run(FlashStage::Erase, [&] {
        perform(m_Camera, FlashStage::Erase, {std::to_string(m_Range.address), std::to_string(m_Range.length)});
        reach(FlashStage::Erase, 1);
    });
}

void FlashJob::write(const Bytes& data) {
    runWriting([&] {
        Programmer::writeBufferToFlash(*m_Camera, data, m_Range.address, m_Options.maximumSize, m_Options.chunkSize,
                                       progressOf(FlashStage::Write));
    });
}

void FlashJob::writeFirmware(const Bytes& data) {
    m_HeaderLast = true;
    runWriting([&] {
        Programmer::writeFirmwareToFlash(*m_Camera, data, m_Range.address, m_Options.maximumSize, m_Options.chunkSize,
                                         progressOf(FlashStage::Write));
        m_HeaderLast = false;
    });
}

void FlashJob::compare(const Bytes& data) {
    const FlashStage stage = m_Stages.back();
    bool equal = false;
    run(stage, [&] {
        equal = Programmer::compareFlash(*m_Camera, data, m_Range.address, m_Options.chunkSize, progressOf(stage));
    });
    if (!equal) {
        failDifferent(data);
    }
}

void FlashJob::finish(const Json& details) {
    const char* done = wordsOf(m_Stages.back()).done;
    Json line{{"camera", m_Camera.serialNumber()}, {"address", m_Range.address}, {"length", m_Range.length}};
    line.update(details);
    m_Job.report().finish(done, fmt::format("{} {}", m_Range.text(), done), line);
}

void FlashJob::reach(FlashStage stage, double done) {
    m_Stage = stage;
    m_Done = static_cast<std::size_t>(std::llround(done * static_cast<double>(m_Range.length)));
    m_Job.advance(wordsOf(stage).name, done, done < 1 || m_HeaderLast);
}

std::function<void(double)> FlashJob::progressOf(FlashStage stage) {
    return [this, stage](double done) { reach(stage, done); };
}

template <typename Work>
void FlashJob::run(FlashStage stage, Work&& work) {
    const auto reachAndWork = [&] {
        reach(stage, 0);
        m_Changed = m_Changed || (stage != FlashStage::Read && stage != FlashStage::Compare);
        work();
    };
    m_Job.run(reachAndWork, [this] { return place(); });
}

/// The programmer erases first, and reports its progress only after the first chunk.
template <typename Write>
void FlashJob::runWriting(Write&& write) {
    run(FlashStage::Erase, [&] {
        try {
            write();
        } catch (const std::exception& failure) {
            if (m_Stage == FlashStage::Erase && subjectOf(failure) == wordsOf(FlashStage::Write).function) {
                m_Stage = FlashStage::Write;
                m_Done = m_HeaderLast ? kHeaderBytes : 0;
            }
            m_HeaderFailed = isAtHeader();
            throw;
        }
    });
}

JobPlace FlashJob::place() const {
    const StageWords& words = wordsOf(m_Stage);
    const std::size_t address = failingAddress();
    return {fmt::format("{} cannot be {} at 0x{:X}", m_Range.text(), words.done, address),
            fmt::format("{} at 0x{:X} of {}", words.doing, address, m_Range.text()), stateLeft(), details()};
}

std::string FlashJob::stateLeft() const {
    if (!m_Changed) {
        return "the flash is unchanged";
    }
    switch (m_Stage) {
    case FlashStage::Erase:
        return m_Done == 0 ? "the flash there may be partly erased" : "the flash there is erased";
    case FlashStage::Write:
        if (m_HeaderFailed) {
            return "the flash there is written, except possibly the image's header";
        }
        return m_HeaderLast ? "the flash there is partly written; the image's header was not written, so the camera "
                              "does not start it"
                            : "the flash there is partly written";
    default:
        return "the flash there is changed as requested, but only partly verified";
    }
}

bool FlashJob::isAtHeader() const {
    return m_HeaderLast && m_Stage == FlashStage::Write && m_Done >= m_Range.length;
}

/// Returns the address at which the stage failed.
std::size_t FlashJob::failingAddress() const {
    return isAtHeader() ? m_Range.address : m_Range.address + m_Done;
}

std::size_t FlashJob::chunkAt(std::size_t offset) const {
    return std::min<std::size_t>(m_Options.chunkSize, m_Range.length - offset);
}

std::string FlashJob::readChunk(std::size_t offset) const {
    const std::size_t length = chunkAt(offset);
    const auto results =
        perform(m_Camera, FlashStage::Read, {std::to_string(m_Range.address + offset), std::to_string(length)});
    const std::size_t delivered = results.empty() ? 0 : results.front().size();
    if (delivered != length) {
        throw std::runtime_error(fmt::format("it delivered {} of {} bytes", delivered, length));
    }
    return results.front();
}

void FlashJob::failDifferent(const Bytes& data) {
    std::string found = "but not when read again";
    const auto search = [&] {
        const std::string chunk = readChunk(m_Done);
        const auto isByte = [](char read, unsigned char wanted) { return static_cast<unsigned char>(read) == wanted; };
        const auto [read, wanted] =
            std::mismatch(chunk.begin(), chunk.end(), data.begin() + static_cast<std::ptrdiff_t>(m_Done), isByte);
        if (read != chunk.end()) {
            m_Done += static_cast<std::size_t>(read - chunk.begin());
            found = fmt::format("0x{:02X} instead of 0x{:02X}", static_cast<unsigned char>(*read), *wanted);
        }
    };
    m_Job.run(search, [this] { return place(); });
    m_Job.report().fail("different", details());
    throw ToolError(ExitCode::Difference, m_Camera.about(fmt::format("{} differs at 0x{:X}: {}", m_Range.text(),
                                                                     m_Range.address + m_Done, found)));
}

Json FlashJob::details() const {
    return {{"camera", m_Camera.serialNumber()}, {"stage", wordsOf(m_Stage).name}, {"address", failingAddress()}};
}

} // namespace QuillTool
