// Rows by number against the library's own plain listing, in a folder long enough for the positions kept on the way.
#include "partlibrary/sqlite/part_pages.h"
#include "partlibrary/sqlite/sqlite_library.h"
#include "tests/partlibrary/library_fixture.h"

namespace partkeep {
namespace {

constexpr int parts = 30000;

// In the folder F, in no order, and many alike in each column.
CSqliteLibrary& LongLibrary()
{
    static CTestLibraries libraries;
    static const std::unique_ptr<CSqliteLibrary> library = [] {
        libraries.Fill(u"Long"_s, [](ILibraryWriter& writer) {
            const auto folder = writer.MakeFolder(u"F"_s);
            for (int i = 0; i < parts; ++i) {
                const int number = static_cast<int>(qint64{i} * 7919 % parts);
                const auto part = writer.PutPart(*folder, u"BRK-%1"_s.arg(number / 2 * 2 + i % 2 * parts),
                                                 PartAttributes{number % 7, u"M%1"_s.arg(number % 5), u"EM"_s,
                                                                number % 5000 == 0 ? u"龍 rare"_s : QString()});
                if (i % 3 != 0) {
                    writer.PutFile(*part, FileSlot::Iga, QByteArray("x"));
                }
            }
        });
        LibraryProblem problem;
        return CSqliteLibrary::Open(libraries.FileOf(u"Long"_s), problem);
    }();
    return *library;
}

TEST(PartPages, GiveTheRowsOfThePlainListingAnywhere)
{
    const struct {
        const char* label;
        std::int16_t filter;
        const char* search;
        PartColumn sort;
        bool descending;
        qint64 count;
    } rows[] = {
        {"all", -1, "", PartColumn::Name, false, parts},
        {"filter", 24, "", PartColumn::Name, false, 20000},
        {"thickness", -1, "", PartColumn::Thickness, true, parts},
        {"machine, all alike", -1, "", PartColumn::Machine, true, parts},
        {"comment, mostly empty", -1, "", PartColumn::Comment, false, parts},
        {"frequent search", -1, "brk", PartColumn::Material, true, parts},
        {"single letter", -1, "M", PartColumn::Name, false, parts},
        {"rare search", -1, "rare", PartColumn::Thickness, false, 6},
        {"rare search and filter", 24, "rare", PartColumn::Name, false, 4},
        {"two words", -1, "brk-12 m2", PartColumn::Name, false, -1},
        {"nothing", -1, "zzz", PartColumn::Name, false, 0},
        {"pairs without the word", -1, "krb", PartColumn::Name, false, 0},
    };
    const qint64 folder = LongLibrary().FindFolder(u"F"_s)->id;
    for (const auto& row : rows) {
        SCOPED_TRACE(row.label);
        const PartListView view{folder, row.filter, QString::fromUtf8(row.search), row.sort, row.descending};
        const std::vector<PartId> all = *LongLibrary().Ids(view);
        const auto pages = LongLibrary().List(view, parts, nullptr);
        pages->Finish();
        ASSERT_TRUE(pages->Complete());
        ASSERT_EQ(pages->Count(), static_cast<qint64>(all.size()));
        EXPECT_TRUE(row.count < 0 || pages->Count() == row.count) << pages->Count();
        EXPECT_EQ(pages->Ids(0, parts), all);
        for (qint64 first = 0; first < pages->Count(); first += 1777) {
            const std::vector<PartRow> page = pages->Rows(first, 64);
            ASSERT_EQ(static_cast<qint64>(page.size()), std::min<qint64>(64, pages->Count() - first));
            EXPECT_EQ(page.back().id, all[static_cast<std::size_t>(first) + page.size() - 1]) << first;
            EXPECT_EQ(pages->RowOf(all[static_cast<std::size_t>(first)]), first);
        }
        EXPECT_EQ(pages->RowOf(parts + 1), std::nullopt);
    }
}

TEST(PartPages, NarrowOnlyWhatTheyHoldWhole)
{
    const qint64 folder = LongLibrary().FindFolder(u"F"_s)->id;
    const auto view = [folder](const char* search) {
        return PartListView{folder, -1, QString::fromUtf8(search), PartColumn::Name, false};
    };
    for (const auto& [words, more_words, narrows] : {std::tuple("rare", "rare 龍", true),
                                                     {"brk-123", "xbrk-1234", true},
                                                     {"rare", "em", false},
                                                     {"rare", "rar", false},
                                                     {"brk", "brk-1", false}}) { // too many to hold
        SCOPED_TRACE(more_words);
        const auto connection = LongLibrary().ShareConnection();
        CPartPages wider(connection, view(words), parts);
        EXPECT_FALSE(CPartPages(connection, view(more_words), parts).NarrowFrom(wider)) << "not scanned";
        wider.Finish();
        CPartPages narrower(connection, view(more_words), parts);
        EXPECT_EQ(narrower.NarrowFrom(wider), narrows);
        narrower.Finish();
        EXPECT_EQ(narrower.Ids(0, parts), *LongLibrary().Ids(view(more_words)));
    }
}

} // namespace
} // namespace partkeep
