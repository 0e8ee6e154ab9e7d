// Steps through the children of an element, or the attributes of a holder, in the order of the document: inline
// nodes, and the chain that hangs from each slot at its place among them. The element must outlive the iterator.
#pragma once

#include <cstddef>
#include <utility>

#include "xml/xml_element.h"

namespace partkeep {

// Where an iteration stands: a node, and in a chain the inline position at which it goes on afterwards.
struct XmlPosition {
    std::byte* resume = nullptr;
    std::byte* current = nullptr;

    [[nodiscard]] bool InChain() const { return resume != nullptr; }

    // To the next node, also to one that iteration passes over.
    void StepToAny()
    {
        std::byte* link = LinkOf(current);
        if (auto* block = LoadField<std::byte*>(link)) {
            if (resume == nullptr) {
                resume = link + xml_address_width;
            }
            current = StartOfChain(block);
        } else if (resume != nullptr) {
            current = std::exchange(resume, nullptr);
        } else {
            current = link + xml_address_width;
        }
    }

    void Step()
    {
        do {
            StepToAny();
        } while (NodeId(current) == xml_skipped_id);
    }
};

// In an element or a holder.
inline XmlPosition AnyFirstPositionIn(std::byte* node)
{
    std::byte* slot = node + XmlPlaces::counted;
    std::byte* inline_start = node + XmlPlaces::holder;
    if (NodeId(node) != 0) {
        slot = LinkOf(HolderOf(node));
        inline_start = slot + xml_address_width;
    }
    auto* block = LoadField<std::byte*>(slot);
    return block == nullptr ? XmlPosition{nullptr, inline_start} : XmlPosition{inline_start, RootOf(block)};
}

inline XmlPosition FirstPositionIn(std::byte* node)
{
    XmlPosition first = AnyFirstPositionIn(node);
    if (first.current != LinkOf(node) && NodeId(first.current) == xml_skipped_id) {
        first.Step();
    }
    return first;
}

class CXmlIterator {
public:
    CXmlIterator() = default;
    CXmlIterator(const CXmlIterator& other) : position_(other.position_), table_(other.table_), block_(other.block_)
    {
        Pin();
    }
    CXmlIterator(CXmlIterator&& other) noexcept
        : position_(other.position_), table_(std::move(other.table_)), block_(std::exchange(other.block_, nullptr))
    {
    }
    CXmlIterator& operator=(CXmlIterator other) noexcept
    {
        std::swap(position_, other.position_);
        std::swap(table_, other.table_);
        std::swap(block_, other.block_);
        return *this;
    }
    ~CXmlIterator()
    {
        if (block_ != nullptr && !table_) {
            UnholdRoom(block_);
        }
    }

    [[nodiscard]] CXmlElement operator*() const
    {
        return position_.InChain() ? CXmlElement(BlockOfRoot(position_.current))
                                   : CXmlElement(table_, position_.current, block_);
    }
    CXmlIterator& operator++()
    {
        position_.Step();
        return *this;
    }
    CXmlIterator operator++(int)
    {
        CXmlIterator before(*this);
        position_.Step();
        return before;
    }
    friend bool operator==(const CXmlIterator& left, const CXmlIterator& right)
    {
        return left.position_.current == right.position_.current;
    }

private:
    friend class CXmlElement;

    CXmlIterator(const XmlPosition& position, CXmlShared<CXmlNameTable> table, std::byte* block)
        : position_(position), table_(std::move(table)), block_(block)
    {
        Pin();
    }
    // Without a table the block's room keeps the name, see xml_room.h. An end is a position alone, and keeps nothing,
    // which would slow a walk down.
    void Pin()
    {
        if (block_ != nullptr && !table_) {
            HoldRoom(block_);
        }
    }

    XmlPosition position_;
    CXmlShared<CXmlNameTable> table_;
    std::byte* block_ = nullptr;
};

inline CXmlIterator CXmlElement::Begin() const
{
    return IsElement() ? CXmlIterator(FirstPositionIn(node_), table_, block_) : End(); // a leaf's end is its beginning
}

inline CXmlIterator CXmlElement::End() const
{
    return CXmlIterator(node_ == nullptr ? XmlPosition() : XmlPosition{nullptr, LinkOf(node_)}, {}, nullptr);
}

} // namespace partkeep
