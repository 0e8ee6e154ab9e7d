#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "xml/xml_bytes.h"

using namespace partkeep;

namespace {

// Vectors of exactly the bytes there are, so that a sanitizer sees what goes beyond.
template <CXmlByteSet Set>
void SearchEverywhere()
{
    for (std::size_t size = 0; size < 50; ++size) {
        for (int byte = 0; byte < 256; ++byte) {
            std::vector<char> text(size);
            std::generate(text.begin(), text.end(),
                          [at = 0, byte]() mutable { return at++ % 7 == 0 ? static_cast<char>(byte) : 'x'; });
            for (std::size_t from = 0; from <= size; ++from) {
                const char* end = text.data() + size;
                ASSERT_EQ(Find<Set>(text.data() + from, end), xml_bytes_plain::Find<Set>(text.data() + from, end))
                    << size << " " << byte << " " << from;
            }
        }
    }
}

TEST(XmlBytes, AreFoundAsOneByOne)
{
    SearchEverywhere<CXmlByteSet("<")>();
    SearchEverywhere<CXmlByteSet("\0= \n\t")>();
    SearchEverywhere<CXmlByteSet(">/ \n\t")>();
    const std::string high = "\xBC\xFC\x3C";
    EXPECT_EQ(xml_bytes_plain::Find<CXmlByteSet("<")>(high.data(), high.data() + 3), high.data() + 2);
}

TEST(XmlBytes, AreMarkedAndComparedManyAtOnce)
{
    std::string text(xml_marks_width, 'x');
    for (std::size_t at = 0; at < text.size(); at += 1 + at / 5) {
        text[at] = '<';
        EXPECT_EQ(Marks<CXmlByteSet("<")>(text.data()), xml_bytes_plain::Marks<CXmlByteSet("<")>(text.data()));
        EXPECT_NE(Marks<CXmlByteSet("<")>(text.data()) >> at & 1, 0U);
        std::string other = text;
        other[at] = '\xFC';
        for (std::size_t size = 0; size <= xml_wide; ++size) {
            EXPECT_EQ(EqualWide(text.data(), other.data(), size), size <= at);
            EXPECT_EQ(xml_bytes_plain::EqualWide(text.data(), other.data(), size), size <= at);
        }
    }
}

TEST(XmlBytes, AreCopiedAndComparedToTheLastAndNoFurther)
{
    for (std::size_t size = 0; size < 70; ++size) {
        std::vector<char> source(size);
        std::generate(source.begin(), source.end(), [at = 0]() mutable { return static_cast<char>(1 + at++); });
        std::vector<char> target(size);
        CopyShort(target.data(), source.data(), size);
        EXPECT_EQ(target, source);
        EXPECT_TRUE(EqualShort(target.data(), source.data(), size));
        for (std::size_t place = 0; place < size; ++place) {
            target[place] ^= 1;
            EXPECT_FALSE(EqualShort(target.data(), source.data(), size)) << size << " " << place;
            target[place] ^= 1;
        }
        source.resize(size + 16);
        for (std::size_t nul = 0; nul <= size; ++nul) {
            std::vector<char> text = source;
            text[nul] = '\0';
            std::vector<char> copy(text.size());
            std::vector<char> plain(text.size());
            const char* end = CopyToNul(copy.data(), text.data(), size);
            EXPECT_EQ(end - copy.data(), xml_bytes_plain::CopyToNul(plain.data(), text.data(), size) - plain.data());
            EXPECT_EQ(std::string(copy.data(), nul), std::string(text.data(), nul));
        }
    }
}

} // namespace
