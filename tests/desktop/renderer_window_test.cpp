// What the dialogs' logic asks of a window, on the selection dialog's template with a handler that only notes; and the
// keypad with its logic, worked by real keys and clicks.

#include "controls/part_browser_contract.h"
#include "desktop/caption_fit.h"
#include "desktop/qt_dialog_windows.h"
#include "desktop/qt_messages.h"
#include "platform/graphics.h"
#include "selection/quantity_keypad_dlg.h"
#include "settings/process_values.h"
#include "tests/desktop/played_user.h"
#include "tests/support/dialog_window_suite.h"
#include "tests/support/scripted_control.h"

#include <QApplication>
#include <QClipboard>
#include <QComboBox>
#include <QHelpEvent>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QShortcut>
#include <QTest>
#include <QToolButton>
#include <QToolTip>
#include <QWheelEvent>
#include <QWindow>

#include <thread>

namespace partkeep {
namespace {

constexpr int dialog = RES_SELECTION_DIALOG;
constexpr int keypad = RES_QUANTITY_KEYPAD;

TEST(QtWindows, DoWhatEveryFrontEndDoes)
{
    CQtDialogWindows windows(nullptr);
    CheckDialogWindows(windows);
}

TEST(QtWindows, NoneOpensWithoutAScreenAndMessagesGoToStandardError)
{
    ::testing::internal::CaptureStderr();
    std::thread([] { // another thread than the application's cannot have windows
        CQtMessages().Show({u"部品 is missing", u"Title", MessageKind::Plain});
        SuiteHandler handler;
        EXPECT_EQ(CQtDialogWindows(nullptr).Make(selection_dialog_template)->RunModal(handler), -1);
    })
        .join();
    EXPECT_EQ(::testing::internal::GetCapturedStderr(), "Title: 部品 is missing\n");
}

TEST(QtCaption, GetsSmallerAndIsCutAtLast)
{
    QLabel label;
    QFont font;
    font.setPixelSize(20);
    const QString caption = QStringLiteral("&Wide caption of a button");
    const int width = QFontMetrics(font).size(Qt::TextSingleLine | Qt::TextShowMnemonic, caption).width();
    EXPECT_EQ(FitCaption(label, font, caption, width), caption);
    EXPECT_EQ(label.font().pixelSize(), 20);
    EXPECT_EQ(FitCaption(label, font, caption, width * 9 / 10), caption);
    EXPECT_TRUE(label.font().pixelSize() < 20 && label.toolTip().isEmpty());
    EXPECT_TRUE(FitCaption(label, font, caption, width / 2).endsWith(u'…'));
    EXPECT_EQ(label.font().pixelSize(), 16);
    EXPECT_EQ(label.toolTip(), QStringLiteral("Wide caption of a button"));
}

struct NotingHandler : SuiteHandler {
    bool PreTranslateMessage(const KeyPress& press) noexcept override
    {
        notes += " key" + std::to_string(press.key) + (press.control ? "c" : "") + (press.shift ? "s" : "");
        return uses_keys;
    }
    void OnPaint() noexcept override { ++paints; }
    [[nodiscard]] std::u16string ToolTipText(int command) noexcept override
    {
        return command == RES_FILTER_NCT ? u"NCT" : u"other";
    }

    bool uses_keys = false;
    int paints = 0;
};

class QtWindow : public ::testing::Test, public IQtControlFactory {
protected:
    // A control with a field inside and shortcuts that would like the dialog's keys.
    std::unique_ptr<IHostedControl> Create(const ClassId&, QWidget* parent, QWidget*& widget) override
    {
        widget = new QWidget(parent);
        field_ = new QLineEdit(widget);
        for (const char* keys : {"Return", "Esc", "Ctrl+A", "F5"}) {
            QObject::connect(new QShortcut(QKeySequence(keys), widget), &QShortcut::activated, widget,
                             [this] { ++shortcuts_; });
        }
        return script_.MakeControl();
    }

    // With the browser's stand-in; the dialog is cancelled behind the steps.
    void Run(std::vector<UserStep> steps)
    {
        handler_.init = [this] {
            hosted_ = window_->CreateHostedControl(part_browser_class_id, RES_BROWSER, {5, 30, 500, 300});
            window_->Toolbar().CreateToolbar(filter_toolbar_template);
            window_->Toolbar().PlaceToolbar();
            window_->Toolbar().EnableToolTips();
            window_->Toolbar().PressTool(RES_FILTER_PART, true);
            window_->Fields().InsertEntry(RES_UNIT, 0, u"Metric");
            window_->Fields().InsertEntry(RES_UNIT, 1, u"Inch");
            window_->Fields().SelectEntry(RES_UNIT, 0);
            panel_ = window_->CreatePanel(RES_IMAGE_PANEL, {5, 379, 155, 529});
            handler_.notes.clear();
        };
        steps.push_back([this] { window_->EndModal(id_cancel); });
        PlayWhile(std::move(steps), [this] { EXPECT_EQ(window_->RunModal(handler_), id_cancel); });
    }
    [[nodiscard]] UserStep Focusing(int id)
    {
        return [=, this] { window_->Fields().Focus(id); };
    }

    Recorder recorder_;
    ControlScript script_{recorder_};
    QLineEdit* field_ = nullptr;
    int shortcuts_ = 0;
    CQtDialogWindows windows_{this};
    NotingHandler handler_;
    std::unique_ptr<IDialogWindow> window_ = windows_.Make(selection_dialog_template);
    std::unique_ptr<IHostedControl> hosted_;
    std::unique_ptr<IPanelWindow> panel_;
};

TEST_F(QtWindow, TellsTheLogicOfKeysCommandsAndChoices)
{
    const UserStep in_field = [this] { field_->setFocus(); };
    const UserStep focus = [this] { handler_.notes += " on" + std::to_string(window_->Fields().FocusedControl()); };
    const UserStep tab = Pressing(dialog, Qt::Key_Tab);
    const UserStep enter = Pressing(dialog, Qt::Key_Return);
    const UserStep control_a = Pressing(dialog, Qt::Key_A, Qt::ControlModifier);
    const auto alt = [](Qt::Key key) { return Pressing(dialog, key, Qt::AltModifier); };
    const auto key_in_list = [](Qt::Key key) {
        return [key] { QTest::keyClick(QApplication::activePopupWidget()->focusWidget(), key); };
    };
    const UserStep wheel = [] {
        QWidget* list = ControlOf(dialog, RES_UNIT);
        QWheelEvent event(list->rect().center(), list->mapToGlobal(list->rect().center()), {}, {0, -120}, Qt::NoButton,
                          Qt::NoModifier, Qt::NoScrollPhase, false);
        QApplication::sendEvent(list, &event);
    };
    const struct {
        const char* label;
        std::vector<UserStep> steps;
        const char* notes;
        bool uses_keys = false;
        int shortcuts = 0;
    } rows[] = {
        {"keys before any control and shortcut",
         {in_field, enter, Pressing(dialog, Qt::Key_Enter), Pressing(dialog, Qt::Key_Escape), tab,
          Pressing(dialog, Qt::Key_Backtab, Qt::ShiftModifier), control_a, focus, Pressing(dialog, Qt::Key_F5)},
         " key13 key13 key27 key9 key9s key65c on215",
         true,
         1},
        {"what the logic leaves goes on, told once",
         {in_field, Typing(dialog, "ab"), control_a, [this] { EXPECT_EQ(field_->selectedText(), "ab"); },
          [this] { field_->setReadOnly(true); }, Typing(dialog, "x")},
         " key65 key66 key65c key88"},
        {"Enter on a button", {Focusing(RES_ADD), enter}, " key13 command210"},
        {"Enter elsewhere", {Focusing(RES_PART_NAME), enter}, " key13 command1"},
        {"access keys", {alt(Qt::Key_P), focus, alt(Qt::Key_M), focus, alt(Qt::Key_U), focus}, " on203 on204 on202"},
        {"Tab passes over what is hidden, disabled or made at run time",
         {[this] { window_->Fields().Enable(RES_COMMENT, false); },
          [this] { window_->Fields().ShowControl(RES_ASK_QUANTITY, false); }, Focusing(RES_CANCEL), tab, focus, tab,
          focus, tab, focus, tab, tab, focus},
         " key9 on203 key9 on210 key9 on202 key9 key9 on201"},
        {"key on the closed list", {Focusing(RES_UNIT), Pressing(dialog, Qt::Key_Down)}, " key40 selection202"},
        {"Enter takes what the open list shows, then is the dialog's",
         {Focusing(RES_UNIT), [] { dynamic_cast<QComboBox*>(ControlOf(dialog, RES_UNIT))->showPopup(); },
          key_in_list(Qt::Key_Down), key_in_list(Qt::Key_Return)},
         " selection202 key13 command1"},
        {"a wheel that passes by changes nothing", {Focusing(RES_ADD), wheel}, ""},
        {"tools by mouse and key",
         {Clicking(dialog, RES_FILTER_NCT), alt(Qt::Key_4),
          [this] { EXPECT_TRUE(QTest::qWaitFor([this] { return handler_.notes.size() > 13; })); }}, // goes down visibly
         " command32774 command32776"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.label);
        handler_.uses_keys = row.uses_keys;
        shortcuts_ = 0;
        Run(row.steps);
        EXPECT_EQ(handler_.notes, std::string(row.notes) + " destroy");
        EXPECT_EQ(shortcuts_, row.shortcuts);
    }
}

TEST_F(QtWindow, OnlyTheProgramPressesToolsAndTipsComeFromTheLogic)
{
    Run({Clicking(dialog, RES_FILTER_NCT), [] {
             EXPECT_TRUE(dynamic_cast<QToolButton*>(ControlOf(dialog, RES_FILTER_PART))->isChecked());
             auto* tool = dynamic_cast<QToolButton*>(ControlOf(dialog, RES_FILTER_NCT));
             EXPECT_FALSE(tool->isChecked());
             const QImage picture = tool->icon().pixmap(16, 15).toImage();
             EXPECT_EQ(picture.pixel(2, 8), qRgb(255, 255, 0)) << "its own picture";
             EXPECT_EQ(qAlpha(picture.pixel(0, 0)), 0);
             QHelpEvent help(QEvent::ToolTip, tool->rect().center(), tool->mapToGlobal(tool->rect().center()));
             QApplication::sendEvent(tool, &help);
             EXPECT_EQ(QToolTip::text(), "NCT");
         }});
}

TEST_F(QtWindow, PaintsItselfAndItsPanelEachAlone)
{
    Run({[this] {
        window_->UpdateNow();
        const int before = handler_.paints;
        ControlOf(dialog, RES_ADD)->repaint();
        EXPECT_EQ(handler_.paints, before);
        window_->Invalidate();
        window_->UpdateNow();
        EXPECT_EQ(handler_.paints, before + 1);
        panel_->SetPainter([](IDeviceContext& context) { context.FillSolidRect({-9, -9, 500, 1}, 0x0000FF); });
        QWidget* frame = ControlOf(dialog, RES_IMAGE_PANEL);
        const QImage shown = frame->grab().toImage();
        const int border = (frame->width() - panel_->ClientRect().Width()) / 2;
        EXPECT_EQ(shown.pixel(border, border), qRgb(255, 0, 0));
        EXPECT_NE(shown.pixel(border, border + 1), qRgb(255, 0, 0));
        EXPECT_NE(shown.pixel(border - 1, border), qRgb(255, 0, 0)) << "painted over its border";
    }});
}

TEST_F(QtWindow, WaitCursorNestsGivesWayToQuestionsAndEndsWithTheWindow)
{
    const auto shape = [] {
        const QCursor* cursor = QGuiApplication::overrideCursor();
        return cursor == nullptr ? -1 : static_cast<int>(cursor->shape());
    };
    Run({[this] {
             window_->BeginWait();
             window_->BeginWait();
             window_->EndWait();
             window_->OwnerMessages().Show({u"<b>text</b>", u"title", MessageKind::Exclamation});
         },
         [&shape] {
             EXPECT_EQ(shape(), Qt::ArrowCursor);
             const auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
             EXPECT_EQ(box->textFormat(), Qt::PlainText);
             EXPECT_EQ(box->icon(), QMessageBox::Warning);
             EXPECT_EQ(AnswerMessage(), "<b>text</b>");
         },
         [&shape] { EXPECT_EQ(shape(), Qt::WaitCursor); }});
    EXPECT_EQ(shape(), -1);
}

TEST_F(QtWindow, TakesTheIconOfTheActiveWindowAndGoesWithIt)
{
    auto host = std::make_unique<QWidget>();
    QPixmap red(16, 16);
    red.fill(Qt::red);
    host->setWindowIcon(red);
    host->show();
    ASSERT_TRUE(QTest::qWaitForWindowActive(host.get()));
    handler_.init = [this] { window_->SetSmallIcon(window_->ParentSmallIcon()); };
    PlayWhile({[&host] {
                  EXPECT_EQ(WindowOf(dialog)->windowIcon().pixmap(16).toImage().pixel(8, 8), qRgb(255, 0, 0));
                  host.reset(); // a host that goes down with the dialog open
              }},
              [this] { EXPECT_EQ(window_->RunModal(handler_), id_cancel); });
    EXPECT_FALSE(window_->Exists());
}

QLineEdit* Field()
{
    return qobject_cast<QLineEdit*>(ControlOf(keypad, RES_QUANTITY));
}

UserStep Selecting(int start, int length)
{
    return [=] { Field()->setSelection(start, length); };
}

TEST(QtKeypad, FieldHoldsWhatKeysAndButtonsPutIn)
{
    TheProcessValues().languageId = 1;
    CQtDialogWindows windows(nullptr);
    const auto pasting = [](const char* text) -> UserStep {
        return [text] { QGuiApplication::clipboard()->setText(text), Field()->paste(); };
    };
    const auto answering = [](const char* text) { return [text] { EXPECT_EQ(AnswerMessage(), QString(text)); }; };
    const UserStep ok = Clicking(keypad, RES_OK);
    const UserStep escape = Pressing(keypad, Qt::Key_Escape);
    const UserStep back = Pressing(keypad, Qt::Key_Backspace);
    const UserStep enter = Pressing(keypad, Qt::Key_Return);
    const UserStep tab = Pressing(keypad, Qt::Key_Tab);
    const UserStep six = Clicking(keypad, RES_DIGIT_6);
    const UserStep nine = Clicking(keypad, RES_DIGIT_9);
    const UserStep zeros = Clicking(keypad, RES_DIGIT_00);
    const struct {
        const char* label;
        std::vector<UserStep> steps;
        std::u16string field;
        int answer = id_cancel;
    } rows[] = {
        {"six typed characters give five", {Typing(keypad, "123456"), escape}, u"12345"},
        {"paste fills up to five", {Typing(keypad, "12"), pasting("345678"), escape}, u"12345"},
        {"what is pasted ends with its line",
         {Typing(keypad, "45"), Pressing(keypad, Qt::Key_Home), pasting("12\n3"), escape},
         u"1245"},
        {"buttons pass the limit, keys do not", {Typing(keypad, "12345"), six, Typing(keypad, "7"), escape}, u"123456"},
        {"typing again below the limit",
         {Typing(keypad, "12345"), six, back, back, Typing(keypad, "89"), escape},
         u"12348"},
        {"button takes the selected text away", {Typing(keypad, "12345"), Selecting(1, 2), nine, escape}, u"1459"},
        {"selection outlives the focus",
         {Typing(keypad, "123"), Selecting(0, 2), tab, Pressing(keypad, Qt::Key_Space), escape},
         u"31"},
        {"caret in the middle stays when the limit moves, digits land at the end",
         {zeros, zeros, zeros, Pressing(keypad, Qt::Key_Home), Pressing(keypad, Qt::Key_Delete),
          Pressing(keypad, Qt::Key_Delete), Typing(keypad, "5"), back, six, escape},
         u"00006"},
        {"Enter means OK after a tap", {six, nine, Pressing(keypad, Qt::Key_Enter)}, u"69", id_ok},
        {"Enter presses what the Tab key chose", {tab, enter, ok}, u"1", id_ok},
        {"what is refused, empty or in a box, leaves it open",
         {ok, Typing(keypad, "0"), ok, answering("Please enter value within the range [1-99999]"), Typing(keypad, "x"),
          Pressing(keypad, Qt::Key_Home), Typing(keypad, "3"), enter,
          answering("Input Part number should be within the range [0-9]."), [] { WindowOf(keypad)->close(); }},
         u"30x"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.label);
        CEventDoor door(windows);
        CQuantityKeypadDlg pad(door, nullptr);
        PlayWhile(row.steps, [&] { EXPECT_EQ(pad.DoModal(), row.answer); });
        EXPECT_EQ(pad.Quantity(), row.field);
    }
}

} // namespace
} // namespace partkeep
