// Input that waits at a real X server while the selection dialog is busy, and that comes when it has gone on: the
// whole table, with real keys and a real pointer. Runs under under_x_server.

#include "desktop/dialog_request.h"
#include "desktop/hosted_control_factory.h"
#include "desktop/qt_dialog_windows.h"
#include "tests/desktop/played_user.h"
#include "tests/desktop/x_close.h"
#include "tests/selection/selection_run.h"
#include "tests/support/untimely_input.h"

#include <QAbstractNativeEventFilter>
#include <QApplication>
#include <QDrag>
#include <QLineEdit>
#include <QMessageBox>
#include <QMimeData>
#include <QMouseEvent>
#include <QPointer>
#include <QPushButton>
#include <QTimer>
#include <QTreeWidget>

#include <cstdlib>
#include <map>
#include <utility>

namespace partkeep {
namespace {

constexpr int shift_key = 50; // what it does to nobody tells that all keys before it have come

class CBrowserWidget : public QWidget {
public:
    CBrowserWidget(ControlScript& script, QWidget* parent) : QWidget(parent), script_(script) {}

protected:
    void mousePressEvent(QMouseEvent* event) override
    {
        event->button() == Qt::LeftButton ? script_.FireClick() : void();
    }
    void mouseDoubleClickEvent(QMouseEvent*) override { PostDialogRequest(*window(), DialogRequest::Choose); }
    // By the other button, since what is dragged has been clicked before.
    void mouseMoveEvent(QMouseEvent* event) override
    {
        if (event->buttons() != Qt::RightButton || std::exchange(drags_, true)) {
            return;
        }
        const QPointer<QWidget> self(this);
        auto* parts = new QMimeData;
        parts->setData(QLatin1String(dragged_parts_type), {});
        auto* drag = new QDrag(this);
        drag->setMimeData(parts);
        const Qt::DropAction action = drag->exec(Qt::CopyAction);
        if (self != nullptr) {
            drags_ = false;
            action == Qt::CopyAction ? PostDialogRequest(*window(), DialogRequest::Add) : void();
        }
    }

private:
    ControlScript& script_;
    bool drags_ = false;
};

class UntimelyInput : public SelectionRun, public QAbstractNativeEventFilter, public IQtControlFactory {
protected:
    UntimelyInput()
    {
        Select("A B C");
        qApp->installNativeEventFilter(this);
    }

    std::unique_ptr<IHostedControl> Create(const ClassId&, QWidget* parent, QWidget*& widget) override
    {
        widget = new CBrowserWidget(browser, parent);
        widget->setFocusPolicy(Qt::StrongFocus);
        return browser.MakeControl();
    }
    bool nativeEventFilter(const QByteArray&, void* message, qintptr*) override
    {
        constexpr int key_press = 2;
        const auto* bytes = static_cast<const std::uint8_t*>(message);
        all_came = all_came || ((bytes[0] & 0x7F) == key_press && bytes[1] == shift_key);
        return false;
    }

    // Asked where the pointer is, the server has taken all that came before.
    static void Xdotool(const std::string& words)
    {
        ASSERT_EQ(std::system(("xdotool " + words + " getmouselocation >/dev/null").c_str()), 0) << words;
    }
    // Pressed and let go by hand: a click of the tool's own waits a tenth of a second.
    static constexpr const char* one_click = "mousedown 1 mouseup 1 ";
    static constexpr const char* two_clicks = "mousedown 1 mouseup 1 mousedown 1 mouseup 1 ";
    static std::string PointedAt(int number, int id, const char* clicks = one_click)
    {
        QWidget* widget = ControlOf(number, id);
        const QPoint place = widget == nullptr ? QPoint() : widget->mapToGlobal(widget->rect().center());
        return "mousemove " + std::to_string(place.x()) + " " + std::to_string(place.y()) + " " + clicks;
    }
    // The focus goes back to the window that waits for an answer: on a slow machine none may be active for a moment.
    static std::string InTheList(const char* key)
    {
        const auto to = [](const QWidget* window) { return "windowfocus " + std::to_string(window->winId()) + " "; };
        const QWidget* active = QApplication::activeWindow();
        return to(WindowOf(RES_SELECTED_PARTS_DIALOG)) + key +
               to(active != nullptr ? active : QApplication::activeModalWidget());
    }
    // Nothing for the close box, which is no place of the window's own.
    static std::string Words(Input input)
    {
        std::map<Input, std::string> words = {
            {Input::Enter, "key --delay 0 Return "},
            {Input::Escape, "key --delay 0 Escape "},
            {Input::SelectAll, "key --delay 0 ctrl+a "},
            {Input::DeleteKey, InTheList("key --delay 0 Delete ")},
            {Input::PutBack, InTheList("key --delay 0 ctrl+z ")},
            {Input::DoubleClickOnOk, PointedAt(RES_SELECTION_DIALOG, RES_LOAD, two_clicks)},
            {Input::Cancel, PointedAt(RES_SELECTION_DIALOG, id_cancel)},
            {Input::Add, PointedAt(RES_SELECTION_DIALOG, RES_ADD)},
            {Input::Remove, PointedAt(RES_SELECTED_PARTS_DIALOG, RES_REMOVE)},
            {Input::LaserTool, PointedAt(RES_SELECTION_DIALOG, RES_FILTER_LASER)},
            {Input::Click, PointedAt(RES_SELECTION_DIALOG, RES_BROWSER)},
            {Input::DoubleClick, PointedAt(RES_SELECTION_DIALOG, RES_BROWSER, two_clicks)},
            {Input::Drop, PointedAt(RES_SELECTION_DIALOG, RES_BROWSER, "mousedown 3 mousemove_relative 9 9 ") +
                              PointedAt(RES_SELECTED_PARTS_DIALOG, RES_PART_LIST, "mousemove_relative 1 1 mouseup 3 ")},
        };
        return words[input];
    }
    // While the thread is busy here nothing of it is dispatched.
    void SendPair()
    {
        if (std::exchange(sent, true)) {
            return;
        }
        std::string words;
        for (const Input input : {first, second}) {
            words += Words(input);
            if (input == Input::CloseBox) {
                words.empty() ? void() : Xdotool(std::exchange(words, ""));
                AskToClose(WindowOf(RES_SELECTION_DIALOG)->winId());
            }
        }
        Xdotool(words + "key --delay 0 Shift_L");
    }

    // One turn of the one who works the dialog, in whatever loop runs.
    void Turn()
    {
        QWidget* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
        QWidget* keypad = WindowOf(RES_QUANTITY_KEYPAD);
        if (step == Step::Open && ControlOf(RES_SELECTION_DIALOG, RES_ADD) != nullptr) {
            step = Step::List;
            browser.selection = {browser.list[0]};
            PressLater(ControlOf(RES_SELECTION_DIALOG, RES_ADD));
        } else if (step == Step::List && WindowOf(RES_SELECTED_PARTS_DIALOG) != nullptr &&
                   WindowOf(RES_SELECTION_DIALOG)->isActiveWindow()) {
            step = Step::Busy;
            MakeBusy();
        } else if (step == Step::Busy && !sent) {
            if (busy == Busy::Keypad && keypad != nullptr && keypad->isActiveWindow()) {
                static_cast<QLineEdit*>(ControlOf(RES_QUANTITY_KEYPAD, RES_QUANTITY))->setText("7");
                SendPair();
            } else if (busy == Busy::Message && box != nullptr && box->isActiveWindow()) {
                SendPair();
            }
        } else if (sent && all_came && ++quiet_turns > 2) {
            quiet_turns = 0;
            PressLater(box != nullptr      ? box->findChild<QPushButton*>()
                       : keypad != nullptr ? ControlOf(RES_QUANTITY_KEYPAD, RES_OK)
                                           : ControlOf(RES_SELECTION_DIALOG, RES_LOAD));
        }
    }
    void MakeBusy()
    {
        static_cast<QTreeWidget*>(ControlOf(RES_SELECTED_PARTS_DIALOG, RES_PART_LIST))
            ->topLevelItem(0)
            ->setSelected(true);
        browser.selection = {browser.list[busy == Busy::Message ? 0 : 1]};
        static_cast<QAbstractButton*>(ControlOf(RES_SELECTION_DIALOG, RES_ASK_QUANTITY))
            ->setChecked(busy == Busy::Keypad);
        const std::string call = busy == Busy::Click ? "ReadPartAttributes" : "CopyPartFiles";
        browser.onCall = [this, call] {
            const bool here = busy != Busy::Keypad && busy != Busy::Message && recorder.lines.back().starts_with(call);
            here ? SendPair() : void();
        };
        if (busy == Busy::Click) {
            browser.FireClick();
        } else {
            PressLater(ControlOf(RES_SELECTION_DIALOG, busy == Busy::Load ? RES_LOAD : RES_ADD));
        }
    }
    static void PressLater(QWidget* button) // not inside a turn, which would wait for what it opens
    {
        if (button != nullptr) {
            QMetaObject::invokeMethod(button, "click", Qt::QueuedConnection);
        }
    }

    std::string Outcome()
    {
        step = Step::Open;
        sent = all_came = false;
        quiet_turns = 0;
        recorder.lines.clear();
        browser.onCall = nullptr;
        CQtDialogWindows real(this);
        QTimer turns;
        QObject::connect(&turns, &QTimer::timeout, &turns, [this] { Turn(); });
        turns.start(5);
        return PlayedOutcome(real, folder);
    }

    enum class Step { Open, List, Busy };

    Busy busy = Busy::Load;
    Input first = Input::Enter;
    Input second = Input::Enter;
    Step step = Step::Open;
    bool sent = false;
    bool all_came = false;
    int quiet_turns = 0;
};

TEST_F(UntimelyInput, HasItsOneOutcomeOnARealScreen)
{
    for (int row = 0; row < busy_count * input_count * input_count; ++row) {
        busy = static_cast<Busy>(row / input_count / input_count);
        first = static_cast<Input>(row / input_count % input_count);
        second = static_cast<Input>(row % input_count);
        if (!IsPlayed(first, second)) {
            continue;
        }
        const std::string label = UntimelyRow(busy, first, second);
        const std::string outcome = Outcome();
        EXPECT_TRUE(outcome == CUntimelyRun::Outcome(busy, first, second) ||
                    outcome == CUntimelyRun::LateOutcome(busy, first, second))
            << outcome << " after " << label;
    }
}

} // namespace
} // namespace partkeep
