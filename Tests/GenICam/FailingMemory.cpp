// SPDX-License-Identifier: Apache-2.0

#include "GenICam/FailingMemory.h"

#include <cstdlib>
#include <new>

std::atomic<std::size_t> TestSupport::failingSize{0};

void* operator new(std::size_t size) {
    const std::size_t failing = TestSupport::failingSize;
    void* const memory = failing != 0 && size >= failing ? nullptr : std::malloc(size == 0 ? 1 : size);
    if (memory == nullptr) {
        throw std::bad_alloc();
    }
    return memory;
}

void operator delete(void* memory) noexcept {
    std::free(memory);
}

void operator delete(void* memory, std::size_t /*size*/) noexcept {
    std::free(memory);
}
