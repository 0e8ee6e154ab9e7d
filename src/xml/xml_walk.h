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
        enter, // an element, before what it holds
        leaf,
        leave, // an element, behind what it holds
        done,
        failed, // no memory
    };

    // A name of a block with several, and room for what the walker's user has found out about it.
    struct Name {
        std::string_view text;
        std::uint16_t note = 0;
    };

    // The node itself is walked too; the chain on its link is not.
    CXmlWalk(std::byte* node, std::byte* block) : node_(node), block_(block) {}

    Step Next();

    [[nodiscard]] std::byte* Node() const { return node_; }
    [[nodiscard]] std::byte* Block() const { return block_; }
    // Elements around the current node.
    [[nodiscard]] std::size_t Depth() const;

    // Of the current node or one of its attributes, which stands in `block`. Empty for a node without a name.
    [[nodiscard]] std::string_view NameOf(const std::byte* node, const std::byte* block);
    // Null where the block has no entry of its own, since its only name is read where it stands.
    [[nodiscard]] Name* EntryOf(const std::byte* node, const std::byte* block)
    {
        if (frames_.IsEmpty() || frames_.Last().names == none || frames_.Last().block != block) {
            return nullptr;
        }
        CXmlVector<Name>& names = tables_[frames_.Last().names];
        const std::uint16_t id = NodeId(node);
        return id == 0 || id > names.Size() ? nullptr : &names[id - 1U];
    }

private:
    struct Frame {
        std::byte* node;
        std::byte* block;
        XmlPosition at;
        std::byte* end;
        std::size_t names; // position in tables_, or none
        bool owns_names;
    };
    static constexpr std::size_t none = static_cast<std::size_t>(-1);

    Step Visit();
    [[nodiscard]] bool Enter();
    void Leave();

    std::byte* node_;
    std::byte* block_;
    CXmlVector<Frame> frames_;
    CXmlVector<CXmlVector<Name>> tables_;
    bool started_ = false;
    bool leaving_ = false;
};

} // namespace partkeep
