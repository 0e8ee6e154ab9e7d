// What the tests of the XML library share: documents from text and back, and trees shown as one line.
#pragma once

#include <gtest/gtest.h>

#include <initializer_list>
#include <sstream>
#include <string>
#include <string_view>

#include "xml/xml_iterator.h"
#include "xml/xml_reader.h"
#include "xml/xml_writer.h"

namespace xml_test {

inline std::string Declared(std::string_view body)
{
    return R"(<?xml version="1.0" encoding="UTF-8"?>)" + std::string(body);
}

// The text some times over, with numbers from 1 on where "#" stands.
inline std::string Times(int count, const std::string& text)
{
    std::string all;
    for (int number = 1; number <= count; ++number) {
        for (const char byte : text) {
            byte == '#' ? all += std::to_string(number) : all += byte;
        }
    }
    return all;
}

// The document, empty when it was not read.
inline partkeep::CXmlDocument Read(const std::string& text)
{
    std::istringstream stream(text);
    partkeep::CXmlDocument document;
    partkeep::ReadXml(stream, document);
    return document;
}

// Without line breaks; "-" when it was not written. Into memory as into a stream.
inline std::string Write(const partkeep::CXmlElement& root)
{
    partkeep::CXmlDocument document;
    document = root;
    document.pretty = 0;
    std::ostringstream stream;
    const bool written = partkeep::WriteXml(stream, document);
    std::string text;
    EXPECT_TRUE(!partkeep::WriteXml(text, document) || !written || text == stream.str()) << "may fail, but not differ";
    return written ? stream.str() : "-";
}

// As written, behind the declaration.
inline std::string Show(const partkeep::CXmlElement& root)
{
    const std::string text = Write(root);
    return text == "-" ? text : text.substr(text.find("?>") + 2);
}

inline partkeep::CXmlElement TextLeaf(const char* name, std::string_view text, std::uint32_t code_page = 65001)
{
    return {name, partkeep::CXmlString(text), code_page};
}

// With its length in front, as a text stands in a block.
inline std::string Counted(std::string_view bytes)
{
    return std::string{static_cast<char>(bytes.size()), 0, 0, 0} + std::string(bytes);
}

// An array of texts that all stand in it.
inline partkeep::CXmlElement TextArray(const char* name, std::initializer_list<std::string_view> texts)
{
    std::string items;
    for (const std::string_view text : texts) {
        items += Counted(text);
    }
    const auto kind = static_cast<partkeep::XmlKind>(-static_cast<int>(partkeep::XmlKind::Text));
    items.append(partkeep::xml_address_width, '\0');
    return partkeep::CXmlElement(partkeep::MakeFixedBlock(name, kind, Counted(items), 932));
}

} // namespace xml_test
