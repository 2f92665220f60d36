// SPDX-License-Identifier: Apache-2.0

#include "ImageFiles/ImageFile.h"

#include <algorithm>
#include <csignal>
#include <filesystem>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sys/resource.h>

#include "ChildProcess.h"
#include "Support/TemporaryFolder.h"

namespace {

using namespace std::string_literals;
using Imaging::Image;
using Imaging::IMAGE_FORMAT;
using QuillTool::ImageFileError;
using QuillTool::RawDescription;
using QuillTool::readImageFile;
using QuillTool::writeImageFile;
using ::testing::HasSubstr;
using TestSupport::runChild;

/// Pixels whose samples span the depth, including its smallest and largest values.
std::unique_ptr<Image> makeImage(IMAGE_FORMAT format, unsigned bitDepth, bool littleEndian, unsigned width = 5,
                                 unsigned height = 3) {
    const unsigned largest = (1U << bitDepth) - 1;
    std::vector<unsigned char> data;
    for (unsigned k = 0; k < width * height * 4; ++k) {
        const unsigned value = k == 1 ? largest : k * 40503U & largest;
        if (bitDepth > 8) {
            data.push_back(static_cast<unsigned char>(littleEndian ? value : value >> 8));
        }
        data.push_back(static_cast<unsigned char>(bitDepth > 8 && littleEndian ? value >> 8 : value));
    }
    return Imaging::createImage(width, height, data, bitDepth, littleEndian, format);
}

/// Layout, depth and all pixels, as a text.
std::string described(const Image& image) {
    std::string text = Imaging::getFormatName(image.getFormat()) + std::to_string(image.getBitDepth());
    for (unsigned k = 0; k < image.getWidth() * image.getHeight(); ++k) {
        const Imaging::Pixel pixel = image.getPixel(k / image.getWidth(), k % image.getWidth());
        for (unsigned channel = 0; channel < image.getNumberOfChannels(); ++channel) {
            text += (channel == 0 ? " " : ",") + std::to_string(static_cast<int>(pixel.channel[channel]));
        }
    }
    return text;
}

/// A PNG from the hexadecimal digits of its chunks, without the signature and the end that all have.
std::string png(const std::string& chunks) {
    const std::string digits = "89504e470d0a1a0a" + chunks + "0000000049454e44ae426082";
    std::string bytes;
    for (std::size_t k = 0; k < digits.size(); k += 2) {
        bytes += static_cast<char>(std::stoi(digits.substr(k, 2), nullptr, 16));
    }
    return bytes;
}

class ImageFile : public ::testing::Test {
protected:
    /// The pixels read from a file, or the text of the error.
    std::string readOutcome(const std::string& name, const std::optional<RawDescription>& raw = std::nullopt) const {
        try {
            return described(*readImageFile(m_Folder.file(name), raw));
        } catch (const ImageFileError& error) {
            return error.what();
        }
    }

    std::string writeOutcome(const std::unique_ptr<Image>& image, const std::string& name) const {
        try {
            writeImageFile(image, m_Folder.file(name));
            return "written";
        } catch (const ImageFileError& error) {
            return error.what();
        }
    }

    TestSupport::TemporaryFolder m_Folder;
};

TEST_F(ImageFile, KeepsTheSamplesOfEveryLayoutThatItsTypeHolds) {
    const std::pair<const char*, std::vector<unsigned>> samplesHeld[] = {{"a.png", {1, 3, 4}}, {"a.pgm", {1}},
                                                                         {"a.ppm", {3}},       {"a.pnm", {1, 3}},
                                                                         {"a.PAM", {1, 3, 4}}, {"a.tif", {1, 3, 4}}};
    for (int format = 0; format <= static_cast<int>(IMAGE_FORMAT::BGRA_PLANAR); ++format) {
        for (const auto& [bitDepth, littleEndian] : {std::pair(8U, true), {10U, true}, {12U, false}, {16U, true}}) {
            const auto image = makeImage(static_cast<IMAGE_FORMAT>(format), bitDepth, littleEndian);
            const auto samples = static_cast<unsigned>(image->getImageSize() / 15 / image->getBytesPerChannel());
            const auto asItLies =
                Imaging::createImage(5, 3, image->getData(), bitDepth, littleEndian, IMAGE_FORMAT::MONO);
            const auto converted = convertImage(image, samples == 3 ? IMAGE_FORMAT::RGB : IMAGE_FORMAT::RGBA);
            for (const auto& [name, held] : samplesHeld) {
                SCOPED_TRACE(name + (" of " + described(*image)));
                const std::string outcome = writeOutcome(image, name);
                if (std::find(held.begin(), held.end(), samples) != held.end()) {
                    EXPECT_EQ(outcome, "written");
                    EXPECT_EQ(readOutcome(name), described(samples == 1 ? *asItLies : *converted));
                } else {
                    EXPECT_THAT(outcome, HasSubstr(" pixels do not fit into a ."));
                }
            }
            const bool mosaic = samples == 1 && image->getFormat() != IMAGE_FORMAT::MONO;
            EXPECT_THAT(writeOutcome(image, "a.dng"), HasSubstr(mosaic ? "written" : " pixels do not fit into a .dng"));
            EXPECT_TRUE(!mosaic || readOutcome("a.dng") == described(*image)) << readOutcome("a.dng");
            writeImageFile(image, m_Folder.file("a.raw"));
            const RawDescription frame{image->getFormat(), 5, 3, bitDepth, littleEndian};
            EXPECT_EQ(readOutcome("a.raw", frame), described(*image));
        }
    }
    EXPECT_THAT(writeOutcome(makeImage(IMAGE_FORMAT::BGRA, 8, true), "a.ppm"),
                HasSubstr("a.ppm: BGRA pixels do not fit into a .ppm file, but into .png, .pam, .raw"));
}

TEST_F(ImageFile, IsReadAlikeByOtherPrograms) {
    const std::string tiff = m_Folder.file("a.tif");
    const std::string copy = m_Folder.file("b.tiff");
    QuillTool::ImageTarget dng(m_Folder.file("a"), "DNG");
    dng.origin = {"M 1", "7"};
    for (const auto& [bitDepth, format] : {std::pair(8U, IMAGE_FORMAT::BAYER_RGGB),
                                           {10U, IMAGE_FORMAT::BAYER_GRBG},
                                           {12U, IMAGE_FORMAT::BAYER_GBRG},
                                           {16U, IMAGE_FORMAT::BAYER_BGGR}}) {
        SCOPED_TRACE(bitDepth);
        const auto mosaic = makeImage(format, bitDepth, false, 64, 48);
        std::string words = "P5\n64 48\n65535\n";
        for (const unsigned char byte : mosaic->getData()) {
            words.append(bitDepth == 8 ? 1 : 0, '\0') += static_cast<char>(byte);
        }
        writeImageFile(mosaic, dng);
        runChild({"unprocessed_raw", {dng.path}, {}});
        EXPECT_TRUE(TestSupport::readFile(dng.path + ".pgm") == words);
        EXPECT_THAT(runChild({"raw-identify", {"-v", dng.path}, {}}).output,
                    HasSubstr("Filter pattern: " + Imaging::getFormatName(format).substr(6)));
        EXPECT_THAT(runChild({"tiffinfo", {dng.path}, {}}).output,
                    ::testing::AllOf(HasSubstr("WhiteLevel: " + std::to_string((1U << bitDepth) - 1) + "\n"),
                                     HasSubstr("Software: Quill "), HasSubstr("DateTime: 20"),
                                     HasSubstr(" Model: M 1\n"), HasSubstr("CameraSerialNumber: 7\n")));

        const auto color = makeImage(IMAGE_FORMAT::RGB, bitDepth, true, 640, 480);
        writeImageFile(color, tiff);
        for (const char* compression : {"none", "lzw", "zip", "packbits"}) {
            runChild({"tiffcp", {"-L", "-c", compression, "-r", "7", tiff, copy}, {}});
            const auto read = readImageFile(copy, std::nullopt);
            EXPECT_TRUE(read->getData() == color->getData() && read->getBitDepth() == bitDepth) << compression;
        }
    }
}

TEST_F(ImageFile, OfAnyDamageIsReadOrRefused) {
    writeImageFile(makeImage(IMAGE_FORMAT::RGB, 12, true), m_Folder.file("a.tif"));
    const std::string whole = TestSupport::readFile(m_Folder.file("a.tif"));
    for (std::size_t k = 0; k < whole.size(); ++k) {
        for (const char damage : {'\x01', '\x80', '\xff'}) {
            std::string content = whole;
            content[k] ^= damage;
            m_Folder.write("a.tif", content);
            EXPECT_THAT(readOutcome("a.tif"), ::testing::Not(HasSubstr("not enough memory"))) << k;
        }
    }
    const struct {
        const char* tag; // with its type and number of values
        std::string value;
        const char* said;
    } cases[] = {
        {"\x01\x01\0\x03\0\0\0\x01", "\x7f\xff\0\0"s, "promises 5 x 32767 pixels, more than fit into"},
        {"\x01\x03\0\x03\0\0\0\x01", "\0\x07\0\0"s, "whose compression is 7 is not supported"},
        {"\x01\x06\0\x03\0\0\0\x01", "\0\x06\0\0"s, "whose photometric interpretation is 6 is"},
        {"\x01\x12\0\x03\0\0\0\x01", "\0\x03\0\0"s, "whose orientation is 3 is not supported"},
        {"\x01\x1c\0\x03\0\0\0\x01", "\0\x02\0\0"s, "whose planar configuration is 2 is"},
    };
    for (const auto& [tag, value, said] : cases) {
        const std::size_t place = whole.find(std::string(tag, 8));
        ASSERT_NE(place, std::string::npos) << said;
        m_Folder.write("a.tif", std::string(whole).replace(place + 8, 4, value));
        EXPECT_THAT(readOutcome("a.tif"), HasSubstr(said));
    }
}

TEST_F(ImageFile, ShowsTwelveBitsInTheFullRangeOfAPngAndCutsWhatLiesBeyond) {
    const std::vector<unsigned char> words{0, 0, 0x08, 0, 0x0f, 0xff, 0xff, 0xff};
    writeImageFile(Imaging::createImage(2, 2, words, 12, false, IMAGE_FORMAT::MONO), m_Folder.file("a.png"));
    EXPECT_EQ(readOutcome("a.png"), "MONO12 0 2048 4095 4095");
    // A damaged chunk of significant bits is ignored, as by a viewer that does not know it.
    std::string content = TestSupport::readFile(m_Folder.file("a.png"));
    content[content.find("sBIT") + 4] ^= 1;
    m_Folder.write("a.png", content);
    EXPECT_EQ(readOutcome("a.png"), "MONO16 0 32776 65535 65535");
}

TEST_F(ImageFile, ReadsWhatOthersWriteAndRefusesWhatIsNoImage) {
    const RawDescription frame{IMAGE_FORMAT::BAYER_RGGB, 4, 2, 12};
    struct Row {
        std::string name;
        std::string content;
        std::string outcome;
        std::optional<RawDescription> raw = std::nullopt;
    };
    const std::string palette =
        "0000000d4948445200000002000000010103000000ceecedc900000006504c54450a141e28323cd51bb4e90000000174524e530040e6d8"
        "660000000a4944415478da637000000042004184bf8e62";
    const std::string interlacedGreyAlpha = "0000000d494844520000000200000001100400000179bc5bd4000000124944415478da6360"
                                            "646266616065fbff1f000373021447316401";
    const std::string huge =
        "0000000d49484452000f4240000f42400800000000790667a10000000a4944415478da6360000000020001e527defc";
    for (const auto& [name, content, outcome, raw] : std::vector<Row>{
             {"a.png", png(palette), "RGBA8 10,20,30,0 40,50,60,255"},
             {"a.png", png(interlacedGreyAlpha), "RGBA16 258,258,258,772 1286,1286,1286,65535"},
             {"a.pgm", "P2#a\n# b\n3 1 9 0 4#c\n9", "MONO8 0 113 255"},
             {"a.ppm", "P3 1 1 1000 1 2 1000\n", "RGB10 1,2,1000"},
             {"a.pnm", "P5 2 1 4095\n\x0f\xff\x01\x02 another"s, "MONO12 4095 258"},
             {"a.pgm", "P5\n2 1\n9999#\n\x12\x34\x20\x23"s, "MONO16 4660 8227"},
             {"a.pam", "P7\n#\nDEPTH 4\nMAXVAL 1\nTUPLTYPE RGB_ALPHA\nHEIGHT 1\nWIDTH 1\nENDHDR\n\0\1\0\1"s,
              "RGBA8 0,255,0,255"},
             {"a.png", "GIF89a, not a PNG", "Cannot read " + m_Folder.file("a.png") + ": Not a PNG file"},
             {"a.png", png(huge), "promises 1000000 x 1000000 pixels, far more than fit into 67 bytes"},
             {"a.pgm", "P5 4000000000 4000000000 255\n..", "4000000000 x 4000000000 pixels is larger than 2 GiB"},
             {"a.pgm", "P5 30000 30000 255\n..", "30000 x 30000 pixels, but only 2 of at least 900000000 bytes"},
             {"a.pgm", "P5 0 1 255\n", "an image needs a width and a height"},
             {"a.pgm", "P2 2 1 65536 1 1", "the largest value 65536 is not within 1 to 65535"},
             {"a.pgm", "P2 2 1 7 1 8", "a sample of 8 is beyond the largest value 7"},
             {"a.pgm", "P5 99999999999 1 7 1 8", "no number for its width"},
             {"a.pgm", "P4 1 1 .", "not a PGM, PPM or PAM file"},
             {"a.pam", "P7 WIDTH 1 HEIGHT 1 DEPTH 2 MAXVAL 1 ENDHDR\n..",
              "images of 2 samples per pixel are not supported"},
             {"a.pam", "P7 WIDTH 1 HEIGHT 1 DEPTH 3 MAXVAL 1 TUPLTYPE RGB_ALPHA ENDHDR\n...", "only the tuple types"},
             {"a.tif", "GIF89a, not a TIFF", "Not a TIFF"},
             {"a.dat", "0123456789", "only .png, .pgm, .ppm, .pnm, .pam, .tif, .tiff, .dng files describe themselves"},
             {"a.raw", std::string(15, 'x'), "of 4 x 2 pixels and 12 bits has 16 bytes, the file has 15", frame},
             {"a.raw", std::string(17, 'x'), "has 16 bytes, the file has 17", frame},
             {"a.raw", "x", "8, 10, 12, 16 bits per sample, not 9", RawDescription{IMAGE_FORMAT::MONO, 1, 1, 9}},
             {"a.raw", "x", "larger than 2 GiB", RawDescription{IMAGE_FORMAT::RGBA, 4294967295, 4294967295, 16}}}) {
        m_Folder.write(name, content);
        EXPECT_THAT(readOutcome(name, raw), HasSubstr(outcome)) << content;
    }
    EXPECT_THAT(readOutcome("absent.png"), HasSubstr("absent.png: No such file or directory"));
}

TEST_F(ImageFile, CutAnywhereIsRefused) {
    for (const std::string name : {"a.png", "a.pam", "a.tif"}) {
        writeImageFile(makeImage(IMAGE_FORMAT::RGBA, 12, true), m_Folder.file(name));
        const std::string content = TestSupport::readFile(m_Folder.file(name));
        for (std::size_t length = 0; length < content.size(); ++length) {
            m_Folder.write(name, content.substr(0, length));
            EXPECT_THAT(readOutcome(name), HasSubstr("Cannot read ")) << length;
        }
    }
}

TEST_F(ImageFile, FailedWritingLeavesEverythingAsItWas) {
    const auto image = makeImage(IMAGE_FORMAT::MONO, 16, true);
    m_Folder.write("old.pgm", "old");
    std::filesystem::permissions(m_Folder.file("old.pgm"), std::filesystem::perms(0640));
    std::filesystem::create_directory(m_Folder.file("folder.png"));
    std::filesystem::create_symlink("/dev/full", m_Folder.file("full.pgm"));
    std::filesystem::create_symlink("/dev/full", m_Folder.file("full.tif"));
    std::filesystem::create_symlink("old.pgm", m_Folder.file("link.pgm"));
    for (const auto& [name, words] :
         {std::pair("folder.png", "folder.png: Is a directory"),
          {"absent/a.png", "absent/a.png: No such file or directory"},
          {"full.pgm", "full.pgm: No space left on device"},
          {"full.tif", "full.tif: No space left on device"},
          {"a.gif", "a.gif: its extension is not one of .png, .pgm, .ppm, .pnm, .pam, .raw, .tif, .tiff, .dng"},
          {"png", "png: its extension is not one of"}}) {
        EXPECT_THAT(writeOutcome(image, name), HasSubstr(words));
    }
    // A disk that is full in the middle of the file.
    const auto handler = std::signal(SIGXFSZ, SIG_IGN);
    rlimit before = {};
    ::getrlimit(RLIMIT_FSIZE, &before);
    const rlimit tight = {20, before.rlim_max};
    ::setrlimit(RLIMIT_FSIZE, &tight);
    const std::string outcomes =
        writeOutcome(image, "old.pgm") + writeOutcome(image, "new.png") + writeOutcome(image, "new.tif");
    ::setrlimit(RLIMIT_FSIZE, &before);
    std::signal(SIGXFSZ, handler);
    EXPECT_THAT(outcomes, HasSubstr("old.pgm: File too large"));
    EXPECT_THAT(outcomes, HasSubstr("new.png: File too large"));
    EXPECT_THAT(outcomes, HasSubstr("new.tif: File too large"));
    EXPECT_EQ(TestSupport::readFile(m_Folder.file("old.pgm")), "old");

    EXPECT_EQ(writeOutcome(image, "link.pgm"), "written");
    EXPECT_TRUE(std::filesystem::is_symlink(m_Folder.file("link.pgm")));
    EXPECT_EQ(readOutcome("old.pgm"), described(*image));
    EXPECT_EQ(std::filesystem::status(m_Folder.file("old.pgm")).permissions(), std::filesystem::perms(0640));
    const std::filesystem::directory_iterator files(m_Folder.path());
    EXPECT_EQ(std::distance(begin(files), end(files)), 5);
    EXPECT_THROW(QuillTool::requireWritableType({"a.jpg"s}), ImageFileError);
    EXPECT_NO_THROW(QuillTool::requireWritableType({"a.PnG"s}));
}

} // namespace
