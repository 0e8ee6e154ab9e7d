// What the tests of the XML library share: documents from text and back, and trees shown as one line.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "xml/xml_iterator.h"
#include "xml/xml_reader.h"
#include "xml/xml_writer.h"

namespace xml_test {

inline constexpr std::string_view declaration = R"(<?xml version="1.0" encoding="UTF-8"?>)";

// The document, empty when it was not read.
partkeep::CXmlDocument Read(std::string_view text);

// Without line breaks; nothing when it was not written.
std::optional<std::string> Write(const partkeep::CXmlElement& root, std::uint8_t pretty = 0);

// As written, behind the declaration; "-" for an empty handle.
std::string Show(const partkeep::CXmlElement& root);

// The names of the children, each with a comma behind it.
std::string ChildNames(const partkeep::CXmlElement& element);

partkeep::CXmlElement Child(const partkeep::CXmlElement& element, std::size_t index);

partkeep::CXmlElement TextLeaf(const char* name, std::string_view text, std::uint32_t code_page = 65001);

std::string BytesOf(const std::byte* block);

} // namespace xml_test
