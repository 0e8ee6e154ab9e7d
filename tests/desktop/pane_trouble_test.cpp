// Servers that are missing, go away, are locked or damaged: a clear line, no hang, and a way back.
#include "platform/files.h"
#include "tests/desktop/played_pane.h"

#include <QAbstractItemModelTester>
#include <QElapsedTimer>
#include <QFile>

namespace partkeep {
namespace {

class PaneTrouble : public PaneTest {
protected:
    void Execute(const char* sql)
    {
        writer_ = Forger();
        ASSERT_TRUE(writer_->Execute(sql));
    }

    const QString aside_ = library_file_ + u'x';
    std::shared_ptr<CConnection> writer_;
};

TEST_F(PaneTrouble, IsToldInALineAndEndsWithTheTrouble)
{
    const auto restore = [this] {
        QFile::remove(library_file_);
        QFile::rename(aside_, library_file_);
    };
    const char* const damaged = "The library of server SRV1 is damaged.";
    const struct {
        const char* label;
        std::function<void()> begin;
        std::function<void()> end;
        const char* line;
    } rows[] = {
        {"gone", [this] { QFile::rename(library_file_, aside_); }, restore,
         "Server SRV1 cannot be reached: its library is not there."},
        {"another file in its place",
         [this] {
             QFile::rename(library_file_, aside_);
             WriteBytes(library_file_.toStdString(), "no library, but long enough to be looked at as one");
         },
         restore, damaged},
        {"damaged at its start",
         [this] {
             QFile::copy(library_file_, aside_);
             QFile library(library_file_);
             EXPECT_TRUE(library.open(QIODevice::ReadWrite));
             library.write(QByteArray(4096, '\xA5'));
         },
         restore, damaged},
        {"locked", [this] { Execute("BEGIN EXCLUSIVE"); }, [this] { writer_.reset(); },
         "Server SRV1 is in use by another program. Try again in a moment."},
        {"keys by other rules", [this] { Execute("UPDATE library SET keys = 'other'"); },
         [this] { EXPECT_TRUE(CSqliteWriter::Open(library_file_, problem_)->Rebuild()); },
         "Lists of server SRV1 are slow until somebody runs partkeep-library check --rebuild on its library."},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.label);
        CPlayedPane pane(libraries_);
        EXPECT_EQ(pane.ProblemLine(), "");
        row.begin();
        QElapsedTimer time;
        time.start();
        pane.Key(Qt::Key_F5);
        EXPECT_TRUE(pane.ProblemLine().starts_with(row.line)) << pane.ProblemLine();
        ClickRow(*pane.pane, 0);
        pane.browser.RefreshPartList();
        EXPECT_TRUE(pane.ProblemLine().starts_with(row.line)) << pane.ProblemLine();
        EXPECT_LT(time.elapsed(), 8000);
        row.end();
        QTest::mouseClick(ButtonIn(*pane.pane, u"Try again"_s), Qt::LeftButton);
        Settle(*pane.pane);
        EXPECT_EQ(pane.ProblemLine(), "");
        EXPECT_EQ(pane.Shown(), "Bare P1 p1 P2 P10");
    }
}

TEST_F(PaneTrouble, ACopyThatFailsIsToldOfItsPart)
{
    CPlayedPane pane(libraries_);
    const QString deep = libraries_.Folder() + u"/"_s + QString(4090, u'x');
    for (const QString& target : {u"/proc/none"_s, library_file_, deep}) {
        pane.browser.SetTargetFolder(CorePath(target.toStdString()));
        pane.browser.SetDataKind(part_data_kind);
        EXPECT_FALSE(pane.browser.CopyPartFiles(u"SRV1", u"Plates\\2008\\P1"));
        EXPECT_EQ(pane.ProblemLine(), ToUtf8(u"The files of %1 could not be copied."_s.arg(target)));
        EXPECT_LT(pane.List().width(), pane.pane->width()) << "a long line is broken";
    }
    Execute("PRAGMA user_version=99");
    pane.Key(Qt::Key_F5);
    EXPECT_TRUE(pane.ProblemLine().starts_with("The library of server SRV1 cannot be read by this version. (since "));
}

TEST_F(PaneTrouble, ServersComeAndGoWhereTheyBelong)
{
    CPlayedPane pane(libraries_);
    const QAbstractItemModelTester tree(pane.Tree().model()); // these two hold what is told against what is there
    const QAbstractItemModelTester list(&pane.pane->Model());
    const auto servers = [&pane] {
        pane.Key(Qt::Key_F5);
        return NamesUnder(*pane.Tree().model());
    };
    EXPECT_EQ(servers(), "SRV1 板金");
    for (const QString& name : {u"A1"_s, u"SRV10"_s}) {
        libraries_.Fill(name, [](ILibraryWriter& writer) { PutTestPart(writer, u"F"_s, u"P"_s, 1); });
    }
    EXPECT_EQ(servers(), "SRV1 板金 A1 SRV10");
    QFile::remove(libraries_.FileOf(u"A1"_s));
    QFile::remove(libraries_.FileOf(u"板金"_s));
    EXPECT_EQ(servers(), "SRV1 板金 SRV10") << "those of the host's table stay";
    pane.browser.SetCurrentFolder(u"Plates");
    Settle(*pane.pane);
}

TEST_F(PaneTrouble, ALibraryThatVanishesUnderTheUsersHandsIsNoticed)
{
    CPlayedPane pane(libraries_);
    QFile::rename(library_file_, aside_);
    QWidget* viewport = pane.List().viewport();
    const QPoint place = PlaceOfRow(*pane.pane, 1);
    QTest::mousePress(viewport, Qt::LeftButton, {}, place);
    EXPECT_EQ(pane.ProblemLine(), "") << "it would move the rows under the held button";
    QTest::mouseRelease(viewport, Qt::LeftButton, {}, place);
    EXPECT_EQ(pane.ProblemLine(), "Server SRV1 cannot be reached: its library is not there.");
    EXPECT_EQ(pane.Selected(), "P1") << "what is listed can still be loaded";
    QFile::rename(aside_, library_file_);
    ClickRow(*pane.pane, 2);
    EXPECT_EQ(pane.ProblemLine(), "");
}

// A part goes, and its library is taken away before anybody has looked.
TEST_F(PaneTrouble, AListReadAnewShowsAsSelectedWhatIsTold)
{
    CPlayedPane pane(libraries_);
    const std::pair<const char*, std::function<void()>> rows[] = {
        {"P1", [&] { pane.browser.RefreshPartList(); }},
        {"P2", [&] { pane.browser.SelectNextServer(); }},
        {"P10", [&] { pane.browser.SetServerList({}); }},
    };
    for (const auto& [part, reads_anew] : rows) {
        const int before = (pane.browser.SelectAllParts(1), pane.browser.GetSelectedPartCount());
        const auto remove = [name = QString(part)](auto& writer) { writer.RemovePart(u"Plates\\2008"_s, name); };
        libraries_.Fill(u"SRV1"_s, remove);
        QFile::rename(library_file_, aside_);
        reads_anew();
        EXPECT_EQ(pane.List().selectionModel()->selectedRows().size(), before - 1) << part;
        EXPECT_EQ(pane.browser.GetSelectedPartCount(), before - 1) << part;
        QFile::rename(aside_, library_file_);
    }
}

TEST_F(PaneTrouble, ALibraryCutShortWhileItIsShownHangsNothing)
{
    const auto attributes = [](int) { return PartAttributes{0, {}, {}, QString(200, u'x')}; };
    libraries_.Fill(u"Long"_s, [&](auto& writer) { PutTestParts(writer, u"F"_s, u"%1"_s, 0, 3000, attributes); });
    CPlayedPane pane(libraries_, {.server = u"Long", .folder = u"F"});
    QFile::resize(libraries_.FileOf(u"Long"_s), 70000);
    QElapsedTimer time;
    time.start();
    pane.Key(Qt::Key_F5);
    pane.List().setFocus();
    pane.Key(Qt::Key_End);
    pane.Type(u"9"_s);
    pane.Key(Qt::Key_Home);
    pane.browser.SelectAllParts(1);
    EXPECT_FALSE(pane.pane->ExportTo(libraries_.Folder() + u"/list.csv"_s));
    EXPECT_NE(pane.ProblemLine(), "");
    EXPECT_LT(time.elapsed(), 5000);
    ClickInTree(*pane.pane, u"SRV1"_s, u"SRV1"_s);
    EXPECT_EQ(pane.ProblemLine(), "") << "another server is not concerned";
}

TEST_F(PaneTrouble, AnEmptyListSaysWhatToDo)
{
    CTestLibraries nothing;
    libraries_.Fill(u"SRV1"_s, [](ILibraryWriter& writer) { static_cast<void>(writer.MakeFolder(u"Hollow"_s)); });
    const PaneStart not_set_up{.server = u"", .configured = false};
    const PaneStart unknown_service{.server = u"", .configured = false, .services = {u"nowhere"_s}};
    const struct {
        const char* label;
        const CTestLibraries& libraries;
        PaneStart start;
        QString typed;
        QString text;
    } rows[] = {
        {"no server found", nothing, {.server = u""}, {}, u"No server found in %1.\n"_s.arg(nothing.Folder())},
        {"not set up", nothing, not_set_up, {}, u"No folder with part libraries is set up."_s},
        {"unknown service", nothing, unknown_service, {}, u"No server found in nowhere."_s},
        {"empty folder", libraries_, {.folder = u"Hollow"}, {}, u"This folder has no parts."_s},
        {"filter", libraries_, {.folder = u"Plates", .filter = nct_data_kind}, {}, u"No part here has files for"_s},
        {"search", libraries_, {}, u"zz"_s, u"No part in this folder matches “zz”."_s},
        {"rows", libraries_, {}, {}, {}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.label);
        CPlayedPane pane(row.libraries, row.start);
        pane.Type(row.typed);
        EXPECT_TRUE(pane.List().EmptyText().startsWith(row.text)) << pane.List().EmptyText().toStdString();
        EXPECT_EQ(pane.List().EmptyText().isEmpty(), row.text.isEmpty());
        EXPECT_EQ(pane.ProblemLine().empty(), row.start.services.empty()) << "the reason";
    }
    CPlayedPane pane(nothing, {.server = u""});
    nothing.MakeShop();
    pane.Key(Qt::Key_F5);
    EXPECT_EQ(pane.List().EmptyText(), u"Choose a server on the left to see its parts."_s) << "as the first text told";
}

TEST_F(PaneTrouble, TheWidgetMayGoBeforeTheControl)
{
    CPlayedPane pane(libraries_);
    delete pane.pane;
    EXPECT_EQ(pane.browser.MoveFocus(focus_forward), 0);
    EXPECT_EQ(pane.browser.SelectAllParts(1), 1);
    pane.browser.DisconnectServer();
}

} // namespace
} // namespace partkeep
