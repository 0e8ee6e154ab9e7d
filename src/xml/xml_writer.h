// Writes a document as text: bytes as the blocks hold them, nothing escaped and nothing converted.
#pragma once

#include <ostream>
#include <string>

#include "xml/xml_element.h"

namespace partkeep {

// False when the stream had failed on entry or the document is empty or stands on an attribute holder, and nothing
// was written then; false also when there is no memory, with only a part written. Whether the stream took it all is
// not looked at. A text is written up to its first NUL.
bool WriteXml(std::ostream& stream, const CXmlDocument& document);

// The same into memory: `text` becomes the whole document, or stays as it was when the result is false.
bool WriteXml(std::string& text, const CXmlDocument& document);

} // namespace partkeep
