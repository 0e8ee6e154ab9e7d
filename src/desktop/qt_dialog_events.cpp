#include "desktop/qt_dialog_events.h"

#include "desktop/control_widgets.h"
#include "desktop/qt_keys.h"
#include "resources/resource_ids.h"

#include <QAbstractButton>
#include <QApplication>
#include <QComboBox>
#include <QKeyEvent>
#include <QPushButton>

namespace partkeep {

void CQtDialogEvents::Connect(int id, QWidget* widget)
{
    if (auto* button = qobject_cast<QAbstractButton*>(widget)) {
        QObject::connect(button, &QAbstractButton::clicked, frame_, [this, id] { Command(id); });
    }
    if (auto* edit = qobject_cast<QLineEdit*>(widget)) {
        QObject::connect(edit, &QLineEdit::textChanged, frame_, [this, id] { Tell(&IDialogEvents::OnTextChange, id); });
    }
    if (auto* list = qobject_cast<QComboBox*>(widget)) {
        QObject::connect(list, &QComboBox::activated, frame_,
                         [this, id] { Tell(&IDialogEvents::OnSelectionChange, id); });
    }
}

bool CQtDialogEvents::KeyDown(const QKeyEvent& event)
{
    if (event.key() == Qt::Key_F6) {
        GoToNextWindow();
        return true;
    }
    if (!IsBegun()) {
        return false;
    }
    const KeyPress press = ToKeyPress(event);
    if (press.key == 0 && WindowKeys() == nullptr) {
        return false;
    }
    const bool taken = Tell(&IDialogEvents::PreTranslateMessage, press); // at a moment for none, it is used up
    return taken || (IsBegun() && (DefaultKey(press) || TakeWindowKey(event)));
}

void CQtDialogEvents::SetWindowKeys(IWindowKeys* keys, QWidget* widget)
{
    keys_ = keys;
    keys_widget_ = widget;
}

// A box that opens its list by a key needs that key itself.
bool CQtDialogEvents::TakeWindowKey(const QKeyEvent& event)
{
    const bool opens_list = event.key() == Qt::Key_Up || event.key() == Qt::Key_Down;
    const bool in_box = qobject_cast<QComboBox*>(frame_->focusWidget()) != nullptr;
    return WindowKeys() != nullptr && !(in_box && opens_list) && WindowKeys()->TakeWindowKey(event);
}

void CQtDialogEvents::Requested(DialogRequest request)
{
    Command(request == DialogRequest::Add ? RES_ADD : RES_CHOOSE_PART);
}

// What the window system does with the keys that the dialog's logic leaves to it.
bool CQtDialogEvents::DefaultKey(const KeyPress& press)
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
void CQtDialogEvents::PressDefault()
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

// F6 goes round the dialogs that stand side by side.
void CQtDialogEvents::GoToNextWindow()
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
