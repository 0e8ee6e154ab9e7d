#include "xml/xml_writer.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <string_view>
#include <utility>

#include "xml/xml_array.h"
#include "xml/xml_code_page.h"
#include "xml/xml_walk.h"

namespace partkeep {

namespace {

// Where the text goes, in large pieces.
class CXmlSink {
public:
    virtual ~CXmlSink() = default;
    // False when nothing more need come.
    [[nodiscard]] virtual bool Take(std::string_view text) = 0;
};

class CXmlStreamSink final : public CXmlSink {
public:
    explicit CXmlStreamSink(std::ostream& stream) : stream_(stream) {}
    bool Take(std::string_view text) override
    {
        stream_.write(text.data(), static_cast<std::streamsize>(text.size()));
        return true;
    }

private:
    std::ostream& stream_;
};

class CXmlTextSink final : public CXmlSink {
public:
    // Growing by doubling, a long text would take fresh memory more than twice.
    explicit CXmlTextSink(std::size_t guess)
    {
        try {
            text_.reserve(guess);
        } catch (const std::bad_alloc&) { // it may turn out to be shorter
        }
    }
    bool Take(std::string_view text) override
    {
        try {
            text_.append(text);
            return true;
        } catch (const std::bad_alloc&) {
            return false; // a string knows no other way to say it
        }
    }
    [[nodiscard]] std::string& Text() { return text_; }

private:
    std::string text_;
};

class CXmlWriter {
public:
    CXmlWriter(CXmlSink& sink, std::uint8_t pretty, std::int32_t indent) : sink_(sink), pretty_(pretty), indent_(indent)
    {
    }

    // False when there is no memory.
    bool Write(const CXmlElement& root);

private:
    bool WriteElement(const CXmlElement& element);
    void WriteAttributes(CXmlWalk& walk);
    void WriteLeaf(CXmlWalk& walk);
    void WriteValue(const std::byte* leaf);
    void WriteArray(const std::byte* array);
    void WriteNewLine(std::size_t depth);

    // `bytes` is a literal.
    template <std::size_t Length>
    void PutMark(const char (&bytes)[Length])
    {
        MakeRoom(Length - 1);
        std::memcpy(at_, bytes, Length - 1);
        at_ += Length - 1;
    }
    void PutName(std::string_view name)
    {
        if (MakeRoom(name.size())) {
            at_ = CopyByWords(at_, name.data(), name.size());
        } else {
            Put(name);
        }
    }
    // A text in a block, up to its first NUL.
    void PutText(std::string_view text)
    {
        if (MakeRoom(text.size())) {
            at_ = CopyToNul(at_, text.data(), text.size());
        } else {
            Put(text.substr(0, text.find('\0')));
        }
    }
    void Put(std::string_view bytes);
    // True when that many bytes, and what copies write beyond them, fit into the buffer now.
    bool MakeRoom(std::size_t size)
    {
        if (size <= static_cast<std::size_t>(end_ - at_)) {
            return true;
        }
        Flush();
        return size <= buffer_size;
    }
    void Flush();

    static constexpr std::size_t buffer_size = std::size_t{16} * 1024;
    static constexpr std::size_t slack = 16;

    CXmlSink& sink_;
    bool failed_ = false;
    std::uint8_t pretty_;
    std::int32_t indent_;
    char* at_ = buffer_;
    char* end_ = buffer_ + buffer_size;
    char buffer_[buffer_size + slack];
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
    return whole && !failed_;
}

bool CXmlWriter::WriteElement(const CXmlElement& element)
{
    CXmlWalk walk(element.Node(), element.Block());
    std::size_t depth = 0;
    bool start_tag_open = false;
    for (;;) {
        const CXmlWalk::Step step = walk.Next();
        if (step == CXmlWalk::Step::Done || step == CXmlWalk::Step::Failed) {
            return step == CXmlWalk::Step::Done;
        }
        const bool leaves = step == CXmlWalk::Step::Leave;
        depth -= leaves ? 1 : 0;
        if (leaves && start_tag_open) {
            PutMark("/>");
            start_tag_open = false;
            continue;
        }
        if (start_tag_open) {
            PutMark(">");
        }
        WriteNewLine(depth);
        start_tag_open = step == CXmlWalk::Step::Enter;
        if (step == CXmlWalk::Step::Leaf) {
            WriteLeaf(walk);
            continue;
        }
        leaves ? PutMark("</") : PutMark("<");
        PutName(walk.Name());
        if (leaves) {
            PutMark(">");
        } else {
            WriteAttributes(walk); // how the tag ends depends on whether children follow
            ++depth;
        }
    }
}

void CXmlWriter::WriteAttributes(CXmlWalk& walk)
{
    std::byte* holder = HolderOf(walk.Node());
    const std::byte* end = LinkOf(holder);
    for (XmlPosition at = FirstPositionIn(holder); at.current != end; at.Step()) {
        PutMark(" ");
        std::byte* block = at.InChain() ? BlockOfRoot(at.current) : walk.Block();
        PutName(walk.NameOf(at.current, LinkOf(at.current), block));
        PutMark("=\"");
        WriteValue(at.current);
        PutMark("\"");
    }
}

void CXmlWriter::WriteLeaf(CXmlWalk& walk)
{
    const std::string_view name = walk.Name();
    PutMark("<");
    PutName(name);
    PutMark(">");
    WriteValue(walk.Node());
    PutMark("</");
    PutName(name);
    PutMark(">");
}

void CXmlWriter::WriteValue(const std::byte* leaf)
{
    const XmlKind kind = NodeKind(leaf);
    if (kind == XmlKind::Text) {
        PutText({reinterpret_cast<const char*>(leaf + XmlPlaces::counted), NodeSize(leaf)});
    } else if (IsArray(kind)) {
        WriteArray(leaf);
    } else {
        Put(ScalarAsText(ScalarOf(leaf)));
    }
}

void CXmlWriter::WriteArray(const std::byte* array)
{
    bool first = true;
    for (CXmlItems item(array); !item.AtEnd(); item.Next()) {
        if (!first) {
            PutMark(" ");
        }
        first = false;
        const std::string_view text = ScalarAsText(item.Scalar());
        Put(text.substr(0, text.find('\0')));
    }
}

void CXmlWriter::WriteNewLine(std::size_t depth)
{
    if (pretty_ == 0) {
        return;
    }
    PutMark("\n");
    constexpr std::string_view blanks = "                                                                ";
    for (std::size_t left = depth * static_cast<std::size_t>(indent_); left != 0;) {
        const std::size_t run = std::min(left, blanks.size());
        PutName(blanks.substr(0, run));
        left -= run;
    }
}

void CXmlWriter::Put(std::string_view bytes)
{
    if (MakeRoom(bytes.size())) {
        CopyShort(at_, bytes.data(), bytes.size());
        at_ += bytes.size();
    } else {
        failed_ = failed_ || !sink_.Take(bytes);
    }
}

// Empties the buffer.
void CXmlWriter::Flush()
{
    failed_ = failed_ || !sink_.Take({buffer_, static_cast<std::size_t>(at_ - buffer_)});
    at_ = buffer_;
}

bool IsDocument(const CXmlDocument& document)
{
    return !document.IsEmpty() && !IsHolder(document.Node());
}

} // namespace

bool WriteXml(std::ostream& stream, const CXmlDocument& document)
{
    if (stream.fail() || !IsDocument(document)) {
        return false;
    }
    CXmlStreamSink sink(stream);
    return CXmlWriter(sink, document.pretty, document.indent).Write(document);
}

bool WriteXml(std::string& text, const CXmlDocument& document)
{
    if (!IsDocument(document)) {
        return false;
    }
    CXmlTextSink sink(GuessLengthOf(document.Block()));
    if (!CXmlWriter(sink, document.pretty, document.indent).Write(document)) {
        return false;
    }
    text = std::move(sink.Text());
    return true;
}

} // namespace partkeep
