#include "xml/xml_block.h"

#include "xml/xml_memory.h"

namespace partkeep {

namespace {

void FreeExtensionCells(std::byte* array)
{
    const XmlKind item = ItemKind(NodeKind(array));
    auto* cell = LoadField<std::byte*>(LastSlotOf(array));
    while (cell != nullptr) {
        const std::size_t width = item == XmlKind::Text ? 4 + LoadField<std::uint32_t>(cell) : ValueWidth(item);
        auto* next = LoadField<std::byte*>(cell + width);
        FreeXml(cell, width + xml_address_width);
        cell = next;
    }
}

// Leaves go at once. Elements wait for their turn, strung together by their owner fields, which they need no more:
// so a tree of any depth goes without a stack and without memory.
class CXmlDying {
public:
    void Destroy(std::byte* block)
    {
        DestroyOne(block);
        while (first_ != nullptr) {
            block = first_;
            first_ = OwnerOf(block);
            DestroyOne(block);
        }
    }

private:
    // A chain loses its blocks up to one that a handle holds, which keeps the rest, or up to an element, from which
    // it goes on when that has its turn.
    void DropChain(const std::byte* slot)
    {
        auto* block = LoadField<std::byte*>(slot);
        while (block != nullptr) {
            const std::uint32_t left = References(block) - 1;
            PutField(block + XmlPlaces::references, left);
            PutField(block + XmlPlaces::owner, static_cast<std::byte*>(nullptr));
            if (left != 0) {
                return;
            }
            if (NodeKind(RootOf(block)) == XmlKind::Element) {
                PutField(block + XmlPlaces::owner, first_);
                first_ = block;
                return;
            }
            auto* next = LoadField<std::byte*>(LinkOf(RootOf(block)));
            DropLeaf(RootOf(block));
            FreeBlock(block);
            block = next;
        }
    }

    // What is behind the block waits longest: its own content stands nearer in memory.
    void DestroyOne(std::byte* block)
    {
        std::byte* root = RootOf(block);
        DropChain(LinkOf(root));
        if (HeadOf(block)->tree != nullptr && DropTree(block)) {
            return;
        }
        if (NodeKind(root) != XmlKind::Element) {
            DropLeaf(root);
        } else {
            DropContent(root);
        }
        FreeBlock(block);
    }

    static void FreeBlock(std::byte* block)
    {
        FreeExtensionCells(NameArrayOf(block));
        if (HeadOf(block)->tree != nullptr) {
            BreakTree(HeadOf(block));
        }
        FreeXmlBlock(block);
    }

    static void DropLeaf(std::byte* leaf)
    {
        if (IsArray(NodeKind(leaf))) {
            FreeExtensionCells(leaf);
        }
    }

    void DropAttributes(std::byte* holder)
    {
        DropChain(holder + XmlPlaces::counted);
        std::byte* end = LinkOf(holder);
        for (std::byte* at = holder + XmlPlaces::holder; at != end; at = BehindNode(at)) {
            DropLeaf(at);
            DropChain(LinkOf(at));
        }
    }

    // Walks the inline nodes under an element. The way back up from a nested element is kept where its attribute
    // chain hung, which is empty by then.
    void DropContent(std::byte* root)
    {
        std::byte* element = root;
        std::byte* at = EnterElement(root);
        for (;;) {
            std::byte* end = LinkOf(element);
            if (at != end && NodeKind(at) == XmlKind::Element) {
                std::byte* behind = EnterElement(at);
                PutField(HolderOf(at) + XmlPlaces::counted, element);
                element = at;
                at = behind;
            } else if (at != end) {
                DropLeaf(at);
                DropChain(LinkOf(at));
                at = BehindNode(at);
            } else if (element != root) {
                DropChain(end);
                at = end + xml_address_width;
                element = LoadField<std::byte*>(HolderOf(element) + XmlPlaces::counted);
            } else {
                return;
            }
        }
    }

    // Drops the attributes and gives the first inline position behind the holder.
    std::byte* EnterElement(std::byte* element)
    {
        std::byte* holder = HolderOf(element);
        DropChain(LinkOf(holder));
        DropAttributes(holder);
        return BehindNode(holder);
    }

    std::byte* first_ = nullptr;
};

} // namespace

std::byte* MakeElementBlock(std::string_view name, std::uint32_t code_page)
{
    std::byte* block = AllocateXmlBlock(XmlPlaces::ElementSize(name.size()));
    if (block != nullptr) {
        PackElement<xml_address_width>(block, name, code_page);
    }
    return block;
}

std::byte* MakeTextBlock(std::string_view name, std::string_view text, std::uint32_t code_page)
{
    std::byte* block = AllocateXmlBlock(XmlPlaces::TextLeafSize(name.size(), text.size()));
    if (block != nullptr) {
        PackTextLeaf<xml_address_width>(block, name, text, code_page);
    }
    return block;
}

std::byte* MakeFixedBlock(std::string_view name, XmlKind kind, std::string_view value, std::uint32_t code_page)
{
    std::byte* block = AllocateXmlBlock(XmlPlaces::FixedLeafSize(name.size(), value.size()));
    if (block != nullptr) {
        PackFixedLeaf<xml_address_width>(block, name, kind, value, code_page);
    }
    return block;
}

void DestroyBlock(std::byte* block)
{
    PutField(block + XmlPlaces::references, std::uint32_t{0});
    CXmlDying().Destroy(block);
}

} // namespace partkeep
