#include "xml/xml_walk.h"

#include "xml/xml_array.h"

namespace partkeep {

std::string_view CXmlWalk::NameInArray(const std::byte* names, std::uint16_t id)
{
    CXmlItems item(names);
    for (; id > 1 && !item.AtEnd(); --id) {
        item.Next();
    }
    return id == 0 || item.AtEnd() ? std::string_view() : item.Text();
}

CXmlWalk::Step CXmlWalk::Start()
{
    if (started_) {
        return Step::Done;
    }
    started_ = true;
    link_ = LinkOf(node_);
    return Visit();
}

bool CXmlWalk::AddTable()
{
    CXmlVector<Entry> names;
    for (CXmlItems item(NameArrayOf(block_)); !item.AtEnd(); item.Next()) {
        if (!names.Add({item.Text(), 0})) {
            return false;
        }
    }
    return tables_.Add(std::move(names));
}

} // namespace partkeep
