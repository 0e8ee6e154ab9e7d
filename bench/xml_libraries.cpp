#include "xml_libraries.h"

#include <expat.h>
#include <pugixml.hpp>
#include <tinyxml2.h>

#include <cstring>
#include <istream>
#include <streambuf>
#include <string_view>

#include "xml/xml_iterator.h"
#include "xml/xml_reader.h"
#include "xml/xml_writer.h"

namespace xml_bench {

namespace {

template <class T>
struct Holding : Document {
    T document;
};

template <class T>
T& Of(const Document& document)
{
    return const_cast<Holding<T>&>(static_cast<const Holding<T>&>(document)).document;
}

std::size_t Look(const char* text)
{
    return text == nullptr ? 0 : static_cast<unsigned char>(*text);
}

std::size_t Look(std::string_view text)
{
    return text.empty() ? 0 : static_cast<unsigned char>(text[0]);
}

class PartkeepLibrary : public Library {
public:
    using Tree = partkeep::CXmlDocument;

    DocumentPtr Read(const std::string& text) const override
    {
        auto result = std::make_unique<Holding<Tree>>();
        partkeep::ReadXml(text, result->document);
        return result;
    }
    std::string Write(const Document& document) const override { return Written(Of<Tree>(document)); }
    std::size_t Walk(const Document& document) const override { return WalkElement(Of<Tree>(document)); }
    DocumentPtr Append(int count) const override
    {
        auto result = std::make_unique<Holding<Tree>>();
        partkeep::CXmlElement root("root", 65001);
        for (int at = 0; at < count; ++at) {
            root.AddChild("item", static_cast<std::int16_t>(at));
        }
        result->document = root;
        return result;
    }
    DocumentPtr Copy(const Document& document) const override
    {
        auto result = std::make_unique<Holding<Tree>>();
        partkeep::CXmlElement root("root", 65001);
        root.AppendChild(*Of<Tree>(document).Begin());
        result->document = root;
        return result;
    }
    int ReadOptions(const std::string& text) const override
    {
        Tree document;
        partkeep::ReadXml(text, document);
        int options = 0;
        for (auto leaf = document.Begin(); leaf != document.End(); ++leaf) {
            const partkeep::CXmlElement option = *leaf;
            if (std::strcmp(option.GetName(), "InputNoFlag") == 0) {
                options += option.AsBool().value ? 100 : 0;
            } else if (std::strcmp(option.GetName(), "FilterState") == 0) {
                options += option.AsShort().value;
            }
        }
        return options;
    }
    std::string WriteOptions(bool prompt, int filter) const override
    {
        partkeep::CXmlElement root("ZanPartkeepReadConfig", 65001);
        root.AddChild("InputNoFlag", prompt);
        root.AddChild("FilterState", static_cast<std::int16_t>(filter));
        Tree document;
        document = root;
        return Written(document);
    }

private:
    static std::string Written(const Tree& document)
    {
        std::string text;
        partkeep::WriteXml(text, document);
        return text;
    }
    static std::size_t WalkElement(const partkeep::CXmlElement& element)
    {
        // A leaf has neither attributes nor children.
        std::size_t sum = Look(element.GetName()) + Look(element.TextView());
        const partkeep::CXmlElement attributes = element.GetAttributes();
        for (auto it = attributes.Begin(), end = attributes.End(); it != end; ++it) {
            const partkeep::CXmlElement attribute = *it;
            sum += Look(attribute.GetName()) + Look(attribute.TextView());
        }
        for (auto it = element.Begin(), end = element.End(); it != end; ++it) {
            sum += WalkElement(*it);
        }
        return sum;
    }
};

class PugixmlLibrary : public Library {
public:
    using Tree = pugi::xml_document;

    DocumentPtr Read(const std::string& text) const override
    {
        auto result = std::make_unique<Holding<Tree>>();
        result->document.load_buffer(text.data(), text.size());
        return result;
    }
    std::string Write(const Document& document) const override { return Written(Of<Tree>(document)); }
    std::size_t Walk(const Document& document) const override
    {
        return WalkElement(Of<Tree>(document).document_element());
    }
    DocumentPtr Append(int count) const override
    {
        auto result = std::make_unique<Holding<Tree>>();
        pugi::xml_node root = result->document.append_child("root");
        for (int at = 0; at < count; ++at) {
            root.append_child("item").text().set(static_cast<short>(at));
        }
        return result;
    }
    DocumentPtr Copy(const Document& document) const override
    {
        auto result = std::make_unique<Holding<Tree>>();
        result->document.append_child("root").append_copy(Of<Tree>(document).document_element().first_child());
        return result;
    }
    int ReadOptions(const std::string& text) const override
    {
        Tree document;
        document.load_buffer(text.data(), text.size());
        const pugi::xml_node root = document.document_element();
        return (root.child("InputNoFlag").text().as_bool() ? 100 : 0) + root.child("FilterState").text().as_int();
    }
    std::string WriteOptions(bool prompt, int filter) const override
    {
        Tree document;
        pugi::xml_node root = document.append_child("ZanPartkeepReadConfig");
        root.append_child("InputNoFlag").text().set(prompt);
        root.append_child("FilterState").text().set(filter);
        return Written(document);
    }

private:
    struct Appender : pugi::xml_writer {
        std::string text;
        void write(const void* data, std::size_t size) override { text.append(static_cast<const char*>(data), size); }
    };
    static std::string Written(const Tree& document)
    {
        Appender appender;
        document.save(appender, "  ");
        return std::move(appender.text);
    }
    static std::size_t WalkElement(const pugi::xml_node& element)
    {
        std::size_t sum = Look(element.name());
        for (const pugi::xml_attribute& attribute : element.attributes()) {
            sum += Look(attribute.name()) + Look(attribute.value());
        }
        for (const pugi::xml_node& child : element.children()) {
            sum += child.type() == pugi::node_element ? WalkElement(child) : Look(child.value());
        }
        return sum;
    }
};

class Tinyxml2Library : public Library {
public:
    using Tree = tinyxml2::XMLDocument;

    DocumentPtr Read(const std::string& text) const override
    {
        auto result = std::make_unique<Holding<Tree>>();
        result->document.Parse(text.data(), text.size());
        return result;
    }
    std::string Write(const Document& document) const override { return Written(Of<Tree>(document)); }
    std::size_t Walk(const Document& document) const override { return WalkElement(Of<Tree>(document).RootElement()); }
    DocumentPtr Append(int count) const override
    {
        auto result = std::make_unique<Holding<Tree>>();
        auto* root = result->document.NewElement("root");
        result->document.InsertEndChild(root);
        for (int at = 0; at < count; ++at) {
            root->InsertNewChildElement("item")->SetText(at);
        }
        return result;
    }
    DocumentPtr Copy(const Document& document) const override
    {
        auto result = std::make_unique<Holding<Tree>>();
        auto* root = result->document.NewElement("root");
        result->document.InsertEndChild(root);
        root->InsertEndChild(Of<Tree>(document).RootElement()->FirstChild()->DeepClone(&result->document));
        return result;
    }
    int ReadOptions(const std::string& text) const override
    {
        Tree document;
        document.Parse(text.data(), text.size());
        const tinyxml2::XMLElement* root = document.RootElement();
        return (root->FirstChildElement("InputNoFlag")->BoolText() ? 100 : 0) +
               root->FirstChildElement("FilterState")->IntText();
    }
    std::string WriteOptions(bool prompt, int filter) const override
    {
        Tree document;
        document.InsertEndChild(document.NewDeclaration());
        auto* root = document.NewElement("ZanPartkeepReadConfig");
        document.InsertEndChild(root);
        root->InsertNewChildElement("InputNoFlag")->SetText(prompt);
        root->InsertNewChildElement("FilterState")->SetText(filter);
        return Written(document);
    }

private:
    static std::string Written(const Tree& document)
    {
        tinyxml2::XMLPrinter printer;
        document.Print(&printer);
        return {printer.CStr(), static_cast<std::size_t>(printer.CStrSize() - 1)};
    }
    static std::size_t WalkElement(const tinyxml2::XMLElement* element)
    {
        std::size_t sum = Look(element->Name());
        for (const auto* attribute = element->FirstAttribute(); attribute != nullptr; attribute = attribute->Next()) {
            sum += Look(attribute->Name()) + Look(attribute->Value());
        }
        for (const auto* child = element->FirstChild(); child != nullptr; child = child->NextSibling()) {
            const auto* inner = child->ToElement();
            sum += inner != nullptr ? WalkElement(inner) : Look(child->Value());
        }
        return sum;
    }
};

} // namespace

const Library& Partkeep()
{
    static const PartkeepLibrary library;
    return library;
}

const Library& Pugixml()
{
    static const PugixmlLibrary library;
    return library;
}

const Library& Tinyxml2()
{
    static const Tinyxml2Library library;
    return library;
}

namespace {

// Without a buffer it has no get area; with one, a get area of a single byte.
class CByteByByte : public std::streambuf {
public:
    CByteByByte(const std::string& text, bool buffered) : at_(text.data()), end_(at_ + text.size()), buffered_(buffered)
    {
    }

protected:
    int_type underflow() override
    {
        if (at_ == end_) {
            return traits_type::eof();
        }
        if (buffered_) {
            byte_ = *at_++;
            setg(&byte_, &byte_, &byte_ + 1);
            return traits_type::to_int_type(byte_);
        }
        return traits_type::to_int_type(*at_);
    }
    int_type uflow() override
    {
        return buffered_     ? std::streambuf::uflow()
               : at_ == end_ ? traits_type::eof()
                             : traits_type::to_int_type(*at_++);
    }

private:
    const char* at_;
    const char* end_;
    char byte_ = 0;
    bool buffered_;
};

} // namespace

DocumentPtr ReadByteByByte(const std::string& text, bool buffered)
{
    CByteByByte buffer(text, buffered);
    std::istream stream(&buffer);
    auto result = std::make_unique<Holding<partkeep::CXmlDocument>>();
    partkeep::ReadXml(stream, result->document);
    return result;
}

std::size_t ReadWithExpat(const std::string& text)
{
    std::size_t calls = 0;
    XML_Parser parser = XML_ParserCreate(nullptr);
    XML_SetUserData(parser, &calls);
    const auto count = [](void* data) { ++*static_cast<std::size_t*>(data); };
    static const auto counted = count;
    XML_SetElementHandler(
        parser, [](void* data, const XML_Char*, const XML_Char**) { counted(data); },
        [](void* data, const XML_Char*) { counted(data); });
    XML_SetCharacterDataHandler(parser, [](void* data, const XML_Char*, int) { counted(data); });
    XML_Parse(parser, text.data(), static_cast<int>(text.size()), 1);
    XML_ParserFree(parser);
    return calls;
}

} // namespace xml_bench
