// SPDX-License-Identifier: Apache-2.0

#include "Blocks.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <new>

namespace CInterface {

namespace {

/// Small things share pieces of this size, from the second piece on.
constexpr std::size_t kPieceSize = 4096;

} // namespace

void Block::free(Piece* piece) noexcept {
    while (piece != nullptr) {
        Piece* const next = piece->next;
        std::free(piece);
        piece = next;
    }
}

void Block::freeGiven(void* first) noexcept {
    if (first != nullptr) {
        free(static_cast<Piece*>(first) - 1);
    }
}

void* Block::allocate(std::size_t size) {
    size = (size + kAlignment - 1) / kAlignment * kAlignment;
    if (size > m_Left) {
        const std::size_t space = m_First == nullptr ? size : std::max(size, kPieceSize);
        auto* const piece = static_cast<Piece*>(std::malloc(sizeof(Piece) + space));
        if (piece == nullptr) {
            throw std::bad_alloc();
        }
        piece->next = nullptr;
        if (m_First == nullptr) {
            m_First = piece;
        } else {
            piece->next = m_First->next;
            m_First->next = piece;
        }
        m_Begin = reinterpret_cast<unsigned char*>(piece + 1);
        m_Left = space;
    }
    void* const result = m_Begin;
    m_Begin += size;
    m_Left -= size;
    return result;
}

char* Block::text(std::string_view text) {
    char* const copy = static_cast<char*>(allocate(text.size() + 1));
    *std::copy(text.begin(), text.end(), copy) = 0;
    return copy;
}

quill_entry* Block::entries(const std::map<std::string, std::string>& pairs) {
    auto* const list = array<quill_entry>(pairs.size());
    std::size_t count = 0;
    for (const auto& [key, value] : pairs) {
        list[count++] = {text(key), text(value)};
    }
    return list;
}

char** Block::texts(const std::vector<std::string>& list) {
    char** const copies = array<char*>(list.size());
    std::transform(list.begin(), list.end(), copies, [this](const std::string& item) { return text(item); });
    return copies;
}

char* copyText(const std::string& text) {
    void* const memory = std::malloc(sizeof(Block::Piece) + text.size() + 1);
    if (memory == nullptr) {
        throw std::bad_alloc();
    }
    auto* const piece = ::new (memory) Block::Piece{nullptr};
    return static_cast<char*>(std::memcpy(piece + 1, text.c_str(), text.size() + 1));
}

void giveEntries(const std::map<std::string, std::string>& pairs, quill_entry** result, size_t* count) {
    Block block;
    block.give(block.entries(pairs), result);
    *count = pairs.size();
}

void giveTexts(const std::vector<std::string>& list, char*** result, size_t* count) {
    Block block;
    block.give(block.texts(list), result);
    *count = list.size();
}

} // namespace CInterface

void quill_free(void* block) {
    CInterface::Block::freeGiven(block);
}
