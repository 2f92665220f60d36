// SPDX-License-Identifier: Apache-2.0

#include "Cameras/SimulatedCamera/SparseMemory.h"

#include <algorithm>

namespace CameraInterface::SimulatedAdapter {

namespace {

/// Calls @p visit with page number, offset in the page and length of each part of a range that lies in one page.
template <typename Visit>
void forEachPage(std::uint32_t address, std::uint64_t length, std::uint32_t pageSize, Visit visit) {
    while (length > 0) {
        const std::uint32_t offset = address % pageSize;
        const auto part = static_cast<std::uint32_t>(std::min<std::uint64_t>(length, pageSize - offset));
        visit(address / pageSize, offset, part);
        address += part; // modulo 2^32
        length -= part;
    }
}

} // namespace

std::string SparseMemory::read(std::uint32_t address, std::uint32_t length) const {
    std::string data(length, static_cast<char>(m_Untouched));
    auto to = data.begin();
    forEachPage(address, length, kPageSize, [&](std::uint32_t number, std::uint32_t offset, std::uint32_t part) {
        if (const auto page = m_Pages.find(number); page != m_Pages.end()) {
            std::copy_n(page->second.begin() + offset, part, to);
        }
        to += part;
    });
    return data;
}

void SparseMemory::write(std::uint32_t address, const std::string& data) {
    auto from = data.begin();
    forEachPage(address, data.size(), kPageSize, [&](std::uint32_t number, std::uint32_t offset, std::uint32_t part) {
        const auto [page, isNew] = m_Pages.try_emplace(number);
        if (isNew) {
            page->second.fill(m_Untouched);
        }
        std::copy_n(from, part, page->second.begin() + offset);
        from += part;
    });
}

void SparseMemory::clear(std::uint32_t address, std::uint32_t length) {
    const std::uint64_t end = std::uint64_t{address} + length;
    auto page = m_Pages.lower_bound(address / kPageSize);
    while (page != m_Pages.end() && std::uint64_t{page->first} * kPageSize < end) {
        const std::uint64_t begin = std::uint64_t{page->first} * kPageSize;
        if (begin >= address && begin + kPageSize <= end) {
            page = m_Pages.erase(page);
            continue;
        }
        const auto from = static_cast<std::uint32_t>(std::max<std::uint64_t>(begin, address) - begin);
        const auto to = static_cast<std::uint32_t>(std::min<std::uint64_t>(begin + kPageSize, end) - begin);
        std::fill(page->second.begin() + from, page->second.begin() + to, m_Untouched);
        ++page;
    }
}

} // namespace CameraInterface::SimulatedAdapter
