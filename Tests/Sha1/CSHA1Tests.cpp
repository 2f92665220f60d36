// SPDX-License-Identifier: Apache-2.0

#include "Utilities/CSHA1.h"

#include <algorithm>
#include <array>
#include <random>
#include <utility>

#include <gtest/gtest.h>

#include "Sha1/Sha1Compression.h"
#include "Support/TemporaryFolder.h"

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

// Examples of FIPS 180-2, appendix A, and of NIST's secure hashing example values. The longest message whose length
// fits into its last block has the digest of coreutils' sha1sum.
TEST(CSHA1, GivesThePublishedDigests) {
    const std::pair<std::string, const wchar_t*> messages[] = {
        {"", L"DA39A3EE5E6B4B0D3255BFEF95601890AFD80709"},
        {"abc", L"A9993E364706816ABA3E25717850C26C9CD0D89D"},
        {"abcdbcdecdefdefgefghfghighijhijkijkljklmklmnlmnomnopnopq", L"84983E441C3BD26EBAAE4AA1F95129E5E54670F1"},
        {std::string(55, 'a'), L"C1C8BBDC22796E28C0E15163D20899B65621D65A"},
        {std::string(1000000, 'a'), L"34AA973CD4C4DAA4F61EEB2BDBAD27316534016F"},
    };
    for (const auto& [message, digest] : messages) {
        EXPECT_EQ(digestOf(message), digest) << message.size() << " bytes";
    }
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
    std::array<unsigned char, 20> digest{};
    EXPECT_TRUE(hasher.GetHash(digest.data()));
    EXPECT_EQ(digest, (std::array<unsigned char, 20>{169, 153, 62,  54, 71,  6,   129, 106, 186, 62,
                                                     37,  113, 120, 80, 194, 108, 156, 208, 216, 157}));
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
