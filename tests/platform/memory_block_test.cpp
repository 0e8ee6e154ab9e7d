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
    for (const std::size_t size : {std::size_t{0}, std::size_t{1}, std::size_t{5} << 20U}) {
        const MemoryHandle block = AllocateBlock(size);
        ASSERT_GE(BlockSize(block), std::max<std::size_t>(size, 1));
        for (const int content : {0, 0x5A}) {
            const CBlockLock lock(block);
            auto* bytes = static_cast<unsigned char*>(lock.Address());
            EXPECT_NE(lock.Address(), block);
            EXPECT_EQ(BlockLockCount(block), 1U);
            EXPECT_EQ(std::count(bytes, bytes + size, content), static_cast<std::ptrdiff_t>(size));
            std::memset(bytes, 0x5A, size);
        }
        FreeBlock(block);
    }
}

TEST(MemoryBlock, CountsLocksAndRefusesUnknownHandles)
{
    const MemoryHandle freed = AllocateBlock(8);
    EXPECT_EQ(LockBlock(freed), LockBlock(freed));
    EXPECT_EQ(BlockLockCount(freed), 2U);
    for (int count = 0; count < 3; ++count) {
        UnlockBlock(freed); // once too often
    }
    EXPECT_EQ(BlockLockCount(freed), 0U);
    EXPECT_NE(LockBlock(freed), nullptr);
    FreeBlock(freed); // while it is locked
    const MemoryHandle live = AllocateBlock(8);
    for (const MemoryHandle handle : {MemoryHandle{nullptr}, freed, reinterpret_cast<MemoryHandle>(5)}) {
        if (handle != live) { // a system may hand a number out again
            EXPECT_EQ(LockBlock(handle), nullptr);
            EXPECT_EQ(BlockSize(handle) + BlockLockCount(handle), 0U);
            UnlockBlock(handle);
            FreeBlock(handle);
        }
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
