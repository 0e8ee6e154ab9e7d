#include "settings/options_file.h"

#include <string>

#include "platform/files.h"
#include "platform/text.h"
#include "xml/xml_iterator.h"
#include "xml/xml_reader.h"
#include "xml/xml_writer.h"

namespace partkeep {

namespace {

constexpr const char* root_name = "ZanPartkeepReadConfig";
constexpr const char* prompt_name = "InputNoFlag";
constexpr const char* filter_name = "FilterState";

void ReadLeaf(const CXmlElement& leaf, std::int16_t& quantity_prompt, std::int16_t& filter_state)
{
    const char* narrow_name = leaf.GetName();
    const std::u16string name = narrow_name == nullptr ? u"" : WidenText(narrow_name, leaf.GetCodePage());
    if (name == WidenText(prompt_name)) {
        const CXmlValue<bool> value = leaf.AsBool();
        quantity_prompt = value.has != 0 ? static_cast<std::int16_t>(value.value) : quantity_prompt;
    } else if (name == WidenText(filter_name)) {
        const CXmlValue<std::int16_t> value = leaf.AsShort();
        filter_state = value.has != 0 ? value.value : filter_state;
    }
}

} // namespace

OldFile ReadOptionsFile(std::u16string_view path, std::int16_t& quantity_prompt, std::int16_t& filter_state)
{
    bool in_trouble = false;
    const auto text = ReadTextFile(path, &in_trouble);
    if (!text) {
        return in_trouble ? OldFile::Kept : OldFile::Dropped;
    }
    CXmlDocument document;
    if (ReadXml(*text, document)) {
        for (CXmlIterator leaf = document.Begin(); leaf != document.End(); ++leaf) {
            ReadLeaf(*leaf, quantity_prompt, filter_state);
        }
    }
    return OldFile::Dropped;
}

void WriteOptionsFile(std::u16string_view path, std::int16_t quantity_prompt, std::int16_t filter_state,
                      OldFile old_file)
{
    CXmlElement root(root_name, utf8_code_page);
    const bool complete = !root.AddChild(prompt_name, quantity_prompt != 0).IsEmpty() &&
                          !root.AddChild(filter_name, filter_state).IsEmpty();
    CXmlDocument document;
    document = root;
    std::string text;
    if (complete && WriteXml(text, document)) {
        ReplaceTextFile(path, text, old_file);
    }
}

} // namespace partkeep
