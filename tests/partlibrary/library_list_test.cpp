// Lists as a pane reads them, and that an index serves each.
#include "partlibrary/library/sort_text.h"
#include "tests/partlibrary/library_fixture.h"

#include <QRegularExpression>

#include <algorithm>
#include <iterator>
#include <set>
#include <tuple>

namespace partkeep {
namespace {

class PartList : public LibraryShop {
protected:
    // Reads the list two rows at a time, and once more by the ids, by their places, and narrowed from the wider list.
    Names ReadNames()
    {
        Names names;
        std::vector<PartId> ids;
        const auto list = WholeList(*library_, view_, 5);
        EXPECT_TRUE(list->Complete()) << ProblemText(library_->Problem());
        for (qint64 first = 0; first < list->Count(); first += 2) {
            for (const PartRow& row : list->Rows(first, 2)) {
                names.push_back(row.name.toStdString());
                ids.push_back(row.id);
            }
        }
        EXPECT_EQ(library_->Ids(view_), ids);
        EXPECT_EQ(library_->Visible(view_, ids), ids);
        EXPECT_EQ(library_->Visible(view_, {}), std::vector<PartId>());
        PartListView wider = view_;
        wider.search.clear();
        const auto all = WholeList(*library_, wider, 5);
        const auto narrowed = WholeList(*library_, view_, 5, all.get());
        EXPECT_EQ(narrowed->Ids(0, narrowed->Count()), ids);
        EXPECT_TRUE(ids.empty() || narrowed->RowOf(ids.back()) == list->Count() - 1);
        return names;
    }

    // As another release may have made them, which is not to be believed.
    void ForgeKeys()
    {
        Forge(u"UPDATE library SET keys = 'other'"_s);
        Forge(u"UPDATE folder SET sort_key = x'31'"_s);
        Forge(u"UPDATE part SET search_text = 'zz', name_key = x'31', material_key = x'31', machine_key = x'31', "
              "comment_key = CAST(name AS BLOB)"_s);
    }

    CConnection& Connection() { return dynamic_cast<CSqliteLibrary&>(*library_).Connection(); }

    std::shared_ptr<IPartLibrary> library_ = session_.Go(u"SRV1"_s, {}) ? session_.ShareLibrary() : nullptr;
    PartListView view_{library_->FindFolder(u"Plates\\2008"_s)->id, -1, {}, PartColumn::Name, false};
};

// Of one folder, or of all, folder by folder. What lies in a folder whose name is refused is shown to nobody here
// either.
TEST_F(PartList, ShowsByFilterSearchAndOrder)
{
    const qint64 here = view_.folder;
    const std::vector<ColumnValue> materials = *library_->Values({}, PartColumn::Material, 9);
    ASSERT_FALSE(materials.empty());
    const std::tuple<const char*, PartListView, Names> rows[] = {
        {"all", {here, -1, {}, PartColumn::Name, false}, {"Bare", "P1", "p1", "P2", "P10"}},
        {"descending", {here, -1, {}, PartColumn::Name, true}, {"P10", "P2", "p1", "P1", "Bare"}},
        {"own data", {here, 24, {}, PartColumn::Name, false}, {"P1", "P2", "P10"}},
        {"laser", {here, 10, {}, PartColumn::Name, false}, {"P1", "P10"}},
        {"nothing", {here, 0, {}, PartColumn::Name, false}, {}},
        {"thickness", {here, -1, {}, PartColumn::Thickness, false}, {"P10", "Bare", "p1", "P2", "P1"}},
        {"material", {here, -1, {}, PartColumn::Material, true}, {"P1", "P10", "P2", "p1", "Bare"}},
        {"comment", {here, 24, {}, PartColumn::Comment, false}, {"P2", "P10", "P1"}},
        {"two words", {here, -1, u"p 1"_s, PartColumn::Name, false}, {"P1", "p1", "P10"}},
        {"half width", {here, -1, u"ﾀﾚｯﾄ"_s, PartColumn::Name, false}, {"P1"}},
        {"across attributes", {here, -1, u"p1spcc"_s, PartColumn::Name, false}, {}},
        {"everywhere", {all_folders, -1, u"p1"_s, PartColumn::Name, false}, {"P1", "p1", "P10"}},
        {"across folders", {all_folders, -1, u"o"_s, PartColumn::Name, true}, {"Top"}},
        {"down folders", {all_folders, -1, u"p"_s, PartColumn::Thickness, true}, {"P1", "P2", "p1", "P10", "Top"}},
        {"of a material",
         {all_folders, -1, {}, PartColumn::Name, false, {{PartColumn::Material, materials.back()}}},
         {"P1"}},
        {"of no thickness",
         {all_folders, -1, {}, PartColumn::Name, false, {{PartColumn::Thickness, {u"1"_s, "1"}}}},
         {}},
    };
    for (const bool other_keys : {false, true}) {
        for (const auto& [label, view, names] : rows) {
            view_ = view;
            EXPECT_EQ(ReadNames(), names) << label << other_keys;
            EXPECT_EQ(library_->HasOtherKeys(), other_keys);
        }
        ForgeKeys();
        EXPECT_EQ(library_->Values({}, PartColumn::Material, 9), materials);
    }
    view_ = {all_folders, -1, u"top"_s, PartColumn::Name, false};
    auto list = WholeList(*library_, view_);
    EXPECT_EQ(list->Rows(0, 1).front().folder_path, u"Plates"_s);
    ForgeFolder(u"Pl/ates"_s);
    list = WholeList(*library_, view_);
    EXPECT_EQ(list->Count(), 0);
    EXPECT_GT(library_->Refused(), 0);
    Forge(u"UPDATE part SET material = 'other'"_s);
    EXPECT_EQ(library_->Values({}, PartColumn::Material, 9).has_value(), InDatabase()) << "rows are not as stored";
}

TEST_F(PartList, GoesThroughAFolderByPagesOfAnySize)
{
    ForgePart(u"P/1"_s);
    for (qint64 limit = 1; limit < 7; ++limit) {
        Names names;
        for (QString behind; behind.isEmpty() || names.size() % static_cast<std::size_t>(limit) == 0;) {
            const auto rows = library_->PartsBehind(view_.folder, behind, limit).value();
            if (rows.empty()) {
                break;
            }
            std::ranges::transform(rows, std::back_inserter(names),
                                   [](const auto& row) { return row.name.toStdString(); });
            behind = rows.back().name;
        }
        EXPECT_EQ(names, (Names{"Bare", "P10", "P2", "p1"})) << limit;
    }
}

TEST_F(PartList, TheSearchIndexFollowsItsParts)
{
    view_.search = u"p"_s;
    const auto wider = WholeList(*library_, view_, 5);
    view_.search = u"p1"_s;
    libraries_.Fill(u"SRV1"_s, [](ILibraryWriter& writer) {
        const auto folder = writer.MakeFolder(u"Plates\\2008"_s);
        ASSERT_TRUE(writer.PutPart(*folder, u"P10"_s, PartAttributes{0, {}, {}, u"鋼 br-1"_s}));
        ASSERT_TRUE(writer.PutPart(*folder, u"P10"_s, PartAttributes{0, {}, {}, u"鋼 br-2"_s}));
        ASSERT_TRUE(writer.RemovePart(u"Plates\\2008"_s, u"P1"_s));
    });
    const std::pair<QString, int> rows[] = {{u"R-2"_s, 1}, {u"r-1"_s, 0}, {u"鋼"_s, 1}, {u"付板"_s, 0}, {u"p"_s, 4}};
    for (const auto& [typed, count] : rows) {
        CStatement found(Connection(), "SELECT count(*) FROM part_search WHERE part_search MATCH ?");
        ASSERT_TRUE(found.With(PairQuery(SearchWords(typed))).Next());
        EXPECT_EQ(found.Integer(0), count) << typed.toStdString();
    }
    EXPECT_EQ(Check(), "");
    libraries_.Fill(u"SRV1"_s, [](ILibraryWriter& writer) { PutTestPart(writer, u"Plates\\2008"_s, u"P11"_s, 1); });
    const auto list = WholeList(*library_, view_, 5, wider.get());
    EXPECT_EQ(list->Count(), 3) << "what came since the wider list began is not left out";
}

// Asks the engine how it goes about each statement that look-ups, listings and copies really run. Only what is
// bounded otherwise may be sorted: ids that are given, and the few parts that the search index finds.
TEST_F(PartList, EveryLookUpAndEveryOrderUsesAnIndex)
{
    std::set<std::string> statements;
    Connection().WatchStatements([&statements](std::string_view sql) { statements.emplace(sql); });
    static_cast<void>(library_->FindFolder(u"Plates"_s));
    static_cast<void>(library_->Folders({}));
    const auto part = library_->FindPart(u"Plates\\2008"_s, u"P1"_s);
    static_cast<void>(library_->FindPart(part->id));
    static_cast<void>(library_->ReadFile(part->id, FileSlot::Iga, 1 << 20));
    for (int sort = 0; sort <= static_cast<int>(PartColumn::Comment); ++sort) {
        for (const char16_t* search : {u"", u"P"}) {
            for (const qint64 folder : {part->folder, all_folders}) {
                view_ = {folder, 24, QString::fromUtf16(search), static_cast<PartColumn>(sort), sort % 2 == 0};
                ReadNames();
                static_cast<void>(library_->Visible(view_, {part->id}));
                const auto list = WholeList(*library_, view_, 1000000);
                static_cast<void>(list->Rows(0, 2));
            }
        }
    }
    Connection().WatchStatements({});
    std::erase_if(statements, [](const std::string& sql) {
        return sql.find("FROM") == std::string::npos || sql.ends_with("FROM folder"); // all of them
    });
    EXPECT_GE(statements.size(), 35U);
    const QRegularExpression scan(u"SCAN (part|part_file|piece|folder|child)[ \n]"_s);
    for (const std::string& sql : statements) {
        CStatement plan(Connection(), "EXPLAIN QUERY PLAN " + sql);
        QString steps;
        while (plan.Next()) {
            steps += plan.Text(3) + u'\n';
        }
        EXPECT_FALSE(plan.Failed() || steps.isEmpty()) << sql;
        if (sql.find("WHERE TRUE") != std::string::npos) {
            steps.replace(u"SCAN part USING"_s, u"SEARCH part USING"_s); // in order, from one end on
        }
        const bool bounded = sql.find("json_each") != std::string::npos || sql.find("MATCH") != std::string::npos;
        EXPECT_FALSE(steps.contains(scan) || (steps.contains(u"TEMP B-TREE FOR ORDER BY"_s) && !bounded))
            << sql << '\n'
            << steps.toStdString();
    }
}

} // namespace
} // namespace partkeep
