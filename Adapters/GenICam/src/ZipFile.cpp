// SPDX-License-Identifier: Apache-2.0

#include "ZipFile.h"

#include <algorithm>
#include <cstdint>
#include <stdexcept>
#include <string_view>

#include "GObjects.h"

namespace GenICamAdapter {

namespace {

using namespace std::string_view_literals;

constexpr auto kLocalMark = "PK\3\4"sv;
constexpr auto kDirectoryMark = "PK\1\2"sv;
constexpr auto kEndMark = "PK\5\6"sv;
constexpr std::size_t kLocalSize = 30;
constexpr std::size_t kDirectorySize = 46;
constexpr std::size_t kEndSize = 22;
constexpr std::uint64_t kStored = 0;
constexpr std::uint64_t kDeflated = 8;

[[noreturn]] void refuse(const char* why) {
    throw std::runtime_error(std::string("Its description is a ZIP file that ") + why + ".");
}

std::uint64_t littleEndian(std::string_view record, std::size_t at, std::size_t bytes) {
    std::uint64_t number = 0;
    while (bytes-- > 0) {
        number = number << 8 | static_cast<unsigned char>(record[at + bytes]);
    }
    return number;
}

std::string_view recordAt(std::string_view bytes, std::uint64_t at, std::size_t size, std::string_view mark) {
    if (at > bytes.size() || bytes.size() - at < size || bytes.substr(at, mark.size()) != mark) {
        refuse("is broken");
    }
    return bytes.substr(at, size);
}

std::string inflate(std::string_view packed, std::size_t size) {
    const ObjectPointer<GConverter> decompressor(G_CONVERTER(g_zlib_decompressor_new(G_ZLIB_COMPRESSOR_FORMAT_RAW)));
    std::string expanded(size + 1, '\0'); // one more, by which a wrong size shows
    gsize written = 0;
    for (auto result = G_CONVERTER_CONVERTED; result != G_CONVERTER_FINISHED;) {
        gsize taken = 0;
        gsize made = 0;
        Failure failure;
        result = g_converter_convert(decompressor.get(), packed.data(), packed.size(), &expanded[written],
                                     expanded.size() - written, G_CONVERTER_INPUT_AT_END, &taken, &made, failure.out());
        packed.remove_prefix(taken);
        written += made;
        if (result == G_CONVERTER_ERROR || written > size) {
            refuse("is broken");
        }
    }
    if (written != size) {
        refuse("is broken");
    }
    expanded.pop_back();
    return expanded;
}

} // namespace

bool isZipped(const std::string& bytes) {
    return bytes.compare(0, kLocalMark.size(), kLocalMark) == 0;
}

std::string unzipFirst(const std::string& bytes, std::size_t mostBytes) {
    const std::string_view file = bytes;
    const std::size_t endAt = file.rfind(kEndMark);
    const std::string_view end = recordAt(file, endAt, kEndSize, kEndMark);
    const std::string_view entry = recordAt(file, littleEndian(end, 16, 4), kDirectorySize, kDirectoryMark);
    const std::uint64_t method = littleEndian(entry, 10, 2);
    const std::uint64_t packedSize = littleEndian(entry, 20, 4);
    const std::uint64_t size = littleEndian(entry, 24, 4);
    const std::uint64_t localAt = littleEndian(entry, 42, 4);
    if (size > mostBytes) {
        refuse("expands to more than any description has");
    }
    const std::string_view local = recordAt(file, localAt, kLocalSize, kLocalMark);
    const std::uint64_t dataAt = localAt + kLocalSize + littleEndian(local, 26, 2) + littleEndian(local, 28, 2);
    if (dataAt > file.size() || file.size() - dataAt < packedSize || (method == kStored && size != packedSize)) {
        refuse("is broken");
    }
    const std::string_view packed = file.substr(dataAt, packedSize);
    if (method != kStored && method != kDeflated) {
        refuse("is compressed in an unknown way");
    }
    return method == kStored ? std::string(packed) : inflate(packed, size);
}

} // namespace GenICamAdapter
