// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

#include "Terminal/LongJob.h"

namespace QuillTool {

/// Where the flash of cameras ends: what 24 bits of address reach, 16 MiB.
constexpr unsigned kFlashEnd = 0x1000000;

/// A range of a camera's flash, in bytes.
struct FlashRange {
    unsigned address = 0;
    std::size_t length = 0;

    std::size_t end() const { return address + length; }
    /// "0x1000..0x2000", the end excluded.
    std::string text() const;
};

/// How flash is worked on.
struct FlashOptions {
    unsigned chunkSize = 4096;
    unsigned maximumSize = kFlashEnd;
    bool noVerify = false;
    bool dryRun = false;
    ProgressOptions progress;

    /// For work that only reads.
    void describeReading(CLI::App& parser);
    void describeWriting(CLI::App& parser);
    void describeMaximumSize(CLI::App& parser);
};

enum class FlashStage { Read, Erase, Write, Verify, Compare };

/// Work on a range of a camera's flash, stage after stage. Each operation reports its progress, and fails with a
/// ToolError that names stage and address and says in what state the flash is left.
class FlashJob {
public:
    using Bytes = std::vector<unsigned char>;

    /// @param options  outlive the job
    /// @throws ToolError  the range reaches beyond the flash, or the camera lacks a function that @p stages need; the
    ///     camera is untouched
    FlashJob(Context& context, const SelectedCamera& camera, const FlashRange& range, const FlashOptions& options,
             const std::vector<FlashStage>& stages);

    /// Prints what the stages would do.
    void tellPlan() const;

    std::string read();
    void erase();
    void write(const Bytes& data);
    /// The image's header last.
    void writeFirmware(const Bytes& data);
    /// Compares the flash with data, in the last stage of the job.
    /// @throws ToolError  it differs: the first address that does
    void compare(const Bytes& data);

    /// Ends the job: the last stage was successful.
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
    std::size_t m_Done = 0;    ///< bytes of the range that the stage has done
    bool m_Changed = false;    ///< the camera has been asked to change its flash
    bool m_HeaderLast = false; ///< the image's header is still to be written when all else is
    bool m_HeaderFailed = false;
};

} // namespace QuillTool
