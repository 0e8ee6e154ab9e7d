// Sharing out the pieces of a part's files: each is read once, by whoever has time.
#include "partlibrary/content_share.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <future>
#include <map>
#include <vector>

namespace partkeep {
namespace {

// Reads what a span has left, each piece telling the length of its file, and counts the pieces.
void ReadOn(CContentShare& share, ContentSpan& span, qint64 bytes, std::map<qint64, int>& read)
{
    while (const auto number = share.Next(span)) {
        ++read[*number];
        EXPECT_TRUE(share.Learn(span, bytes));
    }
}

TEST(ContentShare, TheRearHalfOfWhatIsLeftIsGivenAway)
{
    const struct {
        qint64 bytes;
        std::vector<qint64> begins; // of the spans that others take after the first piece
        std::size_t pieces;
    } rows[] = {
        {0, {}, 1},
        {chunk_bytes, {}, 1},
        {chunk_bytes + 1, {1}, 2},
        {3 * chunk_bytes, {2, 1}, 3},
        {10 * chunk_bytes, {5, 7, 3, 8}, 10},
        {max_file_bytes, {32768}, 65536},
    };
    for (const auto& row : rows) {
        CContentShare share(SetOf(FileSlot::Ncd));
        ContentSpan* const own = share.Take();
        ASSERT_NE(own, nullptr);
        std::map<qint64, int> read{{*share.Next(*own), 1}};
        EXPECT_TRUE(share.Learn(*own, row.bytes));
        std::vector<ContentSpan*> spans{own};
        for (const qint64 begin : row.begins) {
            spans.push_back(share.Take());
            ASSERT_NE(spans.back(), nullptr) << row.bytes;
            EXPECT_EQ(spans.back()->next, begin) << row.bytes;
        }
        for (ContentSpan* const span : spans) {
            ReadOn(share, *span, row.bytes, read);
        }
        EXPECT_EQ(share.Take(), nullptr) << row.bytes;
        EXPECT_EQ(read.size(), row.pieces) << row.bytes;
        EXPECT_TRUE(std::all_of(read.begin(), read.end(), [](const auto& piece) { return piece.second == 1; }));
    }
}

// Before the first piece is read nobody knows whether there is a second.
TEST(ContentShare, WhoeverComesTooEarlyWaits)
{
    for (const bool fails : {false, true}) {
        CContentShare share(SetOf(FileSlot::Iga) | SetOf(FileSlot::Ncd));
        ContentSpan* const first = share.Take();
        ContentSpan* const second = share.Take();
        EXPECT_EQ(first->slot, FileSlot::Iga);
        EXPECT_EQ(second->slot, FileSlot::Ncd);
        auto third = std::async(std::launch::async, [&share] { return share.Take(); });
        EXPECT_EQ(third.wait_for(std::chrono::milliseconds(20)), std::future_status::timeout);
        EXPECT_EQ(share.Next(*second), 0);
        if (fails) {
            share.Fail({LibraryFault::Damaged, {}, {}});
            share.Fail({LibraryFault::Busy, {}, {}});
            EXPECT_EQ(third.get(), nullptr);
            EXPECT_EQ(share.Next(*first), std::nullopt);
            EXPECT_EQ(share.Problem().fault, LibraryFault::Damaged) << "the first stays";
            continue;
        }
        EXPECT_TRUE(share.Learn(*second, 2 * chunk_bytes));
        ContentSpan* const rear = third.get();
        ASSERT_NE(rear, nullptr);
        EXPECT_EQ(rear->next, 1);
        EXPECT_FALSE(share.Learn(*rear, 3 * chunk_bytes)) << "another length";
    }
}

} // namespace
} // namespace partkeep
