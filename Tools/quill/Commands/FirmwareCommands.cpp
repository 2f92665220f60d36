// SPDX-License-Identifier: Apache-2.0

#include <cmath>
#include <cstddef>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>
#include <Quill.h>
#include <fmt/format.h>

#include "Camera/CameraReturn.h"
#include "Commands/Bytes.h"
#include "Commands/Command.h"
#include "Flash/FlashJob.h"
#include "Terminal/NumberArgument.h"

namespace QuillTool {

namespace {

using Bytes = std::vector<unsigned char>;
using Utilities::BootImage;
using Utilities::BootImageSection;
using Utilities::Programmer;

/// A complete boot image.
struct CheckedImage {
    Bytes data;
    BootImage content;
};

CheckedImage readImage(const std::string& path, std::size_t maximumSize) {
    CheckedImage image{readFileForCamera(path, maximumSize), {}};
    image.content = attempt(fmt::format("file '{}': is not a complete boot image", path),
                            [&] { return Utilities::readBootImage(image.data); });
    return image;
}

Json toJson(const CheckedImage& image) {
    Json sections = Json::array();
    for (const BootImageSection& section : image.content.sections) {
        sections.push_back({{"offset", section.offset}, {"loadAddress", section.address}, {"length", section.length}});
    }
    return {{"size", image.data.size()},
            {"imageSize", image.content.size},
            {"entryAddress", image.content.entryAddress},
            {"sections", sections}};
}

void print(Output& output, const CheckedImage& image) {
    Table table{{"OFFSET", "LOAD ADDRESS", "BYTES"}, {}};
    for (const BootImageSection& section : image.content.sections) {
        table.rows.push_back({fmt::format("0x{:X}", section.offset), fmt::format("0x{:08X}", section.address),
                              std::to_string(section.length)});
    }
    output.printTable(table);
    output.printLine(fmt::format("starts at 0x{:08X}", image.content.entryAddress));
    const std::size_t rest = image.data.size() - image.content.size;
    if (rest != 0) {
        output.printLine(fmt::format("{} bytes follow the image", rest));
    }
}

class FirmwareCheckCommand : public Command {
public:
    void describe(CLI::App& parser) override {
        addFileArgument(parser, m_File, "The boot image");
        addJsonFlag(parser, m_Json);
    }

    ExitCode run(Context& context) override {
        const CheckedImage image = readImage(m_File, kFlashEnd);
        if (m_Json) {
            context.output.printJson(toJson(image));
        } else {
            print(context.output, image);
        }
        return ExitCode::Done;
    }

private:
    std::string m_File;
    bool m_Json = false;
};

class FirmwareWriteCommand : public Command {
public:
    void describe(CLI::App& parser) override {
        addCameraArgument(parser, m_Camera);
        addFileArgument(parser, m_File, "The boot image");
        addNumber(parser, "--address", m_Address, "First byte in flash", 0, kFlashEnd - 1)->capture_default_str();
        m_Options.describeMaximumSize(parser);
        m_Options.describeWriting(parser);
    }

    ExitCode run(Context& context) override {
        const CheckedImage image = readImage(m_File, m_Options.maximumSize);
        const SelectedCamera camera = context.session.connect(m_Camera);
        FlashJob job(context, camera, {m_Address, image.data.size()}, m_Options,
                     {FlashStage::Erase, FlashStage::Write, FlashStage::Verify});
        if (m_Options.dryRun) {
            job.printPlan();
            if (!m_Options.progress.json) {
                print(context.output, image);
            }
            return ExitCode::Done;
        }
        job.writeFirmware(image.data);
        if (!m_Options.noVerify) {
            job.compare(image.data);
        }
        job.finish();
        return ExitCode::Done;
    }

private:
    std::string m_Camera;
    std::string m_File;
    unsigned m_Address = 0;
    FlashOptions m_Options;
};

class FirmwareLoadCommand : public Command {
public:
    void describe(CLI::App& parser) override {
        addCameraArgument(parser, m_Camera);
        addFileArgument(parser, m_File, "The boot image");
        m_Progress.describe(parser);
        m_Return.describe(parser);
        parser.add_flag("--dry-run", m_DryRun, "Print the plan and leave the camera untouched");
    }

    ExitCode run(Context& context) override {
        const CheckedImage image = readImage(m_File, kFlashEnd);
        const SelectedCamera camera = context.session.connect(m_Camera);
        camera.attempt(tried(), [&] { camera->getFunction("Write Ram"); });
        if (m_DryRun) {
            printPlan(context.output, camera, image);
            return ExitCode::Done;
        }
        m_Return.quiet = m_Progress.quiet;
        CameraReturn back(context, camera, m_Return);
        LongJob job(context, camera, m_Progress);
        load(job, camera, image);
        job.report().finish("started", fmt::format("'{}' is loaded and started", m_File),
                            Json{{"camera", camera.serialNumber()}, {"entryAddress", image.content.entryAddress}});
        if (!m_Return.noWait) {
            back.await();
        }
        return ExitCode::Done;
    }

private:
    std::string tried() const { return fmt::format("'{}' cannot be loaded into its RAM", m_File); }

    void load(LongJob& job, const SelectedCamera& camera, const CheckedImage& image) const {
        double reached = 0;
        const auto work = [&] {
            job.advance("load", 0, true);
            Programmer::writeFirmwareToRam(*camera, image.data, [&](double done) {
                reached = done;
                job.advance("load", done, true);
            });
            job.advance("load", 1, false);
        };
        job.run(work, [&] {
            const auto offset =
                static_cast<std::size_t>(std::llround(reached * static_cast<double>(image.data.size())));
            return JobPlace{fmt::format("{} at offset 0x{:X}", tried(), offset),
                            fmt::format("loading '{}' into its RAM at offset 0x{:X}", m_File, offset),
                            "the program was not started",
                            Json{{"camera", camera.serialNumber()}, {"stage", "load"}, {"offset", offset}}};
        });
    }

    void printPlan(Output& output, const SelectedCamera& camera, const CheckedImage& image) const {
        if (m_Progress.json) {
            Json plan{{"result", "dry run"}, {"camera", camera.serialNumber()}};
            plan.update(toJson(image));
            output.printJsonLine(plan);
            return;
        }
        output.printLine(camera.about(fmt::format("'{}' would be loaded into RAM and started", m_File)));
        print(output, image);
    }

    std::string m_Camera;
    std::string m_File;
    ProgressOptions m_Progress;
    ReturnOptions m_Return;
    bool m_DryRun = false;
};

} // namespace

CommandDescription firmwareCommands() {
    return {"firmware",
            "Check a boot image, write it to flash, or load and start it",
            "Checks the complete image before it touches a camera. Writes the image's header\n"
            "to flash last, so that a camera does not start an incomplete image. Start the\n"
            "image in flash with 'quill reboot'.\n",
            nullptr,
            {
                {"check", "Show the sections of a boot image; needs no camera",
                 "Examples:\n"
                 "  quill firmware check update.img\n"
                 "  quill firmware check update.img --json | jq '.sections[].loadAddress'\n",
                 makeCommand<FirmwareCheckCommand>},
                {"write", "Write a boot image to flash and read it back",
                 "Erases the flash for the image, writes the image without its header, then the\n"
                 "header, and compares. Refuses an image of more than --maximum-size bytes, or an\n"
                 "image that reaches beyond 0x1000000.\n\n"
                 "Examples:\n"
                 "  quill firmware write 41500101 update.img --dry-run\n"
                 "  quill firmware write 41500101 update.img\n"
                 "  quill firmware write 41500101 update.img --address 0x40000\n",
                 makeCommand<FirmwareWriteCommand>},
                {"load", "Load a boot image into RAM and start it; the flash is unchanged",
                 "The camera may leave the bus when it starts; the tool waits for its return.\n\n"
                 "Examples:\n"
                 "  quill firmware load 41500101 trial.img\n",
                 makeCommand<FirmwareLoadCommand>},
            }};
}

} // namespace QuillTool
