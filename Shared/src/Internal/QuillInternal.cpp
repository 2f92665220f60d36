// SPDX-License-Identifier: Apache-2.0

#include "Internal/QuillInternal.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <iterator>
#include <string_view>

#include "OrvexApi/OrvexApi.h"
#include "OrvexApi/OrvexRecords.h"
#include "Utilities/CSHA1.h"

namespace QuillInternal {

namespace {

constexpr std::uint32_t kAfeMetadataAddress = 0x190F00;

constexpr std::size_t kAfeMetadataBytes = 256;
constexpr unsigned char kErased = 0xFF;
constexpr std::size_t kExtensionCharacters = 4;
constexpr std::uint8_t kFpga2Target = 6; // registers 0 and 1: high and low byte of the version

static_assert(offsetof(Usb3VisionInfo, fileSize) == 4);
static_assert(offsetof(Usb3VisionInfo, fileHash) == 12);

/// The start of the hexadecimal digits that end at a position, at most two.
std::size_t hexadecimalDigitsBefore(std::string_view text, std::size_t end) {
    constexpr std::size_t kMaximumDigits = 2;
    std::size_t begin = end;
    while (begin > 0 && end - begin < kMaximumDigits &&
           std::string_view("0123456789abcdefABCDEF").find(text[begin - 1]) != std::string_view::npos) {
        --begin;
    }
    return begin;
}

} // namespace

std::vector<unsigned char> calculateSha1Hash(const std::vector<unsigned char>& data) {
    constexpr std::size_t kPieceBytes = std::size_t{1} << 30; // fits into a 32-bit length
    CSHA1 hasher;
    for (std::size_t offset = 0; offset < data.size(); offset += kPieceBytes) {
        hasher.Update(data.data() + offset, static_cast<unsigned int>(std::min(kPieceBytes, data.size() - offset)));
    }
    hasher.Final();
    std::vector<unsigned char> hash(20);
    hasher.GetHash(hash.data());
    return hash;
}

bool isUsb3VisionInfoValid(const Usb3VisionInfo& info) {
    return info.fileSize != 0 && info.fileSize <= kUsb3VisionFileMaximumSize;
}

bool isUsb3VisionFileValid(const std::vector<unsigned char>& file, const Usb3VisionInfo& info) {
    const std::vector<unsigned char> hash = calculateSha1Hash(file);
    return std::equal(hash.begin(), hash.end(), std::begin(info.fileHash), std::end(info.fileHash));
}

namespace Orvex {

using OrvexAdapter::orvexApi;

bool OrvexReadUsb3VisionInfo(void* handle, Usb3VisionInfo& info) {
    return orvexApi().sdkReadFlash(handle, reinterpret_cast<std::uint8_t*>(&info), kUsb3VisionInfoAddress,
                                   sizeof(info)) != 0;
}

bool OrvexWriteUsb3VisionInfo(void* handle, Usb3VisionInfo& info) {
    return orvexApi().sdkUpdateFlash(handle, reinterpret_cast<const std::uint8_t*>(&info), kUsb3VisionInfoAddress,
                                     sizeof(info)) != 0;
}

bool OrvexReadUsb3VisionFile(void* handle, Usb3VisionInfo& info, std::vector<unsigned char>& file) {
    if (info.fileSize > kUsb3VisionFileMaximumSize) {
        return false;
    }
    file.resize(info.fileSize);
    return orvexApi().sdkReadFlash(handle, file.data(), kUsb3VisionFileAddress, info.fileSize) != 0;
}

bool OrvexHasValidUsb3VisionFile(void* handle) {
    Usb3VisionInfo info{};
    std::vector<unsigned char> file;
    return OrvexReadUsb3VisionInfo(handle, info) && isUsb3VisionInfoValid(info) &&
           OrvexReadUsb3VisionFile(handle, info, file) && isUsb3VisionFileValid(file, info);
}

bool OrvexReadAfeMetadata(void* handle, std::vector<unsigned char>& data) {
    data.resize(kAfeMetadataBytes);
    return orvexApi().sdkReadFlash(handle, data.data(), kAfeMetadataAddress, kAfeMetadataBytes) != 0;
}

bool OrvexGetAfeTimingVersion(void* handle, std::string& version) {
    std::vector<unsigned char> data;
    if (!OrvexReadAfeMetadata(handle, data) || data.front() == kErased) {
        return false;
    }
    const std::string fileName(data.begin(), std::find(data.begin(), data.end(), 0));
    if (fileName.size() < kExtensionCharacters) {
        return false;
    }
    // One or two digits, a full stop, one or two digits.
    const std::string name = fileName.substr(0, fileName.size() - kExtensionCharacters);
    const std::size_t low = hexadecimalDigitsBefore(name, name.size());
    if (low == 0 || low == name.size() || name[low - 1] != '.') {
        return false;
    }
    const std::size_t high = hexadecimalDigitsBefore(name, low - 1);
    if (high == low - 1) {
        return false;
    }
    version = name.substr(high);
    return true;
}

bool OrvexGetFpga2Version(void* handle, unsigned short& version) {
    version = 0;
    ORVEX_VERSION versions{};
    if (orvexApi().sdkQueryVersion(handle, &versions) == 0 || !isFpga2Available(versions)) {
        return false;
    }
    std::array<std::uint8_t, 2> bytes{};
    for (std::uint32_t address = 0; address < bytes.size(); ++address) {
        if (orvexApi().sdkRegisterRead(handle, kFpga2Target, address, 1, &bytes[address]) == 0) {
            return false;
        }
    }
    version = static_cast<unsigned short>(bytes[0] << 8 | bytes[1]);
    return true;
}

bool isFpga2Available(const ORVEX_VERSION& version) {
    return version.firmware >= 0x100 && version.fpga != 0;
}

} // namespace Orvex

} // namespace QuillInternal
