#include "Utilities/CSHA1.h"

#include <algorithm>
#include <array>
#include <memory>
#include <random>

#include <gtest/gtest.h>

#include "Support/TemporaryFolder.h"
#include "Utilities/Sha1Compression.h"

namespace {

std::wstring report(const CSHA1& hasher, CSHA1::REPORT_TYPE type = CSHA1::REPORT_HEX_COMPACT) {
    std::wstring text;
    EXPECT_TRUE(hasher.ReportHashStl(text, type));
    return text;
}

void update(CSHA1& hasher, const std::string& data) {
    hasher.Update(reinterpret_cast<const unsigned char*>(data.data()), static_cast<unsigned>(data.size()));
}

std::wstring digestOf(const std::string& data) {
    CSHA1 hasher;
    update(hasher, data);
    hasher.Final();
    return report(hasher);
}

// Examples of FIPS 180-2, appendix A, and of NIST's secure hashing example values.
TEST(CSHA1, GivesThePublishedDigests) {
    EXPECT_EQ(digestOf(""), L"DA39A3EE5E6B4B0D3255BFEF95601890AFD80709");
    EXPECT_EQ(digestOf("abc"), L"A9993E364706816ABA3E25717850C26C9CD0D89D");
    EXPECT_EQ(digestOf("abcdbcdecdefdefgefghfghighijhijkijkljklmklmnlmnomnopnopq"),
              L"84983E441C3BD26EBAAE4AA1F95129E5E54670F1");
    EXPECT_EQ(digestOf(std::string(1000000, 'a')), L"34AA973CD4C4DAA4F61EEB2BDBAD27316534016F");
}

std::string bytesOf(const std::string& hexadecimal) {
    std::string bytes;
    for (std::size_t place = 0; place < hexadecimal.size(); place += 2) {
        bytes += static_cast<char>(std::stoi(hexadecimal.substr(place, 2), nullptr, 16));
    }
    return bytes;
}

// Of NIST's validation programme (CAVP, byte-oriented): short messages, and the first checkpoint of the Monte Carlo
// test.
TEST(CSHA1, GivesTheDigestsOfTheValidationProgramme) {
    const std::pair<const char*, const wchar_t*> messages[] = {
        {"36", L"C1DFD96EEA8CC2B62785275BCA38AC261256E278"},
        {"195A", L"0A1C2D555BBE431AD6288AF5A54F93E0449C9232"},
        {"DF4BD2", L"BF36ED5D74727DFD5D7854EC6B1D49468D8EE8AA"},
        {"549E959E", L"B78BAE6D14338FFCCFD5D5B5674A275F6EF9C717"},
        {"45927E32DDF801CAF35E18E7B5078B7F5435278212EC6BB99DF884F49B327C6486FEAE46BA187DC1CC9145121E1492E6B06E9007394D"
         "C33B7748F86AC3207CFE",
         L"A70CFBFE7563DD0E665C7C6715A96A8D756950C0"},
    };
    for (const auto& [message, digest] : messages) {
        EXPECT_EQ(digestOf(bytesOf(message)), digest);
    }
    std::array<std::string, 3> chain;
    chain.fill(bytesOf("DD4DF644EAF3D85BACE2B21ACCAA22B28821F5CD"));
    for (int step = 0; step < 1000; ++step) {
        CSHA1 hasher;
        update(hasher, chain[0] + chain[1] + chain[2]);
        hasher.Final();
        std::string digest(20, '\0');
        hasher.GetHash(reinterpret_cast<unsigned char*>(digest.data()));
        chain = {chain[1], chain[2], digest};
    }
    EXPECT_EQ(chain[2], bytesOf("11F5C38B4479D4AD55CB69FADF62DE0B036D5163"));
}

TEST(CSHA1, PiecesOfAnySizeGiveTheSameDigest) {
    for (const std::size_t length : {55, 56, 63, 64, 65, 119, 120, 128, 1000}) {
        std::string message(length, '\0');
        std::generate(message.begin(), message.end(), [next = 0]() mutable { return static_cast<char>(next += 37); });
        for (std::size_t size = 1; size <= 200; ++size) {
            CSHA1 hasher;
            for (std::size_t begin = 0; begin < length; begin += size) {
                update(hasher, message.substr(begin, size));
            }
            hasher.Final();
            EXPECT_EQ(report(hasher), digestOf(message)) << length << " in pieces of " << size;
        }
    }
}

TEST(CSHA1, InstructionsCompressAsPortableCodeDoes) {
    const Utilities::Sha1Compression byInstructions = Utilities::sha1CompressionByInstructions();
    if (byInstructions == nullptr) {
        GTEST_SKIP() << "This processor has no SHA instructions.";
    }
    std::array<unsigned char, 64 * 20> blocks{};
    std::mt19937 random(1);
    std::generate(blocks.begin(), blocks.end(), [&] { return static_cast<unsigned char>(random()); });
    for (std::size_t count = 0; count <= 20; ++count) {
        std::array<unsigned, 5> expected{0xFFFFFFFF, 0x80000000, 0x7FFFFFFF, 1, static_cast<unsigned>(random())};
        std::array<unsigned, 5> state = expected;
        Utilities::compressSha1Portably(expected.data(), blocks.data(), count);
        byInstructions(state.data(), blocks.data(), count);
        EXPECT_EQ(state, expected) << count << " blocks";
    }
}

// The published digest of "abc" by the portable code alone, whatever this processor has.
TEST(CSHA1, PortableCodeGivesThePublishedDigest) {
    std::array<unsigned char, 64> block{'a', 'b', 'c', 0x80};
    block.back() = 24; // bits
    std::array<unsigned, 5> state{0x67452301, 0xEFCDAB89, 0x98BADCFE, 0x10325476, 0xC3D2E1F0};
    Utilities::compressSha1Portably(state.data(), block.data(), 1);
    EXPECT_EQ(state, (std::array<unsigned, 5>{0xA9993E36, 0x4706816A, 0xBA3E2571, 0x7850C26C, 0x9CD0D89D}));
}

TEST(CSHA1, CountsBeyondTheFirstWordOfBits) {
    // 512 MiB are 2^32 bits; the digest is that of coreutils' sha1sum.
    const std::string piece(1 << 20, 'q');
    CSHA1 hasher;
    for (int count = 0; count < 512; ++count) {
        update(hasher, piece);
    }
    update(hasher, "end");
    hasher.Final();
    EXPECT_EQ(report(hasher), L"3484C9F7B05B4C3A4EE95FD5DC406C6A5D98F828");
}

TEST(CSHA1, ACopyGoesOnWhereItsSourceStood) {
    CSHA1 copy;
    {
        CSHA1 source;
        update(source, std::string(100, 'x'));
        copy = source;
        update(source, "something else");
    }
    update(copy, std::string(30, 'x'));
    copy.Final();
    EXPECT_EQ(report(copy), digestOf(std::string(130, 'x')));
    copy.Reset();
    copy.Final();
    EXPECT_EQ(report(copy), digestOf(""));
}

TEST(CSHA1, ReportsInThreeForms) {
    CSHA1 hasher;
    update(hasher, "abc");
    hasher.Final();
    EXPECT_EQ(report(hasher, CSHA1::REPORT_HEX_SPACED), L"A9 99 3E 36 47 06 81 6A BA 3E 25 71 78 50 C2 6C 9C D0 D8 9D");
    EXPECT_EQ(report(hasher, CSHA1::REPORT_DECIMAL),
              L"169 153 62 54 71 6 129 106 186 62 37 113 120 80 194 108 156 208 216 157");
    wchar_t buffer[80];
    EXPECT_TRUE(hasher.ReportHash(buffer, CSHA1::REPORT_HEX_COMPACT));
    EXPECT_EQ(std::wstring(buffer), report(hasher));
    unsigned char digest[20] = {};
    EXPECT_TRUE(hasher.GetHash(digest));
    EXPECT_EQ(digest[19], 0x9D);
    EXPECT_FALSE(hasher.GetHash(nullptr));
    EXPECT_FALSE(hasher.ReportHash(nullptr, CSHA1::REPORT_DECIMAL));
    std::wstring kept = L"kept";
    EXPECT_FALSE(hasher.ReportHashStl(kept, static_cast<CSHA1::REPORT_TYPE>(3)));
    EXPECT_EQ(kept, L"kept");
}

TEST(CSHA1, HashesWholeFiles) {
    const TestSupport::TemporaryFolder folder;
    for (const std::size_t length : {0, 1, 524799, 524800, 524801}) {
        const std::string content(length, 'f');
        CSHA1 hasher;
        update(hasher, "before ");
        EXPECT_TRUE(hasher.HashFile(std::filesystem::path(folder.write("file", content)).wstring().c_str()));
        hasher.Final();
        EXPECT_EQ(report(hasher), digestOf("before " + content)) << length;
    }
    CSHA1 hasher;
    folder.write("\xC3\xA4\xE4\xB8\x80\xF0\x9F\x93\xB7", "abc");
    EXPECT_TRUE(hasher.HashFile((folder.path().wstring() + L"/\u00E4\u4E00\U0001F4F7").c_str()));
    hasher.Final();
    EXPECT_EQ(report(hasher), digestOf("abc"));
    EXPECT_FALSE(hasher.HashFile((folder.path().wstring() + L"/\u00E5").c_str()));
    EXPECT_FALSE(hasher.HashFile(nullptr));
    EXPECT_FALSE(hasher.HashFile((folder.path() / "missing").wstring().c_str()));
    EXPECT_FALSE(hasher.HashFile(folder.path().wstring().c_str())) << "a folder cannot be read";
}

} // namespace
