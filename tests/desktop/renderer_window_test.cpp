// What the dialogs' logic asks of a window, on the selection dialog's template with a handler that only notes.

#include "controls/part_browser_contract.h"
#include "desktop/qt_dialog_windows.h"
#include "desktop/qt_messages.h"
#include "platform/graphics.h"
#include "resources/dialog_templates.h"
#include "tests/desktop/played_user.h"

#include <QApplication>
#include <QComboBox>
#include <QHelpEvent>
#include <QLineEdit>
#include <QMessageBox>
#include <QShortcut>
#include <QTest>
#include <QToolButton>
#include <QToolTip>
#include <QWheelEvent>
#include <QWindow>

#include <gtest/gtest.h>

#include <thread>

namespace partkeep {
namespace {

constexpr int dialog = RES_SELECTION_DIALOG;

class CSilentControl : public IHostedControl {
public:
    ControlResult Invoke(std::int32_t, InvokeKind, std::span<const ControlArgument>, ControlType) override
    {
        return {};
    }
    void SetEventSink(std::function<void(std::int32_t)>) override {}
};

// A control with a field inside and shortcuts that would like the dialog's keys.
class CFieldFactory : public IQtControlFactory {
public:
    std::unique_ptr<IHostedControl> Create(const ClassId& class_id, QWidget* parent, QWidget*& widget) override
    {
        EXPECT_EQ(class_id, part_browser_class_id);
        widget = new QWidget(parent);
        field = new QLineEdit(widget);
        for (const char* keys : {"Return", "Esc", "Ctrl+A", "F5"}) {
            QObject::connect(new QShortcut(QKeySequence(keys), widget), &QShortcut::activated, widget,
                             [this] { ++shortcuts; });
        }
        return std::make_unique<CSilentControl>();
    }

    QLineEdit* field = nullptr;
    int shortcuts = 0;
};

class CNotingHandler : public IDialogHandler {
public:
    void OnInitDialog() override { init(); }
    bool PreTranslateMessage(const KeyPress& press) override
    {
        notes += " key" + std::to_string(press.key) + (press.control ? "c" : "") + (press.shift ? "s" : "");
        return uses_keys;
    }
    void OnCommand(int id) override
    {
        notes += " command" + std::to_string(id);
        if (id == id_cancel) {
            window->EndModal(id_cancel);
        }
    }
    void OnSelectionChange(int id) override { notes += " selection" + std::to_string(id); }
    void OnTextChange(int id) override { notes += " text" + std::to_string(id); }
    void OnPaint() override { ++paints; }
    void OnDestroy() override { notes += window->Text(RES_PART_NAME) == u"here" ? " destroy" : " destroy late"; }
    [[nodiscard]] std::u16string ToolTipText(int command) override
    {
        return command == RES_FILTER_NCT ? u"NCT" : u"other";
    }

    [[nodiscard]] std::string Take() { return std::exchange(notes, {}); }

    IDialogWindow* window = nullptr;
    std::function<void()> init = [] {};
    std::string notes;
    bool uses_keys = false;
    int paints = 0;
};

class QtWindow : public ::testing::Test {
protected:
    QtWindow() { handler_.window = window_.get(); }

    // With the browser's stand-in; the dialog is cancelled behind the steps.
    void Run(std::vector<UserStep> steps)
    {
        handler_.init = [this] {
            hosted_ = window_->CreateHostedControl(part_browser_class_id, RES_BROWSER, {5, 30, 500, 300});
            window_->SetText(RES_PART_NAME, u"here");
            more_init_();
            (void)handler_.Take();
        };
        steps.push_back([this] { window_->EndModal(id_cancel); });
        PlayWhile(std::move(steps), [this] { EXPECT_EQ(window_->RunModal(handler_), id_cancel); });
    }

    CFieldFactory factory_;
    CQtDialogWindows windows_{&factory_};
    CNotingHandler handler_;
    std::unique_ptr<IDialogWindow> window_ = windows_.Make(selection_dialog_template);
    std::unique_ptr<IHostedControl> hosted_;
    std::function<void()> more_init_ = [] {};
};

TEST_F(QtWindow, LogicSeesKeysBeforeAnyControlAndShortcut)
{
    handler_.uses_keys = true;
    Run({[this] { factory_.field->setFocus(); }, Pressing(dialog, Qt::Key_Return), Pressing(dialog, Qt::Key_Enter),
         Pressing(dialog, Qt::Key_Escape), Pressing(dialog, Qt::Key_Tab),
         Pressing(dialog, Qt::Key_Backtab, Qt::ShiftModifier), Pressing(dialog, Qt::Key_A, Qt::ControlModifier),
         [this] {
             EXPECT_EQ(window_->FocusedControl(), RES_BROWSER);
             EXPECT_EQ(handler_.Take(), " key13 key13 key27 key9 key9s key65c");
             EXPECT_EQ(factory_.shortcuts, 0);
         },
         Pressing(dialog, Qt::Key_F5), [this] { EXPECT_EQ(factory_.shortcuts, 1); }});
}

TEST_F(QtWindow, KeysThatTheLogicLeavesGoOnAsUsual)
{
    Run({[this] { factory_.field->setFocus(); }, Typing(dialog, "ab"), Pressing(dialog, Qt::Key_A, Qt::ControlModifier),
         [this] {
             EXPECT_EQ(factory_.field->selectedText(), "ab");
             EXPECT_EQ(handler_.Take(),
                       " key65 key66 key65c"); // once each
             factory_.field->setReadOnly(true);
         },
         Typing(dialog, "x"), // the field ignores it, and its parents are offered it
         [this] {
             EXPECT_EQ(handler_.Take(), " key88");
             window_->Focus(RES_ADD);
         },
         Pressing(dialog, Qt::Key_Return),
         [this] {
             EXPECT_EQ(handler_.Take(), " key13 command210");
             window_->Enable(RES_ADD, false);
         },
         [this] { window_->Focus(RES_PART_NAME); }, Pressing(dialog, Qt::Key_Return),
         [this] { EXPECT_EQ(handler_.Take(), " key13 command1"); }});
}

TEST_F(QtWindow, AccessKeysLeadToTheFieldBesideTheLabel)
{
    const auto expect_focus = [this](int id) { return [this, id] { EXPECT_EQ(window_->FocusedControl(), id); }; };
    Run({Pressing(dialog, Qt::Key_P, Qt::AltModifier), expect_focus(RES_PART_NAME),
         Pressing(dialog, Qt::Key_M, Qt::AltModifier), expect_focus(RES_COMMENT),
         Pressing(dialog, Qt::Key_U, Qt::AltModifier), expect_focus(RES_UNIT)});
}

TEST_F(QtWindow, TabOrderPassesOverWhatIsHiddenDisabledOrMadeAtRunTime)
{
    std::string order;
    std::vector<UserStep> steps{[this] {
        window_->Enable(RES_COMMENT, false);
        window_->ShowControl(RES_ASK_QUANTITY, false);
        window_->Focus(RES_LOAD);
    }};
    for (int press = 0; press < 7; ++press) {
        steps.push_back([this, &order] { order += std::to_string(window_->FocusedControl()) + " "; });
        steps.push_back(Pressing(dialog, Qt::Key_Tab));
    }
    Run(steps);
    EXPECT_EQ(order, "201 2 203 210 202 211 201 ");
}

TEST_F(QtWindow, DropDownListTellsOfTheUsersChoicesOnly)
{
    more_init_ = [this] {
        window_->InsertEntry(RES_UNIT, 0, u"Metric");
        EXPECT_EQ(window_->SelectedEntry(RES_UNIT), -1);
        window_->InsertEntry(RES_UNIT, 1, u"Inch");
        window_->SelectEntry(RES_UNIT, 0);
        window_->Focus(RES_UNIT);
    };
    const auto open_list = [] { dynamic_cast<QComboBox*>(ControlOf(dialog, RES_UNIT))->showPopup(); };
    const auto key_in_list = [](Qt::Key key) {
        return [key] { QTest::keyClick(QApplication::activePopupWidget()->focusWidget(), key); };
    };
    Run({[this] { EXPECT_EQ(handler_.Take(), ""); }, Pressing(dialog, Qt::Key_Down),
         [this] {
             EXPECT_EQ(handler_.Take(), " key40 selection202");
             EXPECT_EQ(window_->SelectedEntry(RES_UNIT), 1);
             window_->SelectEntry(RES_UNIT, 7);
             EXPECT_EQ(window_->SelectedEntry(RES_UNIT), -1);
             window_->SelectEntry(RES_UNIT, 1);
         },
         open_list, key_in_list(Qt::Key_Up), key_in_list(Qt::Key_Return),
         [this] {
             EXPECT_EQ(handler_.Take(), " selection202 key13 command1"); // taken first, then Enter is the dialog's
             EXPECT_EQ(window_->SelectedEntry(RES_UNIT), 0);
             window_->Focus(RES_ADD);
             QWidget* list = ControlOf(dialog, RES_UNIT);
             QWheelEvent wheel(list->rect().center(), list->mapToGlobal(list->rect().center()), {}, {0, -120},
                               Qt::NoButton, Qt::NoModifier, Qt::NoScrollPhase, false);
             QApplication::sendEvent(list, &wheel);
             EXPECT_EQ(window_->SelectedEntry(RES_UNIT), 0) << "a wheel passed by";
         }});
}

TEST_F(QtWindow, ToolsCommandButOnlyTheProgramPressesThem)
{
    more_init_ = [this] {
        EXPECT_TRUE(window_->CreateToolbar(filter_toolbar_template));
        EXPECT_LE(window_->ClientRectBesideToolbar().top, 30); // where the browser begins
        window_->PlaceToolbar();
        window_->EnableToolTips();
        window_->PressTool(RES_FILTER_PART, true);
    };
    const auto pressed = [](int command) {
        return dynamic_cast<QToolButton*>(ControlOf(dialog, command))->isChecked();
    };
    Run({Clicking(dialog, RES_FILTER_NCT), Pressing(dialog, Qt::Key_4, Qt::AltModifier), [=, this] {
             EXPECT_TRUE(QTest::qWaitFor([this] { return handler_.notes.size() > 13; })); // it goes down visibly first
             EXPECT_EQ(handler_.Take(), " command32774 command32776");
             EXPECT_TRUE(pressed(RES_FILTER_PART));
             EXPECT_FALSE(pressed(RES_FILTER_NCT));
             window_->PressTool(RES_FILTER_PART, false);
             window_->PressTool(RES_FILTER_MARVEN, true);
             EXPECT_FALSE(pressed(RES_FILTER_PART));
             EXPECT_TRUE(pressed(RES_FILTER_MARVEN));
             QWidget* tool = ControlOf(dialog, RES_FILTER_NCT);
             QHelpEvent help(QEvent::ToolTip, tool->rect().center(), tool->mapToGlobal(tool->rect().center()));
             QApplication::sendEvent(tool, &help);
             EXPECT_EQ(QToolTip::text(), "NCT");
             EXPECT_EQ(tool->accessibleName(), "NCT");
         }});
}

TEST_F(QtWindow, ToolPicturesHaveOutlineAndRingInTheFiltersColours)
{
    const QImage strip = QImage::fromData(filter_toolbar_template.bitmap.data(),
                                          static_cast<int>(filter_toolbar_template.bitmap.size()), "BMP");
    ASSERT_EQ(strip.size(), QSize(64, 15));
    EXPECT_EQ(strip.colorCount(), 16);
    const QRgb green = qRgb(0, 255, 0);
    const QRgb yellow = qRgb(255, 255, 0);
    const QRgb magenta = qRgb(255, 0, 255);
    const std::pair<QRgb, QRgb> colours[] = {{green, green}, {yellow, yellow}, {magenta, magenta}, {yellow, magenta}};
    for (int tool = 0; tool < 4; ++tool) {
        const int left = 16 * tool;
        EXPECT_EQ(strip.pixel(left + 2, 8), colours[tool].first) << tool;
        EXPECT_EQ(strip.pixel(left + 8, 5), colours[tool].second) << tool;
        EXPECT_EQ(strip.pixel(left, 0), qRgb(192, 192, 192)) << tool;
    }
}

TEST_F(QtWindow, PaintComesForTheDialogItselfOnly)
{
    Run({[this] {
        window_->UpdateNow();
        const int before = handler_.paints;
        ControlOf(dialog, RES_ADD)->repaint();
        EXPECT_EQ(handler_.paints, before);
        window_->Invalidate();
        window_->UpdateNow();
        EXPECT_EQ(handler_.paints, before + 1);
    }});
}

TEST_F(QtWindow, PanelPaintsItsClientAreaAndMovesWithTheControls)
{
    std::unique_ptr<IPanelWindow> panel;
    more_init_ = [this, &panel] {
        panel = window_->CreatePanel(RES_IMAGE_PANEL, {5, 379, 155, 529});
        const Rect client = panel->ClientRect();
        EXPECT_LT(client.Width(), 150); // sunken
        panel->Move(panel->MapToDialog({0, 0, 149, 149}));
        EXPECT_EQ(panel->ClientRect(), (Rect{0, 0, 149, 149}));
        const Rect before = window_->MapToDialog(RES_ADD, {});
        const Rect place = panel->MapToDialog({});
        window_->MoveAllControls(0, 20);
        EXPECT_EQ(window_->MapToDialog(RES_ADD, {}).top, before.top + 20);
        EXPECT_EQ(panel->MapToDialog({}).top, place.top + 20);
        panel->SetPainter([](IDeviceContext& context) { context.FillSolidRect({-9, -9, 500, 1}, 0x0000FF); });
    };
    Run({[&panel] {
        QWidget* frame = ControlOf(dialog, RES_IMAGE_PANEL);
        const QImage shown = frame->grab().toImage();
        const int border = (frame->width() - 149) / 2;
        EXPECT_EQ(shown.pixel(border, border), qRgb(255, 0, 0));
        EXPECT_NE(shown.pixel(border, border + 1), qRgb(255, 0, 0));
        EXPECT_NE(shown.pixel(border - 1, border), qRgb(255, 0, 0)) << "painted over its border";
        panel.reset();
        EXPECT_EQ(ControlOf(dialog, RES_IMAGE_PANEL), nullptr);
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
             auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
             EXPECT_EQ(box->text(), "<b>text</b>");
             EXPECT_EQ(box->textFormat(), Qt::PlainText);
             EXPECT_EQ(box->icon(), QMessageBox::Warning);
             QTest::keyClick(box->windowHandle(), Qt::Key_Escape);
         },
         [&shape] { EXPECT_EQ(shape(), Qt::WaitCursor); }});
    EXPECT_EQ(shape(), -1);
    EXPECT_EQ(handler_.Take(), " destroy");
}

TEST_F(QtWindow, EndsBeforeItShowsWhenStartUpSaysSo)
{
    more_init_ = [this] { window_->EndModal(7); };
    handler_.init = [this] {
        window_->SetText(RES_PART_NAME, u"here");
        window_->EndModal(7);
    };
    EXPECT_EQ(window_->RunModal(handler_), 7);
    EXPECT_FALSE(window_->Exists());
    EXPECT_EQ(handler_.Take(), " text203 destroy");
}

TEST_F(QtWindow, TakesTheIconOfTheActiveWindowAndGoesWithIt)
{
    EXPECT_EQ(window_->ParentSmallIcon(), nullptr);
    auto host = std::make_unique<QWidget>();
    QPixmap red(16, 16);
    red.fill(Qt::red);
    host->setWindowIcon(red);
    host->show();
    ASSERT_TRUE(QTest::qWaitForWindowActive(host.get()));
    handler_.init = [this] { window_->SetSmallIcon(window_->ParentSmallIcon()); };
    PlayWhile({[&host] {
                  EXPECT_EQ(WindowOf(dialog)->parentWidget(), host.get());
                  EXPECT_EQ(WindowOf(dialog)->windowIcon().pixmap(16).toImage().pixel(8, 8), qRgb(255, 0, 0));
                  EXPECT_EQ(WindowOf(dialog)->windowModality(), Qt::WindowModal);
                  host.reset(); // a host that goes down with the dialog open
              }},
              [this] { EXPECT_EQ(window_->RunModal(handler_), id_cancel); });
    EXPECT_FALSE(window_->Exists());
    window_->SetText(RES_PART_NAME, u"gone"); // does nothing
    EXPECT_EQ(window_->Text(RES_PART_NAME), u"");
}

TEST_F(QtWindow, WithoutAScreenMessagesGoToStandardErrorAndNoWindowOpens)
{
    ::testing::internal::CaptureStderr();
    std::thread([this] { // another thread than the application's cannot have windows
        CQtMessages().Show({u"部品 is missing", u"Title", MessageKind::Plain});
        EXPECT_EQ(window_->RunModal(handler_), -1);
        EXPECT_FALSE(window_->CreateModeless(handler_, nullptr));
    })
        .join();
    EXPECT_EQ(::testing::internal::GetCapturedStderr(), "Title: 部品 is missing\n");
}

} // namespace
} // namespace partkeep
