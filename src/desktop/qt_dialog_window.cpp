// Life and the window as a whole; what is made in it at run time is in qt_dialog_controls.cpp.

#include "desktop/qt_dialog_window.h"

#include "desktop/control_widgets.h"
#include "desktop/picture_control.h"
#include "desktop/qt_dialog_windows.h"
#include "desktop/qt_input.h"
#include "desktop/qt_values.h"
#include "partlibrary/library/library_text.h"
#include "platform/companion_place.h"

#include <QApplication>
#include <QPushButton>
#include <QScreen>
#include <QUuid>

#include <algorithm>

namespace partkeep {

namespace {

// The window that is active here; where none is, the one that a modal run waits for.
QWidget* ActiveWindow()
{
    QWidget* active = QApplication::activeWindow();
    return active != nullptr ? active : QApplication::activeModalWidget();
}

ClassId ParseClassId(const char16_t* braced)
{
    const QUuid id = QUuid::fromString(QStringView(braced));
    ClassId parsed{id.data1, id.data2, id.data3, {}};
    std::copy(std::begin(id.data4), std::end(id.data4), parsed.data4.begin());
    return parsed;
}

} // namespace

std::unique_ptr<IDialogWindow> CQtDialogWindows::Make(const DialogTemplate& dialog)
{
    return std::make_unique<CQtDialogWindow>(dialog, controls_);
}

CQtDialogWindow::CQtDialogWindow(const DialogTemplate& dialog, IQtControlFactory* controls)
    : template_(dialog), factory_(controls), controls_({}, {})
{
}

CQtDialogWindow::~CQtDialogWindow()
{
    Destroy();
}

// ---- Life

int CQtDialogWindow::RunModal(IDialogEvents& events)
{
    if (!HasScreen() || Exists()) {
        return -1;
    }
    const CArrowPointer arrow;
    Open(events, ActiveWindow());
    if (!ended_ && frame_) {
        frame_->setWindowModality(owner_ ? Qt::WindowModal : Qt::ApplicationModal);
        BringUp();
        RunLoop();
    }
    Close();
    return result_;
}

void CQtDialogWindow::RunLoop()
{
    // Nothing may be left pointing at the loop, whatever a control of ours throws through it.
    struct CLoopEnd {
        QEventLoop*& pointer;
        ~CLoopEnd() { pointer = nullptr; }
    };
    QEventLoop loop;
    QObject::connect(frame_, &QObject::destroyed, &loop, &QEventLoop::quit); // with its owner
    loop_ = &loop;
    const CLoopEnd end{loop_};
    loop.exec();
    DropWaitingInput();
}

bool CQtDialogWindow::CreateModeless(IDialogEvents& events, IDialogWindow* owner)
{
    if (!HasScreen() || Exists()) {
        return false;
    }
    owner_dialog_ = dynamic_cast<CQtDialogWindow*>(owner);
    modeless_ = true;
    Open(events, owner_dialog_ == nullptr ? nullptr : owner_dialog_->frame_.data());
    if (owner_dialog_ != nullptr) {
        events_.SetWindowKeys(owner_dialog_->events_.WindowKeys(), owner_dialog_->events_.WindowKeysWidget());
    }
    // The user goes on in the owner: a window that only shows what was added must not take the keys from it.
    frame_->setAttribute(Qt::WA_ShowWithoutActivating);
    return true;
}

void CQtDialogWindow::Open(IDialogEvents& events, QWidget* owner)
{
    events_.Begin(events);
    owner_ = owner;
    messages_.SetOwner(owner);
    ended_ = false;
    placed_ = false;
    result_ = id_cancel;
    frame_ = new CDialogFrame(events_, owner);
    MakeControls();
    events_.InitDialog();
    if (frame_ && frame_->focusWidget() == nullptr) {
        fields_->MoveFocusByOrder(true);
    }
}

void CQtDialogWindow::MakeControls()
{
    const QFont font = DialogFont(template_);
    const DialogUnits units = UnitsOf(template_, font);
    frame_->setObjectName(QString::number(template_.number));
    frame_->setFont(font);
    frame_->setWindowTitle(FromWide(template_.title));
    frame_->setFixedSize(units.ToPixels(0, 0, template_.width, template_.height).size());
    controls_ = CControlSet(font, units);
    for (const auto& control : template_.controls) {
        QWidget* widget = nullptr;
        if (control.kind == ControlKind::HostedControl) {
            template_controls_[control.id] = MakeHosted(ParseClassId(control.caption), widget);
        }
        if (widget == nullptr) {
            widget = MakeControlWidget(control, frame_);
        }
        controls_.Add(control, widget);
        events_.Connect(control.id, widget);
        if (template_.for_fingers && qobject_cast<QPushButton*>(widget) != nullptr) {
            // A finger's tap leaves the field its focus, so that Enter still means OK.
            widget->setFocusPolicy(Qt::TabFocus);
        }
    }
    controls_.BindLabels();
}

void CQtDialogWindow::EndModal(int result)
{
    result_ = result;
    ended_ = true;
    if (frame_) {
        frame_->SetInputEnabled(false);
    }
    if (loop_ != nullptr) {
        loop_->quit();
    }
}

void CQtDialogWindow::Destroy()
{
    if (Exists() && loop_ == nullptr) {
        Close();
    }
}

void CQtDialogWindow::Close()
{
    events_.Destroy();
    while (waits_ > 0) {
        EndWait();
    }
    template_controls_.clear();
    panels_.clear();
    events_.End();
    if (!frame_) {
        return;
    }
    qApp->removeEventFilter(frame_);
    frame_->hide();
    if (events_.IsTelling()) {
        frame_->deleteLater();
        frame_ = nullptr;
    } else {
        delete frame_;
    }
    ActivateOwner();
}

// Window managers do it too, most of them.
void CQtDialogWindow::ActivateOwner()
{
    if (owner_ && owner_->isVisible()) {
        owner_->activateWindow();
    }
}

void CQtDialogWindow::BringUp()
{
    std::vector<QWidget*> panels;
    for (const auto& panel : panels_) {
        if (panel) {
            panels.push_back(panel);
        }
    }
    controls_.NameForAccessibility(panels);
    if (modeless_ && !placed_) {
        PlaceBesideOwner();
    }
    placed_ = true;
    if (frame_->isVisible()) {
        frame_->raise();
    }
    const QPointer<QWidget> active = QApplication::activeWindow();
    frame_->show();
    if (!modeless_) {
        frame_->activateWindow();
    } else if (QWidget* keeps_the_keys = active ? active : owner_) {
        keeps_the_keys->activateWindow(); // not every platform heeds the attribute
    }
}

void CQtDialogWindow::PlaceBesideOwner()
{
    if (!owner_) {
        return;
    }
    std::vector<Rect> stay_visible;
    for (const QRect& area : owner_dialog_->controls_.WorkingAreas()) {
        stay_visible.push_back(ToRect(area));
    }
    const QRect owner = owner_->frameGeometry();
    const QSize border = owner.size() - owner_->size(); // that of this window is not known before it is shown
    const Rect place =
        CompanionPlace(ToRect(owner), ToRect(owner_->screen()->availableGeometry()), frame_->width() + border.width(),
                       frame_->height() + border.height(), stay_visible);
    frame_->move(place.left, place.top);
}

// ---- The window as a whole

void CQtDialogWindow::SetTitle(std::u16string_view title)
{
    if (frame_) {
        frame_->setWindowTitle(FromWide(title));
    }
}

IconHandle CQtDialogWindow::ParentSmallIcon() const
{
    parent_icon_ = owner_ ? owner_->windowIcon() : QIcon();
    return parent_icon_.isNull() ? nullptr : &parent_icon_;
}

void CQtDialogWindow::SetSmallIcon(IconHandle icon)
{
    if (frame_ && icon != nullptr) {
        frame_->setWindowIcon(*static_cast<const QIcon*>(icon));
    }
}

void CQtDialogWindow::Show(bool visible)
{
    if (!frame_) {
        return;
    }
    if (visible) {
        BringUp();
    } else {
        frame_->hide();
        ActivateOwner();
    }
}

void CQtDialogWindow::EnableOwner(bool enabled)
{
    if (auto* dialog = dynamic_cast<CDialogFrame*>(owner_.data())) {
        dialog->SetInputEnabled(enabled);
    } else if (owner_) {
        owner_->setEnabled(enabled);
    }
}

void CQtDialogWindow::Invalidate()
{
    if (frame_) {
        frame_->update();
    }
}

void CQtDialogWindow::UpdateNow()
{
    if (frame_) {
        frame_->repaint();
        frame_->TellPainted();
    }
}

void CQtDialogWindow::BeginWait()
{
    QGuiApplication::setOverrideCursor(Qt::WaitCursor);
    ++waits_;
}

void CQtDialogWindow::EndWait()
{
    if (waits_ > 0) {
        --waits_;
        QGuiApplication::restoreOverrideCursor();
    }
}

Rect CQtDialogWindow::ClientRect() const
{
    return frame_ ? ToRect(frame_->rect()) : Rect{};
}

} // namespace partkeep
