// What comes from the toolkit and goes out to the events' door.

#include "desktop/qt_dialog_window.h"

#include "desktop/qt_keys.h"

#include <QApplication>
#include <QKeyEvent>
#include <QPushButton>

namespace partkeep {

bool CQtDialogWindow::KeyDown(const QKeyEvent& event)
{
    if (event.key() == Qt::Key_F6) {
        GoToNextWindow();
        return true;
    }
    const KeyPress press = ToKeyPress(event);
    if (press.key == 0 || !Exists()) {
        return false;
    }
    return Tell(&IDialogEvents::PreTranslateMessage, press) || (Exists() && DefaultKey(press));
}

// What the window system does with the keys that the dialog's logic leaves to it.
bool CQtDialogWindow::DefaultKey(const KeyPress& press)
{
    switch (press.key) {
    case key_tab:
        fields_.MoveFocusByOrder(!press.shift);
        return true;
    case key_return:
        PressDefault();
        return true;
    case key_escape:
        Command(id_cancel);
        return true;
    default:
        return false;
    }
}

// Enter presses the push button that has the focus, else the default button, else the command alone goes out.
void CQtDialogWindow::PressDefault()
{
    auto* button = qobject_cast<QPushButton*>(frame_->focusWidget());
    if (button == nullptr) {
        button = controls_.As<QPushButton>(id_ok);
    }
    if (button == nullptr) {
        Command(id_ok);
    } else if (button->isEnabled()) {
        button->click();
    }
}

void CQtDialogWindow::Command(int id)
{
    if (Exists()) {
        Tell(&IDialogEvents::OnCommand, id);
    }
}

void CQtDialogWindow::TextChanged(int id)
{
    if (Exists()) {
        Tell(&IDialogEvents::OnTextChange, id);
    }
}

void CQtDialogWindow::SelectionChanged(int id)
{
    if (Exists()) {
        Tell(&IDialogEvents::OnSelectionChange, id);
    }
}

void CQtDialogWindow::Painted()
{
    if (Exists()) {
        Tell(&IDialogEvents::OnPaint);
    }
}

// With its owner. The run ends once the window is gone.
void CQtDialogWindow::FrameGoes()
{
    if (Exists()) {
        Tell(&IDialogEvents::OnDestroy);
    }
    if (loop_ != nullptr) {
        loop_->quit();
    }
}

// F6 goes round the dialogs that stand side by side.
void CQtDialogWindow::GoToNextWindow()
{
    for (QWidget* window : QApplication::topLevelWidgets()) {
        const bool related = window == owner_ || window->parentWidget() == frame_;
        if (related && window->isVisible() && dynamic_cast<CDialogFrame*>(window) != nullptr) {
            window->activateWindow();
            return;
        }
    }
}

} // namespace partkeep
