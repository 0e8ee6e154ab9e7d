// Memory blocks behind a handle table. A handle is a running number and never an address: a caller that takes
// it for one fails at once, and a handle that was freed stays unknown.

#include "platform/memory_block.h"

#include <cstdint>
#include <cstdlib>
#include <memory>
#include <mutex>
#include <unordered_map>

namespace partkeep {

namespace {

struct CFree {
    void operator()(void* address) const { std::free(address); }
};

struct Block {
    std::unique_ptr<void, CFree> address;
    std::size_t size = 0;
    std::size_t locks = 0;
};

class CBlockTable {
public:
    MemoryHandle Add(Block block)
    {
        const std::lock_guard lock(guard_);
        if (blocks_.size() >= max_memory_blocks) {
            return nullptr;
        }
        do {
            next_ += handle_step;
        } while (next_ == 0 || blocks_.contains(next_));
        blocks_.emplace(next_, std::move(block));
        return reinterpret_cast<MemoryHandle>(next_); // NOLINT(performance-no-int-to-ptr): a number, never followed
    }

    // Calls `use` on the block while nobody else changes the table; `otherwise` for a handle that is no block.
    template <typename Result, typename Use>
    Result With(MemoryHandle handle, Result otherwise, Use use)
    {
        const std::lock_guard lock(guard_);
        const auto found = blocks_.find(reinterpret_cast<std::uintptr_t>(handle));
        return found == blocks_.end() ? otherwise : use(found->second);
    }

    void Remove(MemoryHandle handle)
    {
        const std::lock_guard lock(guard_);
        blocks_.erase(reinterpret_cast<std::uintptr_t>(handle));
    }

private:
    static constexpr std::uintptr_t handle_step = 4;

    std::mutex guard_;
    std::unordered_map<std::uintptr_t, Block> blocks_;
    std::uintptr_t next_ = 2; // off by two, so that no handle is aligned as an address would be
};

// Never destroyed: a host may free its last blocks while the process is already ending.
CBlockTable& Table()
{
    static CBlockTable& table = *new CBlockTable;
    return table;
}

} // namespace

MemoryHandle AllocateBlock(std::size_t bytes)
{
    if (bytes > PTRDIFF_MAX) {
        return nullptr;
    }
    Block block;
    block.size = bytes == 0 ? 1 : bytes;
    block.address.reset(std::calloc(1, block.size));
    return block.address == nullptr ? nullptr : Table().Add(std::move(block));
}

void* LockBlock(MemoryHandle block)
{
    return Table().With(block, static_cast<void*>(nullptr), [](Block& found) {
        ++found.locks;
        return found.address.get();
    });
}

void UnlockBlock(MemoryHandle block)
{
    Table().With(block, false, [](Block& found) {
        found.locks -= found.locks > 0 ? 1 : 0;
        return true;
    });
}

std::size_t BlockSize(MemoryHandle block)
{
    return Table().With(block, std::size_t{0}, [](const Block& found) { return found.size; });
}

std::size_t BlockLockCount(MemoryHandle block)
{
    return Table().With(block, std::size_t{0}, [](const Block& found) { return found.locks; });
}

void FreeBlock(MemoryHandle block)
{
    Table().Remove(block);
}

} // namespace partkeep
