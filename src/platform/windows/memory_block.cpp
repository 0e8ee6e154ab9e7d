#include "platform/memory_block.h"

#include <windows.h>

namespace partkeep {

// A block of no bytes would be one that the system has discarded: it could not be locked.
MemoryHandle AllocateBlock(std::size_t bytes)
{
    return GlobalAlloc(GMEM_MOVEABLE | GMEM_ZEROINIT, bytes == 0 ? 1 : bytes);
}

// The size is asked first because the system hands a pointer that is no handle back as if it were locked.
void* LockBlock(MemoryHandle block)
{
    return BlockSize(block) == 0 ? nullptr : GlobalLock(block);
}

void UnlockBlock(MemoryHandle block)
{
    if (BlockSize(block) != 0) {
        GlobalUnlock(block);
    }
}

std::size_t BlockSize(MemoryHandle block)
{
    return block == nullptr ? 0 : GlobalSize(block);
}

std::size_t BlockLockCount(MemoryHandle block)
{
    return BlockSize(block) == 0 ? 0 : GlobalFlags(block) & GMEM_LOCKCOUNT;
}

void FreeBlock(MemoryHandle block)
{
    if (BlockSize(block) != 0) {
        GlobalFree(block);
    }
}

} // namespace partkeep
