// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

#include "Flash/LongJob.h"
#include "Terminal/ParserFwd.h"

namespace QuillTool {

/// The end of the flash of cameras: 24 bits of address reach 16 MiB.
constexpr unsigned kFlashEnd = 0x1000000;

/// A range of a camera's flash, in bytes.
struct FlashRange {
    unsigned address = 0;
    std::size_t length = 0;

    std::size_t end() const { return address + length; }
    /// Returns "0x1000..0x2000", the end excluded.
    std::string text() const;
};

/// Options of work on flash.
struct FlashOptions {
    unsigned chunkSize = 4096;
    unsigned maximumSize = kFlashEnd;
    bool noVerify = false;
    bool dryRun = false;
    ProgressOptions progress;

    /// Adds the options of work that only reads.
    void describeReading(CLI::App& parser);
    void describeWriting(CLI::App& parser);
    void describeMaximumSize(CLI::App& parser);
};

enum class FlashStage { Read, Erase, Write, Verify, Compare };

/// Works on a range of a camera's flash, stage by stage. Each operation reports its progress, and fails with a
/// ToolError that names the stage, the address and the resulting state of the flash.
class FlashJob {
public:
    using Bytes = std::vector<unsigned char>;

    /// @param options  outlive the job
    /// @throws ToolError  the range reaches beyond the flash, or the camera lacks a function that @p stages require;
    ///     the camera is untouched
    FlashJob(Context& context, const SelectedCamera& camera, const FlashRange& range, const FlashOptions& options,
             const std::vector<FlashStage>& stages);

    /// Prints the plan without touching the camera.
    void printPlan() const;

    std::string read();
    void erase();
    void write(const Bytes& data);
    /// Writes a boot image, its header last.
    void writeFirmware(const Bytes& data);
    /// Compares the flash with data, in the last stage of the job.
    /// @throws ToolError  they differ; names the first address
    void compare(const Bytes& data);

    /// Ends the job after its last stage succeeded.
    void finish(const Json& details = Json::object());

private:
    void requireInside() const;
    void requireFunctions() const;
    void reach(FlashStage stage, double done);
    std::function<void(double)> progressOf(FlashStage stage);
    template <typename Work>
    void run(FlashStage stage, Work&& work);
    template <typename Write>
    void runWriting(Write&& write);
    JobPlace place() const;
    std::string stateLeft() const;
    bool isAtHeader() const;
    std::size_t failingAddress() const;
    std::size_t chunkAt(std::size_t offset) const;
    std::string readChunk(std::size_t offset) const;
    [[noreturn]] void failDifferent(const Bytes& data);
    Json details() const;

    Context& m_Context;
    SelectedCamera m_Camera;
    FlashRange m_Range;
    const FlashOptions& m_Options;
    std::vector<FlashStage> m_Stages;
    LongJob m_Job;
    FlashStage m_Stage = FlashStage::Read;
    std::size_t m_Done = 0;    ///< bytes of the range that the stage has completed
    bool m_Changed = false;    ///< a change of the flash was requested
    bool m_HeaderLast = false; ///< the image's header is written after everything else
    bool m_HeaderFailed = false;
};

} // namespace QuillTool
