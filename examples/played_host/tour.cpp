#include "tour.h"

#include <QAbstractItemView>
#include <QApplication>
#include <QTest>
#include <QTimer>
#include <QTreeView>

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
