// What the windows, menus and messages of whole runs look like and say, in each language, in light, dark and high
// contrast. The scale of the screen comes from the environment. With PARTKEEP_PICTURES set, pictures go to that folder.
#include "tests/desktop/whole_dialog.h"
#include "tests/desktop/window_checks.h"

#include "desktop/pane/favourites_dialog.h"
#include "desktop/pane/key_sheet.h"

#include <QApplication>
#include <QContextMenuEvent>
#include <QDateTime>
#include <QFile>
#include <QFileDialog>
#include <QMessageBox>
#include <QStyle>
#include <QTreeView>

namespace partkeep {
namespace {

// Each menu and window in the order of looking.
const char* const spoken_in_english =
    "AlertMessage Kolvyn PartkeepRead|StaticText Please select one or more part.|Grouping |Button OK|"
    "Dialog Partkeep Read|Button OK|Button Cancel|EditableText Parts Name|EditableText Comment|"
    "StaticText Display Unit|StaticText Comment|StaticText Parts Name|StaticText 2D Image|StaticText 3D Image|"
    "CheckBox Input Quantity|Button Add|ComboBox Metric|EditableText Search|CheckBox Whole server|ButtonMenu Narrow|"
    "Button Columns|Button Export|Table Parts|Cell P1|Cell 1.50|Cell SPCC|Cell タレット|Cell 取付板|Cell P2|Cell 0.00|"
    "Cell |Cell |Cell |Cell P10|Cell -0.00|Cell |Cell |Cell |StaticText 3 parts   ·   2 selected|ButtonMenu Places|"
    "Tree Servers and folders|TreeItem SRV1|TreeItem Plates|TreeItem 2008|TreeItem 板金|Grip |Graphic 2D Image|"
    "Graphic 3D Image|ToolBar Machine filter|CheckBox PART|CheckBox NCT|CheckBox LASER|CheckBox MARVEN|"
    "Dialog Selected Parts|Button Remove|Button Change Qty.|Tree Selected Parts|ColumnHeader Part Name|"
    "ColumnHeader Path|ColumnHeader Quantity|TreeItem P1|TreeItem SRV1\\Plates\\2008|TreeItem 1|StaticText 1|"
    "Dialog Input Quantity|StaticText Part NO.|EditableText Part NO.|Button 1|Button 2|Button 3|Button 4|Button 5|"
    "Button 6|Button 7|Button 8|Button 9|Button 00|Button 0|Button OK|Button Cancel|PopupMenu Parts|"
    "MenuItem Select this one too|MenuItem Copy the name|MenuItem Go to its folder|MenuItem Export the selection|"
    "PopupMenu Places|MenuItem Add this folder to the favourites|Separator |MenuItem Favourites|"
    "MenuItem No favourites yet|Separator |MenuItem Recent folders|MenuItem SRV1\\Plates\\2008|PopupMenu Narrow|"
    "MenuItem Material|MenuItem Machine|MenuItem Thickness (mm)|PopupMenu Material|MenuItem All|MenuItem SPCC|"
    "PopupMenu Columns|MenuItem Name|MenuItem Sort ascending|MenuItem Sort descending|MenuItem Move to the left|"
    "MenuItem Move to the right|MenuItem Wider|MenuItem Narrower|Separator |MenuItem Columns|MenuItem Name|"
    "MenuItem Thickness (mm)|MenuItem Material|MenuItem Machine|MenuItem Comment|Separator |MenuItem Pictures|"
    "MenuItem No pictures|MenuItem Small pictures|MenuItem Medium pictures|MenuItem Large pictures|Separator |"
    "MenuItem Servers and folders|MenuItem Wider tree|MenuItem Narrower tree|Dialog Keys|StaticText A–Z 0–9|"
    "StaticText Search, from the list or the tree|StaticText ↑ ↓|StaticText In the search box: move in the list|"
    "StaticText Shift+↑ ↓|StaticText Select on|StaticText Space|StaticText Choose a result of the whole server|"
    "StaticText Ctrl+F|StaticText To the search box|StaticText Ctrl+Shift+F|StaticText This folder or whole server|"
    "StaticText Ctrl+D|StaticText This folder to or from the favourites|StaticText Alt+↑|StaticText The folder above|"
    "StaticText Alt+←|StaticText Back to the results|StaticText F5|StaticText Read everything again|StaticText Ctrl+C|"
    "StaticText Copy the names of selected parts|StaticText Ctrl+A|StaticText Select all parts|StaticText Enter|"
    "StaticText OK: load|StaticText Esc|StaticText Cancel|StaticText Alt+1 – Alt+4|StaticText Machine filter|"
    "StaticText F6|StaticText To the selected parts and back|StaticText Delete|StaticText Selected parts: remove|"
    "StaticText F2|StaticText Selected parts: change the quantity|StaticText Ctrl+Z|"
    "StaticText Selected parts: put back what was removed|StaticText F1|StaticText This sheet|"
    "Dialog Arrange the favourites|List Favourites|ListItem SRV1\\Plates\\2008|Button Up|Button Down|Button Rename|"
    "Button Remove|Button Close|AlertMessage Export the list|Graphic |"
    "StaticText The list could not be written to /nowhere/list.csv.|Grouping |Button OK";

struct Theme {
    const char* name;
    QPalette colours;
};

Theme ThemeOf(int number)
{
    if (number == 0) {
        return {"light", QApplication::style()->standardPalette()};
    }
    QPalette dark(number == 1 ? QColor(45, 45, 48) : QColor(Qt::black));
    dark.setColor(QPalette::Base, number == 1 ? QColor(30, 30, 30) : QColor(Qt::black));
    dark.setColor(QPalette::Highlight, number == 1 ? QColor(48, 140, 198) : QColor(255, 255, 0));
    dark.setColor(QPalette::HighlightedText, number == 1 ? QColor(Qt::white) : QColor(Qt::black));
    return {number == 1 ? "dark" : "contrast", dark};
}

class Looks : public WholeDialog, public ::testing::WithParamInterface<std::tuple<int, int>> {
protected:
    Looks() : WholeDialog(std::get<0>(GetParam()))
    {
        QApplication::setPalette(theme_.colours);
        QAccessible::setActive(true);
    }
    ~Looks() override { QApplication::setPalette(QApplication::style()->standardPalette()); }

    [[nodiscard]] QString Said(PaneText text) const { return PaneString(text, InterfaceLanguageOf(language_)); }

    // All that is up, of which one window is new to the reader.
    void Look(QWidget* window)
    {
        ExpectLanguage(language_);
        ASSERT_NE(window, nullptr);
        ExpectReadable(*window);
        Speak(*QAccessible::queryAccessibleInterface(window), spoken_);
    }
    void LookAtMenu(QMenu& menu)
    {
        menu.popup({});
        menu.setActiveAction(menu.actions().front());
        Look(&menu);
        const QImage shown = menu.grab().toImage();
        const QRgb weak = QApplication::palette().color(QPalette::Highlight).rgb();
        for (int x = 0; x < shown.width() && std::get<1>(GetParam()) == 0; ++x) {
            ASSERT_NE(shown.pixel(x, menu.actionGeometry(menu.actions().front()).top() + 2), weak);
        }
        menu.close();
    }
    void LookAtMenus()
    {
        Pane().List().setFocus();
        QContextMenuEvent row(QContextMenuEvent::Keyboard, {}, {});
        QApplication::sendEvent(&Pane().List(), &row);
        Look(QApplication::activePopupWidget());
        QApplication::activePopupWidget()->close();
        LookAtMenu(*ButtonIn(Pane(), Said(PaneText::Places))->menu());
        QMenu& narrow = *ButtonIn(Pane(), Said(PaneText::Narrow))->menu();
        LookAtMenu(narrow);
        LookAtMenu(*narrow.actions().front()->menu());
        ButtonIn(Pane(), Said(PaneText::Columns))->click();
        Look(QApplication::activePopupWidget());
        QApplication::activePopupWidget()->close();
    }
    void LookAtMessage()
    {
        for (const char* context : {"HostDialog", "Q", "QX", "Qx", "Q3", "QFileDialog"}) { // the host's stay its own
            EXPECT_EQ(QCoreApplication::translate(context, "A text of the host"), u"A text of the host"_s) << context;
        }
        Look(QApplication::activeModalWidget());
        AnswerMessage();
    }
    void LookAtDialogs()
    {
        const QString pictures = qEnvironmentVariable("PARTKEEP_PICTURES");
        for (const int number : {dialog, list_window, keypad}) {
            SCOPED_TRACE(number);
            QWidget* window = WindowOf(number);
            Look(window);
            ExpectGoodLooks(*window);
            if (!pictures.isEmpty()) {
                window->grab().save(u"%1/%2_%3_%4_at_%5.png"_s.arg(pictures, window->objectName())
                                        .arg(language_)
                                        .arg(QLatin1String(theme_.name))
                                        .arg(window->devicePixelRatio()));
            }
        }
        for (int id = RES_DIGIT_1; id <= RES_DIGIT_0; ++id) { // large enough for a finger
            EXPECT_GE(std::min(ControlOf(keypad, id)->height(), ControlOf(keypad, id)->width()), 44) << id;
        }
    }
    void LookAtSheetAndFavourites()
    {
        const auto f1 = [] { Pane().TakeWindowKey(QKeyEvent(QEvent::KeyPress, Qt::Key_F1, Qt::NoModifier)); };
        f1();
        Look(&OwnChild<CKeySheet>(*WindowOf(dialog)));
        f1();
        QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        f1();
        auto& keys = OwnChild<CKeySheet>(*WindowOf(dialog));
        QTest::keyClick(&keys, Qt::Key_Up);
        EXPECT_TRUE(keys.isVisible());
        QTest::keyClick(&keys, Qt::Key_F1);
        EXPECT_FALSE(keys.isVisible());
        Pane().TakeWindowKey(QKeyEvent(QEvent::KeyPress, Qt::Key_D, Qt::ControlModifier));
        CPanePlaces places(libraries_.Folder() + u"/places.json"_s);
        CFavouritesDialog favourites(places, InterfaceLanguageOf(language_), &Pane());
        favourites.setAttribute(Qt::WA_DeleteOnClose, false);
        favourites.show();
        Look(&favourites);
    }
    // With a file that was changed at a known moment, and a folder that cannot be written.
    void LookAtExport()
    {
        ButtonIn(Pane(), Said(PaneText::Export))->click();
        auto* files = Pane().findChild<QFileDialog*>();
        ASSERT_NE(files, nullptr);
        ExpectLanguage(language_);
        ExpectReadable(*files);
        const QDateTime moment({2026, 11, 26}, {14, 5});
        files->setDirectory(libraries_.Folder());
        QFile file(libraries_.Folder() + u"/known.csv"_s);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly) && file.setFileTime(moment, QFileDevice::FileModificationTime));
        file.close();
        const auto dates = [files] {
            QStringList all;
            for (const QAbstractItemView* view : files->findChildren<QTreeView*>()) {
                for (int row = 0; row < view->model()->rowCount(view->rootIndex()); ++row) {
                    all += view->model()->index(row, 3, view->rootIndex()).data().toString();
                }
            }
            return all;
        };
        const QString date = LocaleOf(InterfaceLanguageOf(language_)).toString(moment, QLocale::ShortFormat);
        EXPECT_TRUE(QTest::qWaitFor([&] { return dates().contains(date); }))
            << date.toStdString() << " not in " << dates().join(u'|').toStdString();
        Q_EMIT files->fileSelected(u"/nowhere/list.csv"_s);
        auto* failed = Pane().findChild<QMessageBox*>();
        Look(failed);
        failed->close();
        files->reject();
    }

    const int language_ = std::get<0>(GetParam());
    const Theme theme_ = ThemeOf(std::get<1>(GetParam()));
    QStringList spoken_;
};

TEST_P(Looks, FromStartToTheHostsRecords)
{
    const UserStep look = [this] {
        Settle(Pane());
        ExpectLanguage(language_);
    };
    // Windows and menus that go take the keys along, so these come last.
    const UserStep end = [this] {
        LookAtMenus();
        LookAtSheetAndFavourites();
        LookAtExport();
        static_cast<QAbstractButton*>(ControlOf(dialog, RES_LOAD))->click();
    };
    EXPECT_EQ(Run(true, {Clicking(dialog, RES_ADD), [this] { LookAtMessage(); }, Row(0), Clicking(dialog, RES_ADD),
                         Clicking(dialog, RES_ASK_QUANTITY), Row(1), Row(2, Qt::ShiftModifier),
                         Clicking(dialog, RES_ADD), [this] { LookAtDialogs(); }, Clicking(keypad, RES_DIGIT_1),
                         Clicking(keypad, RES_DIGIT_00), Pressing(keypad, Qt::Key_Return), look, Typing(dialog, "p9"),
                         look, Pressing(dialog, Qt::Key_Backspace), look, end}),
              "P1 x1 0, P2 x100 0, P10 x100 0");
    if (language_ == 1) {
        EXPECT_EQ(spoken_.join(u'|').toStdString(), spoken_in_english);
    }
    for (int number = 0; number < static_cast<int>(PaneText::Count); ++number) {
        const auto text = static_cast<PaneText>(number);
        EXPECT_TRUE(!Said(text).isEmpty() && IsOfLanguage(Said(text), language_)) << number;
        EXPECT_EQ(Said(text).count(u"%1"_s), PaneString(text, PaneLanguage::English).count(u"%1"_s)) << number;
    }
}

INSTANTIATE_TEST_SUITE_P(LanguagesAndThemes, Looks,
                         ::testing::Combine(::testing::Values(1, 2, 3), ::testing::Values(0, 1, 2)));

} // namespace
} // namespace partkeep
