#include "xml_test_support.h"

#include <sstream>

using namespace partkeep;

namespace xml_test {

CXmlDocument Read(std::string_view text)
{
    std::istringstream stream{std::string(text)};
    CXmlDocument document;
    ReadXml(stream, document);
    return document;
}

std::optional<std::string> Write(const CXmlElement& root, std::uint8_t pretty)
{
    CXmlDocument document;
    document = root;
    document.pretty = pretty;
    std::ostringstream stream;
    return WriteXml(stream, document) ? std::optional(stream.str()) : std::nullopt;
}

std::string Show(const CXmlElement& root)
{
    const auto text = Write(root);
    return text ? text->substr(text->find("?>") + 2) : "-";
}

std::string ChildNames(const CXmlElement& element)
{
    std::string names;
    for (CXmlIterator it = element.Begin(); it != element.End(); ++it) {
        const CXmlElement child = *it;
        names += std::string(child.GetName()) + ",";
    }
    return names;
}

CXmlElement Child(const CXmlElement& element, std::size_t index)
{
    CXmlIterator it = element.Begin();
    while (index-- != 0) {
        ++it;
    }
    return *it;
}

CXmlElement TextLeaf(const char* name, std::string_view text, std::uint32_t code_page)
{
    return {name, CXmlString(text), code_page};
}

std::string BytesOf(const std::byte* block)
{
    const std::byte* end = LinkOf(NameArrayOf(block));
    return {reinterpret_cast<const char*>(block), static_cast<std::size_t>(end - block)};
}

} // namespace xml_test
