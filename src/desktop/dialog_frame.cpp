#include "desktop/dialog_frame.h"

#include "desktop/control_widgets.h"
#include "desktop/qt_input.h"
#include "desktop/qt_keys.h"
#include "desktop/readable_colours.h"

#include <QApplication>
#include <QCloseEvent>
#include <QKeyEvent>

#include <utility>

namespace partkeep {

namespace {

// An open list keeps the arrow keys and Escape. Enter and Tab take what it shows and then mean what they always do.
bool EndsOpenList(const KeyPress& press)
{
    return press.key == key_return || press.key == key_tab;
}

} // namespace

CDialogFrame::CDialogFrame(IDialogFrameEvents& events, QWidget* owner)
    : QDialog(owner, Qt::Dialog | Qt::CustomizeWindowHint | Qt::WindowTitleHint | Qt::WindowSystemMenuHint |
                         Qt::WindowCloseButtonHint | Qt::MSWindowsFixedSizeDialogHint),
      events_(events)
{
    // Of the application: a filter on the widgets themselves would miss those that hosted controls make later.
    qApp->installEventFilter(this);
    setPalette(ReadableColours(QApplication::palette()));
}

CDialogFrame::~CDialogFrame()
{
    events_.FrameGoes();
}

// Windows do not inherit: menus, open lists, messages and dialogs over this one take its colours when they come.
void CDialogFrame::Colour(QWidget& widget) const
{
    if (!widget.isWindow() || widget.windowType() == Qt::ToolTip) {
        return;
    }
    for (const QWidget* around = widget.parentWidget(); around != nullptr; around = around->parentWidget()) {
        if (around == this) {
            widget.setPalette(palette());
        }
    }
}

bool CDialogFrame::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() == QEvent::Polish && watched->isWidgetType()) {
        Colour(static_cast<QWidget&>(*watched));
    }
    if (!IsInput(event->type()) || !watched->isWidgetType()) {
        return false;
    }
    auto& widget = static_cast<QWidget&>(*watched);
    CDropDownList* open_list = OpenListAround(widget);
    if (widget.window() != this && open_list == nullptr) {
        return false;
    }
    if (!input_enabled_) {
        event->ignore();
        return true;
    }
    if (event->type() == QEvent::ShortcutOverride) {
        // Accepting it makes a key press of what would have become a shortcut, or a choice in an open list.
        const auto& key = static_cast<QKeyEvent&>(*event);
        const bool taken = open_list == nullptr ? IsDialogKey(key) : EndsOpenList(ToKeyPress(key));
        event->setAccepted(taken);
        return taken;
    }
    return event->type() == QEvent::KeyPress && FilterKey(widget, static_cast<QKeyEvent&>(*event));
}

bool CDialogFrame::FilterKey(QWidget& widget, QKeyEvent& event)
{
    if (!IsFirstReceiver(widget, event)) {
        return false;
    }
    if (CDropDownList* open_list = OpenListAround(widget)) {
        if (!EndsOpenList(ToKeyPress(event))) {
            return false;
        }
        open_list->AcceptOpenList();
    }
    return events_.KeyDown(event);
}

// A key that a widget ignores goes to its parents, one after the other. They must not count as new keys.
bool CDialogFrame::IsFirstReceiver(const QWidget& widget, const QKeyEvent& event)
{
    const bool passed_on = last_key_ == &event && last_receiver_ != nullptr && last_receiver_ != &widget &&
                           widget.isAncestorOf(last_receiver_) && &widget != focusWidget();
    last_key_ = &event;
    last_receiver_ = &widget;
    return !passed_on;
}

// The list of a drop-down control is a window of its own.
CDropDownList* CDialogFrame::OpenListAround(const QWidget& widget) const
{
    QWidget* popup = widget.window();
    if (popup == this || popup->windowType() != Qt::Popup || popup->parentWidget() == nullptr) {
        return nullptr;
    }
    auto* list = dynamic_cast<CDropDownList*>(popup->parentWidget());
    return list != nullptr && list->window() == this ? list : nullptr;
}

bool CDialogFrame::event(QEvent* event)
{
    if (event->type() != CDialogRequestEvent::EventType()) {
        return QDialog::event(event);
    }
    if (input_enabled_) {
        events_.Requested(static_cast<CDialogRequestEvent*>(event)->Request());
    }
    return true;
}

void CDialogFrame::changeEvent(QEvent* event)
{
    QDialog::changeEvent(event);
    if (event->type() == QEvent::PaletteChange) {
        setPalette(ReadableColours(QApplication::palette()));
    }
}

void CDialogFrame::closeEvent(QCloseEvent* event)
{
    event->ignore();
    events_.CloseBox();
}

// The base class would press buttons and close the window.
void CDialogFrame::keyPressEvent(QKeyEvent* event)
{
    event->ignore();
}

// A child that repaints makes the frame paint behind it; that is no repaint of the dialog itself.
void CDialogFrame::paintEvent(QPaintEvent* event)
{
    QDialog::paintEvent(event);
    const bool own = !event->region().subtracted(childrenRegion()).isEmpty();
    if (own && !std::exchange(painted_, true)) {
        QMetaObject::invokeMethod(
            this, [this] { TellPainted(); }, Qt::QueuedConnection);
    }
}

void CDialogFrame::TellPainted()
{
    if (std::exchange(painted_, false)) {
        events_.Painted();
    }
}

} // namespace partkeep
