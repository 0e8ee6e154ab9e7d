// Walks all windows, widgets and menus of a run in each language: none shows a text of another.
#include "tests/desktop/whole_dialog.h"

#include "desktop/pane/favourites_dialog.h"
#include "desktop/pane/key_sheet.h"

#include <QAbstractButton>
#include <QApplication>
#include <QComboBox>
#include <QContextMenuEvent>
#include <QFileDialog>
#include <QHeaderView>
#include <QLabel>
#include <QMenu>
#include <QMessageBox>
#include <QRegularExpression>

namespace partkeep {
namespace {

// Names that read the same everywhere, what the library holds, and keys as they stand on keyboards.
const QRegularExpression& Exceptions()
{
    static const QRegularExpression pattern(
        u"Partkeep "
        u"Read|Kolvyn|Partkeep|PNG|/[\\w/"
        u".-]+|PART|NCT|LASER|MARVEN|SRV1|Plates|2008|Bare|SPCC|板金|筐体|タレット|取付板|\\b[pP]\\d+|"
        u"Ctrl|Shift|Alt|Space|Enter|Esc|Delete|F\\d|CSV|csv|\\(&?[A-Z]\\)|A–Z|\\bmm\\b|\\binch\\b|\\bOK\\b|\\bNO\\b"_s);
    return pattern;
}

bool HasKana(const QString& text)
{
    return text.contains(QRegularExpression(u"[\\x{3041}-\\x{30fa}]"_s));
}

bool HasScript(const QString& text)
{
    return text.contains(QRegularExpression(u"[\\x{3041}-\\x{30fa}\\x{4e00}-\\x{9fff}]"_s));
}

bool IsOfLanguage(QString text, int language)
{
    text.remove(Exceptions());
    const bool latin = text.contains(QRegularExpression(u"[A-Za-z]{2}"_s));
    return language == 1 ? !HasScript(text) : !latin && (language == 2 || !HasKana(text));
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
    if (const auto* label = qobject_cast<QLabel*>(&widget)) {
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

class Languages : public WholeDialog, public ::testing::WithParamInterface<int> {
protected:
    Languages() : WholeDialog(GetParam()) {}
};

TEST_P(Languages, NoWindowShowsATextOfAnother)
{
    const UserStep look = [] { ExpectLanguage(GetParam()); };
    const UserStep menus = [look] {
        Pane().List().setFocus();
        QContextMenuEvent row(QContextMenuEvent::Keyboard, {}, {});
        QApplication::sendEvent(&Pane().List(), &row);
        look();
        QApplication::activePopupWidget()->close();
        Pane().TakeWindowKey(QKeyEvent(QEvent::KeyPress, Qt::Key_F1, Qt::NoModifier));
        CPanePlaces places({});
        CFavouritesDialog favourites(places, InterfaceLanguageOf(GetParam()), &Pane());
        favourites.setAttribute(Qt::WA_DeleteOnClose, false);
        look();
    };
    const UserStep export_list = [look] {
        for (auto* button : Pane().findChildren<QToolButton*>()) {
            if (button->isVisible() &&
                button->toolTip() == PaneString(PaneText::ExportTitle, InterfaceLanguageOf(GetParam()))) {
                button->click();
            }
        }
        auto* dialog_of_files = Pane().findChild<QFileDialog*>();
        ASSERT_NE(dialog_of_files, nullptr);
        look();
        dialog_of_files->reject();
        WindowOf(dialog)->activateWindow();
    };
    const UserStep message = [look] {
        look();
        AnswerMessage();
    };
    Run(true,
        {Clicking(dialog, RES_ADD), message, Clicking(dialog, RES_ASK_QUANTITY), Row(0), Clicking(dialog, RES_ADD),
         look, Typing(keypad, "5"), Pressing(keypad, Qt::Key_Return), look, menus, export_list, [] { Settle(); },
         Typing(dialog, "p9"), [] { Settle(Pane()); }, look, Pressing(dialog, Qt::Key_Escape)});
}

INSTANTIATE_TEST_SUITE_P(AllThree, Languages, ::testing::Values(1, 2, 3));

} // namespace
} // namespace partkeep
