// A reader as plain as can be: byte by byte, recursive, into ordinary strings and vectors. What it makes of a text,
// where it stops and whether it has met the end is what the library's reader has to do as well.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace xml_plain {

struct Element;
using Node = std::unique_ptr<Element>; // null for a comment, or for what is malformed

struct Element {
    std::string name;
    std::uint32_t code_page = 0;
    bool leaf = false;
    std::string text;
    std::vector<std::pair<std::string, std::string>> attributes;
    std::vector<Node> children;
};

class Reader {
public:
    explicit Reader(std::string text, std::size_t nesting_limit) : text_(std::move(text)), limit_(nesting_limit) {}

    Node Run()
    {
        ParseDeclaration();
        SkipTo("<", true);
        Node root;
        while (!ended_ && root == nullptr && !too_deep_) {
            root = ParseElement(0);
            SkipTo("<", true);
        }
        return root;
    }

    [[nodiscard]] std::size_t Place() const { return at_; }
    [[nodiscard]] bool HasEnded() const { return ended_; }
    [[nodiscard]] bool IsTooDeep() const { return too_deep_; }

private:
    char Peek()
    {
        ended_ = ended_ || at_ == text_.size();
        return ended_ ? '\xFF' : text_[at_];
    }
    static bool IsIn(const std::string& set, char byte) { return set.find(byte) != std::string::npos; }

    void SkipTo(const std::string& set, bool consume)
    {
        while (!ended_ && !IsIn(set, Peek()) && !ended_) {
            ++at_;
        }
        at_ += !ended_ && consume ? 1 : 0;
    }
    std::size_t SkipSet(const std::string& set)
    {
        std::size_t count = 0;
        for (; !ended_ && IsIn(set, Peek()) && !ended_; ++at_) {
            ++count;
        }
        return count;
    }
    std::string ReadToken(const std::string& set)
    {
        std::string token;
        while (!ended_ && !IsIn(set, Peek()) && !ended_) {
            token += text_[at_++];
        }
        return token;
    }
    static std::string UpToNul(const std::string& token) { return token.c_str(); }

    void ParseDeclaration()
    {
        const std::string word_set = "?<=\" \n\t";
        SkipTo("?", true);
        SkipTo(" \n\t", true);
        SkipSet(word_set);
        std::string token = ReadToken(word_set);
        while (!ended_ && UpToNul(token) != ">") {
            if (UpToNul(token) == "encoding") {
                SkipTo("\"", true);
                TakeEncoding(UpToNul(ReadToken("<>=\" \n\t")));
            }
            SkipSet(word_set);
            token = ReadToken(word_set);
        }
    }
    void TakeEncoding(std::string name)
    {
        std::transform(name.begin(), name.end(), name.begin(),
                       [](char byte) { return byte >= 'A' && byte <= 'Z' ? static_cast<char>(byte + 32) : byte; });
        const std::pair<const char*, std::uint32_t> names[] = {
            {"shift-jis", 932}, {"shift_jis", 932}, {"utf-8", 65001}, {"utf-7", 65000}};
        for (const auto& [known, page] : names) {
            code_page_ = name == known ? page : code_page_;
        }
    }

    Node ParseElement(std::size_t depth)
    {
        const std::string word = ReadToken(">/ \n\t");
        if (word.substr(0, 3) == "!--") {
            SkipComment(word.substr(3));
            return nullptr;
        }
        auto element = std::make_unique<Element>();
        element->name = UpToNul(word);
        element->code_page = code_page_;
        too_deep_ = too_deep_ || (!element->name.empty() && depth == limit_);
        if (element->name.empty() || too_deep_) {
            return nullptr;
        }
        ParseAttributes(*element);
        const bool closed = Peek() == '/';
        SkipTo(">", true);
        if (closed) {
            return element;
        }
        const std::string text = ReadToken("<");
        SkipTo("<", true);
        if (element->attributes.empty() && Peek() == '/') {
            element->leaf = true;
            element->text = text;
        }
        for (char next = Peek(); !ended_ && next != '/' && !too_deep_; next = Peek()) {
            if (Node child = ParseElement(depth + 1)) {
                element->children.push_back(std::move(child));
            }
            SkipTo("<", true);
        }
        SkipTo("/", true);
        if (too_deep_ || UpToNul(ReadToken(">/ \n\t")) != element->name) {
            return nullptr;
        }
        SkipTo(">", true);
        return element;
    }
    void ParseAttributes(Element& element)
    {
        SkipSet(" \n\t");
        while (!IsIn("/>", Peek()) && !ended_) {
            const std::string name = UpToNul(ReadToken("= \n\t"));
            SkipTo("\"", true);
            element.attributes.emplace_back(name, ReadToken("\""));
            SkipTo("\"", true);
            SkipSet(" \n\t");
        }
    }
    void SkipComment(const std::string& rest)
    {
        if (rest.size() >= 2 && rest.substr(rest.size() - 2) == "--" && Peek() == '>') {
            return;
        }
        while (!ended_) {
            SkipTo("-", false);
            if (SkipSet("-") >= 2 && Peek() == '>') {
                return;
            }
        }
    }

    std::string text_;
    std::size_t limit_;
    std::size_t at_ = 0;
    bool ended_ = false;
    bool too_deep_ = false;
    std::uint32_t code_page_ = 65001;
};

} // namespace xml_plain
