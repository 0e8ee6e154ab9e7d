#include "desktop/pane/pane_widgets.h"

#include "desktop/finger.h"
#include "desktop/qt_keys.h"

#include <QApplication>
#include <QHeaderView>
#include <QKeyEvent>
#include <QStyledItemDelegate>

#include <utility>

namespace partkeep {

namespace {

constexpr int tree_row = 30;
constexpr int tree_step = 24; // in from a branch to what is in it: the side of the mark that opens it

// A style sheet would do it too, and cut the tree off from the dialog's colours.
class CTallRows : public QStyledItemDelegate {
public:
    using QStyledItemDelegate::QStyledItemDelegate;

    [[nodiscard]] QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override
    {
        return QStyledItemDelegate::sizeHint(option, index).expandedTo({0, FingerSide(tree_row)});
    }
};

} // namespace

QToolButton* MakePaneButton(const QString& text, QWidget* parent)
{
    auto* button = new QToolButton(parent);
    button->setText(text);
    button->setAccessibleName(text);
    button->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    button->setFocusPolicy(Qt::StrongFocus);
    button->setMinimumHeight(FingerSide(button_side));
    return button;
}

CServerTree::CServerTree(IPartListEvents& events, QWidget* parent) : QTreeView(parent), events_(events)
{
    setHeaderHidden(true);
    setUniformRowHeights(true);
    setEditTriggers(NoEditTriggers);
    setSelectionMode(SingleSelection);
    setTabKeyNavigation(false);
    setVerticalScrollMode(ScrollPerPixel);
    setTextElideMode(Qt::ElideNone);
    setItemDelegate(new CTallRows(this));
    header()->setStretchLastSection(false);
    header()->setSectionResizeMode(QHeaderView::ResizeToContents);
    setIndentation(tree_step);
    ScrollByFinger(*this);
}

void CServerTree::mousePressEvent(QMouseEvent* event)
{
    if (IsOfFinger(*event)) {
        finger_ = event->position().toPoint();
        return;
    }
    events_.Act(event->button() == Qt::LeftButton, [&] { QTreeView::mousePressEvent(event); });
}

void CServerTree::mouseMoveEvent(QMouseEvent* event)
{
    if (!IsOfFinger(*event)) {
        QTreeView::mouseMoveEvent(event);
    } else if (finger_ &&
               (event->position().toPoint() - *finger_).manhattanLength() >= QApplication::startDragDistance()) {
        finger_.reset();
    }
}

// A finger that is lifted where it came down has tapped.
void CServerTree::mouseReleaseEvent(QMouseEvent* event)
{
    if (!IsOfFinger(*event)) {
        QTreeView::mouseReleaseEvent(event);
    } else if (std::exchange(finger_, std::nullopt)) {
        QMouseEvent press(QEvent::MouseButtonPress, event->position(), event->globalPosition(), Qt::LeftButton,
                          Qt::LeftButton, event->modifiers());
        events_.Act(true, [&] {
            QTreeView::mousePressEvent(&press);
            QTreeView::mouseReleaseEvent(event);
        });
    }
}

void CServerTree::mouseDoubleClickEvent(QMouseEvent* event)
{
    events_.Act(event->button() == Qt::LeftButton, [&] { QTreeView::mouseDoubleClickEvent(event); });
}

void CServerTree::keyPressEvent(QKeyEvent* event)
{
    if (IsDialogKey(*event)) {
        event->ignore();
        return;
    }
    const bool plain = (event->modifiers() & ~(Qt::ShiftModifier | Qt::KeypadModifier)) == Qt::NoModifier;
    const QString text = event->text();
    if (plain && !text.isEmpty() && text.front().isLetterOrNumber()) {
        events_.TextTyped(text);
        return;
    }
    events_.Act(false, [&] { QTreeView::keyPressEvent(event); });
}

void CServerTree::resizeEvent(QResizeEvent* event)
{
    QTreeView::resizeEvent(event);
    header()->setMinimumSectionSize(viewport()->width()); // the whole row shows the current entry
}

void CServerTree::paintEvent(QPaintEvent* event)
{
    QTreeView::paintEvent(event);
    PaintFocus(*this);
}

CSearchBox::CSearchBox(QWidget* parent) : QLineEdit(parent), clear_(new QToolButton(this))
{
    clear_->setAutoRaise(true);
    clear_->setCursor(Qt::ArrowCursor);
    clear_->setFocusPolicy(Qt::StrongFocus);
    clear_->hide();
    connect(this, &QLineEdit::textChanged, this, [this](const QString& text) {
        if (text.isEmpty() && clear_->hasFocus()) {
            setFocus();
        }
        clear_->setVisible(!text.isEmpty());
    });
    connect(clear_, &QToolButton::clicked, this, [this] {
        clear();
        setFocus();
    });
}

// A line edit claims Ctrl+A before it could become anybody's shortcut.
bool CSearchBox::event(QEvent* event)
{
    if (event->type() == QEvent::ShortcutOverride && IsDialogKey(static_cast<QKeyEvent&>(*event))) {
        event->ignore();
        return false;
    }
    return QLineEdit::event(event);
}

void CSearchBox::keyPressEvent(QKeyEvent* event)
{
    if (IsDialogKey(*event)) {
        event->ignore();
        return;
    }
    switch (event->key()) {
    case Qt::Key_Up:
    case Qt::Key_Down:
    case Qt::Key_PageUp:
    case Qt::Key_PageDown:
        list_keys_(event);
        return;
    default:
        QLineEdit::keyPressEvent(event);
    }
}

void CSearchBox::resizeEvent(QResizeEvent* event)
{
    QLineEdit::resizeEvent(event);
    const int side = height();
    clear_->setGeometry(width() - side, 0, side, side);
    setTextMargins(2, 0, side, 0);
}

} // namespace partkeep
