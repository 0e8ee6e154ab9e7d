// Handles on the nodes of a document. A handle is a small value: copies share the block by count, and a block
// lives as long as handles or a link refer to it. An empty handle may be asked anything and answers with nothing.
// Names and texts are narrow bytes in the block's code page. Nothing is reported but by results: what found no
// memory gives an empty handle and leaves the tree as it was. One thread at a time for the whole library.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "xml/xml_block.h"
#include "xml/xml_name_table.h"
#include "xml/xml_string.h"
#include "xml/xml_value.h"
#include "xml/xml_vector.h"

namespace partkeep {

class CXmlIterator;

class CXmlElement {
public:
    CXmlElement() = default;
    // A new element.
    CXmlElement(const char* name, std::uint32_t code_page);
    // A new text leaf. A null string is an empty text; one that found no memory gives an empty handle.
    CXmlElement(const char* name, const CXmlString& value, std::uint32_t code_page);
    CXmlElement(const char* name, std::string_view value, std::uint32_t code_page);
    // Points at a finished block's root. Null gives an empty handle; a block without references is destroyed when
    // the handle finds no memory.
    explicit CXmlElement(std::byte* block);
    CXmlElement(const CXmlElement& other);
    CXmlElement(CXmlElement&& other) noexcept;
    // Does nothing when both are on the same node.
    CXmlElement& operator=(const CXmlElement& other);
    CXmlElement& operator=(CXmlElement&& other) noexcept;
    ~CXmlElement() { Drop(); }

    [[nodiscard]] bool IsEmpty() const { return node_ == nullptr; }

    // NUL-terminated; null for a node without a name. Valid while a handle or an iterator of this block lives.
    [[nodiscard]] const char* GetName() const;
    [[nodiscard]] std::uint32_t GetCodePage() const { return block_ == nullptr ? 0 : CodePageOf(block_); }

    // Append a leaf with the parent's code page and give a handle on it; empty on a leaf. Nothing looks for an
    // equal name: duplicates stay, in order.
    CXmlElement AddChild(const char* name, bool value);
    CXmlElement AddChild(const char* name, std::int16_t value);
    template <class Other>
    CXmlElement AddChild(const char* name, Other value) = delete; // a pointer or an int would pass for a bool

    // Links a free-standing child itself, and a copy in the parent's code page otherwise: of an element of another
    // tree, of one with siblings on its link, of the parent or what contains it. Gives a handle on what was
    // linked; empty, with the parent unchanged, when that is impossible.
    CXmlElement AppendChild(const CXmlElement& child);

    // The node that holds the attributes: it has no name, and its children are the attributes.
    [[nodiscard]] CXmlElement GetAttributes() const;
    // The value is taken as that of a text leaf.
    CXmlElement AddAttribute(const char* name, const CXmlString& value);
    CXmlElement AddAttribute(const char* name, std::string_view value);

    // The children, or a holder's attributes. Include xml_iterator.h.
    [[nodiscard]] CXmlIterator Begin() const;
    [[nodiscard]] CXmlIterator End() const;

    // `has` is 0 on elements and arrays, and when there is no memory.
    [[nodiscard]] CXmlValue<bool> AsBool() const;
    [[nodiscard]] CXmlValue<std::int16_t> AsShort() const;
    [[nodiscard]] CXmlValue<CXmlString> AsString() const;
    // A text's own bytes, without a copy; valid while its block lives. Empty on every other kind.
    [[nodiscard]] std::string_view TextView() const
    {
        return node_ != nullptr && NodeKind(node_) == XmlKind::Text
                   ? std::string_view(reinterpret_cast<const char*>(node_ + XmlPlaces::counted), NodeSize(node_))
                   : std::string_view();
    }
    // `has` is 0 on all but arrays.
    [[nodiscard]] CXmlValue<CXmlVector<CXmlString>> AsStringList() const;

    // For the library's own work on the bytes.
    [[nodiscard]] std::byte* Node() const { return node_; }
    [[nodiscard]] std::byte* Block() const { return block_; }

private:
    friend class CXmlIterator;

    CXmlElement(CXmlShared<CXmlNameTable> table, std::byte* node, std::byte* block);
    void Hold() const
    {
        AddReference(block_);
        HoldRoom(block_);
    }
    void Drop()
    {
        if (block_ != nullptr) {
            --HeadOf(block_)->held;
            ReleaseBlock(block_);
        }
    }
    [[nodiscard]] bool IsElement() const { return node_ != nullptr && NodeKind(node_) == XmlKind::Element; }
    [[nodiscard]] bool HasScalar() const { return node_ != nullptr && NodeKind(node_) > XmlKind::Element; }
    CXmlElement Link(std::byte* node, std::byte*& tail, CXmlElement child);

    CXmlShared<CXmlNameTable> table_; // null on a block of a single name, which is read where it stands
    std::byte* node_ = nullptr;
    std::byte* block_ = nullptr;
    // Where the chains of children and of attributes ended when this handle last appended. Slots only ever fill
    // up while the block lives, so the end is found from here as well as from the beginning.
    std::byte* children_tail_ = nullptr;
    std::byte* attributes_tail_ = nullptr;
};

// A whole document: its root, and the format in which it is written.
class CXmlDocument : public CXmlElement {
public:
    CXmlDocument() = default;
    // The format stays.
    CXmlDocument& operator=(const CXmlElement& root)
    {
        CXmlElement::operator=(root);
        return *this;
    }

    std::uint8_t pretty = 1;
    std::uint16_t indent = 2;
};

// True when a block's only name stands in it with a zero behind, NUL-terminated as it were.
[[nodiscard]] inline bool HasSingleName(const std::byte* block)
{
    const std::byte* names = NameArrayOf(block);
    const std::uint64_t size = NodeSize(names);
    const std::uint64_t length = LoadField<std::uint32_t>(names + XmlPlaces::counted);
    return size == 4 + length + xml_address_width &&
           LoadField<std::byte*>(names + XmlPlaces::counted + 4 + length) == nullptr;
}

inline CXmlElement::CXmlElement(CXmlShared<CXmlNameTable> table, std::byte* node, std::byte* block)
    : table_(std::move(table)), node_(node), block_(block)
{
    Hold();
}

inline CXmlElement::CXmlElement(const CXmlElement& other)
    : table_(other.table_), node_(other.node_), block_(other.block_), children_tail_(other.children_tail_),
      attributes_tail_(other.attributes_tail_)
{
    if (block_ != nullptr) {
        Hold();
    }
}

inline CXmlElement::CXmlElement(CXmlElement&& other) noexcept
    : table_(std::move(other.table_)), node_(std::exchange(other.node_, nullptr)),
      block_(std::exchange(other.block_, nullptr)), children_tail_(std::exchange(other.children_tail_, nullptr)),
      attributes_tail_(std::exchange(other.attributes_tail_, nullptr))
{
}

inline const char* CXmlElement::GetName() const
{
    if (node_ == nullptr || NodeId(node_) == 0) {
        return nullptr;
    }
    const std::byte* names = NameArrayOf(block_);
    if (table_) {
        return table_->NameOf(NodeId(node_), names);
    }
    return NodeId(node_) == 1 ? reinterpret_cast<const char*>(names + XmlPlaces::counted + 4) : nullptr;
}

inline CXmlElement CXmlElement::GetAttributes() const
{
    return IsElement() && NodeId(node_) != 0 ? CXmlElement(table_, HolderOf(node_), block_) : CXmlElement();
}

inline CXmlElement::CXmlElement(std::byte* block)
{
    if (block == nullptr) {
        return;
    }
    if (!HasSingleName(block)) {
        table_ = CXmlNameTable::Make();
        if (!table_) {
            if (References(block) == 0) {
                DestroyBlock(block);
            }
            return;
        }
    }
    node_ = RootOf(block);
    block_ = block;
    Hold();
}

} // namespace partkeep
