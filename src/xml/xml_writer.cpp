#include "xml/xml_writer.h"

#include <algorithm>
#include <cstring>
#include <string_view>

#include "xml/xml_array.h"
#include "xml/xml_code_page.h"
#include "xml/xml_walk.h"

namespace partkeep {

namespace {

class CXmlWriter {
public:
    CXmlWriter(std::ostream& stream, std::uint8_t pretty, std::int32_t indent)
        : stream_(stream), pretty_(pretty), indent_(indent)
    {
    }

    bool Write(const CXmlElement& root);

private:
    bool WriteElement(const CXmlElement& element);
    void WriteStartTag(CXmlWalk& walk);
    void WriteAttributes(CXmlWalk& walk);
    void WriteLeaf(CXmlWalk& walk);
    void WriteValue(const std::byte* leaf);
    void WriteArray(const std::byte* array);
    void WriteEndTag(std::string_view name);
    void WriteNewLine(std::size_t depth);

    void Put(std::string_view bytes);
    void PutText(std::string_view text);
    void Flush();

    std::ostream& stream_;
    std::uint8_t pretty_;
    std::int32_t indent_;
    std::size_t used_ = 0;
    char buffer_[std::size_t{16} * 1024];
};

bool CXmlWriter::Write(const CXmlElement& root)
{
    Put("<?xml version=\"1.0\" encoding=\"");
    if (const char* name = CodePageName(root.GetCodePage())) {
        Put(name);
    }
    Put("\"?>");
    const bool whole = WriteElement(root);
    Flush();
    return whole;
}

bool CXmlWriter::WriteElement(const CXmlElement& element)
{
    CXmlWalk walk(element.Node(), element.Block());
    bool start_tag_open = false;
    for (;;) {
        const CXmlWalk::Step step = walk.Next();
        if (step == CXmlWalk::Step::done || step == CXmlWalk::Step::failed) {
            return step == CXmlWalk::Step::done;
        }
        if (step == CXmlWalk::Step::leave && start_tag_open) {
            Put("/>");
            start_tag_open = false;
            continue;
        }
        if (start_tag_open) {
            Put(">");
        }
        if (pretty_ != 0) {
            WriteNewLine(walk.Depth());
        }
        start_tag_open = step == CXmlWalk::Step::enter;
        if (step == CXmlWalk::Step::enter) {
            WriteStartTag(walk);
        } else if (step == CXmlWalk::Step::leaf) {
            WriteLeaf(walk);
        } else {
            WriteEndTag(walk.NameOf(walk.Node(), walk.Block()));
        }
    }
}

// Without its final ">", which depends on whether children follow.
void CXmlWriter::WriteStartTag(CXmlWalk& walk)
{
    Put("<");
    Put(walk.NameOf(walk.Node(), walk.Block()));
    WriteAttributes(walk);
}

void CXmlWriter::WriteAttributes(CXmlWalk& walk)
{
    std::byte* holder = HolderOf(walk.Node());
    const std::byte* end = LinkOf(holder);
    for (XmlPosition at = FirstPositionIn(holder); at.current != end; at.Step()) {
        Put(" ");
        Put(walk.NameOf(at.current, at.InChain() ? BlockOfRoot(at.current) : walk.Block()));
        Put("=\"");
        WriteValue(at.current);
        Put("\"");
    }
}

void CXmlWriter::WriteLeaf(CXmlWalk& walk)
{
    const std::string_view name = walk.NameOf(walk.Node(), walk.Block());
    Put("<");
    Put(name);
    Put(">");
    WriteValue(walk.Node());
    WriteEndTag(name);
}

void CXmlWriter::WriteValue(const std::byte* leaf)
{
    if (IsArray(NodeKind(leaf))) {
        WriteArray(leaf);
    } else {
        PutText(ScalarAsText(ScalarOf(leaf)));
    }
}

void CXmlWriter::WriteArray(const std::byte* array)
{
    bool first = true;
    for (XmlItems item(array); !item.AtEnd(); item.Next()) {
        if (!first) {
            Put(" ");
        }
        first = false;
        PutText(ScalarAsText(item.Scalar()));
    }
}

void CXmlWriter::WriteEndTag(std::string_view name)
{
    Put("</");
    Put(name);
    Put(">");
}

void CXmlWriter::WriteNewLine(std::size_t depth)
{
    constexpr std::string_view blanks = "                                                                ";
    Put("\n");
    for (std::size_t left = depth * static_cast<std::size_t>(indent_); left != 0;) {
        const std::size_t run = std::min(left, blanks.size());
        Put(blanks.substr(0, run));
        left -= run;
    }
}

void CXmlWriter::Put(std::string_view bytes)
{
    if (bytes.size() > sizeof buffer_ - used_) {
        Flush();
        if (bytes.size() > sizeof buffer_) {
            stream_.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
            return;
        }
    }
    if (!bytes.empty()) {
        std::memcpy(buffer_ + used_, bytes.data(), bytes.size());
        used_ += bytes.size();
    }
}

void CXmlWriter::PutText(std::string_view text)
{
    Put(text.substr(0, text.find('\0')));
}

void CXmlWriter::Flush()
{
    stream_.write(buffer_, static_cast<std::streamsize>(used_));
    used_ = 0;
}

} // namespace

bool WriteXml(std::ostream& stream, const CXmlDocument& document)
{
    if (stream.fail() || document.IsEmpty() || IsHolder(document.Node())) {
        return false;
    }
    return CXmlWriter(stream, document.pretty, document.indent).Write(document);
}

} // namespace partkeep
