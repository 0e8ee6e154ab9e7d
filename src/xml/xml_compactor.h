// Makes an element free-standing: a copy of it and of all under it in one new block, where everything stands
// inline under one merged name array, in one code page.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <utility>

#include "xml/xml_block_builder.h"
#include "xml/xml_code_page.h"
#include "xml/xml_name_table.h"
#include "xml/xml_vector.h"
#include "xml/xml_walk.h"

namespace partkeep {

// `node` stands in `block`, whose code page is taken for everything under it. The chain on the node's own link
// does not come along. The new block has 0 references and no owner. Null when there is no memory, for a node that
// iteration passes over, for more than 65,534 names or 4 GB, and when a code page cannot be converted.
[[nodiscard]] std::byte* CompactXml(std::byte* node, std::byte* block, std::uint32_t target_code_page);

// Goes through the source once and puts the byte runs of which the copy consists one behind the other, with the few
// fields that must differ from the source.
class CXmlCompactor {
public:
    CXmlCompactor(std::byte* source, std::byte* source_block, std::uint32_t target_code_page, std::byte*& result);

private:
    // A run of the source, and what of it is other in the copy: the id it begins with, unless 0, and a link at its end
    // that is cleared.
    struct Piece {
        const std::byte* address;
        std::uint32_t length;
        std::uint16_t id;
        bool clears_link;
    };
    // A size field of the copy that gets a value of its own.
    struct Range {
        std::uint32_t place;
        std::uint32_t size;
    };
    struct Recent {
        XmlWord first = 0;
        std::string_view name;
        std::uint16_t id = 0;
    };
    // Worth keeping where it lies until its final place is known.
    static constexpr std::size_t long_piece = 4096;
    static constexpr std::size_t largest_size = 0xFFFFFFFFU;

    [[nodiscard]] bool Walk(std::byte* source, std::byte* source_block);
    [[nodiscard]] bool EnterElement(CXmlWalk& walk);
    [[nodiscard]] bool LeaveElement(std::byte* element);
    [[nodiscard]] bool AddLeaf(CXmlWalk& walk, std::byte* leaf, std::byte* link, std::byte* block);
    [[nodiscard]] bool AddArray(std::byte* array, std::uint16_t id);
    [[nodiscard]] bool AddItem(const std::byte* item, std::size_t width, XmlKind kind);
    [[nodiscard]] bool AddText(const std::byte* cell);
    [[nodiscard]] bool TakeId(CXmlWalk& walk, const std::byte* node, const std::byte* link, const std::byte* block,
                              std::uint16_t& new_id);
    [[nodiscard]] bool AddLink(const std::byte* slot) { return AddPiece(slot, xml_address_width, 0, true); }
    [[nodiscard]] bool AddPiece(const std::byte* address, std::size_t length, std::uint16_t id, bool ends_in_link);
    [[nodiscard]] bool PutPiece();
    [[nodiscard]] bool EndRange(std::size_t place, std::uint32_t old_size);
    [[nodiscard]] std::uint16_t InternRecent(std::string_view name);
    [[nodiscard]] std::uint16_t Intern(std::string_view name);
    [[nodiscard]] bool PutLong(const Piece& piece);
    [[nodiscard]] bool PutHeader();
    [[nodiscard]] bool PutNames();
    [[nodiscard]] std::byte* Finish();

    // With the last piece, which waits for what follows it.
    [[nodiscard]] std::size_t Size() const { return builder_.Size() + last_.length; }

    CXmlBlockBuilder builder_;
    Piece last_{};
    CXmlVector<Range> ranges_;
    CXmlVector<std::uint32_t> open_; // size fields of the elements around the current node
    CXmlNameTable names_;
    std::array<Recent, 64> recent_{};
    std::uint32_t source_code_page_;
    std::uint32_t target_code_page_;
};

// Runs that touch become one: a compact source goes over in a few of them.
inline bool CXmlCompactor::AddPiece(const std::byte* address, std::size_t length, std::uint16_t id, bool ends_in_link)
{
    if (length > largest_size - Size()) {
        return false;
    }
    const bool clears_link = ends_in_link && LoadField<std::byte*>(address + length - xml_address_width) != nullptr;
    if (id == 0 && last_.address + last_.length == address && !last_.clears_link) {
        last_.length += static_cast<std::uint32_t>(length);
        last_.clears_link = clears_link;
        return true;
    }
    if (!PutPiece()) {
        return false;
    }
    last_.address = address;
    last_.length = static_cast<std::uint32_t>(length);
    last_.id = id;
    last_.clears_link = clears_link;
    return true;
}

inline bool CXmlCompactor::PutPiece()
{
    if (last_.length > long_piece) {
        return PutLong(std::exchange(last_, {}));
    }
    std::byte* at = builder_.Add(last_.length);
    if (at == nullptr) {
        return false;
    }
    CopyShort(at, last_.address, last_.length);
    if (last_.id != 0) {
        PutField(at, last_.id);
    }
    if (last_.clears_link) {
        PutField(at + last_.length - xml_address_width, static_cast<std::byte*>(nullptr));
    }
    last_ = {};
    return true;
}

} // namespace partkeep
