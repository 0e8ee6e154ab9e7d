// Movable memory blocks behind handles, as bitmaps and image requests use them. Whoever allocates a block
// frees it; controls and panels only borrow the handle. On Windows a handle is the system's own HGLOBAL.
#pragma once

#include <cstddef>

namespace partkeep {

using MemoryHandle = void*; // null: none

// At most this many blocks live at once in a process; the next allocation fails. The limit of the platform
// that the component comes from, kept everywhere so that running out is something that can be met on purpose.
inline constexpr std::size_t max_memory_blocks = 65535;

// A zero-filled block, or null when memory or handles have run out.
[[nodiscard]] MemoryHandle AllocateBlock(std::size_t bytes);

// The address until the matching UnlockBlock; null for a handle that is no block.
[[nodiscard]] void* LockBlock(MemoryHandle block);
void UnlockBlock(MemoryHandle block);

// The size in bytes, at least what was asked for; 0 for a handle that is no block.
[[nodiscard]] std::size_t BlockSize(MemoryHandle block);

// How often the block is locked at the moment; 0 for a handle that is no block.
[[nodiscard]] std::size_t BlockLockCount(MemoryHandle block);

// Frees the block, locked or not. Null and unknown handles are ignored.
void FreeBlock(MemoryHandle block);

// Keeps a block locked for a scope.
class CBlockLock {
public:
    explicit CBlockLock(MemoryHandle block) : block_(block), address_(LockBlock(block)) {}
    ~CBlockLock()
    {
        if (address_ != nullptr) {
            UnlockBlock(block_);
        }
    }
    CBlockLock(const CBlockLock&) = delete;
    CBlockLock& operator=(const CBlockLock&) = delete;

    [[nodiscard]] void* Address() const { return address_; }

private:
    MemoryHandle block_;
    void* address_;
};

} // namespace partkeep
