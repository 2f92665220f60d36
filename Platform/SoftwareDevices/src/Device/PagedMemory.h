// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <map>
#include <vector>

namespace SoftwareDevices {

/// Bytes by 32-bit address, of which only written pages take space. Not thread-safe.
class PagedMemory {
public:
    /// @param fill  the value of bytes that were never written
    explicit PagedMemory(std::uint8_t fill) : m_Fill(fill) {}

    /// Calls change(bytes in memory, offset in the range, number of bytes) for each part of the range.
    template <class Change>
    void change(std::uint32_t address, std::uint32_t length, Change change) {
        forEachPiece(address, length,
                     [&](std::uint32_t page, std::uint32_t start, std::uint32_t done, std::uint32_t bytes) {
                         std::vector<std::uint8_t>& content = m_Pages[page];
                         content.resize(kPageSize, m_Fill);
                         change(content.data() + start, done, bytes);
                     });
    }

    void write(std::uint32_t address, const std::uint8_t* data, std::uint32_t length) {
        change(address, length, [data](std::uint8_t* cells, std::uint32_t done, std::uint32_t bytes) {
            std::copy_n(data + done, bytes, cells);
        });
    }

    void read(std::uint32_t address, std::uint8_t* buffer, std::uint32_t length) const {
        forEachPiece(address, length,
                     [&](std::uint32_t page, std::uint32_t start, std::uint32_t done, std::uint32_t bytes) {
                         const auto found = m_Pages.find(page);
                         if (found == m_Pages.end()) {
                             std::fill_n(buffer + done, bytes, m_Fill);
                         } else {
                             std::copy_n(found->second.data() + start, bytes, buffer + done);
                         }
                     });
    }

    /// Restores the initial value; whole pages no longer take space.
    void reset(std::uint32_t address, std::uint32_t length) {
        forEachPiece(address, length, [&](std::uint32_t page, std::uint32_t start, std::uint32_t, std::uint32_t bytes) {
            const auto found = m_Pages.find(page);
            if (found == m_Pages.end()) {
                return;
            }
            if (bytes == kPageSize) {
                m_Pages.erase(found);
            } else {
                std::fill_n(found->second.data() + start, bytes, m_Fill);
            }
        });
    }

    std::size_t bytesInUse() const { return m_Pages.size() * kPageSize; }

private:
    static constexpr std::uint32_t kPageSize = 4096;

    template <class Visit>
    static void forEachPiece(std::uint32_t address, std::uint32_t length, Visit visit) {
        for (std::uint32_t done = 0; done < length;) {
            const std::uint32_t start = (address + done) % kPageSize;
            const std::uint32_t bytes = std::min(kPageSize - start, length - done);
            visit((address + done) / kPageSize, start, done, bytes);
            done += bytes;
        }
    }

    const std::uint8_t m_Fill;
    std::map<std::uint32_t, std::vector<std::uint8_t>> m_Pages;
};

} // namespace SoftwareDevices
