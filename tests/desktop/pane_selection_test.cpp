// Selecting, searching, sorting and moving about in the pane, by mouse and keys and by the component's calls.
#include "tests/desktop/played_pane.h"

#include "desktop/pane/pane_places.h"
#include "desktop/pane/search_hits.h"
#include "partlibrary/library/sort_text.h"

#include <QImage>

namespace partkeep {
namespace {

using Play = std::function<void(CPlayedPane&)>;

Play Row(int row, Qt::KeyboardModifiers modifiers = Qt::NoModifier)
{
    return [=](CPlayedPane& pane) { ClickRow(*pane.pane, row, modifiers); };
}

Play Press(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier)
{
    return [=](CPlayedPane& pane) { pane.Key(key, modifiers); };
}

Play Type(const char* text)
{
    return [=](CPlayedPane& pane) { pane.Type(QString::fromUtf8(text)); };
}

Play Call(const std::function<void(CKPDKeyManager&)>& call)
{
    return [call](CPlayedPane& pane) { call(pane.browser); };
}

void Beside(CPlayedPane& pane)
{
    QWidget& viewport = *pane.List().viewport();
    ClickAt(viewport, viewport.rect().bottomLeft() + QPoint(9, -9));
}

void Drag(CPlayedPane& pane)
{
    QWidget* viewport = pane.List().viewport();
    QTest::mousePress(viewport, Qt::LeftButton, Qt::NoModifier, PlaceOfRow(*pane.pane, 1));
    for (const int row : {2, 3}) {
        const QPoint place = PlaceOfRow(*pane.pane, row);
        QMouseEvent move(QEvent::MouseMove, place, viewport->mapToGlobal(place), Qt::NoButton, Qt::LeftButton, {});
        QCoreApplication::sendEvent(viewport, &move);
    }
    QTest::mouseRelease(viewport, Qt::LeftButton, Qt::NoModifier, PlaceOfRow(*pane.pane, 3));
}

const Play down = Press(Qt::Key_Down);
const Play refresh = Call([](CKPDKeyManager& browser) { browser.RefreshPartList(); });
const Play select_all = Call([](CKPDKeyManager& browser) { browser.SelectAllParts(1); });

struct Trial {
    const char* label;
    std::vector<Play> plays;
    const char* selected;
    int clicks;
    const char* shown = "Bare P1 p1 P2 P10";
    const char16_t* folder = u"Plates\\2008";
};

class PaneSelection : public PaneTest {
protected:
    // Each in a pane that begins in the folder.
    void PlayEach(const std::u16string& folder, const std::vector<Trial>& trials)
    {
        for (const Trial& trial : trials) {
            SCOPED_TRACE(trial.label);
            CPlayedPane pane(libraries_, {.folder = folder});
            pane.TakeClicks();
            for (const Play& play : trial.plays) {
                Settle(*pane.pane);
                play(pane);
            }
            EXPECT_TRUE(pane.Shown() == trial.shown || pane.pane->HasWork()) << pane.Shown() << " by the call alone";
            Settle(*pane.pane);
            EXPECT_EQ(pane.Shown(), trial.shown);
            EXPECT_EQ(pane.Selected(), trial.selected);
            EXPECT_EQ(pane.browser.GetCurrentFolder(), trial.folder);
            EXPECT_EQ(pane.TakeClicks(), trial.clicks);
            EXPECT_EQ(pane.List().selectionModel()->selectedRows().size(), pane.browser.GetSelectedPartCount());
            if (CPanePlaces(places_).SearchesServer()) {
                pane.Key(Qt::Key_F, Qt::ControlModifier | Qt::ShiftModifier); // the next one would begin so
            }
        }
    }
};

// The shop's folder shows Bare, P1, p1, P2, P10; ids decide between P1 and p1.
TEST_F(PaneSelection, FollowsMouseKeysAndCalls)
{
    const char* const all = "Bare P1 p1 P2 P10";
    const Play search = [](CPlayedPane& pane) { pane.Search().setFocus(); };
    const Play clear = [](CPlayedPane& pane) { QTest::mouseClick(&pane.Search().ClearButton(), Qt::LeftButton); };
    const Play head = [](CPlayedPane& pane) { // of the thickness
        QHeaderView& header = pane.Header();
        ClickAt(*header.viewport(), {header.sectionViewportPosition(1) + 20, header.height() / 2});
    };
    const Play control_p10 = Row(4, Qt::ControlModifier);
    const Play control_down = Press(Qt::Key_Down, Qt::ControlModifier);
    const Play control_space = Press(Qt::Key_Space, Qt::ControlModifier);
    const Play filter = Call([](auto& browser) { browser.SetPartFilter(part_data_kind); });
    const Play above = Call([](auto& browser) { browser.SetCurrentFolder(u"Plates"); });
    const std::vector<Trial> trials = {
        {"the same twice", {Row(1), Row(1)}, "P1", 2},
        {"control adds, in the list's order", {Row(3), Row(1, Qt::ControlModifier)}, "P1 P2", 2},
        {"control takes away", {Row(1), Row(1, Qt::ControlModifier)}, "", 2},
        {"plain click among several", {Row(1), Row(3, Qt::ShiftModifier), Row(2)}, "p1", 3},
        {"shift upwards", {Row(3), Row(0, Qt::ShiftModifier)}, "Bare P1 p1 P2", 2},
        {"a drag tells each change once", {Drag}, "P1 p1 P2", 3},
        {"click beside", {Row(1), Beside}, "", 2},
        {"click beside nothing", {Beside}, "", 1},
        {"arrows begin at the first row", {down, down, down}, "p1", 3},
        {"arrow at the end changes nothing", {Row(4), down}, "P10", 1},
        {"end and home", {Press(Qt::Key_End), Press(Qt::Key_Home, Qt::ShiftModifier)}, all, 2},
        {"control moves, space adds", {Row(0), control_down, control_down, control_space}, "Bare p1", 2},
        {"page keys", {Press(Qt::Key_PageDown), Press(Qt::Key_PageUp)}, "Bare", 2},
        {"arrows inside the search", {search, down, Press(Qt::Key_Down, Qt::ShiftModifier)}, "Bare P1", 2},
        {"search hides and takes away", {Row(1), control_p10, Type("10")}, "P10", 3, "P10"},
        {"search keeps what it shows", {Row(4), Type("p10")}, "P10", 1, "P10"},
        {"cleared search brings nothing back", {Row(0), Type("p"), Press(Qt::Key_Backspace)}, "", 2},
        {"cleared by its button", {Type("10"), clear}, "", 0},
        {"typed in the list, arrows go on", {Type("p1"), down}, "P1", 1, "P1 p1 P10"},
        {"heads sort, twice the other way", {Row(1), head, head}, "P1", 1, "P1 P2 p1 Bare P10"},
        {"select all", {select_all}, all, 0},
        {"select none", {Row(2), Call([](auto& browser) { browser.SelectAllParts(0); })}, "", 1},
        {"refresh keeps", {Row(2), control_p10, refresh}, "p1 P10", 2},
        {"filter hides", {Row(2), control_p10, filter}, "P10", 2, "P1 P2 P10"},
        {"folder", {Row(2), above}, "", 1, "Top", u"Plates"},
        {"server", {Row(2), Call([](auto& browser) { browser.ConnectServer(u"板金"); })}, "", 1, "", u""},
        {"end", {Row(2), Call([](auto& browser) { browser.DisconnectServer(); })}, "", 1, "", u""},
    };
    PlayEach(u"Plates\\2008", trials);
}

TEST_F(PaneSelection, TheTreeNavigatesWithOneClickEach)
{
    const struct {
        const char* label;
        Play play;
        const char16_t* place;
        int clicks;
    } rows[] = {
        {"folder above", [](auto& pane) { ClickInTree(*pane.pane, u"SRV1"_s, u"Plates"_s); }, u"SRV1|Plates", 1},
        {"key to the server", Press(Qt::Key_Up), u"SRV1|", 1},
        {"other server", [](auto& pane) { ClickInTree(*pane.pane, u"板金"_s, u"板金"_s); }, u"板金|", 1},
        {"closing a branch moves nothing", Press(Qt::Key_Left), u"板金|", 0},
        {"nor opening it", Press(Qt::Key_Right), u"板金|", 0},
        {"key into it", Press(Qt::Key_Down), u"板金|筐体", 1},
        {"up from anywhere", Press(Qt::Key_Up, Qt::AltModifier), u"板金|", 1},
    };
    CPlayedPane pane(libraries_);
    ClickRow(*pane.pane, 1);
    pane.TakeClicks();
    for (const auto& row : rows) {
        SCOPED_TRACE(row.label);
        row.play(pane);
        EXPECT_EQ(pane.browser.GetCurrentServer() + u'|' + pane.browser.GetCurrentFolder(), row.place);
        EXPECT_EQ(pane.Selected(), "");
        EXPECT_EQ(pane.TakeClicks(), row.clicks);
    }
}

// Apart from each other, along the middle of a name.
int GroundsOfHits(CPlayedPane& pane, int row)
{
    const QRect cell = pane.List().visualRect(pane.pane->Model().index(row, 0));
    const QImage look = pane.List().viewport()->grab(cell).toImage();
    int grounds = 0;
    bool inside = false;
    for (int x = 0; x < look.width(); ++x) {
        bool ground = false;
        for (int y = 0; y < look.height(); ++y) {
            ground = ground || look.pixelColor(x, y) == QColor(255, 214, 92);
        }
        grounds += ground && !inside ? 1 : 0;
        inside = ground;
    }
    return grounds;
}

// A result is no selection until it is chosen; that goes to its folder.
TEST_F(PaneSelection, AWholeServerIsSearched)
{
    const Play wide = Press(Qt::Key_F, Qt::ControlModifier | Qt::ShiftModifier);
    const Play back = Press(Qt::Key_Left, Qt::AltModifier);
    const Play narrow = [](CPlayedPane& pane) {
        const QMenu& columns = Filled(ButtonIn(*pane.pane, u"Narrow"_s)->menu());
        Filled(columns.actions().front()->menu()).actions().at(1)->trigger();
    };
    const Play plates = [](CPlayedPane& pane) { ClickInTree(*pane.pane, u"SRV1"_s, u"Plates"_s); };
    const Play twice = [](CPlayedPane& pane) {
        const QPoint place = PlaceOfRow(*pane.pane, 1);
        QTest::mouseClick(pane.List().viewport(), Qt::LeftButton, {}, place);
        QTest::mouseDClick(pane.List().viewport(), Qt::LeftButton, {}, place);
    };
    const std::vector<Trial> trials = {
        {"shown and not selected", {wide, Type("p1")}, "", 0, "P1 p1 P10", u"Plates"},
        {"words in any order, all in one part", {wide, Type("SPCC p1")}, "", 0, "P1", u"Plates"},
        {"all of them is none", {wide, Type("t"), select_all}, "", 0, "Top", u"Plates"},
        {"what was selected is not any more", {Row(0), wide, Type("p1")}, "", 2, "P1 p1 P10", u"Plates"},
        {"chosen by a click", {wide, Type("p1"), Row(2)}, "P10", 1},
        {"by keys, behind a refresh", {wide, Type("p"), refresh, down, down, Press(Qt::Key_Space)}, "P1", 1},
        {"in this folder", {wide, Type("t"), Row(0)}, "Top", 1, "Top", u"Plates"},
        {"and back", {wide, Type("p1"), Row(2), back}, "", 2, "P1 p1 P10"},
        {"to this folder alone", {wide, Type("p1"), wide}, "", 0, "", u"Plates"},
        {"cleared", {wide, Type("p1"), [](auto& pane) { pane.Search().clear(); }}, "", 0, "Top", u"Plates"},
        {"narrowed without a word", {wide, narrow}, "", 0, "P1", u"Plates"},
        {"the tree leaves the results", {wide, Type("p1"), plates}, "", 1, "Top", u"Plates"},
        {"both presses mean one part", {wide, Type("p1"), twice}, "p1", 1},
    };
    PlayEach(u"Plates", trials);
    CPlayedPane pane(libraries_);
    pane.Search().setText(u"0 p"_s);
    Settle(*pane.pane);
    EXPECT_EQ(GroundsOfHits(pane, 0), 2) << pane.Shown();
    EXPECT_EQ(FindHits(u"ﾎﾞｰﾙ Hülse h"_s, SearchWords(u"ボー hu h"_s)), (QList<SearchHit>{{0, 3}, {5, 2}, {11, 1}}));
}

} // namespace
} // namespace partkeep
