// The XML libraries of the comparison, each as its own users would call it. A document is held behind a pointer; what
// a library cannot do is not offered.
#pragma once

#include <cstddef>
#include <memory>
#include <string>

namespace xml_bench {

class Document {
public:
    virtual ~Document() = default;
};

using DocumentPtr = std::unique_ptr<Document>;

class Library {
public:
    virtual ~Library() = default;

    virtual DocumentPtr Read(const std::string& text) const = 0;
    virtual std::string Write(const Document& document) const = 0;
    // Goes over every element and attribute and looks at each name and value; gives a sum of what it saw.
    virtual std::size_t Walk(const Document& document) const = 0;
    // A root with `count` children of one number each.
    virtual DocumentPtr Append(int count) const = 0;
    // A new document with a copy of the root's first child.
    virtual DocumentPtr Copy(const Document& document) const = 0;
    // The two values of the options file, as one number; writing them.
    virtual int ReadOptions(const std::string& text) const = 0;
    virtual std::string WriteOptions(bool prompt, int filter) const = 0;
};

const Library& Partkeep();
const Library& Pugixml();
const Library& Tinyxml2();

// This library, from a stream that gives one byte at a time.
DocumentPtr ReadByteByByte(const std::string& text, bool buffered);

// Expat has no tree: it calls back for every element, attribute and text. Gives the number of calls.
std::size_t ReadWithExpat(const std::string& text);

} // namespace xml_bench
