// The pages of the pool, counted: what a document took serves the next one, and hardly more is kept.
#include <cstdio>
#include <cstdlib>
#include <new>
#include <vector>

#include "xml_test_support.h"

using namespace partkeep;
using namespace xml_test;

namespace {
long pages = 0; // nothing else in this program asks for so much alignment
void* last_piece = nullptr;
} // namespace

void* operator new(std::size_t size, std::align_val_t alignment, const std::nothrow_t& /*tag*/) noexcept
{
    const auto boundary = static_cast<std::size_t>(alignment);
    ++pages;
    return std::aligned_alloc(boundary, (size + boundary - 1) / boundary * boundary);
}
void operator delete(void* page, std::align_val_t /*alignment*/) noexcept
{
    --pages;
    std::free(page);
}

namespace {

// When all that is static has gone.
[[gnu::destructor]] void ExpectNoPages()
{
    FreeXml(last_piece, 8);
    if (pages != 0) {
        std::fprintf(stderr, "%ld pages are left in a host that goes on without this module\n", pages);
        std::_Exit(EXIT_FAILURE);
    }
}

TEST(XmlPool, AlignsEachPieceBehindOddOnesAndOnANewPage)
{
    std::vector<void*> pieces;
    for (std::size_t at = 0; at < 100'000; ++at) {
        const std::size_t alignment = std::size_t{1} << at % 5;
        pieces.push_back(AllocateXml(16 + at % 31, alignment));
        const auto address = reinterpret_cast<std::uintptr_t>(pieces[at]);
        ASSERT_EQ(address % alignment, 0U) << at;
        ASSERT_LE(address % 0x10000 + 16 + at % 31, 0x10000U - 64) << "no page reaches further";
    }
    void* newest = AllocateXml(8, 1);
    FreeXml(newest, 8);
    EXPECT_EQ(AllocateXml(8, 1), newest);
    FreeXml(newest, 8);
    for (std::size_t at = 0; at < pieces.size(); ++at) {
        FreeXml(pieces[at], 16 + at % 31);
    }
}

TEST(XmlPool, KeepsPagesForTheNextDocumentAndGivesTheRestBack)
{
    std::atexit([] { last_piece = last_piece == nullptr ? AllocateXml(8, 1) : last_piece; }); // outlives the pool
    const CXmlElement made("e", 65001);
    const std::string text = Declared("<r>" + Times(60'000, "<p name=\"#\"><q>#</q></p>") + "</r>");
    constexpr long spare = 64;
    long held = 0;
    for (int round = 0; round < 4; ++round) {
        const long before = pages;
        {
            const CXmlDocument document = Read(text);
            CXmlVector<CXmlString> texts; // small pieces have pages of their own
            for (int i = 0; i < 60'000; ++i) {
                ASSERT_TRUE(texts.Add(CXmlString(std::to_string(i).c_str())));
            }
            EXPECT_GT(pages, spare + 10) << "more than are kept";
        }
        EXPECT_EQ(pages, spare + 2) << "two for the next piece, and the next block behind what was made";
        EXPECT_TRUE(round == 0 || pages <= held) << "from " << before << " to " << pages;
        held = pages;
    }
    for (int i = 0; i < 2000; ++i) {
        const CXmlDocument small = Read(Declared("<r><a>1</a><b x=\"2\"/></r>"));
    }
    EXPECT_LE(pages, held) << "a small document goes into what is there";
}

} // namespace
