// The reader does as the plain one does: the same result, names, texts and code pages, and it leaves the stream in the
// same place and state. From memory it reads the same.
#include <cstdio>
#include <cstdlib>
#include <sstream>
#include <string>

#include "fuzz/xml_plain_reader.h"
#include "tests/xml/watched_memory.h"
#include "xml/xml_iterator.h"
#include "xml/xml_reader.h"

using namespace partkeep;

namespace {

bool IsSameLeaf(const CXmlElement& leaf, const std::string& name, const std::string& text, std::uint32_t code_page)
{
    return leaf.GetName() == name && leaf.TextView() == text && leaf.AsString().has != 0 &&
           leaf.GetCodePage() == code_page;
}

bool IsSame(const CXmlElement& element, const xml_plain::Element& plain)
{
    if (plain.leaf) {
        return IsSameLeaf(element, plain.name, plain.text, plain.code_page);
    }
    bool same = element.GetName() == plain.name && element.AsString().has == 0;
    same = same && element.GetCodePage() == plain.code_page;
    const CXmlElement holder = element.GetAttributes();
    CXmlIterator at = holder.Begin();
    for (const auto& [name, value] : plain.attributes) {
        same = same && at != holder.End() && IsSameLeaf(*at++, name, value, plain.code_page);
    }
    same = same && at == holder.End();
    at = element.Begin();
    for (const xml_plain::Node& child : plain.children) {
        same = same && at != element.End() && IsSame(*at++, *child);
    }
    return same && at == element.End();
}

void Check(bool holds, const char* what, const std::string& text)
{
    if (!holds) {
        std::fprintf(stderr, "another %s: %s\n", what, text.c_str());
        std::abort();
    }
}

void Compare(bool read, const CXmlDocument& document, const xml_plain::Node& root, const std::string& text)
{
    Check(read == (root != nullptr), "result", text);
    Check(document.IsEmpty() != read, "document", text);
    Check(!read || IsSame(document, *root), "content", text);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size)
{
    const std::string text(reinterpret_cast<const char*>(data), size);
    xml_plain::Reader plain(text, xml_nesting_limit);
    const xml_plain::Node root = plain.Run();
    {
        CXmlDocument document;
        std::istringstream stream(text);
        Compare(ReadXml(stream, document), document, root, text);
        Check(stream.eof() == plain.HasEnded() && !stream.fail(), "state", text);
        const auto rest = stream.rdbuf()->in_avail();
        Check(plain.IsTooDeep() || text.size() - static_cast<std::size_t>(rest > 0 ? rest : 0) == plain.Place(),
              "place", text);
        // Exactly the bytes, so that a sanitizer sees what is read beyond them.
        const std::vector<char> exact(text.begin(), text.end());
        CXmlDocument from_memory;
        watched_memory::share_rooms = true;
        Compare(ReadXml({exact.data(), exact.size()}, from_memory), from_memory, root, text);
        watched_memory::share_rooms = false;
    }
    Check(watched_memory::live_pieces == 0, "count of pieces left", text);
    return 0;
}
