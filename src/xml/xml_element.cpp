#include "xml/xml_element.h"

#include "xml/xml_array.h"
#include "xml/xml_compactor.h"
#include "xml/xml_iterator.h"

namespace partkeep {

namespace {

std::string_view NameView(const char* name)
{
    return name == nullptr ? std::string_view() : std::string_view(name);
}

template <class T>
std::byte* MakeNumberBlock(const char* name, XmlKind kind, T value, std::uint32_t code_page)
{
    const std::string_view bytes(reinterpret_cast<const char*>(&value), sizeof value);
    return MakeFixedBlock(NameView(name), kind, bytes, code_page);
}

bool IsFreeStanding(const CXmlElement& element)
{
    return element.Node() == RootOf(element.Block()) && OwnerOf(element.Block()) == nullptr;
}

enum class Answer : std::uint8_t { Yes, No, Unknown };

// Whether `wanted` hangs somewhere under an element, be it under a node that iteration passes over. Unknown when
// there is no memory.
Answer Contains(std::byte* root, const std::byte* wanted)
{
    CXmlVector<std::byte*> waiting;
    for (std::byte* element = root; element != nullptr;) {
        const std::byte* end = LinkOf(element);
        for (XmlPosition at = AnyFirstPositionIn(element); at.current != end; at.StepToAny()) {
            if (at.InChain() && BlockOfRoot(at.current) == wanted) {
                return Answer::Yes;
            }
            if (NodeKind(at.current) == XmlKind::Element && !waiting.Add(at.current)) {
                return Answer::Unknown;
            }
        }
        element = waiting.IsEmpty() ? nullptr : waiting.Last();
        if (element != nullptr) {
            waiting.RemoveLast();
        }
    }
    return Answer::No;
}

// Whether a child can hang itself under the parent: free-standing, alone, and not above the parent in its tree.
Answer IsLinkable(const CXmlElement& child, const CXmlElement& parent)
{
    if (!IsFreeStanding(child) || LoadField<std::byte*>(LinkOf(child.Node())) != nullptr ||
        child.Block() == parent.Block()) {
        return Answer::No;
    }
    if (OwnerOf(parent.Block()) == nullptr || NodeKind(child.Node()) != XmlKind::Element) {
        return Answer::Yes;
    }
    const Answer contains = Contains(child.Node(), parent.Block());
    return contains == Answer::Unknown ? contains : contains == Answer::Yes ? Answer::No : Answer::Yes;
}

} // namespace

CXmlElement::CXmlElement(const char* name, std::uint32_t code_page)
    : CXmlElement(MakeElementBlock(NameView(name), code_page))
{
}

CXmlElement::CXmlElement(const char* name, std::string_view value, std::uint32_t code_page)
    : CXmlElement(MakeTextBlock(NameView(name), value, code_page))
{
}

CXmlElement::CXmlElement(const char* name, const CXmlString& value, std::uint32_t code_page)
    : CXmlElement(value.IsLost() ? nullptr : MakeTextBlock(NameView(name), value.View(), code_page))
{
}

CXmlElement& CXmlElement::operator=(const CXmlElement& other)
{
    if (node_ != other.node_) {
        *this = CXmlElement(other);
    }
    return *this;
}

CXmlElement& CXmlElement::operator=(CXmlElement&& other) noexcept
{
    if (node_ == other.node_) {
        return *this;
    }
    std::swap(table_, other.table_);
    std::swap(node_, other.node_);
    std::swap(block_, other.block_);
    std::swap(children_tail_, other.children_tail_);
    std::swap(attributes_tail_, other.attributes_tail_);
    CXmlElement dropped(std::move(other)); // what this handle was on goes now, not with `other`
    return *this;
}

CXmlElement CXmlElement::AddChild(const char* name, bool value)
{
    if (!IsElement()) {
        return {};
    }
    const auto byte = static_cast<std::uint8_t>(value ? 1 : 0);
    return Link(node_, children_tail_, CXmlElement(MakeNumberBlock(name, XmlKind::Boolean, byte, GetCodePage())));
}

CXmlElement CXmlElement::AddChild(const char* name, std::int16_t value)
{
    if (!IsElement()) {
        return {};
    }
    return Link(node_, children_tail_, CXmlElement(MakeNumberBlock(name, XmlKind::Signed16, value, GetCodePage())));
}

// Hangs the child's block behind the node's last one; `tail` remembers where that was.
CXmlElement CXmlElement::Link(std::byte* node, std::byte*& tail, CXmlElement child)
{
    if (child.IsEmpty()) {
        return child;
    }
    NoteLink(block_, child.block_);
    std::byte* slot = EndOfChain(tail == nullptr ? LastSlotOf(node) : tail);
    HangBlock(slot, child.block_);
    AddReference(child.block_);
    tail = slot;
    return child;
}

CXmlElement CXmlElement::AppendChild(const CXmlElement& child)
{
    // Attributes are leaves, and a holder is no child.
    if (!IsElement() || child.IsEmpty() || IsHolder(child.node_) || (IsHolder(node_) && child.IsElement())) {
        return {};
    }
    switch (IsLinkable(child, *this)) {
    case Answer::Yes:
        return Link(node_, children_tail_, child);
    case Answer::No:
        return Link(node_, children_tail_, CXmlElement(CompactXml(child.node_, child.block_, GetCodePage())));
    default:
        return {};
    }
}

CXmlElement CXmlElement::AddAttribute(const char* name, const CXmlString& value)
{
    return value.IsLost() ? CXmlElement() : AddAttribute(name, value.View());
}

CXmlElement CXmlElement::AddAttribute(const char* name, std::string_view value)
{
    if (!IsElement() || IsHolder(node_)) {
        return {};
    }
    return Link(HolderOf(node_), attributes_tail_, CXmlElement(name, value, GetCodePage()));
}

CXmlValue<bool> CXmlElement::AsBool() const
{
    return HasScalar() ? CXmlValue<bool>{ScalarAsBool(ScalarOf(node_)), 1} : CXmlValue<bool>{};
}

CXmlValue<std::int16_t> CXmlElement::AsShort() const
{
    return HasScalar() ? CXmlValue<std::int16_t>{ScalarAsShort(ScalarOf(node_)), 1} : CXmlValue<std::int16_t>{};
}

CXmlValue<CXmlString> CXmlElement::AsString() const
{
    if (!HasScalar()) {
        return {};
    }
    CXmlString text(ScalarAsText(ScalarOf(node_)));
    const auto has = static_cast<std::uint8_t>(text.IsNull() ? 0 : 1);
    return {std::move(text), has};
}

CXmlValue<CXmlVector<CXmlString>> CXmlElement::AsStringList() const
{
    if (node_ == nullptr || !IsArray(NodeKind(node_))) {
        return {};
    }
    CXmlVector<CXmlString> list;
    for (CXmlItems item(node_); !item.AtEnd(); item.Next()) {
        CXmlString text(ScalarAsText(item.Scalar()));
        if (text.IsNull() || !list.Add(std::move(text))) {
            return {};
        }
    }
    return {std::move(list), 1};
}

} // namespace partkeep
