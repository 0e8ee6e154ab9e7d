#include "xml/xml_compactor.h"

#include <utility>

#include "xml/xml_array.h"

namespace partkeep {

namespace {

constexpr std::byte zero_slot[xml_address_width] = {};

std::string_view CellText(const std::byte* cell)
{
    return {reinterpret_cast<const char*>(cell + 4), LoadField<std::uint32_t>(cell)};
}

} // namespace

std::byte* CompactXml(std::byte* node, std::byte* block, std::uint32_t target_code_page)
{
    std::byte* result = nullptr;
    const CXmlCompactor compactor(node, block, target_code_page, result);
    return result;
}

CXmlCompactor::CXmlCompactor(std::byte* source, std::byte* source_block, std::uint32_t target_code_page,
                             std::byte*& result)
    : source_code_page_(CodePageOf(source_block)), target_code_page_(target_code_page)
{
    const bool convertible = source_code_page_ == target_code_page_ ||
                             (IsConvertible(source_code_page_) && IsConvertible(target_code_page_));
    if (convertible && Walk(source, source_block)) {
        result = Build();
    }
}

bool CXmlCompactor::Walk(std::byte* source, std::byte* source_block)
{
    CXmlWalk walk(source, source_block);
    for (;;) {
        bool taken = false;
        switch (walk.Next()) {
        case CXmlWalk::Step::enter:
            taken = EnterElement(walk);
            break;
        case CXmlWalk::Step::leaf:
            taken = AddLeaf(walk, walk.Node(), walk.Block());
            break;
        case CXmlWalk::Step::leave:
            taken = LeaveElement(walk.Node());
            break;
        case CXmlWalk::Step::done:
            return true;
        default:
            return false;
        }
        if (!taken) {
            return false;
        }
    }
}

bool CXmlCompactor::EnterElement(CXmlWalk& walk)
{
    std::byte* element = walk.Node();
    std::byte* holder = HolderOf(element);
    const std::size_t holder_size = size_ + XmlPlaces::counted + XmlPlaces::head;
    std::uint16_t id = 0;
    if (!TakeId(walk, element, walk.Block(), id) || !open_.Add(static_cast<std::uint32_t>(size_ + XmlPlaces::head)) ||
        !AddPiece(element, XmlPlaces::counted + XmlPlaces::holder, id, true)) {
        return false;
    }
    const std::byte* end = LinkOf(holder);
    for (XmlPosition at = FirstPositionIn(holder); at.current != end; at.Step()) {
        if (!AddLeaf(walk, at.current, at.InChain() ? BlockOfRoot(at.current) : walk.Block())) {
            return false;
        }
    }
    return EndRange(holder_size, NodeSize(holder)) && AddLink(end);
}

bool CXmlCompactor::LeaveElement(std::byte* element)
{
    const std::uint32_t place = open_.Last();
    open_.RemoveLast();
    return EndRange(place, NodeSize(element)) && AddLink(LinkOf(element));
}

bool CXmlCompactor::AddLeaf(CXmlWalk& walk, std::byte* leaf, std::byte* block)
{
    std::uint16_t id = 0;
    if (!TakeId(walk, leaf, block, id)) {
        return false;
    }
    const XmlKind kind = NodeKind(leaf);
    if (IsArray(kind)) {
        return AddArray(leaf, id) && AddLink(LinkOf(leaf));
    }
    if (kind == XmlKind::text && source_code_page_ != target_code_page_) {
        return AddPiece(leaf, XmlPlaces::head, id, false) && AddText(leaf + XmlPlaces::head) && AddLink(LinkOf(leaf));
    }
    return AddPiece(leaf, static_cast<std::size_t>(BehindNode(leaf) - leaf), id, true);
}

// All items come to stand in one run, with an extension head of 0.
bool CXmlCompactor::AddArray(std::byte* array, std::uint16_t id)
{
    const std::size_t place = size_ + XmlPlaces::head;
    if (!AddPiece(array, XmlPlaces::counted, id, false)) {
        return false;
    }
    for (XmlItems item(array); !item.AtEnd(); item.Next()) {
        if (!AddItem(item.Item(), item.Width(), item.Kind())) {
            return false;
        }
    }
    return AddPiece(zero_slot, sizeof zero_slot, 0, false) && EndRange(place, NodeSize(array));
}

bool CXmlCompactor::AddItem(const std::byte* item, std::size_t width, XmlKind kind)
{
    return kind == XmlKind::text ? AddText(item) : AddPiece(item, width, 0, false);
}

bool CXmlCompactor::AddText(const std::byte* cell)
{
    if (source_code_page_ == target_code_page_) {
        return AddPiece(cell, 4 + CellText(cell).size(), 0, false);
    }
    CXmlTextCell transcoded = TranscodeText(CellText(cell), source_code_page_, target_code_page_);
    const std::byte* bytes = transcoded.Bytes();
    const std::size_t length = transcoded.Size();
    return bytes != nullptr && temporaries_.Add(std::move(transcoded)) && AddPiece(bytes, length, 0, false);
}

// `new_id` stays 0 where the node keeps its id.
bool CXmlCompactor::TakeId(CXmlWalk& walk, const std::byte* node, const std::byte* block, std::uint16_t& new_id)
{
    const std::uint16_t old_id = NodeId(node);
    if (old_id == 0) {
        return true;
    }
    CXmlWalk::Name* entry = walk.EntryOf(node, block);
    std::uint16_t id = entry == nullptr ? std::uint16_t{0} : entry->note;
    if (id == 0) {
        id = InternRecent(walk.NameOf(node, block));
    }
    if (id == 0) {
        return false;
    }
    if (entry != nullptr) {
        entry->note = id;
    }
    new_id = id == old_id ? std::uint16_t{0} : id;
    return true;
}

// Linked nodes bring the same few names in blocks of their own: those seen last are known without a search.
std::uint16_t CXmlCompactor::InternRecent(std::string_view name)
{
    const std::size_t mixed = name.empty() ? 0
                                           : std::size_t{5} * static_cast<std::uint8_t>(name.front()) +
                                                 static_cast<std::uint8_t>(name.back());
    Recent& recent = recent_[(mixed + name.size()) % recent_.size()];
    if (recent.id == 0 || recent.name != name) {
        recent = {name, Intern(name)};
    }
    return recent.id;
}

std::uint16_t CXmlCompactor::Intern(std::string_view name)
{
    if (source_code_page_ == target_code_page_) {
        return names_.Intern(name);
    }
    const CXmlString transcoded = TranscodeName(CXmlString(name), source_code_page_, target_code_page_);
    return transcoded.IsNull() ? std::uint16_t{0} : names_.Intern(transcoded.View());
}

bool CXmlCompactor::AddNewPiece(const Piece& piece)
{
    constexpr std::size_t part_size = 4096;
    if ((pieces_.IsEmpty() || pieces_.Last().Size() == part_size) && !pieces_.Add({})) {
        return false;
    }
    return pieces_.Last().Add(piece);
}

// What has come since the size field at `place` makes up its value.
bool CXmlCompactor::EndRange(std::size_t place, std::uint32_t old_size)
{
    const auto size = static_cast<std::uint32_t>(size_ - place - 4);
    return size == old_size || ranges_.Add({static_cast<std::uint32_t>(place), size});
}

std::byte* CXmlCompactor::Build()
{
    std::size_t whole = size_ + XmlPlaces::counted + xml_address_width;
    for (const CXmlString& name : names_.Names()) {
        whole += 4 + std::size_t{name.Length()};
    }
    if (whole > largest_size) {
        return nullptr;
    }
    std::byte* block = AllocateXmlBlock(whole);
    if (block == nullptr) {
        return nullptr;
    }
    std::byte* at = xml_pack::Header<xml_address_width>(block, target_code_page_);
    for (const CXmlVector<Piece>& part : pieces_) {
        for (const Piece& piece : part) {
            at = PutPiece(at, piece);
        }
    }
    PutNames(at);
    for (const Range& range : ranges_) {
        PutField(block + range.place, range.size);
    }
    return block;
}

std::byte* CXmlCompactor::PutPiece(std::byte* at, const Piece& piece)
{
    std::memcpy(at, piece.address, piece.length);
    if (piece.id != 0) {
        PutField(at, piece.id);
    }
    at += piece.length;
    if (piece.clears_link) {
        PutField(at - xml_address_width, static_cast<std::byte*>(nullptr));
    }
    return at;
}

std::byte* CXmlCompactor::PutNames(std::byte* at) const
{
    std::byte* start = at = xml_pack::Head(at, 0, XmlKind::text_array);
    at += 4;
    for (const CXmlString& name : names_.Names()) {
        at = PutBytes(PutField(at, name.Length()), name.View());
    }
    at = PutField(at, static_cast<std::byte*>(nullptr));
    PutField(start, static_cast<std::uint32_t>(at - start - 4));
    return at;
}

} // namespace partkeep
