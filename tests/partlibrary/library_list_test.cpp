// Lists as a pane reads them, and that an index serves each.
#include "partlibrary/library_schema.h"
#include "partlibrary/part_list.h"
#include "tests/partlibrary/library_fixture.h"

#include <gtest/gtest.h>

namespace partkeep {
namespace {

using Names = std::vector<std::string>;

class PartList : public testing::Test {
protected:
    void SetUp() override
    {
        libraries_.MakeShop();
        LibraryProblem problem;
        library_ = CPartLibrary::Open(libraries_.FileOf(QStringLiteral("SRV1")), problem);
        ASSERT_NE(library_, nullptr) << ProblemText(problem);
        view_.folder = library_->FindFolder(QStringLiteral("Plates\\2008")).value_or(0);
    }

    // Reads the list two rows at a time.
    std::vector<std::string> ReadNames()
    {
        std::vector<PartRow> rows;
        std::optional<PartPosition> after;
        for (;;) {
            const auto page = library_->Parts().Page(view_, after, 2);
            if (!page || page->rows.empty()) {
                EXPECT_TRUE(page.has_value()) << ProblemText(library_->Problem());
                return NamesOf(rows);
            }
            rows.insert(rows.end(), page->rows.begin(), page->rows.end());
            after = page->positions.back();
        }
    }

    CTestLibraries libraries_;
    std::unique_ptr<CPartLibrary> library_;
    PartListView view_;
};

TEST_F(PartList, ShowsAFolderByFilterSearchAndOrder)
{
    struct Row {
        const char* label;
        std::int16_t filter;
        QString search;
        PartColumn sort;
        bool descending;
        Names names;
    };
    const Row rows[] = {
        {"all", -1, {}, PartColumn::Name, false, {"Bare", "P1", "p1", "P2", "P10"}},
        {"descending", -1, {}, PartColumn::Name, true, {"P10", "P2", "p1", "P1", "Bare"}},
        {"own data", 24, {}, PartColumn::Name, false, {"P1", "P2", "P10"}},
        {"laser", 10, {}, PartColumn::Name, false, {"P1", "P10"}},
        {"nothing", 0, {}, PartColumn::Name, false, {}},
        {"thickness", -1, {}, PartColumn::Thickness, false, {"P10", "Bare", "p1", "P2", "P1"}},
        {"material", -1, {}, PartColumn::Material, true, {"P1", "P10", "P2", "p1", "Bare"}},
        {"comment", 24, {}, PartColumn::Comment, false, {"P2", "P10", "P1"}},
        {"search", -1, QStringLiteral("p 1"), PartColumn::Name, false, {"P1", "p1", "P10"}},
        {"search in a comment", -1, QStringLiteral("付板"), PartColumn::Name, false, {"P1"}},
        {"half-width search", -1, QStringLiteral("ﾀﾚｯﾄ"), PartColumn::Name, false, {"P1"}},
        {"search across attributes", -1, QStringLiteral("p1spcc"), PartColumn::Name, false, {}},
        {"search finds nothing", -1, QStringLiteral("%"), PartColumn::Name, false, {}},
    };
    for (const Row& row : rows) {
        view_ = {view_.folder, row.filter, row.search, row.sort, row.descending};
        EXPECT_EQ(ReadNames(), row.names) << row.label;
        EXPECT_EQ(library_->Parts().Count(view_), static_cast<qint64>(row.names.size())) << row.label;
    }
}

TEST_F(PartList, ALargeFolderIsSearchedThroughTheIndexWithTheSameResult)
{
    libraries_.Fill(QStringLiteral("SRV1"), [](CLibraryWriter& writer) {
        const auto folder = writer.MakeFolder(QStringLiteral("Big"));
        for (int i = 0; i < 21000; ++i) {
            const PartAttributes attributes{i, {}, {}, i % 7000 == 1 ? QStringLiteral("鋼 hit-%1").arg(i) : QString()};
            ASSERT_TRUE(writer.PutPart(*folder, QStringLiteral("N%1").arg(i), attributes));
        }
        ASSERT_TRUE(writer.PutPart(*folder, QStringLiteral("N1"), PartAttributes{1, {}, {}, QStringLiteral("gone")}));
        ASSERT_TRUE(writer.RemovePart(*folder, QStringLiteral("N7001")));
    });
    view_.folder = library_->FindFolder(QStringLiteral("Big")).value_or(0);
    const struct {
        const char16_t* search;
        std::vector<std::string> names;
    } rows[] = {
        {u"HIT-14", {"N14001"}}, {u"鋼", {"N14001"}}, {u"gone n1", {"N1"}}, {u"N20999", {"N20999"}}, {u"xq", {}}};
    for (const auto& row : rows) {
        view_.search = QString::fromUtf16(row.search);
        EXPECT_EQ(ReadNames(), row.names) << view_.search.toStdString();
    }
    view_.search = QStringLiteral("n");
    EXPECT_EQ(library_->Parts().Count(view_), 20999);
}

TEST_F(PartList, EveryOrderAndEachLookUpUsesAnIndex)
{
    struct Row {
        const char* sql;
        const char* index;
    };
    const Row rows[] = {
        {"SELECT id FROM part WHERE folder = (SELECT id FROM folder WHERE path = 'x') AND name = 'y'", "part_by_name "},
        {"SELECT id FROM part WHERE folder = (SELECT id FROM folder WHERE path = 'x')", "folder_by_path"},
        {"SELECT id FROM folder WHERE parent = 1 ORDER BY sort_key", "folder_by_parent"},
        {"SELECT * FROM part WHERE folder = 2 AND (name_key, id) > (x'00', 1) ORDER BY name_key, id LIMIT 100",
         "part_by_name_key"},
        {"SELECT * FROM part WHERE folder = 2 ORDER BY thickness DESC, name_key DESC, id DESC", "part_by_thickness"},
        {"SELECT * FROM part WHERE folder = 2 ORDER BY material_key, name_key, id", "part_by_material"},
        {"SELECT * FROM part WHERE folder = 2 ORDER BY machine_key, name_key, id", "part_by_machine"},
        {"SELECT * FROM part WHERE folder = 2 ORDER BY comment_key, name_key, id", "part_by_comment"},
        {"SELECT id, hash, content FROM part_file WHERE id IN (16, 17)", "INTEGER PRIMARY KEY"},
    };
    for (const Row& row : rows) {
        CStatement plan(library_->Connection(), QStringLiteral("EXPLAIN QUERY PLAN ") + QLatin1String(row.sql));
        QString text;
        for (plan.Run(); plan.Next();) {
            text += plan.Text(3) + u'\n';
        }
        EXPECT_TRUE(text.contains(QLatin1String(row.index))) << row.sql << "\n" << text.toStdString();
        EXPECT_FALSE(text.contains(QStringLiteral("SCAN"))) << row.sql << "\n" << text.toStdString();
        EXPECT_FALSE(text.contains(QStringLiteral("TEMP B-TREE"))) << row.sql << "\n" << text.toStdString();
    }
}

TEST_F(PartList, KeepsOfASelectionWhatIsShownInTheOrderShown)
{
    const auto all = library_->Parts().Ids(view_);
    ASSERT_TRUE(all && all->size() == 5);
    const std::vector<PartId> backwards(all->rbegin(), all->rend());
    EXPECT_EQ(library_->Parts().Visible(view_, backwards), all);
    view_.filter = 10;
    EXPECT_EQ(library_->Parts().Visible(view_, backwards), (std::vector<PartId>{(*all)[1], (*all)[4]}));
}

TEST_F(PartList, FoldersComeWithTheirSizes)
{
    const auto top = library_->Folders(root_folder);
    ASSERT_TRUE(top && top->size() == 1);
    EXPECT_TRUE(top->front().has_folders);
    EXPECT_EQ(top->front().parts, 1);
    const auto inner = library_->Folders(top->front().id);
    ASSERT_TRUE(inner && inner->size() == 1);
    EXPECT_EQ(inner->front().path, QStringLiteral("Plates\\2008"));
    EXPECT_EQ(inner->front().parts, 5);
    EXPECT_FALSE(inner->front().has_folders);
}

} // namespace
} // namespace partkeep
