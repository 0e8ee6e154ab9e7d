// What the pane shows and remembers: unit, looks, places, export, texts, focus, accessibility.
#include "tests/desktop/played_pane.h"

#include "desktop/pane/pane_places.h"
#include "desktop/pane/pane_texts.h"

#include <gtest/gtest.h>

#include <QAccessible>
#include <QApplication>
#include <QFile>
#include <QHeaderView>
#include <QLabel>
#include <QMenu>
#include <QSplitter>

#include <functional>
#include <limits>

namespace partkeep {
namespace {

class PaneState : public testing::Test {
protected:
    PaneState() { libraries_.MakeShop(); }
    CTestLibraries libraries_;
};

class CPaintCounter : public QObject {
public:
    explicit CPaintCounter(QWidget* widget) { widget->installEventFilter(this); }
    int paints = 0;

protected:
    bool eventFilter(QObject* /*watched*/, QEvent* event) override
    {
        paints += event->type() == QEvent::Paint;
        return false;
    }
};

TEST_F(PaneState, TheUnitChangesAtTheRefresh)
{
    CPlayedPane pane(libraries_);
    const auto shown = [&pane] {
        return pane.Cell(1, PartColumn::Thickness) + " " +
               pane.pane->Model().HeaderText(PartColumn::Thickness).toStdString();
    };
    EXPECT_EQ(shown(), "1.50 Thickness (mm)");
    pane.browser.SetDisplayUnit(1);
    EXPECT_EQ(shown(), "1.50 Thickness (mm)");
    pane.browser.RefreshPartList();
    EXPECT_EQ(shown(), "0.0591 Thickness (inch)");
    EXPECT_EQ(ThicknessText(-1, DisplayUnit::Metric), QStringLiteral("-0.00"));
    EXPECT_EQ(ThicknessText(std::numeric_limits<std::int32_t>::max(), DisplayUnit::Metric),
              QStringLiteral("214748.36"));
}

TEST_F(PaneState, LooksComeBackThroughTheViewState)
{
    std::vector<std::int16_t> values(max_view_state_values, 0);
    {
        CPlayedPane pane(libraries_);
        QHeaderView& header = pane.List().Header();
        header.moveSection(4, 0);
        header.resizeSection(0, 233);
        header.hideSection(3);
        header.setSortIndicator(1, Qt::DescendingOrder);
        pane.pane->findChild<QSplitter*>()->setSizes({260, 540});
        ASSERT_GT(pane.browser.GetViewStateCount(), 0);
        pane.browser.GetViewState(values.data());
    }
    CPlayedPane pane(libraries_);
    pane.browser.SetViewState(values.data());
    const QHeaderView& header = pane.List().Header();
    EXPECT_EQ(header.logicalIndex(0), 4);
    EXPECT_EQ(header.sectionSize(0), 233);
    EXPECT_TRUE(header.isSectionHidden(3));
    EXPECT_EQ(header.sortIndicatorSection(), 1);
    EXPECT_EQ(pane.Shown(), "P1 P2 p1 Bare P10") << "by thickness, downwards, ties by name downwards";
    EXPECT_NEAR(pane.pane->findChild<QSplitter*>()->sizes().front(), 260, 4);
    std::vector<std::int16_t> again(max_view_state_values, 0);
    pane.browser.GetViewState(again.data());
    EXPECT_EQ(again, values);
}

TEST_F(PaneState, AForeignViewStateLeavesAUsablePane)
{
    CPlayedPane pane(libraries_);
    std::vector<std::int16_t> own(max_view_state_values, 0);
    pane.browser.GetViewState(own.data());
    for (std::size_t place = 0; place < static_cast<std::size_t>(pane.browser.GetViewStateCount()); ++place) {
        for (const int value : {-32768, -1, 0, 1, 3, 32767}) {
            std::vector<std::int16_t> values = own;
            values[place] = static_cast<std::int16_t>(value);
            pane.browser.SetViewState(values.data());
            const QHeaderView& header = pane.List().Header();
            ASSERT_LT(header.hiddenSectionCount(), header.count()) << place << " " << value;
            ASSERT_GT(pane.List().width(), 100) << place << " " << value;
            ASSERT_LT(header.length(), 5 * 4000 + 1) << place << " " << value;
        }
    }
    EXPECT_FALSE(pane.List().grab().isNull());
}

TEST_F(PaneState, ColumnsAreArrangedFromTheKeyboard)
{
    CPlayedPane pane(libraries_);
    const QHeaderView& header = pane.List().Header();
    const auto choose = [&pane](const char* entry) {
        pane.Button(QStringLiteral("Columns"))->setFocus();
        pane.Key(Qt::Key_Space);
        auto* menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
        ASSERT_NE(menu, nullptr);
        for (QAction* action : menu->actions()) {
            if (action->text() == QLatin1String(entry) && !action->isSeparator()) {
                menu->setActiveAction(action);
            }
        }
        QTest::keyClick(menu, Qt::Key_Return);
        pane.Settle();
    };
    choose("Move to the right");
    EXPECT_EQ(header.visualIndex(0), 1);
    const int width = header.sectionSize(0);
    choose("Wider");
    EXPECT_GT(header.sectionSize(0), width);
    choose("Material");
    EXPECT_TRUE(header.isSectionHidden(2));
    choose("Sort descending");
    EXPECT_EQ(pane.Shown(), "P10 P2 p1 P1 Bare");
}

TEST_F(PaneState, MoveFocusGoesThroughEachPaneAndOut)
{
    CPlayedPane pane(libraries_);
    pane.Type(QStringLiteral("p")); // brings the clear button
    QLineEdit outside(&pane.window);
    outside.setGeometry(0, 350, 100, 30);
    outside.show();
    const struct {
        const char* label;
        std::int16_t code;
        QWidget* last;
    } rows[] = {
        {"forward", focus_forward, &pane.List()},
        {"backward", focus_backward, pane.Button(QStringLiteral("Places"))},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.label);
        outside.setFocus();
        QList<QWidget*> stops;
        while (pane.browser.MoveFocus(row.code) != 0 && stops.size() < 20) {
            stops += pane.window.focusWidget();
            EXPECT_TRUE(pane.pane->isAncestorOf(stops.back()));
        }
        EXPECT_EQ(stops.size(), 7);
        EXPECT_EQ(stops.back(), row.last);
        EXPECT_EQ(pane.window.focusWidget(), row.last) << "the dialog moves on from here";
        for (QWidget* pane_part : std::initializer_list<QWidget*>{&pane.List(), &pane.Search(), &pane.Tree(),
                                                                  &pane.Search().ClearButton()}) {
            EXPECT_TRUE(stops.contains(pane_part));
        }
    }
    pane.Settle();
    CPaintCounter counter(pane.List().viewport());
    for (const std::int16_t code : {focus_at_paint, focus_at_start, std::int16_t{7}}) {
        EXPECT_EQ(pane.browser.MoveFocus(code), 0);
    }
    pane.Settle();
    EXPECT_EQ(counter.paints, 0);
    EXPECT_EQ(pane.window.focusWidget(), pane.Button(QStringLiteral("Places")));
}

TEST_F(PaneState, PlacesAreRememberedAndLeadBack)
{
    {
        CPlayedPane pane(libraries_);
        pane.Key(Qt::Key_D, Qt::ControlModifier);
        pane.ClickFolder(QStringLiteral("板金"), QStringLiteral("板金"));
        pane.ClickFolder(QStringLiteral("板金"), QStringLiteral("筐体"));
    }
    CPlayedPane pane(libraries_, {.server = u"板金", .folder = u""});
    pane.TakeClicks();
    auto* menu = pane.Button(QStringLiteral("Places"))->menu();
    Q_EMIT menu->aboutToShow();
    QStringList entries;
    for (QAction* action : menu->actions()) {
        entries += action->text();
        if (action->text() == QStringLiteral("SRV1\\Plates\\2008")) {
            action->trigger();
            break;
        }
    }
    EXPECT_EQ(pane.browser.GetCurrentServer(), u"SRV1");
    EXPECT_EQ(pane.browser.GetCurrentFolder(), u"Plates\\2008");
    EXPECT_EQ(pane.TakeClicks(), 1);
    const CPanePlaces places(libraries_.Folder() + QStringLiteral("/places/browser.json"));
    EXPECT_EQ(places.Favourites(), (QList<PanePlace>{{QStringLiteral("SRV1"), QStringLiteral("Plates\\2008")}}));
    EXPECT_EQ(places.Recent().size(), 3);
    EXPECT_EQ(places.Recent().front(), places.Favourites().front());
}

TEST_F(PaneState, APlacesFileThatMakesNoSenseIsPassedOver)
{
    const QString file = libraries_.Folder() + QStringLiteral("/places.json");
    for (const char* content : {"", "{", "[1,2]", R"({"favourites":7,"recent":[{"server":3},"x",{"folder":"F"}]})"}) {
        SCOPED_TRACE(content);
        WriteBytes(file.toStdString(), content);
        CPanePlaces places(file);
        EXPECT_TRUE(places.Favourites().isEmpty() && places.Recent().isEmpty());
        places.Visit({QStringLiteral("S"), QStringLiteral("F")});
        EXPECT_EQ(CPanePlaces(file).Recent().size(), 1);
    }
    CPanePlaces many(file);
    for (int i = 0; i < 100; ++i) {
        many.Visit({QStringLiteral("S"), QString::number(i)});
    }
    EXPECT_EQ(CPanePlaces(file).Recent().size(), 12);
    EXPECT_EQ(CPanePlaces(file).Recent().front().folder, QStringLiteral("99"));
}

TEST_F(PaneState, TheShownListIsExported)
{
    libraries_.Fill(QStringLiteral("SRV1"), [](CLibraryWriter& writer) {
        PutTestPart(writer, QStringLiteral("Plates\\2008"), QStringLiteral("P5"), 1,
                    {20000, QStringLiteral("SPCC, hard"), {}, QStringLiteral("6\" wide")});
    });
    CPlayedPane pane(libraries_, {.filter = part_data_kind});
    pane.List().Header().moveSection(4, 1);
    pane.List().Header().hideSection(3);
    pane.Type(QStringLiteral("spcc"));
    const QString file = libraries_.Folder() + QStringLiteral("/list.csv");
    ASSERT_TRUE(pane.pane->ExportTo(file));
    EXPECT_EQ(ReadBytes(file.toStdString()), "\xEF\xBB\xBFName,Comment,Thickness (mm),Material\r\n"
                                             "P1,取付板,1.50,SPCC\r\n"
                                             "P5,\"6\"\" wide\",2.00,\"SPCC, hard\"\r\n");
    EXPECT_FALSE(pane.pane->ExportTo(libraries_.Folder() + QStringLiteral("/missing/list.csv")));
}

TEST_F(PaneState, ACopyShowsItsPartFromInsideTheCall)
{
    CPlayedPane pane(libraries_);
    QLabel* status = nullptr;
    for (QLabel* label : pane.pane->findChildren<QLabel*>()) {
        status = label->text().startsWith(QStringLiteral("5 parts")) ? label : status;
    }
    ASSERT_NE(status, nullptr);
    CPaintCounter counter(status);
    bool ran = false;
    QMetaObject::invokeMethod(
        pane.pane, [&ran] { ran = true; }, Qt::QueuedConnection);
    pane.browser.SetTargetFolder(libraries_.Folder().toStdU16String());
    pane.browser.SetDataKind(part_data_kind);
    EXPECT_TRUE(pane.browser.CopyPartFiles(u"SRV1", u"Plates\\2008\\P1"));
    EXPECT_EQ(counter.paints, 1);
    EXPECT_FALSE(ran) << "no event runs inside the call";
    EXPECT_EQ(status->text(), QStringLiteral("5 parts"));
}

TEST_F(PaneState, EveryTextExistsInEachLanguageWithTheSamePlaces)
{
    for (int text = 0; text < static_cast<int>(PaneText::Count); ++text) {
        const auto in = [text](PaneLanguage language) { return PaneString(static_cast<PaneText>(text), language); };
        const QString english = in(PaneLanguage::English);
        for (const PaneLanguage language : {PaneLanguage::English, PaneLanguage::Japanese, PaneLanguage::Chinese}) {
            EXPECT_FALSE(in(language).isEmpty()) << text;
            EXPECT_EQ(in(language).count(QStringLiteral("%1")), english.count(QStringLiteral("%1"))) << text;
        }
    }
}

TEST_F(PaneState, CaptionsFitInEachLanguage)
{
    for (const std::int32_t language : {1, 2, 3}) {
        CPlayedPane pane(libraries_, {.language = language});
        for (const QToolButton* button : pane.pane->findChildren<QToolButton*>()) {
            if (button->isVisible() && !button->text().isEmpty()) {
                EXPECT_GE(button->width(), button->sizeHint().width()) << button->text().toStdString();
                EXPECT_GE(button->height(), 32) << button->text().toStdString();
            }
        }
        QHeaderView& header = pane.List().Header();
        for (int column = 0; column < part_columns; ++column) {
            const QString text = pane.pane->Model().HeaderText(static_cast<PartColumn>(column));
            EXPECT_GE(header.sectionSize(column), header.fontMetrics().horizontalAdvance(text)) << text.toStdString();
        }
    }
}

void ExpectNamed(QAccessibleInterface& element, int depth, int& elements)
{
    ++elements;
    const bool reachable = element.state().focusable && !element.state().invisible;
    if (reachable && element.role() != QAccessible::Cell) {
        EXPECT_FALSE(element.text(QAccessible::Name).isEmpty()) << "role " << element.role() << " depth " << depth;
        EXPECT_NE(element.role(), QAccessible::NoRole);
    }
    for (int child = 0; depth < 8 && child < element.childCount(); ++child) {
        if (QAccessibleInterface* inner = element.child(child)) {
            ExpectNamed(*inner, depth + 1, elements);
        }
    }
}

TEST_F(PaneState, AScreenReaderFindsNamesForAllAndTheCellsOfTheList)
{
    CPlayedPane pane(libraries_);
    QAccessible::setActive(true);
    int elements = 0;
    ExpectNamed(*QAccessible::queryAccessibleInterface(pane.pane), 0, elements);
    EXPECT_GT(elements, 5 * part_columns);
    QAccessibleInterface* list = QAccessible::queryAccessibleInterface(&pane.List());
    ASSERT_NE(list->tableInterface(), nullptr);
    EXPECT_EQ(list->role(), QAccessible::Table);
    EXPECT_EQ(list->tableInterface()->columnDescription(2), QStringLiteral("Material"));
    EXPECT_EQ(list->tableInterface()->rowCount(), 5);
    EXPECT_EQ(list->tableInterface()->cellAt(4, 0)->text(QAccessible::Name), QStringLiteral("P10"));
    pane.ClickRow(4);
    QAccessibleInterface* cell = list->tableInterface()->cellAt(4, 0);
    EXPECT_TRUE(cell->state().selected && cell->state().focused);
    EXPECT_EQ(list->childAt(cell->rect().center().x(), cell->rect().center().y()), cell);
    EXPECT_EQ(list->indexOfChild(cell), 4 * part_columns);
    EXPECT_EQ(list->tableInterface()->selectedRows(), QList<int>{4});
    pane.Type(QStringLiteral("p2"));
    EXPECT_EQ(list->tableInterface()->cellAt(4, 0), nullptr);
    EXPECT_EQ(list->tableInterface()->cellAt(0, 0)->text(QAccessible::Name), QStringLiteral("P2"));
}

} // namespace
} // namespace partkeep
