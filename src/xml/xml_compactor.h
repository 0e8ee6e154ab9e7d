// Makes an element free-standing: a copy of it and of all under it in one new block, where everything stands
// inline under one merged name array, in one code page.
#pragma once

#include <cstddef>
#include <cstdint>

#include "xml/xml_code_page.h"
#include "xml/xml_name_table.h"
#include "xml/xml_vector.h"
#include "xml/xml_walk.h"

namespace partkeep {

// `node` stands in `block`, whose code page is taken for everything under it. The chain on the node's own link
// does not come along. The new block has 0 references and no owner. Null when there is no memory, for more than
// 65,534 names or 4 GB, and when a code page can't be converted.
[[nodiscard]] std::byte* CompactXml(std::byte* node, std::byte* block, std::uint32_t target_code_page);

// Goes through the source once and notes the byte runs of which the copy consists; then allocates once, puts them
// one behind the other, and sets the few fields that must differ from the source.
class CXmlCompactor {
public:
    CXmlCompactor(std::byte* source, std::byte* source_block, std::uint32_t target_code_page, std::byte*& result);

private:
    struct Piece {
        const std::byte* address;
        std::size_t length;
    };
    // Places in the copy, where a field gets a value of its own.
    struct Range {
        std::uint32_t place;
        std::uint32_t size;
    };
    struct NewId {
        std::uint32_t place;
        std::uint16_t id;
    };

    [[nodiscard]] bool Walk(std::byte* source, std::byte* source_block);
    [[nodiscard]] bool EnterElement(CXmlWalk& walk);
    [[nodiscard]] bool LeaveElement(std::byte* element);
    [[nodiscard]] bool AddLeaf(CXmlWalk& walk, std::byte* leaf, std::byte* block);
    [[nodiscard]] bool AddArray(std::byte* array);
    [[nodiscard]] bool AddItem(const std::byte* item, std::size_t width, XmlKind kind);
    [[nodiscard]] bool AddText(const std::byte* cell);
    [[nodiscard]] bool AddId(CXmlWalk& walk, const std::byte* node, const std::byte* block);
    [[nodiscard]] bool AddLink(const std::byte* slot);
    [[nodiscard]] bool EndRange(std::size_t place, std::uint32_t old_size);
    [[nodiscard]] bool AddPiece(const std::byte* address, std::size_t length);
    [[nodiscard]] std::uint16_t Intern(std::string_view name);
    [[nodiscard]] std::byte* Build();
    std::byte* PutNames(std::byte* at) const;

    std::size_t size_ = XmlPlaces::root;
    CXmlVector<Piece> pieces_;
    CXmlVector<Range> ranges_;
    CXmlVector<std::uint32_t> links_; // slots in the copy to clear
    CXmlVector<NewId> ids_;
    CXmlVector<std::uint32_t> open_; // size fields of the elements around the current node
    CXmlVector<CXmlTextCell> temporaries_;
    CXmlNameTable names_;
    std::uint32_t source_code_page_;
    std::uint32_t target_code_page_;
};

} // namespace partkeep
