// SPDX-License-Identifier: Apache-2.0

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <CLI/CLI.hpp>
#include <Quill.h>
#include <fmt/format.h>

#include "Camera/CameraKind.h"
#include "Camera/ImageSource.h"
#include "Camera/StreamRun.h"
#include "Commands/Command.h"
#include "ImageFiles/ImageFile.h"
#include "Terminal/NumberArgument.h"
#include "Terminal/StandardStreams.h"
#include "Terminal/Text.h"

namespace QuillTool {

namespace {

using Imaging::Image;
using Imaging::IMAGE_FORMAT;

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

/// The output file of a command.
class Destination {
public:
    void describe(CLI::App& parser) {
        parser
            .add_option("-o,--output", m_Target.path,
                        "File: .png, .pgm, .ppm, .pam, .tif, .dng (mosaics) or .raw (bare bytes); - is standard output")
            ->required()
            ->check(notEmpty());
        parser.add_option("--type", m_Target.type, "Type of the file, whatever its extension; needed with -o -")
            ->check(notEmpty());
        addJsonFlag(parser, m_Json);
    }
    void requireWritable() const {
        if (isStandardOutput() && m_Target.type.empty()) {
            throw ToolError(ExitCode::Usage, fmt::format("-o - needs --type, one of {}", writableTypes()));
        }
        onFile(ExitCode::Usage, [&] { requireWritableType(m_Target); });
        if (isStandardOutput() && m_Json) {
            throw ToolError(ExitCode::Usage, "--json excludes -o -: standard output has room for one of them");
        }
        if (isStandardOutput() && isTerminal(StandardStream::Output)) {
            throw ToolError(ExitCode::Usage, "standard output is a terminal, not a file or pipe for an image");
        }
    }
    void setOrigin(const ImageOrigin& origin) { m_Target.origin = origin; }

    /// Starts a file for a series; nothing if each image has its own, or all go to standard output one by one.
    std::unique_ptr<ImageSeries> startSeries(unsigned count) const {
        return count > 1 && holdsSeries(m_Target)
                   ? onFile(ExitCode::Failed, [&] { return std::make_unique<ImageSeries>(m_Target, count); })
                   : nullptr;
    }
    /// @param number  number in a series of @p count images, counted from 1
    void write(Output& output, const std::unique_ptr<Image>& image, unsigned number = 1, unsigned count = 1) const {
        ImageTarget target = m_Target;
        if (count > 1 && !isStandardOutput()) {
            target.path = numbered(number, count);
        }
        onFile(ExitCode::Failed, [&] { writeImageFile(image, target); });
        report(output, *image, target.path);
    }
    /// Prints the file and the layout of the image, or of the last one of several.
    void report(Output& output, const Image& image, const std::string& path, unsigned images = 1) const {
        const std::string format = Imaging::getFormatName(image.getFormat());
        if (m_Json) {
            Json line{{"file", path},
                      {"width", image.getWidth()},
                      {"height", image.getHeight()},
                      {"format", format},
                      {"bitDepth", image.getBitDepth()}};
            if (images > 1) {
                line["images"] = images;
            }
            output.printJson(line);
            return;
        }
        const std::string text = fmt::format("{}: {}{} x {} {}, {} bits", isStandardOutput() ? "standard output" : path,
                                             images > 1 ? fmt::format("{} images of ", images) : "", image.getWidth(),
                                             image.getHeight(), format, image.getBitDepth());
        if (isStandardOutput()) {
            output.notify(text);
        } else {
            output.printLine(text);
        }
    }
    const std::string& path() const { return m_Target.path; }

private:
    bool isStandardOutput() const { return m_Target.path == kStandardStream; }

    /// Returns NAME-0001.EXT: names in the order of the images.
    std::string numbered(unsigned number, unsigned count) const {
        const auto file = std::filesystem::u8path(m_Target.path);
        const std::string name = fmt::format("{}-{:0{}}{}", file.stem().u8string(), number,
                                             std::to_string(count).size(), file.extension().u8string());
        return (file.parent_path() / std::filesystem::u8path(name)).u8string();
    }

    ImageTarget m_Target{""};
    bool m_Json = false;
};

class CaptureCommand : public Command {
public:
    void describe(CLI::App& parser) override {
        addCameraArgument(parser, m_Camera);
        m_Destination.describe(parser);
        parser.add_option("--format", m_Format, "Convert the images to this format first")->check(notEmpty());
        addNumber(parser, "--count", m_Count,
                  "Number of images: files NAME-01.EXT and so on, or pages of one TIFF file", 1, 1'000'000);
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
        m_Destination.setOrigin(
            {camera.attempt("its model is unknown", [&] { return camera->getModelName(); }), camera.serialNumber()});
        ImageSource source(context.interrupt, camera);
        const auto next = [&] { return converted(camera, source.next(), format); };
        if (const std::unique_ptr<ImageSeries> series = m_Destination.startSeries(m_Count)) {
            takeInto(*series, context.output, next);
        } else {
            takeOneByOne(context.output, next);
        }
        if (running) {
            running->stop();
        }
        return context.interrupt.requested() ? ExitCode::Interrupted : ExitCode::Done;
    }

private:
    using Next = std::function<std::unique_ptr<Image>()>;

    void takeOneByOne(Output& output, const Next& next) const {
        for (unsigned number = 1; number <= m_Count; ++number) {
            const std::unique_ptr<Image> image = next();
            if (!image) {
                break;
            }
            m_Destination.write(output, image, number, m_Count);
        }
    }

    /// An interrupt leaves a file of the images up to then, if there are any.
    void takeInto(ImageSeries& series, Output& output, const Next& next) const {
        std::unique_ptr<Image> last;
        unsigned taken = 0;
        for (std::unique_ptr<Image> image; taken < m_Count && (image = next()) != nullptr; ++taken) {
            onFile(ExitCode::Failed, [&] { series.add(image); });
            last = std::move(image);
        }
        if (last) {
            onFile(ExitCode::Failed, [&] { series.commit(); });
            m_Destination.report(output, *last, m_Destination.path(), taken);
        }
    }

    /// Warns if the camera delivers only a placeholder.
    /// @throws ToolError  the camera delivers no images
    static void requireImages(Output& output, const SelectedCamera& camera) {
        switch (kindOf(*camera)) {
        case CameraKind::Sdk:
        case CameraKind::GenICam:
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
        parser.add_option("IN", m_Source, "PNG, PNM or TIFF file; any other with --from; - is standard input")
            ->required()
            ->check(notEmpty());
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
        refuseCommandsAsInput(context, m_Source);
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
         "A series makes one TIFF file of as many pages, or one file of any other type for\n"
         "each image. On standard output, images of other types follow each other. Samples\n"
         "of 10 and 12 bits keep their values in a TIFF; a PNG shows them in 16 bits.\n\n"
         "Examples:\n"
         "  quill capture 41500101 -o frame.png\n"
         "  quill capture 41500101 -o frame.png --format RGB --set \"Video Exposure=20\"\n"
         "  quill capture 41500101 -o frame.pgm --count 10 --still\n"
         "  quill capture 41500101 -o frame.ppm --set \"Pixel Format=24\"\n"
         "  quill capture 41500101 -o series.tif --count 100\n"
         "  quill capture 41500101 -o - --type pgm | quill convert - -o frame.png\n",
         makeCommand<CaptureCommand>},
        {"convert", "Convert an image file, or a raw frame, to another format",
         "'quill conversions' lists the available conversions. A raw frame consists of\n"
         "bare pixels, row by row. A failed conversion leaves no file behind.\n"
         "Of several pages or images in a file, the first is converted.\n\n"
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
