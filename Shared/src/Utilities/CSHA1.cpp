#include "Utilities/CSHA1.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <iterator>
#include <memory>
#include <new>
#include <utility>

namespace {

using Word = unsigned int;
static_assert(sizeof(Word) == 4);

constexpr Word kInitialState[5] = {0x67452301, 0xEFCDAB89, 0x98BADCFE, 0x10325476, 0xC3D2E1F0};
constexpr std::size_t kBlockBytes = 64;
constexpr std::size_t kLengthOffset = 56; // of the message length in the last block
constexpr std::size_t kFilePieceBytes = 524800;

constexpr Word rotateLeft(Word value, int bits) {
    return (value << bits) | (value >> (32 - bits));
}

Word readBigEndian(const unsigned char* bytes) {
    return Word{bytes[0]} << 24 | Word{bytes[1]} << 16 | Word{bytes[2]} << 8 | Word{bytes[3]};
}

void writeBigEndian(Word word, unsigned char* bytes) {
    for (int index = 0; index < 4; ++index) {
        bytes[index] = static_cast<unsigned char>(word >> (24 - 8 * index));
    }
}

/// The function and the constant of a round, which change every twenty rounds.
template <int Round>
constexpr Word mix(Word b, Word c, Word d) {
    if constexpr (Round < 20) {
        return (d ^ (b & (c ^ d))) + 0x5A827999;
    } else if constexpr (Round < 40) {
        return (b ^ c ^ d) + 0x6ED9EBA1;
    } else if constexpr (Round < 60) {
        return ((b & c) | (d & (b | c))) + 0x8F1BBCDC;
    } else {
        return (b ^ c ^ d) + 0xCA62C1D6;
    }
}

/// One round. The 80 words of the schedule live in a ring of 16, which starts as the block.
template <int Round>
[[gnu::always_inline]] inline void step(Word* ring, const Word& a, Word& b, const Word& c, const Word& d, Word& e) {
    Word& word = ring[Round % 16];
    if constexpr (Round >= 16) {
        word = rotateLeft(ring[(Round + 13) % 16] ^ ring[(Round + 8) % 16] ^ ring[(Round + 2) % 16] ^ word, 1);
    }
    e += rotateLeft(a, 5) + mix<Round>(b, c, d) + word;
    b = rotateLeft(b, 30);
}

/// Five rounds, after which every variable has its own role again.
template <int Round>
[[gnu::always_inline]] inline void fiveSteps(Word* ring, Word& a, Word& b, Word& c, Word& d, Word& e) {
    step<Round>(ring, a, b, c, d, e);
    step<Round + 1>(ring, e, a, b, c, d);
    step<Round + 2>(ring, d, e, a, b, c);
    step<Round + 3>(ring, c, d, e, a, b);
    step<Round + 4>(ring, b, c, d, e, a);
}

template <int... Fives>
[[gnu::always_inline]] inline void allSteps(Word* ring, Word& a, Word& b, Word& c, Word& d, Word& e,
                                            std::integer_sequence<int, Fives...> /*rounds*/) {
    (fiveSteps<5 * Fives>(ring, a, b, c, d, e), ...);
}

/// How one byte is written in a report.
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
    void operator()(std::FILE* file) const { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, CloseFile>;

File openFile(const wchar_t* path) {
    try {
        return File(std::fopen(std::filesystem::path(path).string().c_str(), "rb"));
    } catch (const std::exception&) {
        return nullptr; // a path that is no text
    }
}

} // namespace

CSHA1::CSHA1() : m_Buffer{}, m_Digest{} {
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
    Word ring[16]; // a local: in registers and free of aliases, which a member is not
    for (std::size_t index = 0; index < std::size(ring); ++index) {
        ring[index] = readBigEndian(block + 4 * index);
    }
    auto [a, b, c, d, e] = std::array{state[0], state[1], state[2], state[3], state[4]};
    allSteps(ring, a, b, c, d, e, std::make_integer_sequence<int, 16>());
    state[0] += a;
    state[1] += b;
    state[2] += c;
    state[3] += d;
    state[4] += e;
}

void CSHA1::Update(const unsigned char* data, unsigned int length) {
    std::size_t pending = m_Count[0] / 8 % kBlockBytes;
    const std::uint64_t bits = (std::uint64_t{m_Count[1]} << 32 | m_Count[0]) + std::uint64_t{length} * 8;
    m_Count[0] = static_cast<Word>(bits);
    m_Count[1] = static_cast<Word>(bits >> 32);

    std::size_t taken = 0;
    if (pending + length >= kBlockBytes) {
        taken = kBlockBytes - pending;
        std::copy_n(data, taken, m_Buffer + pending);
        Transform(m_State, m_Buffer);
        for (; taken + kBlockBytes <= length; taken += kBlockBytes) {
            Transform(m_State, data + taken);
        }
        pending = 0;
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
