#include "xml/xml_block_builder.h"

#include <algorithm>

namespace partkeep {

namespace {

// Less at the cursor is not worth a start there.
constexpr std::size_t least_room = 256;
// Taken at once, and no more than a page gives.
constexpr std::size_t usual_room = 4096;

} // namespace

CXmlBlockBuilder::CXmlBlockBuilder()
{
    const bool start = static_cast<std::size_t>(xml_cursor.end - xml_cursor.at) >= least_room;
    begin_ = at_ = start ? xml_cursor.at + xml_reach_width : nullptr;
    end_ = start ? xml_cursor.end : nullptr;
}

CXmlBlockBuilder::~CXmlBlockBuilder()
{
    for (XmlHead* page : pages_) {
        GiveXmlRoom(page);
    }
}

bool CXmlBlockBuilder::CloseRun()
{
    const auto size = static_cast<std::size_t>(at_ - begin_);
    if (size != 0 && !runs_.Add({begin_, size})) {
        return false;
    }
    before_ += size;
    begin_ = at_;
    return true;
}

bool CXmlBlockBuilder::NextRun(std::size_t size)
{
    if (!CloseRun()) {
        return false;
    }
    XmlHead** page = pages_.AddPlace();
    if (page == nullptr) {
        return false;
    }
    const XmlRoom room = TakeXmlRoom(std::max(size, usual_room));
    if (room.head == nullptr) {
        pages_.RemoveLast();
        return false;
    }
    *page = room.head;
    begin_ = at_ = RoomOf(room.head);
    end_ = room.end;
    return true;
}

bool CXmlBlockBuilder::AddLong(const std::byte* bytes, std::size_t size)
{
    if (!CloseRun() || !runs_.Add({bytes, size})) {
        return false;
    }
    before_ += size;
    return true;
}

std::byte* CXmlBlockBuilder::Finish()
{
    if (runs_.IsEmpty() && pages_.IsEmpty()) {
        return AllocateXmlBlock(Size()); // just there
    }
    if (!CloseRun()) {
        return nullptr;
    }
    std::byte* block = AllocateXmlTreeBlock(before_);
    if (block != nullptr) {
        std::byte* at = block;
        for (const Run& run : runs_) {
            at = std::copy_n(run.bytes, run.size, at);
        }
    }
    return block;
}

} // namespace partkeep
