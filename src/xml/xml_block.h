// The packed store. A block is one piece of memory that holds a root node, whatever nodes stand inline under
// it, and the names of them all. Blocks are tied together by link slots that hold addresses of blocks; a block
// is owned by its handles and by the one link that points at it, by count. The layout:
//
//   block      mark 0x1F (8 bits), references (u32), codePage (u32), owner (address of the link slot that
//              points here, or 0), root node, name array
//   fixed leaf id (u16), kind (s8), value, link
//   text leaf  id, kind 1, length (u32), bytes, link
//   element    id, kind 0, size (u32), attribute holder, inline children, link
//   holder     id 0, kind 0, size, attribute chain head, inline attributes, link
//   array      id, negative kind, size, items, extension head, link; the name array has id 0 and no link
//
// `size` counts from behind itself up to the link. Links, heads and owner are as wide as an address, and every
// distance follows from that width. Nothing is aligned, but blocks themselves stand at even addresses.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "xml/xml_field.h"
#include "xml/xml_room.h"

namespace partkeep {

inline constexpr std::size_t xml_address_width = sizeof(std::byte*);

enum class XmlKind : std::int8_t {
    Element = 0,
    Text = 1,
    Boolean = 2,
    Unsigned8 = 3,
    Signed8 = 4,
    Unsigned16 = 5,
    Signed16 = 6,
    Unsigned32 = 7,
    Signed32 = 8,
    Float32 = 9,
    Float64 = 10,
    TextArray = -1,
};

inline constexpr std::uint8_t xml_block_mark = 0x1F;
inline constexpr std::uint16_t xml_skipped_id = 0xFFFF;
inline constexpr std::uint16_t xml_most_names = 0xFFFE;
inline constexpr std::uint8_t xml_value_widths[] = {0, 0, 1, 1, 1, 2, 2, 4, 4, 4, 8}; // by kind

// Distances for addresses of `Width` bytes, so that a build with wide ones can still check the narrow layout.
template <std::size_t Width>
struct XmlLayout {
    static constexpr std::size_t references = 1;
    static constexpr std::size_t code_page = 5;
    static constexpr std::size_t owner = 9;
    static constexpr std::size_t root = owner + Width;
    static constexpr std::size_t head = 3;                               // id and kind
    static constexpr std::size_t counted = head + 4;                     // and size
    static constexpr std::size_t holder = counted + Width;               // a holder up to its inline attributes
    static constexpr std::size_t new_element = counted + holder + Width; // a bare element up to its own link
    static constexpr std::size_t first_name = Width + counted + 4;       // from a root's link to the first name's bytes

    static constexpr std::size_t NameArraySize(std::size_t name) { return counted + 4 + name + Width; }
    static constexpr std::size_t ElementSize(std::size_t name)
    {
        return root + new_element + Width + NameArraySize(name);
    }
    static constexpr std::size_t FixedLeafSize(std::size_t name, std::size_t value)
    {
        return root + head + value + Width + NameArraySize(name);
    }
    static constexpr std::size_t TextLeafSize(std::size_t name, std::size_t text)
    {
        return root + counted + text + Width + NameArraySize(name);
    }
};

using XmlPlaces = XmlLayout<xml_address_width>;

namespace xml_pack {

template <std::size_t Width>
inline std::byte* Zeros(std::byte* at)
{
    std::memset(at, 0, Width);
    return at + Width;
}

inline std::byte* Head(std::byte* at, std::uint16_t id, XmlKind kind)
{
    return PutField(PutField(at, id), kind);
}

template <std::size_t Width>
inline std::byte* Header(std::byte* block, std::uint32_t code_page)
{
    std::byte* at = PutField(block, xml_block_mark);
    at = PutField(PutField(at, std::uint32_t{0}), code_page);
    return Zeros<Width>(at);
}

// A link of 0 and the name array of one name.
template <std::size_t Width>
inline void LinkAndName(std::byte* at, std::string_view name)
{
    at = Head(Zeros<Width>(at), 0, XmlKind::TextArray);
    at = PutField(at, static_cast<std::uint32_t>(name.size() + 4 + Width));
    at = PutField(at, static_cast<std::uint32_t>(name.size()));
    Zeros<Width>(PutBytes(at, name));
}

} // namespace xml_pack

// A new element's block, into XmlLayout::ElementSize bytes.
template <std::size_t Width>
inline void PackElement(std::byte* block, std::string_view name, std::uint32_t code_page)
{
    using Layout = XmlLayout<Width>;
    std::byte* at = xml_pack::Head(xml_pack::Header<Width>(block, code_page), 1, XmlKind::Element);
    at = PutField(at, static_cast<std::uint32_t>(Layout::new_element - Layout::counted));
    at = PutField(xml_pack::Head(at, 0, XmlKind::Element), static_cast<std::uint32_t>(Width));
    xml_pack::LinkAndName<Width>(xml_pack::Zeros<2 * Width>(at), name); // chain head and the holder's link
}

// `value` holds the bytes of a fixed kind as they are stored.
template <std::size_t Width>
inline void PackFixedLeaf(std::byte* block, std::string_view name, XmlKind kind, std::string_view value,
                          std::uint32_t code_page)
{
    std::byte* at = xml_pack::Head(xml_pack::Header<Width>(block, code_page), 1, kind);
    xml_pack::LinkAndName<Width>(PutBytes(at, value), name);
}

template <std::size_t Width>
inline void PackTextLeaf(std::byte* block, std::string_view name, std::string_view text, std::uint32_t code_page)
{
    std::byte* at = xml_pack::Head(xml_pack::Header<Width>(block, code_page), 1, XmlKind::Text);
    at = PutField(at, static_cast<std::uint32_t>(text.size()));
    xml_pack::LinkAndName<Width>(PutBytes(at, text), name);
}

// Nodes.

inline std::uint16_t NodeId(const std::byte* node)
{
    return LoadField<std::uint16_t>(node);
}

inline XmlKind NodeKind(const std::byte* node)
{
    return LoadField<XmlKind>(node + 2);
}

inline std::uint32_t NodeSize(const std::byte* node)
{
    return LoadField<std::uint32_t>(node + XmlPlaces::head);
}

inline bool IsArray(XmlKind kind)
{
    return kind < XmlKind::Element;
}

// The kind of an array's items.
inline XmlKind ItemKind(XmlKind array)
{
    return static_cast<XmlKind>(-static_cast<std::int8_t>(array));
}

inline std::size_t ValueWidth(XmlKind fixed)
{
    return xml_value_widths[static_cast<std::size_t>(fixed)];
}

inline bool IsHolder(const std::byte* node)
{
    return NodeKind(node) == XmlKind::Element && NodeId(node) == 0;
}

// The node's link slot; for the name array, which has none, the position behind it.
template <class Byte>
inline Byte* LinkOf(Byte* node)
{
    const XmlKind kind = NodeKind(node);
    return kind < XmlKind::Boolean ? node + XmlPlaces::counted + NodeSize(node)
                                   : node + XmlPlaces::head + ValueWidth(kind);
}

template <class Byte>
inline Byte* BehindNode(Byte* node)
{
    return LinkOf(node) + xml_address_width;
}

inline std::byte* HolderOf(std::byte* element)
{
    return element + XmlPlaces::counted;
}

// Blocks and links.

template <class Byte>
inline Byte* RootOf(Byte* block)
{
    return block + XmlPlaces::root;
}

inline std::byte* BlockOfRoot(std::byte* root)
{
    return root - XmlPlaces::root;
}

template <class Byte>
inline Byte* NameArrayOf(Byte* block)
{
    return BehindNode(RootOf(block));
}

inline std::uint32_t References(const std::byte* block)
{
    return LoadField<std::uint32_t>(block + XmlPlaces::references);
}

inline void AddReference(std::byte* block)
{
    PutField(block + XmlPlaces::references, References(block) + 1);
}

inline std::uint32_t CodePageOf(const std::byte* block)
{
    return LoadField<std::uint32_t>(block + XmlPlaces::code_page);
}

inline std::byte* OwnerOf(const std::byte* block)
{
    return LoadField<std::byte*>(block + XmlPlaces::owner);
}

// The slot from which an element's or holder's last chain hangs.
inline std::byte* LastSlotOf(std::byte* node)
{
    return LinkOf(node) - xml_address_width;
}

// The first node of the chain that begins with a block. The blocks of a document mostly follow one another in memory,
// so what a walk comes to some nodes later is asked for here: in a large document it would wait for memory else.
template <class Byte>
inline Byte* StartOfChain(Byte* block)
{
    constexpr std::size_t some_nodes = 512;
    FetchAhead(block, some_nodes);
    return RootOf(block);
}

// The empty slot at the end of the chain that begins at `slot`.
inline std::byte* EndOfChain(std::byte* slot)
{
    while (auto* block = LoadField<std::byte*>(slot)) {
        slot = LinkOf(RootOf(block));
    }
    return slot;
}

// Hangs a block into an empty slot; the reference that the link counts is the caller's to add or to hand over.
inline void HangBlock(std::byte* slot, std::byte* block)
{
    PutField(slot, block);
    PutField(block + XmlPlaces::owner, slot);
}

// Making blocks: null when there is no memory, and for a name or text that 32-bit sizes cannot hold. The new
// block has 0 references and no owner.
[[nodiscard]] std::byte* MakeElementBlock(std::string_view name, std::uint32_t code_page);
[[nodiscard]] std::byte* MakeTextBlock(std::string_view name, std::string_view text, std::uint32_t code_page);
[[nodiscard]] std::byte* MakeFixedBlock(std::string_view name, XmlKind kind, std::string_view value,
                                        std::uint32_t code_page);

// Destroys a block that nothing refers to any more, with everything that hangs on it and is not held by a handle.
// Needs no memory and no stack, however deep the tree.
void DestroyBlock(std::byte* block);

// Gives back one reference.
inline void ReleaseBlock(std::byte* block)
{
    if (const std::uint32_t count = References(block); count != 1) {
        PutField(block + XmlPlaces::references, count - 1);
    } else {
        DestroyBlock(block);
    }
}

} // namespace partkeep
