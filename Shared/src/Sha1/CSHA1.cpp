// SPDX-License-Identifier: Apache-2.0

#include "Utilities/CSHA1.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <exception>
#include <iterator>
#include <memory>
#include <new>
#include <utility>

#include "Base/FilePath.h"
#include "Sha1/Sha1Compression.h"

namespace {

using Word = unsigned int;
static_assert(sizeof(Word) == 4);

constexpr Word kInitialState[5] = {0x67452301, 0xEFCDAB89, 0x98BADCFE, 0x10325476, 0xC3D2E1F0};
constexpr std::size_t kBlockBytes = 64;
constexpr std::size_t kLengthOffset = 56; // of the message length in the last block
constexpr std::size_t kFilePieceBytes = 524800;

void writeBigEndian(Word word, unsigned char* bytes) {
    for (int index = 0; index < 4; ++index) {
        bytes[index] = static_cast<unsigned char>(word >> (24 - 8 * index));
    }
}

/// The format of one byte in a report.
struct ReportFormat {
    const wchar_t* digits;
    unsigned base;
    bool padded;
    bool spaced;
};

constexpr ReportFormat kReportFormats[] = {
    {L"0123456789ABCDEF", 16, true, true},  // REPORT_HEX_SPACED
    {L"0123456789", 10, false, true},       // REPORT_DECIMAL
    {L"0123456789ABCDEF", 16, true, false}, // REPORT_HEX_COMPACT
};

void appendByte(std::wstring& text, unsigned byte, const ReportFormat& format) {
    std::wstring digits;
    for (unsigned rest = byte; rest != 0 || digits.empty(); rest /= format.base) {
        digits += format.digits[rest % format.base];
    }
    if (format.padded) {
        digits.resize(2, L'0');
    }
    text.append(digits.rbegin(), digits.rend());
}

struct CloseFile {
    void operator()(std::FILE* file) const { static_cast<void>(std::fclose(file)); } // only read
};
using File = std::unique_ptr<std::FILE, CloseFile>;

File openFile(const wchar_t* path) {
    try {
        return File(Base::openToRead(path));
    } catch (const std::exception&) {
        return nullptr; // the path is not valid text
    }
}

} // namespace

CSHA1::CSHA1() {
    Reset();
}

CSHA1::~CSHA1() {
    Reset();
}

void CSHA1::Reset() {
    std::copy(std::begin(kInitialState), std::end(kInitialState), m_State);
    std::fill(std::begin(m_Count), std::end(m_Count), 0U);
}

void CSHA1::Transform(unsigned int* state, const unsigned char* block) {
    Utilities::fastestSha1Compression()(state, block, 1);
}

void CSHA1::Update(const unsigned char* data, unsigned int length) {
    std::size_t pending = m_Count[0] / 8 % kBlockBytes;
    const std::uint64_t bits = (std::uint64_t{m_Count[1]} << 32 | m_Count[0]) + std::uint64_t{length} * 8;
    m_Count[0] = static_cast<Word>(bits);
    m_Count[1] = static_cast<Word>(bits >> 32);

    std::size_t taken = 0;
    if (pending + length >= kBlockBytes) {
        if (pending != 0) {
            taken = kBlockBytes - pending;
            std::copy_n(data, taken, m_Buffer + pending);
            Transform(m_State, m_Buffer);
            pending = 0;
        }
        const std::size_t blocks = (length - taken) / kBlockBytes;
        Utilities::fastestSha1Compression()(m_State, data + taken, blocks);
        taken += blocks * kBlockBytes;
    }
    std::copy_n(data + taken, length - taken, m_Buffer + pending);
}

void CSHA1::Final() {
    unsigned char length[8];
    writeBigEndian(m_Count[1], length);
    writeBigEndian(m_Count[0], length + 4);

    static constexpr unsigned char kPadding[kBlockBytes] = {0x80};
    const std::size_t pending = m_Count[0] / 8 % kBlockBytes;
    const std::size_t padding = (pending < kLengthOffset ? kLengthOffset : kLengthOffset + kBlockBytes) - pending;
    Update(kPadding, static_cast<unsigned int>(padding));
    Update(length, sizeof(length));

    for (std::size_t index = 0; index < std::size(m_State); ++index) {
        writeBigEndian(m_State[index], m_Digest + 4 * index);
    }

    // No trace of the message stays behind.
    std::fill(std::begin(m_Buffer), std::end(m_Buffer), static_cast<unsigned char>(0));
    std::fill(std::begin(m_State), std::end(m_State), 0U);
    std::fill(std::begin(m_Count), std::end(m_Count), 0U);
}

bool CSHA1::HashFile(const wchar_t* path) {
    const File file = path != nullptr ? openFile(path) : nullptr;
    const std::unique_ptr<unsigned char[]> piece(new (std::nothrow) unsigned char[kFilePieceBytes]);
    if (file == nullptr || piece == nullptr) {
        return false;
    }
    std::size_t length = kFilePieceBytes;
    while (length == kFilePieceBytes) {
        length = std::fread(piece.get(), 1, kFilePieceBytes, file.get());
        Update(piece.get(), static_cast<unsigned int>(length));
    }
    return std::feof(file.get()) != 0;
}

bool CSHA1::GetHash(unsigned char* out) const {
    if (out == nullptr) {
        return false;
    }
    std::copy(std::begin(m_Digest), std::end(m_Digest), out);
    return true;
}

bool CSHA1::ReportHash(wchar_t* out, REPORT_TYPE type) const {
    std::wstring text;
    if (out == nullptr || !ReportHashStl(text, type)) {
        return false;
    }
    std::copy_n(text.c_str(), text.size() + 1, out);
    return true;
}

bool CSHA1::ReportHashStl(std::wstring& out, REPORT_TYPE type) const {
    if (static_cast<std::size_t>(type) >= std::size(kReportFormats)) {
        return false;
    }
    const ReportFormat& format = kReportFormats[type];
    std::wstring text;
    for (const unsigned char byte : m_Digest) {
        if (format.spaced && !text.empty()) {
            text += L' ';
        }
        appendByte(text, byte, format);
    }
    out = std::move(text);
    return true;
}
