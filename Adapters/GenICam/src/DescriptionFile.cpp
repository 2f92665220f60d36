// SPDX-License-Identifier: Apache-2.0

#include "DescriptionFile.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <stdexcept>
#include <utility>

#include "DescriptionCheck.h"
#include "Gvcp.h"
#include "ZipFile.h"

namespace GenICamAdapter {

namespace {

/// Bytes in a camera, possibly zipped; those of real cameras have at most a tenth.
constexpr std::uint64_t kLargestDescription = 16 << 20;
/// Bytes that are asked for before the memory for more is taken.
constexpr std::size_t kPart = std::size_t{64} << 10;

void requireAnswer(ControlChannel& channel, const ControlChannel::Result& result) {
    if (!result) {
        throw std::runtime_error(channel.isPastDeadline() ? "The camera takes too long to send its description."
                                                          : result.text());
    }
}

std::string printable(std::string text) {
    std::replace_if(
        text.begin(), text.end(), [](char c) { return c < ' ' || c > '~'; }, '?');
    return text;
}

/// The place in the camera; nothing if the register has no URL.
std::optional<Gvcp::DescriptionPlace> readPlace(ControlChannel& channel, std::uint32_t urlRegister) {
    std::array<std::uint8_t, Gvcp::kUrlSize> bytes{};
    const auto result = channel.readMemory(urlRegister, bytes.data(), bytes.size());
    if (urlRegister == Gvcp::Registers::kSecondUrl && result.kind == ControlChannel::Result::Kind::Refused) {
        return std::nullopt; // older cameras have one
    }
    requireAnswer(channel, result);
    const std::string url(bytes.begin(), std::find(bytes.begin(), bytes.end(), 0));
    const auto place = Gvcp::placeOfDescription(url);
    if (!url.empty() && (!place || place->size == 0 || place->size > kLargestDescription)) {
        throw std::runtime_error("Its description is not in the camera, or too large: " + printable(url));
    }
    return place;
}

} // namespace

std::string fetchDescription(ControlChannel& channel) {
    auto place = readPlace(channel, Gvcp::Registers::kFirstUrl);
    if (!place) {
        place = readPlace(channel, Gvcp::Registers::kSecondUrl);
    }
    if (!place) {
        throw std::runtime_error("The camera has no description.");
    }
    std::string file;
    while (file.size() < place->size) {
        const std::size_t done = file.size();
        file.resize(std::min<std::size_t>(place->size, done + kPart));
        requireAnswer(channel, channel.readMemory(place->address + static_cast<std::uint32_t>(done),
                                                  reinterpret_cast<std::uint8_t*>(&file[done]), file.size() - done));
    }
    if (isZipped(file)) {
        file = unzipFirst(file, kLargestXml);
    }
    file.resize(checkDescription(file));
    return file;
}

} // namespace GenICamAdapter
