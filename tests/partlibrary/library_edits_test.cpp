// What a writer changes in what stands there already, seen by itself within its transaction, by others after it, and
// by the check.
#include "tests/partlibrary/library_fixture.h"

#include <array>

namespace partkeep {
namespace {

using LibraryEdits = LibraryShop;

TEST_F(LibraryEdits, EachIsSeenWholeOrNotAtAll)
{
    const auto id = [](ILibraryWriter& writer, const char16_t* folder, const char16_t* name) {
        return writer.Library().FindPart(QString::fromUtf16(folder), QString::fromUtf16(name))->id;
    };
    const auto p1 = [&](ILibraryWriter& writer) { return id(writer, u"Plates\\2008", u"P1"); };
    const PartAttributes copper{7, u"Cu"_s, {}, {}};
    const PartAttributes refused{0, u"a\tb"_s, {}, {}};
    using enum LibraryFault;
    const struct {
        const char* label;
        std::function<bool(ILibraryWriter&)> edit;
        LibraryFault fault;
        const char* after = nullptr; // as before
    } rows[] = {
        {"attributes", [&](auto& w) { return w.SetAttributes(p1(w), copper); }, None,
         "[][Plates]Top=1 [Plates\\2008]Bare=0 P1=Cu7/7 P10=2/-1 P2=1 p1=1 "},
        {"an attribute that is refused", [&](auto& w) { return w.SetAttributes(p1(w), refused); }, BadInput},
        {"no such part", [&](auto& w) { return w.SetAttributes(999, {}); }, NoPart},
        {"a name", [&](auto& w) { return w.MovePart(p1(w), *w.MakeFolder(u"A"_s), u"Q"_s); }, None,
         "[][A]Q=Cu7/7 [Plates]Top=1 [Plates\\2008]Bare=0 P10=2/-1 P2=1 p1=1 "},
        {"the same name", [&](auto& w) { return w.MovePart(id(w, u"A", u"Q"), *w.MakeFolder(u"A"_s), u"Q"_s); }, None},
        {"a name that another has",
         [&](auto& w) { return w.MovePart(id(w, u"A", u"Q"), *w.MakeFolder(u"Plates\\2008"_s), u"P2"_s); },
         AlreadyThere},
        {"a name that is refused", [&](auto& w) { return w.MovePart(id(w, u"A", u"Q"), 1, u"nul"_s); }, NameRefused},
        {"a folder with a folder", [](auto& w) { return w.MoveFolder(u"Plates"_s, u"B\\C"_s); }, None,
         "[][A]Q=Cu7/7 [B][B\\C]Top=1 [B\\C\\2008]Bare=0 P10=2/-1 P2=1 p1=1 "},
        {"a folder into itself", [](auto& w) { return w.MoveFolder(u"B"_s, u"B\\C\\D"_s); }, BadInput},
        {"a folder that is there", [](auto& w) { return w.MoveFolder(u"A"_s, u"B"_s); }, AlreadyThere},
        {"a folder inside gets too long", [](auto& w) { return w.MoveFolder(u"B\\C"_s, QString(95, u'x')); },
         NameRefused},
        {"no such folder", [](auto& w) { return w.MoveFolder(u"Z"_s, u"Y"_s); }, NoFolder},
        {"the root for a folder", [](auto& w) { return w.MoveFolder({}, u"Y"_s); }, BadInput},
        {"a folder for the root", [](auto& w) { return w.MoveFolder(u"A"_s, {}); }, BadInput},
        {"a folder where it is", [](auto& w) { return w.MoveFolder(u"A"_s, u"A"_s); }, None},
        {"a path that is refused", [](auto& w) { return w.MoveFolder(u"A"_s, u"B\\nul"_s); }, NameRefused},
        {"a new folder that is refused", [](auto& w) { return w.MakeFolder(u"nul\\A"_s).has_value(); }, NameRefused},
        {"no such folder to remove", [](auto& w) { return w.RemoveFolder(u"Z"_s); }, NoFolder},
        {"a new part that is refused", [](auto& w) { return w.PutPart(1, u"nul"_s, {}).has_value(); }, NameRefused},
        {"a new part's attribute that is refused", [&](auto& w) { return w.PutPart(1, u"N"_s, refused).has_value(); },
         BadInput},
        {"a file of no part", [](auto& w) { return w.PutFile(999, FileSlot::Iga, "x") && w.Commit(); }, NoPart},
        {"no part with a new name", [](auto& w) { return w.MovePart(999, 1, u"N"_s); }, NoPart},
        {"content that cannot be read",
         [](auto& w) { return w.Store(FileSlot::Iga, [](std::span<char>) { return qint64{-1}; }).has_value(); },
         ReadFailed},
        {"a folder that is not empty", [](auto& w) { return w.RemoveFolder(u"B\\C\\2008"_s); }, BadInput},
        {"the root", [](auto& w) { return w.RemoveFolder({}); }, BadInput},
        {"parts, and their folder then",
         [&](auto& w) {
             return w.RemoveParts(std::array{id(w, u"A", u"Q")}) && w.RemoveFolder(u"A"_s) &&
                    w.RemovePart(u"B\\C"_s, u"Top"_s);
         },
         None, "[][B][B\\C][B\\C\\2008]Bare=0 P10=2/-1 P2=1 p1=1 "},
        {"part of it fails",
         [&](auto& w) { return w.RemovePart(u"B\\C\\2008"_s, u"P2"_s) && w.RemoveParts(std::array{PartId{999}}); },
         NoPart},
    };
    for (const auto& row : rows) {
        CBrowserSession session{libraries_.Places()};
        ASSERT_TRUE(session.Go(u"SRV1"_s, {}));
        const auto library = session.ShareLibrary();
        const std::string before = All(*library);
        const auto revision = library->Revision();
        const auto writer = libraries_.At(u"SRV1"_s)->Edit(problem_);
        ASSERT_TRUE(writer != nullptr && writer->Begin()) << row.label;
        const bool done = row.edit(*writer);
        EXPECT_EQ(done, row.fault == None) << row.label << ": " << ProblemText(writer->Problem());
        if (done) {
            const std::string after = row.after != nullptr ? row.after : before;
            EXPECT_EQ(All(writer->Library()), after) << row.label;
            EXPECT_EQ(All(*library), before) << row.label << ": nothing is seen before the commit";
            ASSERT_TRUE(writer->Commit()) << row.label;
            EXPECT_EQ(All(*library), after) << row.label;
            EXPECT_NE(library->Revision(), revision) << row.label;
        } else {
            EXPECT_EQ(writer->Problem().fault, row.fault) << row.label << ": " << ProblemText(writer->Problem());
            writer->Rollback();
            EXPECT_EQ(All(*library), before) << row.label;
        }
        EXPECT_EQ(Check(), "") << row.label;
    }
}

// More parts than a writer holds, and than are read row by row for the values that a column has.
TEST_F(LibraryEdits, ManyAtOnceAndTheValuesThatTheyHave)
{
    constexpr int many = 21000;
    const auto text = [](int number) { return u"M%1"_s.arg(number % 5); };
    libraries_.Fill(u"SRV1"_s, [&](ILibraryWriter& writer) {
        const qint64 folder = *writer.MakeFolder(u"Many"_s);
        for (int i = 0; i < many; ++i) {
            ASSERT_TRUE(writer.PutPart(folder, u"N%1"_s.arg(i), PartAttributes{i % 3, text(i), {}, {}}));
        }
    });
    libraries_.Fill(u"SRV1"_s, [&](ILibraryWriter& writer) {
        const qint64 folder = *writer.MakeFolder(u"Moved"_s);
        const auto rows = writer.Library().PartsBehind(writer.Library().FindFolder(u"Many"_s)->id, {}, many);
        for (const PartRow& row : *rows) {
            ASSERT_TRUE(writer.SetAttributes(row.id, {row.thickness, row.material, text(row.thickness), row.name}) &&
                        writer.MovePart(row.id, folder, row.name));
        }
    });
    ASSERT_TRUE(session_.Go(u"SRV1"_s, u"Moved"_s));
    const auto library = session_.ShareLibrary();
    const auto texts = [&](PartColumn column) {
        QStringList found;
        const auto values = library->Values({session_.CurrentFolder().id, -1, {}}, column, 9);
        for (const ColumnValue& value : values.value_or(std::vector<ColumnValue>())) {
            found += value.text;
        }
        return found.join(u' ');
    };
    EXPECT_EQ(texts(PartColumn::Material), u"M0 M1 M2 M3 M4"_s);
    EXPECT_EQ(texts(PartColumn::Machine), u"M0 M1 M2"_s);
    EXPECT_EQ(texts(PartColumn::Thickness), u"0 1 2"_s);
    for (const auto& [search, count] : {std::pair(u"n1"_s, 11111), {u"m2"_s, 9800}, {u"n20999"_s, 1}, {u"zz"_s, 0}}) {
        const auto list = WholeList(*library, {session_.CurrentFolder().id, -1, search});
        EXPECT_EQ(list->Count(), count) << search.toStdString();
    }
    for (int way = 0; way < 10; ++way) { // all folders, by each column, in pages
        const PartListView view{all_folders, -1, {}, static_cast<PartColumn>(way % 5), way >= 5};
        const auto list = WholeList(*library, view);
        const auto end = list->Rows(list->Count() - 3, 9);
        EXPECT_TRUE(list->Count() == many + 6 && end.size() == 3 && !end.back().name.isEmpty()) << way;
        EXPECT_EQ(list->RowOf(end.back().id), list->Count() - 1) << way;
        const auto values = library->Values(view, view.sort, 9);
        EXPECT_TRUE(view.sort == PartColumn::Name || (values && values->size() >= 3 && values->size() <= 9)) << way;
    }
    session_.SetTargetFolder(target_.Core(u""));
    EXPECT_EQ(session_.SelectAllParts(1), 1);
    EXPECT_TRUE(Copy(u"Moved\\N0") && Copy(u"Moved\\N1")); // the rest is expected
    const auto admin = libraries_.At(u"SRV1"_s);
    EXPECT_FALSE(admin->Rebuild([](qint64 parts, qint64) { return parts < many / 2; }, problem_));
    EXPECT_EQ(problem_.fault, LibraryFault::Stopped);
    EXPECT_FALSE(admin->Check([](qint64 files, qint64) { return files < 2; }, problem_));
    EXPECT_EQ(problem_.fault, LibraryFault::Stopped);
    EXPECT_TRUE(admin->Rebuild({}, problem_));
    EXPECT_EQ(Check(), "");
    if (InDatabase()) {
        return; // whose backup is its own
    }
    const QString copy = libraries_.FileOf(u"Copy"_s);
    EXPECT_FALSE(admin->Backup(
        copy, false, false, [](qint64, qint64) { return false; }, problem_));
    EXPECT_EQ(problem_.fault, LibraryFault::Stopped);
    int commits = 0;
    const auto change = [&](qint64, qint64) { // and the backup begins anew, but not for ever
        libraries_.Fill(
            u"SRV1"_s, [&](ILibraryWriter& writer) { PutTestPart(writer, u"Later"_s, QString::number(++commits), 1); });
        return true;
    };
    EXPECT_TRUE(admin->Backup(copy, false, false, change, problem_)) << ProblemText(problem_);
    const auto whole = libraries_.At(u"Copy"_s)->Check({}, problem_);
    EXPECT_TRUE(whole && whole->findings.isEmpty() && whole->parts > many && commits > 3) << commits;
}

TEST_F(LibraryEdits, NumbersAreNotGivenAgainAndAReplacedLibraryIsNotWritten)
{
    qint64 gone = 0;
    libraries_.Fill(u"SRV1"_s, [&](ILibraryWriter& writer) {
        gone = *writer.MakeFolder(u"Last"_s);
        ASSERT_TRUE(writer.RemoveFolder(u"Last"_s));
        EXPECT_NE(*writer.MakeFolder(u"Other"_s), gone);
    });
    const auto writer = CSqliteWriter::Open(library_file_, problem_);
    const std::string file = library_file_.toStdString();
    std::filesystem::rename(file, file + "~");
    std::filesystem::copy_file(file + "~", file);
    EXPECT_FALSE(writer->Begin());
    EXPECT_EQ(writer->Problem().fault, LibraryFault::Replaced);
}

} // namespace
} // namespace partkeep
