#pragma once

#include <cstddef>
#include <cstdlib>
#include <new>

namespace platform {

/// Where RapidJSON's readers, writers and buffers take their memory. Throws std::bad_alloc when there is
/// none; with its own allocator RapidJSON would write to a null pointer.
class JsonMemory {
public:
    static constexpr bool kNeedFree = true;

    void* Malloc(std::size_t size) { return Realloc(nullptr, 0, size); }
    void* Realloc(void* block, std::size_t, std::size_t size)
    {
        if (size == 0) {
            Free(block);
            return nullptr;
        }
        void* const moved = std::realloc(block, size);
        if (moved == nullptr) {
            throw std::bad_alloc();
        }
        return moved;
    }
    static void Free(void* block) { std::free(block); }
};

}  // namespace platform
