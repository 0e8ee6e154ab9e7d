// Where the memory of the XML store comes from. One source is chosen at link time: the product's is the pool. All that
// is taken here is packed by others: texts, tables and lists one by one, blocks into room that stands behind a head.
// Not for two threads at once, like the whole library.
#pragma once

#include <cstddef>
#include <cstdint>

namespace partkeep {

// Null when there is no memory. `alignment` is a power of two, at most that of std::max_align_t.
[[nodiscard]] void* AllocateXml(std::size_t size, std::size_t alignment);

// `size` is the size the memory was asked for with. Null is ignored.
void FreeXml(void* memory, std::size_t size);

struct XmlTree;

// What stands in front of blocks: of many that share a page, or of a single one. xml_room.h keeps the counts.
struct XmlHead {
    std::uint32_t held = 0; // handles on these blocks, and iterators that keep their names readable
    std::uint32_t live = 0; // blocks that have not gone
    XmlTree* tree = nullptr;
    XmlHead* next = nullptr; // of the tree's, while it has one
    std::size_t size = 0;    // of the room of a single block; 0 for a page
};

struct XmlRoom {
    XmlHead* head; // null when there is no memory
    std::byte* end;
};

// A head with `size` bytes behind it at least, which begin at an even address. What is longer than a share of a page
// has a head of its own, and nothing over.
[[nodiscard]] XmlRoom TakeXmlRoom(std::size_t size);

void GiveXmlRoom(XmlHead* head);

// A document that is read from fewer bytes gets no pages of its own.
extern const std::size_t xml_least_for_own_pages;

} // namespace partkeep
