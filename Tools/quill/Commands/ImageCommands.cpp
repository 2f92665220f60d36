// SPDX-License-Identifier: Apache-2.0

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <Quill.h>
#include <fmt/format.h>

#include "Camera/CameraKind.h"
#include "Camera/ImageSource.h"
#include "Camera/StreamRun.h"
#include "Commands/Command.h"
#include "ImageFiles/ImageFile.h"
#include "Terminal/Numbers.h"
#include "Terminal/Text.h"

namespace QuillTool {

namespace {

using Imaging::Image;
using Imaging::IMAGE_FORMAT;

std::vector<std::string> formatNames() {
    std::vector<std::string> names;
    for (int format = static_cast<int>(IMAGE_FORMAT::MONO); format <= static_cast<int>(IMAGE_FORMAT::BGRA_PLANAR);
         ++format) {
        names.push_back(Imaging::getFormatName(static_cast<IMAGE_FORMAT>(format)));
    }
    return names;
}

IMAGE_FORMAT parseFormat(const std::string& option, const std::string& name) {
    const std::optional<IMAGE_FORMAT> format = Imaging::findFormat(inCapitals(name));
    if (!format) {
        throw ToolError(ExitCode::Usage, fmt::format("{} {}: no such format; available: {}", option, name,
                                                     fmt::join(formatNames(), ", ")));
    }
    return *format;
}

void requireConversion(const std::string& source, IMAGE_FORMAT from, IMAGE_FORMAT to) {
    if (from != to && !Imaging::conversionExists(from, to)) {
        throw ToolError(
            ExitCode::Failed,
            fmt::format("{}: cannot be converted: no conversion from {} to {} exists; see 'quill conversions'", source,
                        Imaging::getFormatName(from), Imaging::getFormatName(to)));
    }
}

/// Runs an action on files. Their errors are complete sentences.
template <typename Action>
auto onFile(ExitCode code, Action action) {
    try {
        return action();
    } catch (const ImageFileError& failure) {
        throw ToolError(code, failure.what());
    }
}

/// Prints the file and its layout.
void report(Output& output, const Image& image, const std::string& path, bool json) {
    const std::string format = Imaging::getFormatName(image.getFormat());
    if (json) {
        output.printJson(Json{{"file", path},
                              {"width", image.getWidth()},
                              {"height", image.getHeight()},
                              {"format", format},
                              {"bitDepth", image.getBitDepth()}});
    } else {
        output.printLine(fmt::format("{}: {} x {} {}, {} bits", path, image.getWidth(), image.getHeight(), format,
                                     image.getBitDepth()));
    }
}

/// The output file of a command.
struct Destination {
    std::string path;
    bool json = false;

    void describe(CLI::App& parser) {
        parser.add_option("-o,--output", path, "File: .png, .pgm, .ppm, .pam, .tif, .dng or .raw (bare bytes)")
            ->required()
            ->check(notEmpty());
        addJsonFlag(parser, json);
    }
    void requireWritable() const {
        onFile(ExitCode::Usage, [&] { requireWritableType(path); });
    }
    /// @param number  number in a series, counted from 1; 0 for a single image
    void write(Output& output, const std::unique_ptr<Image>& image, unsigned number = 0) const {
        const std::string file = number == 0 ? path : numbered(number);
        onFile(ExitCode::Failed, [&] { writeImageFile(image, file); });
        report(output, *image, file, json);
    }

    std::string numbered(unsigned number) const {
        const std::filesystem::path file(path);
        const std::string name = fmt::format("{}-{}{}", file.stem().string(), number, file.extension().string());
        return (file.parent_path() / name).string();
    }
};

class CaptureCommand : public Command {
public:
    void describe(CLI::App& parser) override {
        addCameraArgument(parser, m_Camera);
        m_Destination.describe(parser);
        parser.add_option("--format", m_Format, "Convert the images to this format first")->check(notEmpty());
        addNumber(parser, "--count", m_Count, "Number of images; a series is numbered: NAME-1.EXT", 1, 1'000'000);
        m_Run.describe(parser);
    }

    ExitCode run(Context& context) override {
        std::optional<IMAGE_FORMAT> format;
        if (!m_Format.empty()) {
            format = parseFormat("--format", m_Format);
        }
        m_Destination.requireWritable();
        const SelectedCamera camera = context.session.connect(m_Camera);
        requireImages(context.output, camera);
        m_Run.prepare(context.output, camera);
        std::optional<RunningStream> running;
        if (m_Count > 1) {
            running.emplace(camera);
        }
        ImageSource source(context.interrupt, camera);
        for (unsigned number = 1; number <= m_Count; ++number) {
            const std::unique_ptr<Image> image = converted(camera, source.next(), format);
            if (!image) {
                break;
            }
            m_Destination.write(context.output, image, m_Count > 1 ? number : 0);
        }
        if (running) {
            running->stop();
        }
        return context.interrupt.requested() ? ExitCode::Interrupted : ExitCode::Done;
    }

private:
    /// Warns if the camera delivers only a placeholder.
    /// @throws ToolError  the camera delivers no images
    static void requireImages(Output& output, const SelectedCamera& camera) {
        switch (kindOf(*camera)) {
        case CameraKind::Sdk:
            return;
        case CameraKind::Simulated:
            output.warn(
                camera.about(fmt::format("is {}: its image is {}", nameOf(CameraKind::Simulated), kPlaceholder)));
            return;
        case CameraKind::Usb3Vision:
            throw ToolError(ExitCode::Failed, camera.about(fmt::format("no image can be captured: it is {}",
                                                                       nameOf(CameraKind::Usb3Vision))));
        }
    }

    static std::unique_ptr<Image> converted(const SelectedCamera& camera, std::unique_ptr<Image> image,
                                            const std::optional<IMAGE_FORMAT>& format) {
        if (image && format && *format != image->getFormat()) {
            requireConversion(camera.about("its image"), image->getFormat(), *format);
            image =
                camera.attempt("its image cannot be converted", [&] { return camera->convertImage(image, *format); });
        }
        return image;
    }

    std::string m_Camera;
    std::string m_Format;
    unsigned m_Count = 1;
    StreamRun m_Run;
    Destination m_Destination;
};

class ConvertCommand : public Command {
public:
    void describe(CLI::App& parser) override {
        parser.add_option("IN", m_Source, "PNG or PNM file; any other with --from")->required()->check(notEmpty());
        m_Destination.describe(parser);
        parser.add_option("--to", m_To, "Format of the result (default: that of the input)")->check(notEmpty());
        CLI::Option* from = parser.add_option("--from", m_From, "Pixel format of a raw frame");
        CLI::Option* width = addNumber(parser, "--width", m_Width, "Pixels in a row of the raw frame", 1);
        CLI::Option* height = addNumber(parser, "--height", m_Height, "Rows of the raw frame", 1);
        CLI::Option* bits = addNumber(parser, "--bits", m_Bits, "Bits of a sample: 8 (default), 10, 12 or 16", 8, 16);
        CLI::Option* bigEndian =
            parser.add_flag("--big-endian", m_BigEndian, "Samples of two bytes have the high byte first");
        from->needs(width)->needs(height)->check(notEmpty());
        for (CLI::Option* option : {width, height, bits, bigEndian}) {
            option->needs(from);
        }
        bits->check(CLI::IsMember({8, 10, 12, 16}));
    }

    ExitCode run(Context& context) override {
        std::optional<RawDescription> raw;
        if (!m_From.empty()) {
            raw = RawDescription{parseFormat("--from", m_From), m_Width, m_Height, m_Bits, !m_BigEndian};
        }
        std::optional<IMAGE_FORMAT> format;
        if (!m_To.empty()) {
            format = parseFormat("--to", m_To);
        }
        m_Destination.requireWritable();
        std::unique_ptr<Image> image = onFile(ExitCode::Failed, [&] { return readImageFile(m_Source, raw); });
        if (format) {
            const std::string source = fmt::format("file '{}'", m_Source);
            requireConversion(source, image->getFormat(), *format);
            image = attempt(source + ": cannot be converted", [&] { return Imaging::convertImage(image, *format); });
        }
        m_Destination.write(context.output, image);
        return ExitCode::Done;
    }

private:
    std::string m_Source;
    std::string m_To;
    std::string m_From;
    unsigned m_Width = 0;
    unsigned m_Height = 0;
    unsigned m_Bits = 8;
    bool m_BigEndian = false;
    Destination m_Destination;
};

class ConversionsCommand : public Command {
public:
    void describe(CLI::App& parser) override { addJsonFlag(parser, m_Json); }

    ExitCode run(Context& context) override {
        Table table{{"FROM", "TO", "NAME"}, {}};
        Json conversions = Json::array();
        for (const auto& [key, name] : Imaging::getAvailableConversions()) {
            const std::string from = Imaging::getFormatName(static_cast<IMAGE_FORMAT>(key / 256));
            const std::string to = Imaging::getFormatName(static_cast<IMAGE_FORMAT>(key % 256));
            table.rows.push_back({from, to, name});
            conversions.push_back({{"from", from}, {"to", to}, {"name", name}});
        }
        if (m_Json) {
            context.output.printJson(Json{{"conversions", conversions}});
        } else {
            context.output.printTable(table);
        }
        return ExitCode::Done;
    }

private:
    bool m_Json = false;
};

} // namespace

std::vector<CommandDescription> imageCommands() {
    return {
        {"capture", "Take an image and write it to a file",
         "With --count, the camera streams. --set writes properties first, as 'quill set'\n"
         "does. The image of a simulated camera is a placeholder.\n\n"
         "Examples:\n"
         "  quill capture 41500101 -o frame.png\n"
         "  quill capture 41500101 -o frame.png --format RGB --set \"Video Exposure=20\"\n"
         "  quill capture 41500101 -o frame.pgm --count 10 --still\n"
         "  quill capture 41500101 -o frame.ppm --set \"Pixel Format=24\"\n",
         makeCommand<CaptureCommand>},
        {"convert", "Convert an image file, or a raw frame, to another format",
         "'quill conversions' lists the available conversions. A raw frame consists of\n"
         "bare pixels, row by row. A failed conversion leaves no file behind.\n\n"
         "Examples:\n"
         "  quill convert frame.png --to MONO -o grey.pgm\n"
         "  quill convert frame.raw --from BAYER_RGGB --width 640 --height 480 --bits 12 \\\n"
         "      --to RGB -o frame.png\n",
         makeCommand<ConvertCommand>},
        {"conversions", "List the conversions between image formats",
         "Examples:\n"
         "  quill conversions | grep ^BAYER_RGGB\n"
         "  quill conversions --json\n",
         makeCommand<ConversionsCommand>},
    };
}

} // namespace QuillTool
