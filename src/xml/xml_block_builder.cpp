#include "xml/xml_block_builder.h"

#include <algorithm>

namespace partkeep {

namespace {

// Less at the cursor is not worth a start there.
constexpr std::size_t least_room = 256;
// Taken at once, and no more than a page gives.
constexpr std::size_t usual_room = 4096;

// Keeps what was put at the cursor while the block gets its room: else that could be the same.
class CKeptStart {
public:
    explicit CKeptStart(const std::byte* behind)
        : head_(behind == nullptr ? nullptr : xml_cursor.head), at_(xml_cursor.at)
    {
        if (head_ != nullptr) {
            ++head_->held;
            const auto used = static_cast<std::size_t>(behind - at_);
            xml_cursor.at = behind_ = std::min(at_ + used + used % 2, xml_cursor.end);
        }
    }
    ~CKeptStart()
    {
        if (head_ == nullptr) {
            return;
        }
        if (xml_cursor.head == head_ && xml_cursor.at == behind_) {
            xml_cursor.at = at_;
        }
        Unhold(head_);
    }
    CKeptStart(const CKeptStart&) = delete;
    CKeptStart& operator=(const CKeptStart&) = delete;

private:
    XmlHead* head_;
    std::byte* at_;
    std::byte* behind_ = nullptr;
};

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
    LeaveStart();
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

void CXmlBlockBuilder::LeaveStart()
{
    if (pages_.IsEmpty()) {
        behind_start_ = at_;
    }
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
    LeaveStart();
    const CKeptStart kept(behind_start_);
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
