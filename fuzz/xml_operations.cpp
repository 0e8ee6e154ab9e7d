// A random sequence of store operations against a plain model, a tree of ordinary vectors, with compaction and
// releases in between. Each operation takes four bytes: which one, two handles, and a value.
#include <array>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "tests/xml/watched_memory.h"
#include "xml/xml_iterator.h"
#include "xml/xml_memory.h"
#include "xml/xml_reader.h"
#include "xml/xml_writer.h"

using namespace partkeep;

namespace {

struct Node;
using Shared = std::shared_ptr<Node>;

struct Node {
    std::string name;
    bool leaf = false;
    std::string text;
    std::vector<std::pair<std::string, std::string>> attributes;
    std::vector<Shared> children;
};

struct Slot {
    CXmlElement handle;
    Shared model;
};

constexpr std::size_t most_nodes = 300;

void Check(bool holds, const char* what)
{
    if (!holds) {
        std::fprintf(stderr, "%s\n", what);
        std::abort();
    }
}

std::size_t Count(const Node& node)
{
    std::size_t count = 1 + node.attributes.size();
    for (const Shared& child : node.children) {
        count += Count(*child);
    }
    return count;
}

bool Contains(const Node& node, const Node* wanted)
{
    bool found = &node == wanted;
    for (const Shared& child : node.children) {
        found = found || Contains(*child, wanted);
    }
    return found;
}

Shared Copy(const Node& node)
{
    auto copy = std::make_shared<Node>(node);
    for (Shared& child : copy->children) {
        child = Copy(*child);
    }
    return copy;
}

std::string Show(const Node& node)
{
    std::string text = "<" + node.name;
    for (const auto& [name, value] : node.attributes) {
        text += " " + name + "=\"" + value + "\"";
    }
    if (!node.leaf && node.children.empty()) {
        return text + "/>";
    }
    text += ">" + node.text;
    for (const Shared& child : node.children) {
        text += Show(*child);
    }
    return text + "</" + node.name + ">";
}

std::string Show(const CXmlElement& element)
{
    CXmlDocument document;
    document = element;
    document.pretty = 0;
    std::ostringstream stream;
    Check(WriteXml(stream, document), "not written");
    return stream.str().substr(stream.str().find("?>") + 2);
}

class Run {
public:
    void Do(unsigned operation, Slot& first, Slot& second, unsigned value)
    {
        const std::string name = "n" + std::to_string(value % 40);
        switch (operation % 12) {
        case 0:
            first = {CXmlElement(name.c_str(), 65001), std::make_shared<Node>(Node{name, false, "", {}, {}})};
            break;
        case 1:
            first = {CXmlElement(name.c_str(), CXmlString(std::string(value, 't')), value % 3 == 0 ? 932 : 65001),
                     std::make_shared<Node>(Node{name, true, std::string(value, 't'), {}, {}})};
            break;
        case 2:
        case 3:
            AddChild(first, second, name, value);
            break;
        case 4:
            AddAttribute(first, name, value);
            break;
        case 5:
            Append(first, second);
            break;
        case 6:
            StepInto(first, second, value);
            break;
        case 7:
            first = Slot(second);
            break;
        case 8:
            first = MakeArray(name, value);
            break;
        case 9:
            Hide(first, value);
            break;
        case 10:
            ReadAgain(first, second);
            break;
        default:
            first = {};
        }
    }

    static void Compare(const Slot& slot)
    {
        Check(slot.handle.IsEmpty() == !slot.model, "empty");
        if (slot.model) {
            Check(slot.handle.GetName() == slot.model->name, "name");
            Check(Show(slot.handle) == Show(*slot.model), "content");
        }
    }

private:
    // The value tells of which kind the items are, how many stand in the array, and how many in extension cells.
    static Slot MakeArray(const std::string& name, unsigned value)
    {
        const bool texts = value % 2 == 0;
        const unsigned inside = value / 2 % 4;
        const unsigned items = inside + value / 8 % 4;
        const auto bytes_of = [&](unsigned item) {
            const std::string text(item, 'i');
            return texts ? std::string{static_cast<char>(item), 0, 0, 0} + text
                         : std::string(1, static_cast<char>(item));
        };
        std::byte* cell = nullptr;
        for (unsigned item = items; item-- > inside;) {
            const std::string bytes = bytes_of(item);
            auto* memory = static_cast<std::byte*>(AllocateXml(bytes.size() + xml_address_width, 1));
            PutField(PutBytes(memory, bytes), std::exchange(cell, memory));
        }
        std::string packed(4, '\0');
        std::string shown;
        for (unsigned item = 0; item < items; ++item) {
            packed += item < inside ? bytes_of(item) : "";
            shown += (item == 0 ? "" : " ") + (texts ? std::string(item, 'i') : std::to_string(item));
        }
        packed.append(reinterpret_cast<const char*>(&cell), sizeof cell);
        PutField(reinterpret_cast<std::byte*>(packed.data()), static_cast<std::uint32_t>(packed.size() - 4));
        const auto kind = static_cast<XmlKind>(-static_cast<int>(texts ? XmlKind::Text : XmlKind::Signed8));
        const CXmlElement array(MakeFixedBlock(name, kind, packed, 65001));
        const auto list = array.AsStringList();
        Check(list.has != 0 && list.value.Size() == items && array.AsString().has == 0, "items");
        return {array, std::make_shared<Node>(Node{name, true, shown, {}, {}})};
    }

    // Gives a node that nobody holds, nor anything under it, the id that is passed over.
    static void Hide(const Slot& parent, unsigned value)
    {
        if (!parent.model || parent.model->children.empty()) {
            return;
        }
        auto& children = parent.model->children;
        const std::size_t index = value % children.size();
        if (children[index].use_count() == 1 && children[index]->children.empty()) {
            const CXmlElement hidden = ChildAt(parent.handle, index);
            PutField(hidden.Node(), xml_skipped_id);
            Check(CXmlElement("other", 65001).AppendChild(hidden).IsEmpty(), "copy of what is passed over");
            children.erase(children.begin() + static_cast<std::ptrdiff_t>(index));
        }
    }

    // What is read as a whole goes as a whole, while nothing else is done with it.
    static void ReadAgain(Slot& result, const Slot& source)
    {
        if (!source.model || Count(*source.model) > most_nodes) {
            return;
        }
        CXmlDocument document;
        const Shared model = Copy(*source.model);
        Check(ReadXml("<? >\n" + Show(*model), document), "not read");
        const CXmlElement& root = document;
        result = {root, model};
    }

    static void AddChild(Slot& parent, Slot& result, const std::string& name, unsigned value)
    {
        const auto number = static_cast<std::int16_t>(value * 400);
        const bool flag = value % 2 != 0;
        CXmlElement child =
            value % 5 == 0 ? parent.handle.AddChild(name.c_str(), flag) : parent.handle.AddChild(name.c_str(), number);
        const bool possible = parent.model && !parent.model->leaf;
        Check(child.IsEmpty() == !possible, "child");
        if (possible) {
            const std::string text = value % 5 != 0 ? std::to_string(number) : flag ? "true" : "false";
            parent.model->children.push_back(std::make_shared<Node>(Node{name, true, text, {}, {}}));
            const Shared model = parent.model->children.back();
            result = {std::move(child), model};
        }
    }

    static void AddAttribute(Slot& slot, const std::string& name, unsigned value)
    {
        const std::string text = std::to_string(value);
        const bool possible = slot.model && !slot.model->leaf;
        Check(slot.handle.AddAttribute(name.c_str(), CXmlString(text)).IsEmpty() == !possible, "attribute");
        if (possible) {
            slot.model->attributes.emplace_back(name, text);
        }
    }

    // Whether the child itself was linked shows in the node that comes back; never may a tree end up in itself.
    static void Append(Slot& parent, Slot& child)
    {
        if (child.model && Count(*child.model) > most_nodes) {
            return;
        }
        const bool possible = parent.model && child.model && !parent.model->leaf;
        const Shared model = child.model;
        const CXmlElement linked = parent.handle.AppendChild(child.handle);
        Check(linked.IsEmpty() == !possible, "append");
        if (possible) {
            const bool same = linked.Node() == child.handle.Node();
            Check(!same || !Contains(*model, parent.model.get()), "in itself");
            parent.model->children.push_back(same ? model : Copy(*model));
        }
    }

    static void StepInto(const Slot& parent, Slot& result, unsigned value)
    {
        if (!parent.model || parent.model->children.empty()) {
            return;
        }
        const std::size_t index = value % parent.model->children.size();
        const Shared model = parent.model->children[index];
        result = {ChildAt(parent.handle, index), model};
    }

    static CXmlElement ChildAt(const CXmlElement& parent, std::size_t index)
    {
        CXmlIterator it = parent.Begin();
        for (std::size_t step = 0; step < index; ++step) {
            it++;
        }
        return *it;
    }
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size)
{
    {
        std::array<Slot, 8> slots;
        for (std::size_t at = 0; at + 4 <= size && at < 4 * std::size_t{400}; at += 4) {
            Slot& first = slots[data[at + 1] % slots.size()];
            Run().Do(data[at], first, slots[data[at + 2] % slots.size()], data[at + 3]);
            Run::Compare(first);
        }
        // What goes leaves the others as they are.
        for (Slot& slot : slots) {
            slot = {};
            for (const Slot& other : slots) {
                Run::Compare(other);
            }
        }
    }
    Check(watched_memory::live_pieces == 0, "leak");
    return 0;
}
