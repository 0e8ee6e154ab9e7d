// Puts a block of a size that is not known beforehand together from its beginning on: at the place where the next block
// would stand, and what does not fit there in further pages, from which it is gathered in the end.
#pragma once

#include <cstddef>

#include "xml/xml_block.h"
#include "xml/xml_vector.h"

namespace partkeep {

class CXmlBlockBuilder {
public:
    CXmlBlockBuilder();
    CXmlBlockBuilder(const CXmlBlockBuilder&) = delete;
    CXmlBlockBuilder& operator=(const CXmlBlockBuilder&) = delete;
    ~CXmlBlockBuilder();

    [[nodiscard]] std::size_t Size() const { return before_ + static_cast<std::size_t>(at_ - begin_); }

    // Room for `size` more bytes, to be filled in place; null when there is no memory.
    [[nodiscard]] std::byte* Add(std::size_t size)
    {
        if (size > static_cast<std::size_t>(end_ - at_) && !NextRun(size)) {
            return nullptr;
        }
        std::byte* at = at_;
        at_ += size;
        return at;
    }
    // Adds bytes that stay where they are until the block is finished.
    [[nodiscard]] bool AddLong(const std::byte* bytes, std::size_t size);

    // The finished block; one in room of its own is a tree. Null when there is no memory.
    [[nodiscard]] std::byte* Finish();

private:
    // What came before begin_.
    struct Run {
        const std::byte* bytes;
        std::size_t size;
    };

    [[nodiscard]] bool NextRun(std::size_t size);
    [[nodiscard]] bool CloseRun();
    void LeaveStart();

    std::byte* begin_;
    std::byte* at_;
    std::byte* end_;
    std::byte* behind_start_ = nullptr; // of what was put at the cursor; null when nothing could be
    std::size_t before_ = 0;
    CXmlVector<Run> runs_;
    CXmlVector<XmlHead*> pages_;
};

} // namespace partkeep
