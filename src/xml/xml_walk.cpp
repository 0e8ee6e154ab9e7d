#include "xml/xml_walk.h"

#include "xml/xml_array.h"

namespace partkeep {

namespace {

std::string_view NameInArray(const std::byte* name_array, std::uint16_t id)
{
    XmlItems item(name_array);
    for (; id > 1 && !item.AtEnd(); --id) {
        item.Next();
    }
    return id == 0 || item.AtEnd() ? std::string_view() : item.Text();
}

bool Decode(const std::byte* name_array, CXmlVector<CXmlWalk::Name>& names)
{
    for (XmlItems item(name_array); !item.AtEnd(); item.Next()) {
        if (!names.Add({item.Text(), 0})) {
            return false;
        }
    }
    return true;
}

} // namespace

CXmlWalk::Step CXmlWalk::Next()
{
    if (!started_) {
        started_ = true;
        return Visit();
    }
    if (leaving_) {
        Leave();
    }
    if (frames_.IsEmpty()) {
        return Step::done;
    }
    Frame& frame = frames_.Last();
    if (frame.at.current == frame.end) {
        node_ = frame.node;
        block_ = frame.block;
        leaving_ = true; // the names stay until the user has seen the node
        return Step::leave;
    }
    node_ = frame.at.current;
    block_ = frame.at.InChain() ? BlockOfRoot(node_) : frame.block;
    frame.at.Step();
    return Visit();
}

CXmlWalk::Step CXmlWalk::Visit()
{
    if (NodeKind(node_) != XmlKind::element) {
        return Step::leaf;
    }
    return Enter() ? Step::enter : Step::failed;
}

bool CXmlWalk::Enter()
{
    Frame frame{node_, block_, FirstPositionIn(node_), LinkOf(node_), none, false};
    if (!frames_.IsEmpty() && frames_.Last().block == block_) {
        frame.names = frames_.Last().names;
    } else if (!HasSingleName(block_)) {
        CXmlVector<Name> names;
        if (!Decode(NameArrayOf(block_), names) || !tables_.Add(std::move(names))) {
            return false;
        }
        frame.names = tables_.Size() - 1;
        frame.owns_names = true;
    }
    return frames_.Add(frame);
}

void CXmlWalk::Leave()
{
    leaving_ = false;
    if (frames_.Last().owns_names) {
        tables_.RemoveLast();
    }
    frames_.RemoveLast();
}

std::size_t CXmlWalk::Depth() const
{
    const bool inside_itself = !frames_.IsEmpty() && frames_[frames_.Size() - 1].node == node_;
    return frames_.Size() - (inside_itself ? 1 : 0);
}

std::string_view CXmlWalk::NameOf(const std::byte* node, const std::byte* block)
{
    const Name* entry = EntryOf(node, block);
    return entry != nullptr ? entry->text : NameInArray(NameArrayOf(block), NodeId(node));
}

} // namespace partkeep
