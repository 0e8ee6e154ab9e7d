// Reads a document from a byte stream: a declaration, one root element, elements, attributes in double quotes,
// text in leaves, comments. It expands no entities and knows no CDATA, DOCTYPE or processing instructions. It
// scans forward by delimiters and drops what it cannot make sense of; docs/xml.md tells what becomes of it.
#pragma once

#include <cstddef>
#include <istream>
#include <string_view>

#include "xml/xml_element.h"

namespace partkeep {

// Elements inside one another, the root counted. A document nested deeper is not read at all.
inline constexpr std::size_t xml_nesting_limit = 1000;

// True when a root element was read into the document. False, with the document as it was, when the stream had
// failed, no element came out, the nesting limit was passed, or there was no memory. The stream stands behind the
// first "<" after the root, or at its end. Carriage returns are ordinary bytes: open the stream in text mode.
bool ReadXml(std::istream& stream, CXmlDocument& document);

// The same from memory.
bool ReadXml(std::string_view text, CXmlDocument& document);

} // namespace partkeep
