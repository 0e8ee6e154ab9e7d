// The quick way through elements that lie in the window in their usual form: leaves, start tags and end tags without
// anything that would have to be passed over. Each is taken whole, with the way up to the next "<", or not at all; what
// it leaves is for the careful way of xml_parser.h, which makes the same of both.
#pragma once

#include "xml/xml_input.h"
#include "xml/xml_mould.h"
#include "xml/xml_parsing.h"

namespace partkeep {

// Takes as much as it can within the innermost of the open elements and those that open therein, at least one of
// which stays open, and gives the place it has come to, behind another "<". What finds no memory is left, too: so the
// careful way is the one that reports it.
[[nodiscard]] const char* TakeUsualElements(const XmlWindow& window, const CXmlMould& mould, XmlOpenElements& open);

} // namespace partkeep
