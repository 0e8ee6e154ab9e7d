// A depth-first walk over an element and everything under it, on the bytes and without handles. It keeps its own
// stack, so that a tree of any depth can be gone through; the tree must not change meanwhile.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "xml/xml_iterator.h"
#include "xml/xml_vector.h"

namespace partkeep {

class CXmlWalk {
public:
    enum class Step : std::uint8_t {
        Enter, // an element, before what it holds
        Leaf,
        Leave, // an element, behind what it holds
        Done,
        Failed, // no memory
    };

    // A name of a block with several, and room for what the walker's user has found out about it.
    struct Entry {
        std::string_view text;
        std::uint16_t note = 0;
    };

    // The node itself is walked too; the chain on its link is not.
    CXmlWalk(std::byte* node, std::byte* block) : node_(node), block_(block) {}

    Step Next()
    {
        if (leaving_) {
            Leave();
        }
        if (levels_.IsEmpty()) {
            return Start();
        }
        Level& level = levels_.Last();
        std::byte* at = level.next;
        do {
            at = Behind(at, level.resume);
            if (at == level.end) {
                node_ = level.node;
                block_ = level.block;
                link_ = at;
                leaving_ = true; // the names stay until the user has seen the node
                return Step::Leave;
            }
            link_ = level.next = LinkOf(at);
            node_ = at;
            at = link_;
        } while (NodeId(node_) == xml_skipped_id);
        block_ = level.resume != nullptr ? BlockOfRoot(node_) : level.block;
        return Visit();
    }

    [[nodiscard]] std::byte* Node() const { return node_; }
    // The current node's link slot.
    [[nodiscard]] std::byte* Link() const { return link_; }
    [[nodiscard]] std::byte* Block() const { return block_; }

    // Of the current node or one of its attributes, which stands in `block` and has its link slot at `link`. Empty for
    // a node without a name. Up to an address's width behind it can be read.
    [[nodiscard]] std::string_view NameOf(const std::byte* node, const std::byte* link, const std::byte* block)
    {
        const Entry* entry = EntryOf(node, block);
        if (entry != nullptr) {
            return entry->text;
        }
        const std::byte* names = node == RootOf(block) ? link + xml_address_width : NameArrayOf(block);
        const bool first = NodeId(node) == 1 && NodeSize(names) > xml_address_width;
        return first ? FirstNameIn(names) : NameInArray(names, NodeId(node));
    }
    [[nodiscard]] std::string_view Name() { return NameOf(node_, link_, block_); }

    // Null where the block has no entry of its own, since its only name is read where it stands.
    [[nodiscard]] Entry* EntryOf(const std::byte* node, const std::byte* block)
    {
        if (levels_.IsEmpty() || levels_.Last().names == none || levels_.Last().block != block) {
            return nullptr;
        }
        CXmlVector<Entry>& names = tables_[levels_.Last().names];
        const std::uint16_t id = NodeId(node);
        return id == 0 || id > names.Size() ? nullptr : &names[id - 1U];
    }

private:
    struct Level {
        std::byte* node;
        std::byte* block;
        std::byte* end;    // its link slot
        std::byte* next;   // the slot behind which the walk goes on
        std::byte* resume; // in a chain, the inline position behind it
        std::size_t names; // position in tables_, or none
        bool owns_names;
    };
    static constexpr std::size_t none = static_cast<std::size_t>(-1);

    // The node behind a slot: the chain's that hangs there, or the one that stands there.
    static std::byte* Behind(std::byte* slot, std::byte*& resume)
    {
        if (auto* block = LoadField<std::byte*>(slot)) {
            if (resume == nullptr) {
                resume = slot + xml_address_width;
            }
            return StartOfChain(block);
        }
        return resume != nullptr ? std::exchange(resume, nullptr) : slot + xml_address_width;
    }
    static std::string_view FirstNameIn(const std::byte* names)
    {
        const std::byte* length = names + XmlPlaces::counted;
        return {reinterpret_cast<const char*>(length + 4), LoadField<std::uint32_t>(length)};
    }
    static std::string_view NameInArray(const std::byte* names, std::uint16_t id);

    Step Start();
    Step Visit()
    {
        if (NodeKind(node_) != XmlKind::Element) {
            return Step::Leaf;
        }
        return Enter() ? Step::Enter : Step::Failed;
    }
    [[nodiscard]] bool Enter()
    {
        std::size_t names = none;
        bool owns_names = false;
        if (!levels_.IsEmpty() && levels_.Last().block == block_) {
            names = levels_.Last().names;
        } else if (!HasSingleName(block_)) {
            if (!AddTable()) {
                return false;
            }
            names = tables_.Size() - 1;
            owns_names = true;
        }
        Level* level = levels_.AddPlace();
        if (level == nullptr) {
            return false;
        }
        level->node = node_;
        level->block = block_;
        level->end = link_;
        level->next = LinkOf(HolderOf(node_));
        level->resume = nullptr;
        level->names = names;
        level->owns_names = owns_names;
        return true;
    }
    [[nodiscard]] bool AddTable();
    void Leave()
    {
        leaving_ = false;
        if (levels_.Last().owns_names) {
            tables_.RemoveLast();
        }
        levels_.RemoveLast();
    }

    std::byte* node_;
    std::byte* block_;
    std::byte* link_ = nullptr;
    CXmlVector<Level> levels_;
    CXmlVector<CXmlVector<Entry>> tables_;
    bool started_ = false;
    bool leaving_ = false;
};

} // namespace partkeep
