// SPDX-License-Identifier: Apache-2.0

#include <string>
#include <vector>

#include <CLI/CLI.hpp>
#include <Quill.h>
#include <fmt/format.h>

#include "Commands/Bytes.h"
#include "Commands/Command.h"
#include "Flash/FlashJob.h"
#include "Terminal/NumberArgument.h"

namespace QuillTool {

namespace {

using Bytes = std::vector<unsigned char>;
using Utilities::Programmer;

constexpr unsigned char kErased = 0xFF;
constexpr unsigned kLargestByte = 0xFF;

void addAddressArgument(CLI::App& parser, unsigned& address) {
    addNumber(parser, "ADDRESS", address, "First byte; decimal, or hexadecimal as 0x...", 0, kFlashEnd - 1)->required();
}

void addLengthArgument(CLI::App& parser, std::size_t& length) {
    addNumber(parser, "LENGTH", length, "Bytes; decimal, or hexadecimal as 0x...", 1, kFlashEnd)->required();
}

/// Changes the flash and reads it back, or only prints the plan.
template <typename Work, typename Verify>
void change(FlashJob& job, const FlashOptions& options, Work work, Verify verify) {
    if (options.dryRun) {
        job.printPlan();
        return;
    }
    work();
    if (!options.noVerify) {
        verify();
    }
    job.finish();
}

class FlashReadCommand : public Command {
public:
    void describe(CLI::App& parser) override {
        addCameraArgument(parser, m_Camera);
        addAddressArgument(parser, m_Range.address);
        addLengthArgument(parser, m_Range.length);
        parser.add_option("-o,--output", m_Output, "File for the bytes")->check(notEmpty());
        m_Options.describeReading(parser);
    }

    ExitCode run(Context& context) override {
        const SelectedCamera camera = context.session.connect(m_Camera);
        const bool dumps = m_Output.empty() && !m_Options.progress.json;
        if (dumps) {
            m_Options.progress.quiet = true; // the dump replaces it
        }
        FlashJob job(context, camera, m_Range, m_Options, {FlashStage::Read});
        const std::string bytes = job.read();
        if (dumps) {
            context.output.print(hexDump(bytes, m_Range.address));
        } else if (!m_Output.empty()) {
            writeWholeFile(m_Output, bytes);
        }
        job.finish(m_Output.empty() ? Json{{"hex", toHex(bytes)}} : Json{{"file", m_Output}});
        return ExitCode::Done;
    }

private:
    std::string m_Camera;
    FlashRange m_Range;
    std::string m_Output;
    FlashOptions m_Options;
};

class FlashWriteCommand : public Command {
public:
    void describe(CLI::App& parser) override {
        addCameraArgument(parser, m_Camera);
        addAddressArgument(parser, m_Address);
        addFileArgument(parser, m_File, "The bytes to write");
        m_Options.describeMaximumSize(parser);
        m_Options.describeWriting(parser);
    }

    ExitCode run(Context& context) override {
        const Bytes data = readFileForCamera(m_File, m_Options.maximumSize);
        const SelectedCamera camera = context.session.connect(m_Camera);
        FlashJob job(context, camera, {m_Address, data.size()}, m_Options,
                     {FlashStage::Erase, FlashStage::Write, FlashStage::Verify});
        change(
            job, m_Options, [&] { job.write(data); }, [&] { job.compare(data); });
        return ExitCode::Done;
    }

private:
    std::string m_Camera;
    unsigned m_Address = 0;
    std::string m_File;
    FlashOptions m_Options;
};

class FlashCompareCommand : public Command {
public:
    void describe(CLI::App& parser) override {
        addCameraArgument(parser, m_Camera);
        addAddressArgument(parser, m_Address);
        addFileArgument(parser, m_File, "The expected bytes");
        m_Options.describeReading(parser);
    }

    ExitCode run(Context& context) override {
        const Bytes data = readFileForCamera(m_File, kFlashEnd);
        const SelectedCamera camera = context.session.connect(m_Camera);
        FlashJob job(context, camera, {m_Address, data.size()}, m_Options, {FlashStage::Compare});
        job.compare(data);
        job.finish();
        return ExitCode::Done;
    }

private:
    std::string m_Camera;
    unsigned m_Address = 0;
    std::string m_File;
    FlashOptions m_Options;
};

class FlashEraseCommand : public Command {
public:
    void describe(CLI::App& parser) override {
        addCameraArgument(parser, m_Camera);
        addAddressArgument(parser, m_Range.address);
        addLengthArgument(parser, m_Range.length);
        m_Options.describeWriting(parser);
    }

    ExitCode run(Context& context) override {
        const SelectedCamera camera = context.session.connect(m_Camera);
        FlashJob job(context, camera, m_Range, m_Options, {FlashStage::Erase, FlashStage::Verify});
        change(
            job, m_Options, [&] { job.erase(); }, [&] { job.compare(Bytes(m_Range.length, kErased)); });
        return ExitCode::Done;
    }

private:
    std::string m_Camera;
    FlashRange m_Range;
    FlashOptions m_Options;
};

class FlashStatusCommand : public Command {
public:
    void describe(CLI::App& parser) override {
        addCameraArgument(parser, m_Camera);
        addNumber(parser, "ADDRESS", m_Address, "Which status; decimal, or hexadecimal as 0x...", 0, kFlashEnd - 1)
            ->capture_default_str();
        m_Set = addNumber(parser, "--set", m_Status, "Byte to write first", 0, kLargestByte);
        addJsonFlag(parser, m_Json);
    }

    ExitCode run(Context& context) override {
        const SelectedCamera camera = context.session.connect(m_Camera);
        if (m_Set->count() != 0) {
            camera.attempt(about("cannot be written"), [&] {
                Programmer::writeFlashStatus(*camera, m_Address, static_cast<unsigned char>(m_Status));
            });
        }
        const unsigned status = camera.attempt(
            about("cannot be read"), [&]() -> unsigned { return Programmer::readFlashStatus(*camera, m_Address); });
        if (m_Json) {
            context.output.printJson(
                Json{{"camera", camera.serialNumber()}, {"address", m_Address}, {"status", status}});
        } else {
            context.output.printLine(fmt::format("0x{:02X}", status));
        }
        if (m_Set->count() != 0 && status != m_Status) {
            throw ToolError(
                ExitCode::Difference,
                camera.about(about(fmt::format("was set to 0x{:02X} and reads 0x{:02X}", m_Status, status))));
        }
        return ExitCode::Done;
    }

private:
    std::string about(const std::string& what) const {
        return fmt::format("flash status at 0x{:X}: {}", m_Address, what);
    }

    std::string m_Camera;
    unsigned m_Address = 0;
    unsigned m_Status = 0;
    CLI::Option* m_Set = nullptr; // the parser outlives run()
    bool m_Json = false;
};

} // namespace

CommandDescription flashCommands() {
    return {"flash",
            "Read, write, compare and erase a camera's flash",
            "The flash ends at 0x1000000. 'write' and 'erase' read the range back and report\n"
            "the first address that differs, with exit code 6. Work that fails or is\n"
            "interrupted reports stage, address and the state of the flash.\n"
            "Progress goes to standard error: a bar on a terminal, a line every ten percent\n"
            "elsewhere.\n",
            nullptr,
            {
                {"read", "Read flash into a file, or print it",
                 "Examples:\n"
                 "  quill flash read 41500101 0x1000 64\n"
                 "  quill flash read 41500101 0 0x1000000 -o backup.bin\n",
                 makeCommand<FlashReadCommand>},
                {"write", "Erase the range, write a file to it and read it back",
                 "Reads the whole file and checks the range before it erases anything.\n\n"
                 "Examples:\n"
                 "  quill flash write 41500101 0x1000 table.bin --dry-run\n"
                 "  quill flash write 41500101 0x1000 table.bin\n"
                 "  quill flash write 41500101 0x1000 table.bin --json | jq .\n",
                 makeCommand<FlashWriteCommand>},
                {"compare", "Compare flash with a file",
                 "Ends with 0 if they are equal; otherwise reports the first address that differs\n"
                 "and ends with 6.\n\n"
                 "Examples:\n"
                 "  quill flash compare 41500101 0x1000 table.bin\n",
                 makeCommand<FlashCompareCommand>},
                {"erase", "Erase flash, so that every byte reads 0xFF",
                 "Examples:\n"
                 "  quill flash erase 41500101 0x1000 0x2000\n",
                 makeCommand<FlashEraseCommand>},
                {"status", "Print the flash status, or set it",
                 "Reads the status back after setting it; ends with 6 if it differs.\n\n"
                 "Examples:\n"
                 "  quill flash status 41500101\n"
                 "  quill flash status 41500101 0 --set 0x8C\n",
                 makeCommand<FlashStatusCommand>},
            }};
}

} // namespace QuillTool
