#include "platform/memory_block.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <vector>

namespace partkeep {
namespace {

TEST(MemoryBlock, IsZeroFilledAndKeepsItsBytes)
{
    for (const std::size_t size : {std::size_t{0}, std::size_t{1}, std::size_t{24000}, std::size_t{5} << 20U}) {
        const MemoryHandle block = AllocateBlock(size);
        ASSERT_GE(BlockSize(block), std::max<std::size_t>(size, 1));
        {
            const BlockLock lock(block);
            const auto* bytes = static_cast<const unsigned char*>(lock.Address());
            EXPECT_NE(lock.Address(), block);
            EXPECT_TRUE(std::all_of(bytes, bytes + size, [](unsigned char byte) { return byte == 0; }));
            std::memset(lock.Address(), 0x5A, size);
        }
        const BlockLock again(block);
        EXPECT_TRUE(size == 0 || static_cast<const unsigned char*>(again.Address())[size - 1] == 0x5A);
        FreeBlock(block);
    }
}

TEST(MemoryBlock, CountsLocks)
{
    const MemoryHandle block = AllocateBlock(8);
    void* first = LockBlock(block);
    EXPECT_EQ(LockBlock(block), first);
    EXPECT_EQ(BlockLockCount(block), 2U);
    for (int count = 0; count < 3; ++count) {
        UnlockBlock(block); // once too often
    }
    EXPECT_EQ(BlockLockCount(block), 0U);
    EXPECT_NE(LockBlock(block), nullptr);
    FreeBlock(block); // while it is locked
    EXPECT_EQ(BlockSize(block), 0U);
}

TEST(MemoryBlock, UnknownHandlesAreRefused)
{
    const MemoryHandle freed = AllocateBlock(8);
    FreeBlock(freed);
    const MemoryHandle live = AllocateBlock(8);
    for (const MemoryHandle handle :
         {MemoryHandle{nullptr}, freed, reinterpret_cast<MemoryHandle>(std::uintptr_t{5})}) {
        if (handle == live) {
            continue; // a system that hands a number out again
        }
        EXPECT_EQ(LockBlock(handle), nullptr);
        EXPECT_EQ(BlockSize(handle), 0U);
        EXPECT_EQ(BlockLockCount(handle), 0U);
        UnlockBlock(handle);
        FreeBlock(handle);
    }
    EXPECT_EQ(BlockSize(live), 8U);
    FreeBlock(live);
}

TEST(MemoryBlock, RunsOutAndRecovers)
{
    EXPECT_EQ(AllocateBlock(SIZE_MAX), nullptr);
    std::vector<MemoryHandle> blocks;
    while (const MemoryHandle block = AllocateBlock(1)) {
        blocks.push_back(block);
        ASSERT_LE(blocks.size(), max_memory_blocks + 1); // one system counts to one more
    }
    EXPECT_GE(blocks.size(), max_memory_blocks - 1000);
    FreeBlock(blocks.back());
    blocks.back() = AllocateBlock(1);
    EXPECT_NE(blocks.back(), nullptr);
    std::for_each(blocks.begin(), blocks.end(), FreeBlock);
}

} // namespace
} // namespace partkeep
