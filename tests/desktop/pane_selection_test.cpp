// Selecting, searching, sorting and moving about in the pane, by mouse and keys.
#include "tests/desktop/played_pane.h"

#include <gtest/gtest.h>

#include <QHeaderView>

#include <functional>

namespace partkeep {
namespace {

using Play = std::function<void(CPlayedPane&)>;

Play Row(int row, Qt::KeyboardModifiers modifiers = Qt::NoModifier)
{
    return [=](CPlayedPane& pane) { pane.ClickRow(row, modifiers); };
}

Play Press(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier)
{
    return [=](CPlayedPane& pane) { pane.Key(key, modifiers); };
}

Play Type(const char* text)
{
    return [=](CPlayedPane& pane) { pane.Type(QString::fromUtf8(text)); };
}

void Beside(CPlayedPane& pane)
{
    pane.ClickBeside();
}

void FocusSearch(CPlayedPane& pane)
{
    pane.Search().setFocus();
}

class PaneSelection : public testing::Test {
protected:
    PaneSelection() { libraries_.MakeShop(); }
    CTestLibraries libraries_;
};

// The shop's folder shows Bare, P1, p1, P2, P10; ids decide between P1 and p1.
TEST_F(PaneSelection, FollowsMouseAndKeysInTheOrderOfTheList)
{
    ASSERT_EQ(CPlayedPane(libraries_).Shown(), "Bare P1 p1 P2 P10");
    const struct {
        const char* label;
        std::vector<Play> plays;
        const char* selected;
        int clicks;
    } rows[] = {
        {"one click", {Row(1)}, "P1", 1},
        {"the same again", {Row(1), Row(1)}, "P1", 2},
        {"control adds, in the list's order", {Row(3), Row(1, Qt::ControlModifier)}, "P1 P2", 2},
        {"control takes away", {Row(1), Row(1, Qt::ControlModifier)}, "", 2},
        {"plain click among several", {Row(1), Row(3, Qt::ShiftModifier), Row(2)}, "p1", 3},
        {"shift spans", {Row(1), Row(4, Qt::ShiftModifier)}, "P1 p1 P2 P10", 2},
        {"shift upwards", {Row(3), Row(0, Qt::ShiftModifier)}, "Bare P1 p1 P2", 2},
        {"click beside", {Row(1), Beside}, "", 2},
        {"click beside nothing", {Beside}, "", 1},
        {"first arrow takes the first row", {Press(Qt::Key_Down)}, "Bare", 1},
        {"arrows", {Press(Qt::Key_Down), Press(Qt::Key_Down), Press(Qt::Key_Down)}, "p1", 3},
        {"arrow at the end changes nothing", {Row(4), Press(Qt::Key_Down)}, "P10", 1},
        {"shift and arrow", {Row(1), Press(Qt::Key_Down, Qt::ShiftModifier)}, "P1 p1", 2},
        {"end and home", {Press(Qt::Key_End), Press(Qt::Key_Home, Qt::ShiftModifier)}, "Bare P1 p1 P2 P10", 2},
        {"control moves, space adds",
         {Row(0), Press(Qt::Key_Down, Qt::ControlModifier), Press(Qt::Key_Down, Qt::ControlModifier),
          Press(Qt::Key_Space, Qt::ControlModifier)},
         "Bare p1",
         2},
        {"page keys", {Press(Qt::Key_PageDown), Press(Qt::Key_PageUp)}, "Bare", 2},
        {"arrows inside the search", {FocusSearch, Press(Qt::Key_Down), Press(Qt::Key_Down)}, "P1", 2},
        {"shift inside the search",
         {FocusSearch, Press(Qt::Key_Down), Press(Qt::Key_Down, Qt::ShiftModifier)},
         "Bare P1",
         2},
        {"search hides and takes away", {Row(1), Row(4, Qt::ControlModifier), Type("10")}, "P10", 3},
        {"search keeps what it shows", {Row(4), Type("p10")}, "P10", 1},
        {"cleared search brings nothing back", {Row(0), Type("p"), Press(Qt::Key_Backspace)}, "", 2},
        {"typed in the list, arrows go on", {Type("p1"), Press(Qt::Key_Down)}, "P1", 1},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.label);
        CPlayedPane pane(libraries_);
        pane.TakeClicks();
        for (const Play& play : row.plays) {
            play(pane);
        }
        EXPECT_EQ(pane.Selected(), row.selected);
        EXPECT_EQ(pane.TakeClicks(), row.clicks);
    }
}

TEST_F(PaneSelection, ADragSelectsAndTellsEachChangeOnce)
{
    CPlayedPane pane(libraries_);
    pane.TakeClicks();
    QWidget* viewport = pane.List().viewport();
    const auto place = [&](int row) { return pane.List().visualRect(pane.pane->Model().index(row, 0)).center(); };
    QTest::mousePress(viewport, Qt::LeftButton, Qt::NoModifier, place(1));
    for (const int row : {2, 3}) {
        QMouseEvent move(QEvent::MouseMove, place(row), viewport->mapToGlobal(place(row)), Qt::NoButton, Qt::LeftButton,
                         Qt::NoModifier);
        QCoreApplication::sendEvent(viewport, &move);
    }
    QTest::mouseRelease(viewport, Qt::LeftButton, Qt::NoModifier, place(3));
    EXPECT_EQ(pane.Selected(), "P1 p1 P2");
    EXPECT_EQ(pane.TakeClicks(), 3);
}

TEST_F(PaneSelection, CallsOfTheComponentSelectWithoutAClick)
{
    const struct {
        const char* label;
        Play call;
        const char* selected;
        const char* shown;
    } rows[] = {
        {"select all", [](auto& pane) { pane.browser.SelectAllParts(1); }, "Bare P1 p1 P2 P10", "Bare P1 p1 P2 P10"},
        {"select none", [](auto& pane) { pane.browser.SelectAllParts(0); }, "", "Bare P1 p1 P2 P10"},
        {"refresh keeps", [](auto& pane) { pane.browser.RefreshPartList(); }, "p1 P10", "Bare P1 p1 P2 P10"},
        {"filter hides", [](auto& pane) { pane.browser.SetPartFilter(part_data_kind); }, "P10", "P1 P2 P10"},
        {"filter and back",
         [](auto& pane) {
             pane.browser.SetPartFilter(nct_data_kind);
             pane.browser.SetPartFilter(all_data_kinds);
         },
         "p1", "Bare P1 p1 P2 P10"},
        {"folder", [](auto& pane) { pane.browser.SetCurrentFolder(u"Plates"); }, "", "Top"},
        {"server", [](auto& pane) { pane.browser.ConnectServer(u"板金"); }, "", ""},
        {"unit", [](auto& pane) { pane.browser.SetDisplayUnit(1); }, "p1 P10", "Bare P1 p1 P2 P10"},
        {"end", [](auto& pane) { pane.browser.DisconnectServer(); }, "", ""},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.label);
        CPlayedPane pane(libraries_);
        pane.ClickRow(2);
        pane.ClickRow(4, Qt::ControlModifier);
        pane.TakeClicks();
        row.call(pane);
        EXPECT_EQ(pane.Shown(), row.shown) << "by the call alone";
        pane.Settle();
        EXPECT_EQ(pane.Selected(), row.selected);
        EXPECT_EQ(pane.TakeClicks(), 0);
        // What the view shows as selected is what the contract says.
        EXPECT_EQ(pane.List().selectionModel()->selectedRows().size(), pane.browser.GetSelectedPartCount());
    }
}

TEST_F(PaneSelection, StaysWithItsPartsWhenOthersComeAndGo)
{
    CPlayedPane pane(libraries_);
    pane.ClickRow(1);
    pane.ClickRow(3, Qt::ControlModifier);
    libraries_.Fill(QStringLiteral("SRV1"), [](CLibraryWriter& writer) {
        writer.RemovePart(*writer.MakeFolder(QStringLiteral("Plates\\2008")), QStringLiteral("P1"));
        PutTestPart(writer, QStringLiteral("Plates\\2008"), QStringLiteral("A0"), SetOf(FileSlot::Iga));
    });
    EXPECT_EQ(pane.Selected(), " P2") << "a part that has gone has no name";
    pane.browser.RefreshPartList();
    pane.Settle();
    EXPECT_EQ(pane.Selected(), "P2");
    EXPECT_EQ(pane.Shown(), "A0 Bare p1 P2 P10");
}

TEST_F(PaneSelection, KeysOfTheDialogReachItFromEveryPane)
{
    CPlayedPane pane(libraries_);
    pane.Type(QStringLiteral("p"));
    for (QWidget* focused : std::initializer_list<QWidget*>{&pane.List(), &pane.Search(), &pane.Tree()}) {
        focused->setFocus();
        pane.ClickRow(0);
        focused->setFocus();
        pane.window.keys.clear();
        pane.TakeClicks();
        pane.Key(Qt::Key_Return);
        pane.Key(Qt::Key_Escape);
        pane.Key(Qt::Key_A, Qt::ControlModifier);
        EXPECT_EQ(pane.window.keys, (std::vector<int>{Qt::Key_Return, Qt::Key_Escape, Qt::Key_A}));
        EXPECT_EQ(pane.Selected(), "P1");
        EXPECT_EQ(pane.Search().text(), QStringLiteral("p"));
        EXPECT_EQ(pane.TakeClicks(), 0);
    }
}

TEST_F(PaneSelection, TheButtonInTheSearchClearsIt)
{
    CPlayedPane pane(libraries_);
    EXPECT_FALSE(pane.Search().ClearButton().isVisible());
    pane.Type(QStringLiteral("10"));
    EXPECT_EQ(pane.Shown(), "P10");
    QTest::mouseClick(&pane.Search().ClearButton(), Qt::LeftButton);
    pane.Settle();
    EXPECT_EQ(pane.Shown(), "Bare P1 p1 P2 P10");
    EXPECT_TRUE(pane.Search().hasFocus());
}

TEST_F(PaneSelection, EachColumnSortsInNaturalOrderBothWays)
{
    libraries_.Fill(QStringLiteral("Sort"), [](CLibraryWriter& writer) {
        const auto put = [&](const char* name, int thickness, const char* material, const char* machine,
                             const char* comment) {
            PutTestPart(
                writer, QStringLiteral("F"), QString::fromUtf8(name), 1,
                {thickness, QString::fromUtf8(material), QString::fromUtf8(machine), QString::fromUtf8(comment)});
        };
        put("B10", 90000, "AL5", "M2", "x 3");
        put("b9", 100000, "al10", "M10", "x 20");
        put("C1", 8000, "AL40", "M1", "X 100");
    });
    const char* const by_column[] = {"b9 B10 C1", "C1 B10 b9", "B10 b9 C1", "C1 B10 b9", "B10 b9 C1"};
    CPlayedPane pane(libraries_, {.server = u"Sort", .folder = u"F"});
    QHeaderView& header = pane.List().Header();
    for (int column = 0; column < part_columns; ++column) {
        SCOPED_TRACE(column);
        const auto click = [&] {
            const QPoint place(header.sectionViewportPosition(column) + 20, header.height() / 2);
            QTest::mouseClick(header.viewport(), Qt::LeftButton, Qt::NoModifier, place);
            pane.Settle();
        };
        if (column > 0) { // the first is sorted from the start
            click();
        }
        EXPECT_EQ(pane.Shown(), by_column[column]);
        click();
        QStringList backward = QString::fromLatin1(by_column[column]).split(u' ');
        std::reverse(backward.begin(), backward.end());
        EXPECT_EQ(pane.Shown(), backward.join(u' ').toStdString());
    }
}

TEST_F(PaneSelection, TheTreeNavigatesWithOneClickEach)
{
    CPlayedPane pane(libraries_);
    pane.ClickRow(1);
    pane.TakeClicks();
    pane.ClickFolder(QStringLiteral("SRV1"), QStringLiteral("Plates"));
    EXPECT_EQ(pane.browser.GetCurrentFolder(), u"Plates");
    EXPECT_EQ(pane.Shown(), "Top");
    EXPECT_EQ(pane.Selected(), "");
    EXPECT_EQ(pane.TakeClicks(), 1);
    pane.Key(Qt::Key_Up);
    EXPECT_EQ(pane.browser.GetCurrentFolder(), u"");
    EXPECT_EQ(pane.TakeClicks(), 1);
    pane.ClickFolder(QStringLiteral("板金"), QStringLiteral("板金"));
    EXPECT_EQ(pane.browser.GetCurrentServer(), u"板金");
    EXPECT_EQ(pane.TakeClicks(), 1);
    pane.Key(Qt::Key_Left);
    pane.Key(Qt::Key_Right);
    EXPECT_EQ(pane.TakeClicks(), 0) << "closing and opening a branch moves nothing";
    pane.Key(Qt::Key_Down);
    EXPECT_EQ(pane.Shown(), "カバー1");
    EXPECT_EQ(pane.TakeClicks(), 1);
    pane.Key(Qt::Key_Up, Qt::AltModifier);
    EXPECT_EQ(pane.browser.GetCurrentFolder(), u"");
    EXPECT_EQ(pane.TakeClicks(), 1);
}

} // namespace
} // namespace partkeep
