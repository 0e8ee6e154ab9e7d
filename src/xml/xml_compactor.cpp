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
    if (NodeId(source) == xml_skipped_id) {
        return; // nothing of such a node goes into a copy
    }
    const bool convertible = source_code_page_ == target_code_page_ ||
                             (IsConvertible(source_code_page_) && IsConvertible(target_code_page_));
    if (convertible && PutHeader() && Walk(source, source_block) && PutPiece() && PutNames()) {
        result = Finish();
    }
}

bool CXmlCompactor::Walk(std::byte* source, std::byte* source_block)
{
    CXmlWalk walk(source, source_block);
    for (;;) {
        bool taken = false;
        switch (walk.Next()) {
        case CXmlWalk::Step::Enter:
            taken = EnterElement(walk);
            break;
        case CXmlWalk::Step::Leaf:
            taken = AddLeaf(walk, walk.Node(), walk.Link(), walk.Block());
            break;
        case CXmlWalk::Step::Leave:
            taken = LeaveElement(walk.Node());
            break;
        case CXmlWalk::Step::Done:
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
    const std::size_t holder_size = Size() + XmlPlaces::counted + XmlPlaces::head;
    std::uint16_t id = 0;
    if (!TakeId(walk, element, walk.Link(), walk.Block(), id) ||
        !open_.Add(static_cast<std::uint32_t>(Size() + XmlPlaces::head)) ||
        !AddPiece(element, XmlPlaces::counted + XmlPlaces::holder, id, true)) {
        return false;
    }
    const std::byte* end = LinkOf(holder);
    for (XmlPosition at = FirstPositionIn(holder); at.current != end; at.Step()) {
        if (!AddLeaf(walk, at.current, LinkOf(at.current), at.InChain() ? BlockOfRoot(at.current) : walk.Block())) {
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

bool CXmlCompactor::AddLeaf(CXmlWalk& walk, std::byte* leaf, std::byte* link, std::byte* block)
{
    std::uint16_t id = 0;
    if (!TakeId(walk, leaf, link, block, id)) {
        return false;
    }
    const XmlKind kind = NodeKind(leaf);
    if (IsArray(kind)) {
        return AddArray(leaf, id) && AddLink(link);
    }
    if (kind == XmlKind::Text && source_code_page_ != target_code_page_) {
        return AddPiece(leaf, XmlPlaces::head, id, false) && AddText(leaf + XmlPlaces::head) && AddLink(link);
    }
    return AddPiece(leaf, static_cast<std::size_t>(link + xml_address_width - leaf), id, true);
}

// All items come to stand in one run, with an extension head of 0.
bool CXmlCompactor::AddArray(std::byte* array, std::uint16_t id)
{
    const std::size_t place = Size() + XmlPlaces::head;
    if (!AddPiece(array, XmlPlaces::counted, id, false)) {
        return false;
    }
    for (CXmlItems item(array); !item.AtEnd(); item.Next()) {
        if (!AddItem(item.Item(), item.Width(), item.Kind())) {
            return false;
        }
    }
    return AddPiece(zero_slot, sizeof zero_slot, 0, false) && EndRange(place, NodeSize(array));
}

bool CXmlCompactor::AddItem(const std::byte* item, std::size_t width, XmlKind kind)
{
    return kind == XmlKind::Text ? AddText(item) : AddPiece(item, width, 0, false);
}

bool CXmlCompactor::AddText(const std::byte* cell)
{
    if (source_code_page_ == target_code_page_) {
        return AddPiece(cell, 4 + CellText(cell).size(), 0, false);
    }
    const CXmlTextCell transcoded = TranscodeText(CellText(cell), source_code_page_, target_code_page_);
    if (transcoded.Bytes() == nullptr || transcoded.Size() > largest_size - Size() || !PutPiece()) {
        return false;
    }
    std::byte* at = builder_.Add(transcoded.Size());
    if (at != nullptr) {
        CopyShort(at, transcoded.Bytes(), transcoded.Size());
    }
    return at != nullptr;
}

// `new_id` stays 0 where the node keeps its id.
bool CXmlCompactor::TakeId(CXmlWalk& walk, const std::byte* node, const std::byte* link, const std::byte* block,
                           std::uint16_t& new_id)
{
    const std::uint16_t old_id = NodeId(node);
    if (old_id == 0) {
        return true;
    }
    CXmlWalk::Entry* entry = walk.EntryOf(node, block);
    std::uint16_t id = entry == nullptr ? std::uint16_t{0} : entry->note;
    if (id == 0) {
        id = InternRecent(walk.NameOf(node, link, block));
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
    const XmlWord first = FirstWord(name.data(), name.size());
    const std::uint32_t mixed =
        (static_cast<std::uint32_t>(first ^ first >> 24) + static_cast<std::uint32_t>(name.size())) * 2654435769U;
    Recent& recent = recent_[mixed >> 26];
    const bool known = recent.id != 0 && recent.first == first && recent.name.size() == name.size() &&
                       (name.size() <= sizeof first || recent.name == name);
    if (!known) {
        recent = {first, name, Intern(name)};
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

// What has come since the size field at `place` makes up its value.
bool CXmlCompactor::EndRange(std::size_t place, std::uint32_t old_size)
{
    const auto size = static_cast<std::uint32_t>(Size() - place - 4);
    return size == old_size || ranges_.Add({static_cast<std::uint32_t>(place), size});
}

bool CXmlCompactor::PutLong(const Piece& piece)
{
    const std::byte* bytes = piece.address;
    std::size_t length = piece.length;
    if (piece.id != 0) {
        std::byte* at = builder_.Add(sizeof piece.id);
        if (at == nullptr) {
            return false;
        }
        PutField(at, piece.id);
        bytes += sizeof piece.id;
        length -= sizeof piece.id;
    }
    if (!piece.clears_link) {
        return builder_.AddLong(bytes, length);
    }
    return builder_.AddLong(bytes, length - sizeof zero_slot) && builder_.AddLong(zero_slot, sizeof zero_slot);
}

std::byte* CXmlCompactor::Finish()
{
    std::byte* block = builder_.Finish();
    for (const Range& range : ranges_) {
        if (block != nullptr) {
            PutField(block + range.place, range.size);
        }
    }
    return block;
}

bool CXmlCompactor::PutHeader()
{
    std::byte* at = builder_.Add(XmlPlaces::root);
    if (at != nullptr) {
        xml_pack::Header<xml_address_width>(at, target_code_page_);
    }
    return at != nullptr;
}

bool CXmlCompactor::PutNames()
{
    std::size_t size = XmlPlaces::counted + xml_address_width;
    for (const CXmlString& name : names_.Names()) {
        size += 4 + std::size_t{name.Length()};
    }
    std::byte* at = size > largest_size - builder_.Size() ? nullptr : builder_.Add(size);
    if (at == nullptr) {
        return false;
    }
    at = PutField(xml_pack::Head(at, 0, XmlKind::TextArray), static_cast<std::uint32_t>(size - XmlPlaces::counted));
    for (const CXmlString& name : names_.Names()) {
        at = PutBytes(PutField(at, name.Length()), name.View());
    }
    PutField(at, static_cast<std::byte*>(nullptr));
    return true;
}

} // namespace partkeep
