// Servers that are missing, go away, are locked or damaged: a clear line, no hang, and a way back.
#include "tests/desktop/played_pane.h"

#include <gtest/gtest.h>

#include <QElapsedTimer>
#include <QFile>
#include <QSqlDatabase>
#include <QSqlQuery>

#include <functional>

namespace partkeep {
namespace {

const QString server = QStringLiteral("SRV1");

class PaneTrouble : public testing::Test {
protected:
    PaneTrouble() { libraries_.MakeShop(); }

    void Retry(CPlayedPane& pane)
    {
        QTest::mouseClick(pane.Button(QStringLiteral("Try again")), Qt::LeftButton);
        pane.Settle();
    }

    CTestLibraries libraries_;
};

void Overwrite(const QString& file, qint64 from, qint64 bytes)
{
    QFile library(file);
    ASSERT_TRUE(library.open(QIODevice::ReadWrite));
    library.seek(from);
    library.write(QByteArray(bytes, '\xA5'));
}

TEST_F(PaneTrouble, IsToldInALineAndEndsWithTheTrouble)
{
    const QString file = libraries_.FileOf(server);
    const QString aside = file + QStringLiteral("x");
    const struct {
        const char* label;
        std::function<void()> begin;
        std::function<void()> end;
        const char* line;
    } rows[] = {
        {"gone", [&] { QFile::rename(file, aside); }, [&] { QFile::rename(aside, file); },
         "Server SRV1 cannot be reached: its library is not there."},
        {"another file in its place",
         [&] {
             QFile::rename(file, aside);
             WriteBytes(file.toStdString(), "no library, but long enough to be looked at as one");
         },
         [&] {
             QFile::remove(file);
             QFile::rename(aside, file);
         },
         "The library of server SRV1 is damaged."},
        {"damaged at its start",
         [&] {
             QFile::copy(file, aside);
             Overwrite(file, 0, 4096);
         },
         [&] {
             QFile::remove(file);
             QFile::rename(aside, file);
         },
         "The library of server SRV1 is damaged."},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.label);
        CPlayedPane pane(libraries_);
        EXPECT_EQ(pane.ProblemLine(), "");
        row.begin();
        pane.Key(Qt::Key_F5);
        EXPECT_EQ(pane.ProblemLine(), row.line);
        pane.ClickRow(0);
        pane.List().grab();
        pane.browser.RefreshPartList();
        EXPECT_EQ(pane.ProblemLine(), row.line);
        row.end();
        Retry(pane);
        EXPECT_EQ(pane.ProblemLine(), "");
        EXPECT_EQ(pane.Shown(), "Bare P1 p1 P2 P10");
    }
}

TEST_F(PaneTrouble, ALibraryThatVanishesUnderTheUsersHandsIsNoticed)
{
    CPlayedPane pane(libraries_);
    QFile::rename(libraries_.FileOf(server), libraries_.Folder() + QStringLiteral("/away"));
    pane.ClickRow(1);
    EXPECT_EQ(pane.ProblemLine(), "Server SRV1 cannot be reached: its library is not there.");
    EXPECT_EQ(pane.Selected(), "P1") << "what is listed can still be loaded";
    QFile::rename(libraries_.Folder() + QStringLiteral("/away"), libraries_.FileOf(server));
    pane.ClickRow(2);
    EXPECT_EQ(pane.ProblemLine(), "");
}

TEST_F(PaneTrouble, ALibraryCutShortWhileItIsShownHangsNothing)
{
    libraries_.Fill(QStringLiteral("Long"), [](CLibraryWriter& writer) {
        for (int i = 0; i < 3000; ++i) {
            PutTestPart(writer, QStringLiteral("F"), QString::number(i), 1, {0, {}, {}, QString(200, QChar(u'x'))});
        }
    });
    CPlayedPane pane(libraries_, {.server = u"Long", .folder = u"F"});
    ASSERT_EQ(pane.pane->Model().rowCount(), 3000);
    QFile::resize(libraries_.FileOf(QStringLiteral("Long")), 70000);
    QElapsedTimer time;
    time.start();
    pane.Key(Qt::Key_F5);
    pane.List().setFocus();
    pane.Key(Qt::Key_End);
    pane.Type(QStringLiteral("9"));
    pane.Key(Qt::Key_Home);
    pane.browser.SelectAllParts(1);
    EXPECT_FALSE(pane.pane->ExportTo(libraries_.Folder() + QStringLiteral("/list.csv")));
    pane.window.grab();
    EXPECT_NE(pane.ProblemLine(), "");
    EXPECT_LT(time.elapsed(), 5000);
    pane.ClickFolder(server, server);
    EXPECT_EQ(pane.ProblemLine(), "") << "another server is not concerned";
}

TEST_F(PaneTrouble, ALockedLibraryIsToldWithoutWaitingForEver)
{
    CPlayedPane pane(libraries_);
    QElapsedTimer time;
    {
        QSqlDatabase other = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), QStringLiteral("locker"));
        other.setDatabaseName(libraries_.FileOf(server));
        ASSERT_TRUE(other.open());
        QSqlQuery(QStringLiteral("BEGIN EXCLUSIVE"), other);
        time.start();
        pane.Key(Qt::Key_F5);
        pane.List().grab();
        pane.ClickRow(0);
        EXPECT_EQ(pane.ProblemLine(), "Server SRV1 is in use by another program. Try again in a moment.");
        EXPECT_LT(time.elapsed(), 20000);
        QSqlQuery(QStringLiteral("ROLLBACK"), other);
        other.close();
    }
    QSqlDatabase::removeDatabase(QStringLiteral("locker"));
    Retry(pane);
    EXPECT_EQ(pane.Shown(), "Bare P1 p1 P2 P10");
    EXPECT_EQ(pane.ProblemLine(), "");
}

TEST_F(PaneTrouble, AnEmptyListSaysWhatToDo)
{
    const CTestLibraries nothing;
    libraries_.Fill(QStringLiteral("SRV1"),
                    [](CLibraryWriter& writer) { static_cast<void>(writer.MakeFolder(QStringLiteral("Hollow"))); });
    const struct {
        const char* label;
        const CTestLibraries& libraries;
        PaneStart start;
        const char* typed;
        const char* text;
    } rows[] = {
        {"no server found", nothing, {.server = u""}, "", "No server found in %1.\n"},
        {"no server chosen", libraries_, {.server = u""}, "", "Choose a server on the left"},
        {"empty folder", libraries_, {.folder = u"Hollow"}, "", "This folder has no parts."},
        {"filter", libraries_, {.folder = u"Plates", .filter = nct_data_kind}, "", "No part here has files for"},
        {"search", libraries_, {}, "zz", "No part matches “zz”."},
        {"rows", libraries_, {}, "", ""},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.label);
        CPlayedPane pane(row.libraries, row.start);
        pane.Type(QString::fromUtf8(row.typed));
        const QString wanted = QString::fromUtf8(row.text).replace(QStringLiteral("%1"), row.libraries.Folder());
        EXPECT_EQ(pane.List().EmptyText().left(wanted.size()).toStdString(), wanted.toStdString());
        EXPECT_EQ(pane.List().EmptyText().isEmpty(), wanted.isEmpty());
    }
}

TEST_F(PaneTrouble, TheWidgetMayGoBeforeTheControl)
{
    auto pane = std::make_unique<CPlayedPane>(libraries_);
    delete pane->pane;
    EXPECT_EQ(pane->browser.GetCurrentFolder(), u"Plates\\2008");
    EXPECT_EQ(pane->browser.MoveFocus(focus_forward), 0);
    EXPECT_EQ(pane->browser.SelectAllParts(1), 1);
    pane->browser.DisconnectServer();
}

} // namespace
} // namespace partkeep
