#include "tour.h"

#include <QAbstractItemView>
#include <QApplication>
#include <QContextMenuEvent>
#include <QDialog>
#include <QMenu>
#include <QPainter>
#include <QTest>
#include <QTimer>
#include <QToolButton>
#include <QTreeView>

#include <algorithm>

namespace {

// Windows and controls by the numbers that they bear as object names.
constexpr int selection_dialog = 101;
constexpr int keypad = 202;
constexpr int selected_parts = 250;
constexpr int add_button = 210;
constexpr int quantity_check = 217;
constexpr int browser = 215;
constexpr int digit_one = 220;
constexpr int digit_two = 221;
constexpr int ok_button = 1;

constexpr int step_milliseconds = 60;

} // namespace

CTour::CTour(QString pictures, QString suffix) : pictures_(std::move(pictures)), suffix_(std::move(suffix))
{
    steps_ = {
        [this] { OpenInTree("PLATES"); },
        [this] { OpenInTree("Brackets"); },
        [this] { OpenInTree("L"); },
        [this] { ClickPart(0); },
        [this] { ClickPart(2, Qt::ControlModifier); },
        [] {}, // the pictures of the list come in between
        [] {},
        [this] { Keep(selection_dialog, "selection"); },
        [this] { Click(selection_dialog, quantity_check); },
        [this] { Click(selection_dialog, add_button); }, // ends when the keypad of the next steps has closed
        [this] { Click(keypad, digit_one); },
        [this] { Click(keypad, digit_two); },
        [this] { Keep(keypad, "keypad"); },
        [this] { Click(keypad, ok_button); },
        [this] { Keep(selected_parts, "list"); },
        [this] { Press(selection_dialog, Qt::Key_F, Qt::ControlModifier | Qt::ShiftModifier); },
        [this] { Type(selection_dialog, "1 brk"); }, // the words in any order
        [] {},                                       // what it finds comes in between
        [] {},
        [this] { Keep(selection_dialog, "search"); },
        [this] { Press(selection_dialog, Qt::Key_F, Qt::ControlModifier | Qt::ShiftModifier); },
        [this] { Press(selection_dialog, Qt::Key_Backspace); },
        [this] { ClickPart(1); },
        [this] { Press(selection_dialog, Qt::Key_Return); },
        [this] { Press(keypad, Qt::Key_7); },
        [this] { Press(keypad, Qt::Key_Return); },
    };
}

void CTour::ShowFeatures()
{
    const auto scene = [this](const char* name) { return [this, name] { KeepScene(name); }; };
    const auto close = [this] { CloseMenus(); };
    const auto pause = [] {}; // what is found or read comes in between
    steps_ = {
        [this] { OpenInTree("PLATES"); },
        [this] { OpenInTree("Brackets"); },
        [this] { OpenInTree("L"); },
        [this] { ClickPart(0); },
        [this] { ClickPart(2, Qt::ControlModifier); },
        [this] { Press(selection_dialog, Qt::Key_D, Qt::ControlModifier); },
        [this] { Click(selection_dialog, add_button); },
        [this] { ClickPart(1); },
        [this] { OpenMenu("Places"); },
        scene("places"),
        close,
        [this] { OpenMenu("Narrow", 0); },
        scene("narrow"),
        close,
        [this] { OpenMenu("Columns"); },
        scene("columns"),
        close,
        [this] { OpenRowMenu(); },
        scene("rows"),
        close,
        [this] { Press(selection_dialog, Qt::Key_F1); },
        pause,
        scene("keys"),
        [this] { Press(selection_dialog, Qt::Key_F1); },
        [this] { Trigger("Places", "Arrange the favourites …"); },
        pause,
        scene("favourites"),
        close,
        [this] { Trigger("Columns", "Large pictures"); },
        pause,
        pause,
        scene("large"),
        [this] { Trigger("Columns", "Small pictures"); },
        [this] { Press(selection_dialog, Qt::Key_F, Qt::ControlModifier | Qt::ShiftModifier); },
        [this] { Type(selection_dialog, "1 brk"); },
        pause,
        pause,
        scene("server"),
        [this] { Press(selection_dialog, Qt::Key_F, Qt::ControlModifier | Qt::ShiftModifier); },
        [this] { Press(selection_dialog, Qt::Key_Return); },
    };
}

void CTour::Start()
{
    QTimer::singleShot(step_milliseconds, [this] { Next(); });
}

// The next step is arranged before this one is taken, which may open a window with a loop of its own.
void CTour::Next()
{
    if (next_ == steps_.size() || !problem_.isEmpty()) {
        return;
    }
    Start();
    steps_[next_++]();
}

void CTour::Fail(const QString& problem)
{
    problem_ = problem;
    const auto windows = QApplication::topLevelWidgets();
    for (QWidget* window : windows) {
        window->close();
    }
}

QWidget* CTour::Window(int number)
{
    const auto windows = QApplication::topLevelWidgets();
    for (QWidget* window : windows) {
        if (window->isVisible() && window->objectName() == QString::number(number)) {
            return window;
        }
    }
    Fail(QStringLiteral("window %1 is not there").arg(number));
    return nullptr;
}

QWidget* CTour::Control(int number, int id)
{
    const QWidget* window = Window(number);
    auto* control = window != nullptr ? window->findChild<QWidget*>(QString::number(id)) : nullptr;
    if (window != nullptr && control == nullptr) {
        Fail(QStringLiteral("window %1 has no control %2").arg(number).arg(id));
    }
    return control;
}

void CTour::Click(int number, int id)
{
    if (QWidget* control = Control(number, id)) {
        QTest::mouseClick(control, Qt::LeftButton, {}, QPoint(10, control->height() / 2));
    }
}

void CTour::Press(int number, Qt::Key key, Qt::KeyboardModifiers modifiers)
{
    if (QWidget* window = Window(number)) {
        QWidget* focus = window->focusWidget();
        QTest::keyClick(focus != nullptr ? focus : window, key, modifiers);
    }
}

void CTour::Type(int number, const char* text)
{
    if (QWidget* window = Window(number); window != nullptr && window->focusWidget() != nullptr) {
        QTest::keyClicks(window->focusWidget(), QString::fromLatin1(text));
    }
}

// What is below a server or folder comes when it is opened, so each level is a step.
void CTour::OpenInTree(const char* name)
{
    const QWidget* pane = Control(selection_dialog, browser);
    auto* tree = pane != nullptr ? pane->findChild<QTreeView*>() : nullptr;
    if (tree == nullptr) {
        Fail(QStringLiteral("the part browser has no tree"));
        return;
    }
    const QAbstractItemModel* model = tree->model();
    const QModelIndexList found = model->match(model->index(0, 0), Qt::DisplayRole, QString::fromLatin1(name), 1,
                                               Qt::MatchExactly | Qt::MatchRecursive);
    if (found.isEmpty()) {
        Fail(QStringLiteral("the tree has no %1").arg(QString::fromLatin1(name)));
        return;
    }
    QTest::mouseClick(tree->viewport(), Qt::LeftButton, {}, tree->visualRect(found.front()).center());
    if (!tree->isExpanded(found.front())) {
        QTest::keyClick(tree, Qt::Key_Right);
    }
}

void CTour::ClickPart(int row, Qt::KeyboardModifiers modifiers)
{
    const QWidget* pane = Control(selection_dialog, browser);
    if (pane == nullptr) {
        return;
    }
    const auto views = pane->findChildren<QAbstractItemView*>();
    for (QAbstractItemView* view : views) {
        if (view->model() != nullptr && view->model()->columnCount() > 1 && view->model()->rowCount() > row) {
            const QPoint place = view->visualRect(view->model()->index(row, 0)).center();
            QTest::mouseClick(view->viewport(), Qt::LeftButton, modifiers, place);
            return;
        }
    }
    Keep(selection_dialog, "problem");
    Fail(QStringLiteral("the part list has no row %1").arg(row));
}

void CTour::Keep(int number, const char* name)
{
    if (QWidget* window = Window(number)) {
        window->grab().save(QStringLiteral("%1/%2%3.png").arg(pictures_, QString::fromLatin1(name), suffix_));
    }
}

QToolButton* CTour::BrowserButton(const char* name)
{
    const QWidget* pane = Control(selection_dialog, browser);
    const auto buttons = pane != nullptr ? pane->findChildren<QToolButton*>() : QList<QToolButton*>();
    for (QToolButton* button : buttons) {
        if (button->accessibleName() == QString::fromUtf8(name)) {
            return button;
        }
    }
    Fail(QStringLiteral("the part browser has no button %1").arg(QString::fromUtf8(name)));
    return nullptr;
}

void CTour::OpenMenu(const char* button, int submenu)
{
    QToolButton* opener = BrowserButton(button);
    if (opener == nullptr || opener->menu() == nullptr) {
        opener != nullptr ? opener->click() : void(); // which makes a menu
        return;
    }
    opener->menu()->popup(opener->mapToGlobal(QPoint(0, opener->height())));
    if (submenu >= 0) {
        QAction* entry = opener->menu()->actions().at(submenu);
        opener->menu()->setActiveAction(entry);
        entry->menu()->popup(opener->menu()->mapToGlobal(QPoint(opener->menu()->width(), 0)));
    }
}

void CTour::OpenRowMenu()
{
    const QWidget* pane = Control(selection_dialog, browser);
    const auto views = pane != nullptr ? pane->findChildren<QAbstractItemView*>() : QList<QAbstractItemView*>();
    for (QAbstractItemView* view : views) {
        if (view->model() != nullptr && view->model()->columnCount() > 1) {
            QContextMenuEvent event(QContextMenuEvent::Keyboard, {}, {});
            QApplication::sendEvent(view, &event);
            return;
        }
    }
}

// Popups and the windows that the browser opens over the dialog.
void CTour::CloseMenus()
{
    while (QWidget* popup = QApplication::activePopupWidget()) {
        popup->close();
    }
    const QWidget* pane = Control(selection_dialog, browser);
    const auto opened = pane != nullptr ? pane->findChildren<QDialog*>() : QList<QDialog*>();
    for (QDialog* dialog : opened) {
        dialog->close();
    }
}

void CTour::Trigger(const char* button, const char* entry)
{
    OpenMenu(button);
    auto* menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
    const auto actions = menu != nullptr ? menu->actions() : QList<QAction*>();
    for (QAction* action : actions) {
        if (action->text() == QString::fromUtf8(entry)) {
            menu->close();
            action->trigger();
            return;
        }
    }
    Fail(QStringLiteral("there is no entry %1").arg(QString::fromUtf8(entry)));
}

// All windows as they stand on the screen, menus in front.
void CTour::KeepScene(const char* name)
{
    QWidgetList shown;
    QRect area;
    const auto windows = QApplication::topLevelWidgets();
    for (QWidget* window : windows) {
        if (window->isVisible()) {
            shown += window;
            area |= window->frameGeometry();
        }
    }
    const auto layer = [](const QWidget* window) {
        return window->windowType() == Qt::Popup   ? 3
               : window->parentWidget() == nullptr ? 0
               : window->isModal()                 ? 2
                                                   : 1;
    };
    std::stable_sort(shown.begin(), shown.end(),
                     [&](const QWidget* one, const QWidget* other) { return layer(one) < layer(other); });
    const qreal ratio = shown.front()->devicePixelRatio();
    QPixmap scene(area.size() * ratio);
    scene.setDevicePixelRatio(ratio);
    scene.fill(QColor(96, 110, 125));
    QPainter painter(&scene);
    for (QWidget* window : shown) {
        painter.drawPixmap(window->pos() - area.topLeft(), window->grab());
    }
    painter.end();
    scene.save(QStringLiteral("%1/%2%3.png").arg(pictures_, QString::fromLatin1(name), suffix_));
}
