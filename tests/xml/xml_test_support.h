// What the tests of the XML library share: documents from text and back, and trees shown as one line.
#pragma once

#include <optional>
#include <sstream>
#include <string>
#include <string_view>

#include "xml/xml_iterator.h"
#include "xml/xml_reader.h"
#include "xml/xml_writer.h"

namespace xml_test {

inline constexpr std::string_view declaration = R"(<?xml version="1.0" encoding="UTF-8"?>)";

// The document, empty when it was not read.
inline partkeep::CXmlDocument Read(std::string_view text)
{
    std::istringstream stream{std::string(text)};
    partkeep::CXmlDocument document;
    partkeep::ReadXml(stream, document);
    return document;
}

// Without line breaks unless asked for; nothing when it was not written.
inline std::optional<std::string> Write(const partkeep::CXmlElement& root, std::uint8_t pretty = 0)
{
    partkeep::CXmlDocument document;
    document = root;
    document.pretty = pretty;
    std::ostringstream stream;
    return partkeep::WriteXml(stream, document) ? std::optional(stream.str()) : std::nullopt;
}

// As written, behind the declaration; "-" for an empty handle.
inline std::string Show(const partkeep::CXmlElement& root)
{
    const auto text = Write(root);
    return text ? text->substr(text->find("?>") + 2) : "-";
}

// The names of the children, each with a comma behind it.
inline std::string ChildNames(const partkeep::CXmlElement& element)
{
    std::string names;
    for (partkeep::CXmlIterator it = element.Begin(); it != element.End(); ++it) {
        const partkeep::CXmlElement child = *it;
        names += std::string(child.GetName()) + ",";
    }
    return names;
}

inline partkeep::CXmlElement Child(const partkeep::CXmlElement& element, std::size_t index)
{
    partkeep::CXmlIterator it = element.Begin();
    while (index-- != 0) {
        ++it;
    }
    return *it;
}

inline partkeep::CXmlElement TextLeaf(const char* name, std::string_view text, std::uint32_t code_page = 65001)
{
    return {name, partkeep::CXmlString(text), code_page};
}

inline std::string BytesOf(const std::byte* block)
{
    const std::byte* end = partkeep::LinkOf(partkeep::NameArrayOf(block));
    return {reinterpret_cast<const char*>(block), static_cast<std::size_t>(end - block)};
}

} // namespace xml_test
