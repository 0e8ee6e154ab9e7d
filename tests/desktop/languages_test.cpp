// Walks all windows, widgets and menus of a run in each language: none shows a text of another.
#include "tests/desktop/whole_dialog.h"
#include "tests/desktop/window_checks.h"

#include "desktop/pane/favourites_dialog.h"
#include "desktop/pane/key_sheet.h"

#include <QAbstractButton>
#include <QAccessible>
#include <QApplication>
#include <QComboBox>
#include <QContextMenuEvent>
#include <QDateTime>
#include <QFile>
#include <QFileDialog>
#include <QHeaderView>
#include <QImage>
#include <QLabel>
#include <QMenu>
#include <QMessageBox>
#include <QRegularExpression>
#include <QTreeView>

#include <iconv.h>

#include <algorithm>
#include <array>

namespace partkeep {
namespace {

// Names that read the same everywhere, what the library holds, and keys as they stand on keyboards.
const QRegularExpression exceptions(
    u"Partkeep "
    u"Read|Kolvyn|Partkeep|PNG|/[\\w/"
    u".-]+|PART|NCT|LASER|MARVEN|SRV1|Plates|2008|Bare|SPCC|板金|筐体|タレット|取付板|\\b[pP]\\d+|"
    u"Ctrl|Shift|Alt|\\bF\\d|CSV|csv|partkeep-library check --rebuild|\\(&?[A-Z]\\)|\\bmm\\b|\\binch\\b|\\bOK\\b|\\bNO\\b|\\b[Mk]iB\\b"_s);

// Whether an old encoding of one language has a character: each lacks the characters of the other that look alike.
bool IsIn(const char* encoding, QChar character)
{
    iconv_t converter = iconv_open(encoding, "UTF-16LE");
    std::array<char, 2> from{static_cast<char>(character.cell()), static_cast<char>(character.row())};
    std::array<char, 4> to{};
    char* in = from.data();
    char* out = to.data();
    std::size_t in_left = from.size();
    std::size_t out_left = to.size();
    const bool converted = iconv(converter, &in, &in_left, &out, &out_left) == 0;
    iconv_close(converter);
    return converted;
}

bool IsOfLanguage(QString text, int language)
{
    text.remove(exceptions);
    const bool latin = text.contains(QRegularExpression(u"[A-Za-z]{2}"_s));
    return (language == 1 || !latin) && std::ranges::all_of(text, [language](QChar character) {
               const bool letter = character.isLetter() && character.unicode() >= 0x3041;
               const bool kana = character.unicode() <= 0x30fa;
               return !letter || (language == 2 && IsIn("CP932", character)) ||
                      (language == 3 && !kana && IsIn("GB2312", character));
           });
}

void Collect(const QMenu& menu, QStringList& texts)
{
    for (const QAction* action : menu.actions()) {
        texts += action->text();
        if (action->menu() != nullptr) {
            Q_EMIT action->menu()->aboutToShow();
            Collect(*action->menu(), texts);
        }
    }
}

void CollectMenuOf(QLineEdit& field, QStringList& texts)
{
    const std::unique_ptr<QMenu> menu(field.createStandardContextMenu());
    Collect(*menu, texts);
}

void Collect(QWidget& widget, QStringList& texts)
{
    texts += {widget.windowTitle(), widget.toolTip(), widget.accessibleName(), widget.accessibleDescription()};
    if (const auto* button = qobject_cast<QAbstractButton*>(&widget)) {
        texts += button->text();
    }
    const bool of_keyboard = dynamic_cast<CKeySheet*>(widget.window()) != nullptr && widget.font().bold();
    if (const auto* label = qobject_cast<QLabel*>(&widget); label != nullptr && !of_keyboard) {
        texts += label->text();
    }
    if (auto* field = qobject_cast<QLineEdit*>(&widget)) {
        texts += field->placeholderText();
        CollectMenuOf(*field, texts);
    }
    if (const auto* box = qobject_cast<QComboBox*>(&widget)) {
        for (int entry = 0; entry < box->count(); ++entry) {
            texts += box->itemText(entry);
        }
    }
    if (const auto* header = qobject_cast<QHeaderView*>(&widget); header != nullptr && header->model() != nullptr) {
        for (int section = 0; section < header->count(); ++section) {
            texts += header->model()->headerData(section, header->orientation()).toString();
        }
    }
    if (auto* menu = qobject_cast<QMenu*>(&widget)) {
        Q_EMIT menu->aboutToShow();
        Collect(*menu, texts);
    }
}

// Paths and folders of this machine are no texts of ours: the lists of a file dialog are passed over.
void ExpectLanguage(int language)
{
    for (QWidget* window : QApplication::topLevelWidgets()) {
        QStringList texts;
        Collect(*window, texts);
        for (QWidget* widget : window->findChildren<QWidget*>()) {
            const bool of_files = qobject_cast<QFileDialog*>(window) != nullptr;
            const bool of_machine = of_files && (qobject_cast<QComboBox*>(widget) != nullptr ||
                                                 qobject_cast<QComboBox*>(widget->parentWidget()) != nullptr);
            if (!of_machine) {
                Collect(*widget, texts);
            }
        }
        for (const QString& text : texts) {
            EXPECT_TRUE(IsOfLanguage(text, language))
                << window->metaObject()->className() << " in language " << language << ": " << text.toStdString();
        }
    }
}

// Each menu and window in the order of looking.
const char* const spoken_in_english =
    "AlertMessage Kolvyn PartkeepRead|StaticText Please select one or more part.|Grouping |Button OK|"
    "PopupMenu Parts|MenuItem Select this one too|MenuItem Copy the name|MenuItem Go to its folder|"
    "MenuItem Export the selection|PopupMenu Places|MenuItem Add this folder to the favourites|Separator |"
    "MenuItem Favourites|MenuItem No favourites yet|Separator |MenuItem Recent folders|"
    "MenuItem SRV1\\Plates\\2008|PopupMenu Narrow|MenuItem Material|MenuItem Machine|MenuItem Thickness (mm)|"
    "PopupMenu Material|MenuItem All|MenuItem SPCC|PopupMenu Columns|MenuItem Name|MenuItem Sort ascending|"
    "MenuItem Sort descending|MenuItem Move to the left|MenuItem Move to the right|MenuItem Wider|"
    "MenuItem Narrower|Separator |MenuItem Columns|MenuItem Name|MenuItem Thickness (mm)|MenuItem Material|"
    "MenuItem Machine|MenuItem Comment|Separator |MenuItem Pictures|MenuItem No pictures|MenuItem Small pictures|"
    "MenuItem Medium pictures|MenuItem Large pictures|Separator |MenuItem Servers and folders|"
    "MenuItem Wider tree|MenuItem Narrower tree|Dialog Keys|StaticText A–Z 0–9|"
    "StaticText Search, from the list or the tree|StaticText ↑ ↓|StaticText In the search box: move in the list|"
    "StaticText Shift+↑ ↓|StaticText Select on|StaticText Space|StaticText Choose a result of the whole server|"
    "StaticText Ctrl+F|StaticText To the search box|StaticText Ctrl+Shift+F|"
    "StaticText This folder or whole server|StaticText Ctrl+D|StaticText This folder to or from the favourites|"
    "StaticText Alt+↑|StaticText The folder above|StaticText Alt+←|StaticText Back to the results|StaticText F5|"
    "StaticText Read everything again|StaticText Ctrl+C|StaticText Copy the names of selected parts|"
    "StaticText Ctrl+A|StaticText Select all parts|StaticText Enter|StaticText OK: load|StaticText Esc|"
    "StaticText Cancel|StaticText Alt+1 – Alt+4|StaticText Machine filter|StaticText F6|"
    "StaticText To the selected parts and back|StaticText Delete|StaticText Selected parts: remove|StaticText F2|"
    "StaticText Selected parts: change the quantity|StaticText Ctrl+Z|"
    "StaticText Selected parts: put back what was removed|StaticText F1|StaticText This sheet|"
    "Dialog Arrange the favourites|List Favourites|ListItem SRV1\\Plates\\2008|Button Up|Button Down|"
    "Button Rename|Button Remove|Button Close|AlertMessage Export the list|Graphic |"
    "StaticText The list could not be written to /nowhere/list.csv.|Grouping |Button OK";

class Languages : public WholeDialog, public ::testing::WithParamInterface<int> {
protected:
    Languages() : WholeDialog(GetParam()) { QAccessible::setActive(true); }

    [[nodiscard]] static QString Said(PaneText text) { return PaneString(text, InterfaceLanguageOf(GetParam())); }

    // All that is up, of which one window is new to the reader.
    void Look(QWidget* window)
    {
        ExpectLanguage(GetParam());
        ASSERT_NE(window, nullptr);
        ExpectReadable(*window);
        Speak(*window, spoken_);
    }
    void LookAtMenu(QMenu& menu)
    {
        menu.popup({});
        menu.setActiveAction(menu.actions().front());
        Look(&menu);
        const QImage shown = menu.grab().toImage();
        const QRgb weak = QApplication::palette().color(QPalette::Highlight).rgb();
        for (int x = 0; x < shown.width(); ++x) {
            ASSERT_NE(shown.pixel(x, menu.actionGeometry(menu.actions().front()).top() + 2), weak);
        }
        menu.close();
    }

    QStringList spoken_;
};

TEST_P(Languages, NoWindowShowsATextOfAnother)
{
    const UserStep look = [] { ExpectLanguage(GetParam()); };
    // Windows and menus that go take the keys along, so these come last.
    const UserStep menus = [this] {
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
    };
    const UserStep windows = [this] {
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
        ExpectLanguage(GetParam());
        CPanePlaces places(libraries_.Folder() + u"/places.json"_s);
        CFavouritesDialog favourites(places, InterfaceLanguageOf(GetParam()), &Pane());
        favourites.setAttribute(Qt::WA_DeleteOnClose, false);
        favourites.show();
        Look(&favourites);
        ButtonIn(Pane(), Said(PaneText::Export))->click();
        auto* files = Pane().findChild<QFileDialog*>();
        ASSERT_NE(files, nullptr);
        ExpectLanguage(GetParam());
        ExpectReadable(*files);
        // Of a file that was changed at a known moment.
        const QString known = libraries_.Folder() + u"/known.csv"_s;
        files->setDirectory(libraries_.Folder());
        QFile file(known);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly) &&
                    file.setFileTime(QDateTime({2026, 11, 26}, {14, 5}), QFileDevice::FileModificationTime));
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
        const QString date = LocaleOf(InterfaceLanguageOf(GetParam()))
                                 .toString(QDateTime({2026, 11, 26}, {14, 5}), QLocale::ShortFormat);
        EXPECT_TRUE(QTest::qWaitFor([&] { return dates().contains(date); }))
            << date.toStdString() << " not in " << dates().join(u'|').toStdString();
        Q_EMIT files->fileSelected(u"/nowhere/list.csv"_s);
        auto* failed = Pane().findChild<QMessageBox*>();
        Look(failed);
        failed->close();
        files->reject();
        WindowOf(dialog)->close();
    };
    const UserStep message = [this] {
        for (const char* context : {"HostDialog", "Q", "QX", "Qx", "Q3", "QFileDialog"}) { // the host's stay its own
            EXPECT_EQ(QCoreApplication::translate(context, "A text of the host"), u"A text of the host"_s) << context;
        }
        Look(QApplication::activeModalWidget());
        AnswerMessage();
    };
    Run(true,
        {Clicking(dialog, RES_ADD), message, Clicking(dialog, RES_ASK_QUANTITY), Row(0), Clicking(dialog, RES_ADD),
         look, Typing(keypad, "5"), Pressing(keypad, Qt::Key_Return), look, Typing(dialog, "p9"),
         [] { Settle(Pane()); }, look, Pressing(dialog, Qt::Key_Backspace), [] { Settle(Pane()); },
         [menus, windows] {
             menus();
             windows();
         }});
    if (GetParam() == 1) {
        EXPECT_EQ(spoken_.join(u'|').toStdString(), spoken_in_english);
    }
    for (int number = 0; number < static_cast<int>(PaneText::Count); ++number) {
        const auto text = static_cast<PaneText>(number);
        EXPECT_TRUE(!Said(text).isEmpty() && IsOfLanguage(Said(text), GetParam())) << number;
        EXPECT_EQ(Said(text).count(u"%1"_s), PaneString(text, PaneLanguage::English).count(u"%1"_s)) << number;
    }
}

INSTANTIATE_TEST_SUITE_P(AllThree, Languages, ::testing::Values(1, 2, 3));

} // namespace
} // namespace partkeep
