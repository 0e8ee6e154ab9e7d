// What the pane shows and remembers: unit, looks, places, export, texts, focus, the cells of its list.
#include "tests/desktop/played_pane.h"

#include "desktop/pane/favourites_dialog.h"
#include "desktop/pane/pane_places.h"
#include "desktop/pane/pane_texts.h"
#include "platform/files.h"

#include <QAccessible>
#include <QApplication>
#include <QClipboard>
#include <QHelpEvent>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QSplitter>
#include <QToolTip>

#include <algorithm>

namespace partkeep {
namespace {

using PaneState = PaneTest;

TEST_F(PaneState, AfterASortTheSelectionElseTheTopIsInView)
{
    for (const int parts : {60, 3000}) { // the second list goes on behind what is shown at once
        SCOPED_TRACE(parts);
        const QString folder = u"Long %1"_s.arg(parts);
        const QString last = u"L%1"_s.arg(parts - 1);
        libraries_.Fill(u"SRV1"_s, [&](ILibraryWriter& writer) {
            PutTestParts(writer, folder, u"L%1"_s, 0, parts, [](int part) {
                return PartAttributes{part % 7, {}, {}, {}};
            });
        });
        CPlayedPane pane(libraries_, {.folder = folder.toStdU16String()});
        const auto sort = [&pane](int column, Qt::SortOrder order) {
            pane.Header().setSortIndicator(column, order);
            Settle(*pane.pane);
        };
        const auto shows = [&pane](const QString& name) {
            const CPartListModel& model = pane.pane->Model();
            const QModelIndex cell =
                model.match(model.index(0, 0), Qt::DisplayRole, name, 1, Qt::MatchExactly).value(0);
            return cell.isValid() && pane.List().viewport()->rect().contains(pane.List().visualRect(cell).center());
        };
        Settle(*pane.pane);
        pane.Key(Qt::Key_End);
        sort(0, Qt::DescendingOrder);
        EXPECT_TRUE(shows(last));
        sort(1, Qt::AscendingOrder);
        EXPECT_TRUE(shows(last));
        pane.browser.SelectAllParts(0);
        sort(0, Qt::AscendingOrder);
        EXPECT_TRUE(shows(u"L0"_s));
        pane.browser.SelectAllParts(1);
        ClickRow(*pane.pane, 0, Qt::ControlModifier);
        sort(1, Qt::DescendingOrder);
        EXPECT_EQ(pane.List().selectionModel()->selectedRows().size(), parts - 1);
        EXPECT_EQ(pane.browser.GetSelectedPartCount(), parts - 1);
        pane.Header().setSortIndicator(0, Qt::DescendingOrder);
        QAccessible::queryAccessibleInterface(&pane.List())->tableInterface()->selectRow(0);
        EXPECT_EQ(pane.browser.GetSelectedPartCount(), parts - 1) << "chosen before all is known";
    }
}

TEST_F(PaneState, LooksAreArrangedFromTheKeyboardAndComeBackThroughTheViewState)
{
    std::vector<std::int16_t> values(max_view_state_values, 0);
    {
        CPlayedPane pane(libraries_);
        const auto choose = [&pane](const QString& entry) {
            ButtonIn(*pane.pane, u"Columns"_s)->setFocus();
            pane.Key(Qt::Key_Space);
            auto* menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
            ASSERT_NE(menu, nullptr);
            for (QAction* action : menu->actions()) {
                if (action->text() == entry) {
                    menu->setActiveAction(action);
                }
            }
            QTest::keyClick(menu, Qt::Key_Return);
            Settle(*pane.pane);
        };
        choose(u"Move to the right"_s);
        choose(u"Move to the right"_s);
        EXPECT_EQ(pane.Header().visualIndex(0), 2);
        const int width = pane.Header().sectionSize(0);
        choose(u"Wider"_s);
        EXPECT_GT(pane.Header().sectionSize(0), width);
        choose(u"Material"_s);
        EXPECT_TRUE(pane.Header().isSectionHidden(2));
        choose(u"Sort descending"_s);
        EXPECT_EQ(pane.Shown(), "P10 P2 p1 P1 Bare");
        pane.Header().resizeSection(0, 233);
        pane.Header().setSortIndicator(1, Qt::DescendingOrder);
        pane.pane->findChild<QSplitter*>()->setSizes({260, 540});
        pane.browser.GetViewState(values.data());
        for (const auto& name : {u"Comment"_s, u"Machine"_s, u"Thickness (mm)"_s, u"Name"_s}) {
            choose(name);
        }
        EXPECT_EQ(pane.Header().hiddenSectionCount(), part_columns - 1) << "one stays";
    }
    CPlayedPane pane(libraries_);
    pane.browser.SetViewState(values.data());
    EXPECT_EQ(pane.Header().visualIndex(0), 2);
    EXPECT_EQ(pane.Header().sectionSize(0), 233);
    EXPECT_TRUE(pane.Header().isSectionHidden(2));
    EXPECT_EQ(pane.Shown(), "P1 P2 p1 Bare P10") << "by thickness, downwards, ties by name downwards";
    EXPECT_NEAR(pane.pane->findChild<QSplitter*>()->sizes().front(), 260, 4);
    values[5] = static_cast<std::int16_t>(PictureSize::Large);
    std::replace(values.begin(), values.end(), std::int16_t{233}, std::int16_t{60});
    pane.browser.SetViewState(values.data());
    EXPECT_GT(pane.Header().sectionSize(0), 128 + 40) << "a name has room beside its picture";
    for (std::size_t place = 0; place < static_cast<std::size_t>(pane.browser.GetViewStateCount()); ++place) {
        for (const int foreign : {-32768, -1, 0, 1, 3, 32767}) {
            const auto own = std::exchange(values[place], static_cast<std::int16_t>(foreign));
            pane.browser.SetViewState(values.data());
            ASSERT_LT(pane.Header().hiddenSectionCount(), part_columns) << place << " " << foreign;
            ASSERT_GT(pane.List().width(), 100) << place << " " << foreign;
            ASSERT_LE(pane.Header().length(), part_columns * 4000) << place << " " << foreign;
            values[place] = own;
        }
    }
}

TEST_F(PaneState, PlacesWorkedInAreRememberedAndLeadBack)
{
    {
        CPlayedPane pane(libraries_);
        pane.Key(Qt::Key_D, Qt::ControlModifier);
        ClickInTree(*pane.pane, u"板金"_s, u"板金"_s);
        ClickInTree(*pane.pane, u"板金"_s, u"筐体"_s);
        EXPECT_TRUE(CPanePlaces(places_).Recent().isEmpty()) << "nobody worked there";
        QTest::qWait(3300); // timers come up to a twentieth late
        EXPECT_EQ(CPanePlaces(places_).Recent(), (QList<PanePlace>{{u"板金"_s, u"筐体"_s}})) << "somebody stayed";
        ClickInTree(*pane.pane, u"SRV1"_s, u"2008"_s);
        pane.browser.SetTargetFolder(CorePath(libraries_.Folder().toStdString()));
        pane.browser.SetDataKind(part_data_kind);
        pane.browser.CopyPartFiles(u"SRV1", u"Plates\\2008\\P1");
    }
    CPlayedPane pane(libraries_, {.server = u"板金", .folder = u""});
    pane.TakeClicks();
    auto entries = Filled(ButtonIn(*pane.pane, u"Places"_s)->menu()).actions();
    entries.removeIf([](const QAction* action) { return action->text() != u"SRV1\\Plates\\2008"_s; });
    ASSERT_EQ(entries.size(), 1) << "a favourite stands once";
    entries.front()->trigger();
    EXPECT_EQ(pane.Shown(), "Bare P1 p1 P2 P10");
    EXPECT_EQ(pane.TakeClicks(), 1);
    const CPanePlaces places(places_);
    EXPECT_EQ(places.Favourites(), (QList<PaneFavourite>{{{u"SRV1"_s, u"Plates\\2008"_s}, {}}}));
    EXPECT_EQ(places.Recent(), (QList<PanePlace>{{u"SRV1"_s, u"Plates\\2008"_s}, {u"板金"_s, u"筐体"_s}}));
}

TEST_F(PaneState, FavouritesAreNamedAndPutInOrder)
{
    CPlayedPane pane(libraries_);
    pane.Key(Qt::Key_D, Qt::ControlModifier);
    ClickInTree(*pane.pane, u"板金"_s, u"板金"_s);
    pane.Key(Qt::Key_D, Qt::ControlModifier);
    CPanePlaces places(places_);
    CFavouritesDialog dialog(places, PaneLanguage::English, pane.pane);
    dialog.show();
    auto& list = *dialog.findChild<QListWidget*>();
    list.setCurrentRow(1);
    const auto press = [&](const QString& text) {
        for (auto* button : dialog.findChildren<QPushButton*>()) {
            if (button->text() == text) {
                button->click();
            }
        }
    };
    press(u"Up"_s);
    press(u"Rename"_s);
    auto* editor = list.findChild<QLineEdit*>();
    QTest::keyClicks(editor, u"Sheets"_s);
    QTest::keyClick(editor, Qt::Key_Return);
    Settle();
    EXPECT_EQ(CPanePlaces(places_).Favourites(),
              (QList<PaneFavourite>{{{u"板金"_s, {}}, u"Sheets"_s}, {{u"SRV1"_s, u"Plates\\2008"_s}, {}}}));
    list.setCurrentRow(0);
    press(u"Up"_s);
    list.setCurrentRow(1);
    press(u"Down"_s);
    EXPECT_EQ(CPanePlaces(places_).Favourites().front().name, u"Sheets"_s) << "nothing beyond an end";
    press(u"Remove"_s);
    EXPECT_EQ(CPanePlaces(places_).Favourites().size(), 1);
    list.setCurrentRow(-1);
    for (const char16_t* text : {u"Up", u"Rename", u"Remove"}) {
        press(QString::fromUtf16(text));
    }
    EXPECT_EQ(CPanePlaces(places_).Favourites().size(), 1) << "nothing is chosen";
}

TEST_F(PaneState, APlacesFileThatMakesNoSenseIsPassedOver)
{
    const QString file = libraries_.Folder() + u"/places.json"_s;
    for (const char* content : {"", "{", "[1,2]", R"({"favourites":7,"recent":[{"server":3},"x",{"folder":"F"}]})"}) {
        SCOPED_TRACE(content);
        WriteBytes(file.toStdString(), content);
        CPanePlaces places(file);
        EXPECT_TRUE(places.Favourites().isEmpty() && places.Recent().isEmpty());
        for (int i = 0; i < 100; ++i) {
            places.Visit({u"S"_s, QString::number(i)});
        }
        EXPECT_EQ(CPanePlaces(file).Recent().size(), 12);
        EXPECT_EQ(CPanePlaces(file).Recent().front().folder, u"99"_s);
    }
    WriteBytes(file.toStdString(), R"({"recent":[{"server":"S","folder":"F"}]})" + std::string(1 << 21, ' '));
    for (const QString& name : {file, QString(), libraries_.Folder(), u"/proc/none/places.json"_s}) {
        CPanePlaces places(name);
        EXPECT_TRUE(places.Recent().isEmpty()) << name.toStdString();
        places.Visit({u"S"_s, {}});
        EXPECT_EQ(places.Recent().size(), 1) << "known as long as it runs";
    }
}

TEST_F(PaneState, AListIsNarrowedToAValueAndBackInTheUnitOfTheLastRefresh)
{
    const auto attributes = [](int part) { return PartAttributes{part * 1000, u"M&%1"_s.arg(part % 2), {}, {}}; };
    libraries_.Fill(u"SRV1"_s, [&](auto& writer) { PutTestParts(writer, u"Many"_s, u"N%1"_s, 0, 250, attributes); });
    CPlayedPane pane(libraries_, {.folder = u"Many"});
    // What the menu of a column offers, with a mark at what holds; `text` of it is chosen.
    const auto choose = [&pane](int column, const QString& text) {
        const QAction& of_column = *Filled(ButtonIn(*pane.pane, u"Narrow"_s)->menu()).actions().at(column);
        QStringList entries{of_column.text()};
        QAction* chosen = nullptr;
        for (QAction* action : Filled(of_column.menu()).actions()) {
            entries += action->text() + (action->isChecked() ? u"*"_s : QString());
            chosen = action->text() == text ? action : chosen;
        }
        chosen != nullptr ? chosen->trigger() : void();
        Settle(*pane.pane);
        return entries;
    };
    const CPartListModel& model = pane.pane->Model();
    EXPECT_EQ(choose(0, u"M&&1"_s).join(u'|').toStdString(), "Material|All*|M&&0|M&&1");
    EXPECT_EQ(model.rowCount(), 125);
    EXPECT_EQ(choose(1, {}).size(), 3) << "there is none: all, and that";
    EXPECT_EQ(choose(2, u"0.10"_s).at(0), u"Thickness (mm)"_s);
    EXPECT_EQ(model.rowCount(), 1);
    EXPECT_EQ(choose(0, u"M&&0"_s).join(u'|').toStdString(), "Material|All|M&&1*") << "with this thickness";
    choose(2, u"All"_s);
    choose(0, u"All"_s);
    EXPECT_EQ(model.rowCount(), 250);
    pane.browser.SetDisplayUnit(1);
    EXPECT_EQ(model.index(15, 1).data().toString() + model.HeaderText(PartColumn::Thickness), u"1.50Thickness (mm)"_s);
    pane.browser.RefreshPartList();
    EXPECT_EQ(model.index(15, 1).data().toString(), u"0.0591"_s);
    EXPECT_EQ(ThicknessText(0x7FFFFFFF, DisplayUnit::Metric), u"214748.36"_s);
    const QStringList inches = choose(2, {});
    EXPECT_EQ(inches.at(0), u"Thickness (inch)"_s);
    EXPECT_EQ(inches.size(), 1 + 1 + 200 + 1) << "the column, all, and a word that there are more";
}

TEST_F(PaneState, WhatIsCutIsToldAtThePointerAndPagesScroll)
{
    const QString name = QString(60, u'L');
    libraries_.Fill(u"SRV1"_s, [&](auto& writer) { PutTestParts(writer, u"Long"_s, name + u"%1"_s, 0, 100); });
    CPlayedPane pane(libraries_, {.folder = u"Long"});
    const auto tip = [&pane](int row, int column = 0) {
        const QPoint place = pane.List().visualRect(pane.pane->Model().index(row, column)).center();
        QHelpEvent event(QEvent::ToolTip, place, pane.List().viewport()->mapToGlobal(place));
        QApplication::sendEvent(pane.List().viewport(), &event);
        return QToolTip::text();
    };
    pane.Header().resizeSection(0, 60);
    EXPECT_EQ(tip(0), name + u'0');
    pane.Header().resizeSection(0, 2000);
    static_cast<void>(tip(0));
    EXPECT_TRUE(QTest::qWaitFor([] { return QToolTip::text().isEmpty(); })) << "nothing is cut";
    libraries_.Fill(u"SRV1"_s, [](auto& writer) {
        PutTestPart(writer, u"Long"_s, u"A"_s, 1, {0, {}, {}, u"<img src=\"x\"> and more than there is room for"_s});
    });
    pane.browser.RefreshPartList();
    pane.Header().resizeSection(0, 200);
    pane.Header().resizeSection(4, 60);
    EXPECT_TRUE(tip(0, 4).contains(u"&lt;img"_s)) << "somebody's text is no markup";
    const auto shown = [&pane](int row, QAbstractItemView::ScrollHint hint) {
        pane.List().scrollTo(pane.pane->Model().index(row, 0), hint);
        const QRect area = pane.List().visualRect(pane.pane->Model().index(row, 0));
        const int height = pane.List().viewport()->height();
        return area.top() == 0                  ? u"top"_s
               : area.bottom() >= height - 1    ? u"bottom"_s
               : area.center().y() < height / 3 ? u"above"_s
                                                : u"below"_s;
    };
    EXPECT_EQ(shown(40, QAbstractItemView::PositionAtTop), u"top"_s);
    EXPECT_EQ(shown(40, QAbstractItemView::PositionAtBottom), u"bottom"_s);
    EXPECT_EQ(shown(40, QAbstractItemView::PositionAtCenter), u"below"_s);
    pane.Key(Qt::Key_F, Qt::ControlModifier | Qt::ShiftModifier);
    pane.Type(u"l99"_s);
    pane.Header().resizeSection(0, 60);
    EXPECT_EQ(tip(0), name + u"99\nSRV1\\Long"_s) << "with the folder under it";
}

TEST_F(PaneState, TheShownListIsExported)
{
    libraries_.Fill(u"SRV1"_s, [](ILibraryWriter& writer) {
        PutTestPart(writer, u"Plates\\2008"_s, u"P5"_s, 1, {20000, u"SPCC, hard"_s, {}, u"6\" wide"_s});
    });
    CPlayedPane pane(libraries_, {.filter = part_data_kind});
    pane.Header().moveSection(4, 1);
    pane.Header().hideSection(3);
    pane.Type(u"spcc"_s);
    const QString file = libraries_.Folder() + u"/list.csv"_s;
    ASSERT_TRUE(pane.pane->ExportTo(file));
    EXPECT_EQ(ReadBytes(file.toStdString()), "\xEF\xBB\xBFName,Comment,Thickness (mm),Material\r\n"
                                             "P1,取付板,1.50,SPCC\r\n"
                                             "P5,\"6\"\" wide\",2.00,\"SPCC, hard\"\r\n");
    EXPECT_FALSE(pane.pane->ExportTo(libraries_.Folder() + u"/missing/list.csv"_s));
    pane.Key(Qt::Key_F, Qt::ControlModifier | Qt::ShiftModifier); // from all folders, with each part's own
    Settle(*pane.pane);
    ASSERT_TRUE(pane.pane->ExportTo(file));
    EXPECT_EQ(ReadBytes(file.toStdString()), "\xEF\xBB\xBFName,Comment,Thickness (mm),Material,Folder\r\n"
                                             "P1,取付板,1.50,SPCC,SRV1\\Plates\\2008\r\n"
                                             "P5,\"6\"\" wide\",2.00,\"SPCC, hard\",SRV1\\Plates\\2008\r\n");
    pane.List().setFocus();
    pane.Key(Qt::Key_End);
    pane.Key(Qt::Key_C, Qt::ControlModifier);
    EXPECT_EQ(QGuiApplication::clipboard()->text(), u"P5"_s) << "the current one, as none is selected";
}

TEST_F(PaneState, ACopyShowsItsPartFromInsideTheCall)
{
    struct Painted : QObject {
        QString text;
        bool eventFilter(QObject* watched, QEvent* event) override
        {
            text = event->type() == QEvent::Paint ? static_cast<QLabel*>(watched)->text() : text;
            return false;
        }
    } painted;
    CPlayedPane pane(libraries_);
    for (QLabel* label : pane.pane->findChildren<QLabel*>()) {
        label->installEventFilter(&painted);
    }
    bool ran = false;
    QMetaObject::invokeMethod(
        pane.pane, [&ran] { ran = true; }, Qt::QueuedConnection);
    pane.browser.SetTargetFolder(CorePath(libraries_.Folder().toStdString()));
    pane.browser.SetDataKind(part_data_kind);
    pane.browser.SelectAllParts(1);
    char texts[3][short_text_bytes];
    pane.browser.GetSelectedPart(1, texts[0], texts[1], texts[2]);
    EXPECT_TRUE(pane.browser.CopyPartFiles(u"SRV1", u"Plates\\2008\\P1"));
    EXPECT_EQ(painted.text, u"Copying P1: 2 of 5, 0 bytes"_s);
    EXPECT_FALSE(ran) << "no event runs inside the call";
}

TEST_F(PaneState, AScreenReaderFollowsTheCellsOfTheList)
{
    CPlayedPane pane(libraries_);
    QAccessible::setActive(true);
    QAccessibleInterface* list = QAccessible::queryAccessibleInterface(&pane.List());
    QAccessibleTableInterface* table = list->tableInterface();
    EXPECT_EQ(table->columnDescription(2), u"Material"_s);
    ClickRow(*pane.pane, 4);
    QAccessibleInterface* cell = table->cellAt(4, 0);
    EXPECT_TRUE(cell->state().selected && cell->state().focused);
    EXPECT_EQ(list->childAt(cell->rect().center().x(), cell->rect().center().y()), cell);
    EXPECT_EQ(list->indexOfChild(cell), 4 * part_columns);
    EXPECT_EQ(table->selectedRows(), QList<int>{4});
    pane.Type(u"p2"_s);
    EXPECT_TRUE(cell->tableCellInterface() != nullptr && cell->textInterface() == nullptr);
    EXPECT_TRUE(list->textInterface() == nullptr && list->child(-1) == nullptr && list->indexOfChild(list) == -1);
    for (const auto& [row, column] : {std::pair(4, 0), {-1, 0}, {0, -1}, {0, part_columns}}) {
        EXPECT_EQ(table->cellAt(row, column), nullptr);
    }
    EXPECT_EQ(table->cellAt(0, 0)->text(QAccessible::Name), u"P2"_s);
    EXPECT_FALSE(pane.pane->Model().headerData(0, Qt::Vertical, Qt::DisplayRole).isValid());
    for (const int row : {-1, 1}) {
        EXPECT_EQ(pane.pane->Model().Row(row), nullptr);
    }
}

} // namespace
} // namespace partkeep
