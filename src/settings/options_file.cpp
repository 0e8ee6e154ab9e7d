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

void ReadLeaf(const CXmlElement& leaf, SelectionOptions& options)
{
    const char* narrow_name = leaf.GetName();
    const std::u16string name = narrow_name == nullptr ? u"" : WidenText(narrow_name, leaf.GetCodePage());
    if (name == WidenText(prompt_name)) {
        const CXmlValue<bool> value = leaf.AsBool();
        options.quantityPrompt = value.has != 0 ? static_cast<std::int16_t>(value.value) : options.quantityPrompt;
    } else if (name == WidenText(filter_name)) {
        const CXmlValue<std::int16_t> value = leaf.AsShort();
        options.filterState = value.has != 0 ? value.value : options.filterState;
    }
}

} // namespace

OldFile ReadOptionsFile(std::u16string_view path, SelectionOptions& options)
{
    bool in_trouble = false;
    const auto text = ReadTextFile(path, &in_trouble);
    if (!text) {
        return in_trouble ? OldFile::Kept : OldFile::Dropped;
    }
    CXmlDocument document;
    if (ReadXml(*text, document)) {
        for (CXmlIterator leaf = document.Begin(); leaf != document.End(); ++leaf) {
            ReadLeaf(*leaf, options);
        }
    }
    return OldFile::Dropped;
}

void WriteOptionsFile(std::u16string_view path, const SelectionOptions& options, OldFile old_file)
{
    CXmlElement root(root_name, utf8_code_page);
    const bool complete = !root.AddChild(prompt_name, options.quantityPrompt != 0).IsEmpty() &&
                          !root.AddChild(filter_name, options.filterState).IsEmpty();
    CXmlDocument document;
    document = root;
    std::string text;
    if (complete && WriteXml(text, document)) {
        ReplaceTextFile(path, text, old_file);
    }
}

} // namespace partkeep
