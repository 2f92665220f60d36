// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <cstring>
#include <map>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

#include "quillcamera.h"

namespace CInterface {

/// Memory for one result, with everything that it points to. The caller frees it by its first piece, which is the one
/// that was allocated first.
class Block {
public:
    Block() = default;
    Block(const Block&) = delete;
    Block& operator=(const Block&) = delete;
    ~Block() { free(m_First); }

    /// Frees what give() gave away, or nothing for null.
    static void freeGiven(void* first) noexcept;

    /// Returns zeroed memory for a number of objects, and one more, so that lists of pointers end with null and empty
    /// lists have an address.
    template <typename T>
    T* array(std::size_t count) {
        static_assert(std::is_trivial_v<T> && alignof(T) <= kAlignment);
        const std::size_t size = (count + 1) * sizeof(T); // NOLINT(bugprone-sizeof-expression): lists hold pointers
        return static_cast<T*>(std::memset(allocate(size), 0, size));
    }
    /// Returns memory for a number of bytes.
    void* uninitialised(std::size_t size) { return allocate(size); }
    /// Copies one object.
    template <typename T>
    T* make(const T& object) {
        static_assert(std::is_trivially_copyable_v<T>);
        return ::new (allocate(sizeof(T))) T(object);
    }
    /// Copies a text, or bytes, and appends a zero.
    char* text(std::string_view text);
    quill_bytes bytes(const void* data, std::size_t length) {
        return {text({static_cast<const char*>(data), length}), length};
    }
    quill_entry* entries(const std::map<std::string, std::string>& pairs);
    char** texts(const std::vector<std::string>& list);
    /// Makes an array of pointers to what @p make returns for each item.
    template <typename Items, typename Make>
    auto pointers(const Items& items, Make makeOne) {
        using Made = decltype(makeOne(*items.begin()));
        auto** const list = array<Made*>(items.size());
        std::size_t count = 0;
        for (const auto& item : items) {
            const Made made = makeOne(item);
            list[count++] = make(made);
        }
        return list;
    }

    /// Leaves the memory to the caller.
    template <typename T>
    void give(T* what, T** result) {
        *result = what;
        m_First = nullptr;
    }

private:
    friend char* copyText(const std::string& text);

    static constexpr std::size_t kAlignment = alignof(std::max_align_t);
    /// Lies in front of each piece of memory.
    struct alignas(kAlignment) Piece {
        Piece* next;
    };

    static void free(Piece* piece) noexcept;
    void* allocate(std::size_t size);

    Piece* m_First = nullptr;
    unsigned char* m_Begin = nullptr; // of what is left in the last piece
    std::size_t m_Left = 0;
};

// Results in blocks of their own. A count is written last: nothing is, if memory is missing.

char* copyText(const std::string& text);
void giveEntries(const std::map<std::string, std::string>& pairs, quill_entry** result, size_t* count);
void giveTexts(const std::vector<std::string>& list, char*** result, size_t* count);
/// Gives an array of pointers to what @p make returns for a block and each item.
template <typename Items, typename Struct, typename Make>
void giveList(const Items& items, Make make, Struct*** result, size_t* count) {
    Block block;
    block.give(block.pointers(items, [&](const auto& item) { return make(block, item); }), result);
    *count = items.size();
}

} // namespace CInterface
