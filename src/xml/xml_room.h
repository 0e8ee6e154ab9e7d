// Cuts blocks from the room that the memory gives, one behind the other in the order in which a document is built, so
// that a walk reads memory forwards. Behind a head the room looks so:
//
//   head, { reach (u16: distance back to the head), block, 0 or 1 byte for an even end } ...
//
// Blocks stand at even addresses: the bytes of a link, which a step may read as an id, then never pass for a skipped
// one. A head goes when none of its blocks is left and nobody holds one.
//
// What is read or copied as a whole is a tree with room of its own. While it is whole, that is while nothing has been
// linked under it and nothing of it has gone, it goes at once, without a look at its blocks.
#pragma once

#include <cstddef>
#include <cstdint>

#include "xml/xml_field.h"
#include "xml/xml_memory.h"

namespace partkeep {

inline constexpr std::size_t xml_reach_width = 2;

// The room from which the next block is cut.
struct XmlCursor {
    std::byte* at = nullptr;
    std::byte* end = nullptr;
    XmlHead* head = nullptr;
};
extern XmlCursor xml_cursor;

struct XmlTree {
    std::byte* root = nullptr; // while it is being built, it has none
    XmlHead* heads = nullptr;
    std::size_t room = 0; // of them all
};

inline std::byte* RoomOf(XmlHead* head)
{
    return reinterpret_cast<std::byte*>(head + 1);
}

inline XmlHead* HeadOf(std::byte* block)
{
    return reinterpret_cast<XmlHead*>(block - LoadField<std::uint16_t>(block - xml_reach_width));
}

inline std::size_t RoomFor(std::size_t block_size)
{
    return xml_reach_width + block_size + block_size % 2;
}

// Counts a block in at the beginning of free room.
inline std::byte* PutReach(std::byte* at, XmlHead* head)
{
    ++head->live;
    std::byte* block = at + xml_reach_width;
    PutField(at, static_cast<std::uint16_t>(block - reinterpret_cast<std::byte*>(head)));
    return block;
}

[[nodiscard]] std::byte* CutFromNewRoom(std::size_t size);

// Room for a block; null when there is no memory, and for more than 32-bit sizes can hold.
[[nodiscard]] inline std::byte* AllocateXmlBlock(std::size_t size)
{
    XmlCursor& cursor = xml_cursor;
    const std::size_t room = RoomFor(size);
    if (room > static_cast<std::size_t>(cursor.end - cursor.at)) {
        return CutFromNewRoom(size);
    }
    std::byte* block = PutReach(cursor.at, cursor.head);
    cursor.at += room;
    return block;
}

// A block behind which `slack` more bytes may be written until the next one is cut; null where the room that is there
// has not that many.
[[nodiscard]] inline std::byte* CutXmlBlock(std::size_t size, std::size_t slack)
{
    XmlCursor& cursor = xml_cursor;
    const std::size_t room = RoomFor(size);
    if (room + slack > static_cast<std::size_t>(cursor.end - cursor.at)) {
        return nullptr;
    }
    std::byte* block = PutReach(cursor.at, cursor.head);
    cursor.at += room;
    return block;
}

// For the last block, or the last who held one.
void ReleaseRoom(XmlHead* head);

inline void FreeXmlBlock(std::byte* block)
{
    XmlHead* head = HeadOf(block);
    if (--head->live == 0 && head->held == 0) {
        ReleaseRoom(head);
    }
}

// Keeps the bytes of a block in place, also beyond its destruction.
inline void HoldRoom(std::byte* block)
{
    ++HeadOf(block)->held;
}

inline void Unhold(XmlHead* head)
{
    if (--head->held == 0 && head->live == 0) {
        ReleaseRoom(head);
    }
}

inline void UnholdRoom(std::byte* block)
{
    Unhold(HeadOf(block));
}

// Blocks made while a builder lives have room of their own; Finish makes them a tree under `root`. Unfinished, or
// without a root, what is left of them is ordinary. `expected` is a guess at the size of the input; a small one gets
// no room of its own.
class CXmlTreeBuilder {
public:
    explicit CXmlTreeBuilder(std::size_t expected);
    ~CXmlTreeBuilder();
    CXmlTreeBuilder(const CXmlTreeBuilder&) = delete;
    CXmlTreeBuilder& operator=(const CXmlTreeBuilder&) = delete;

    // There was no memory.
    [[nodiscard]] bool HasFailed() const { return failed_; }
    void Finish(std::byte* root);

private:
    XmlTree* tree_ = nullptr;
    XmlCursor outer_;
    bool failed_ = false;
};

// Room for a block that has everything under it in itself: a tree, where it has room of its own.
[[nodiscard]] std::byte* AllocateXmlTreeBlock(std::size_t size);

// About as many bytes as the tree under a block takes when it is written; 0 where nothing is known of it.
[[nodiscard]] std::size_t GuessLengthOf(std::byte* block);

// Makes ordinary blocks of a tree, whose head this is.
void BreakTree(XmlHead* head);

// To be called when a block is linked under another.
inline void NoteLink(std::byte* parent, std::byte* child)
{
    if (HeadOf(parent)->tree != nullptr) {
        BreakTree(HeadOf(parent));
    }
    if (const XmlTree* tree = HeadOf(child)->tree; tree != nullptr && tree->root != child) {
        BreakTree(HeadOf(child));
    }
}

// For a block of a tree. True when it was the root, nobody holds anything of the tree any more, and all of it is gone.
[[nodiscard]] bool DropTree(std::byte* root);

} // namespace partkeep
