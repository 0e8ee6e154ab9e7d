#include "desktop/control_widgets.h"

#include "desktop/dialog_request.h"

#include <QCheckBox>
#include <QDropEvent>
#include <QHeaderView>
#include <QLabel>
#include <QMimeData>
#include <QPushButton>
#include <QSignalBlocker>
#include <QValidator>
#include <QWheelEvent>

#include <algorithm>
#include <iterator>

namespace partkeep {

namespace {

constexpr int no_limit = 32767;
constexpr int row_height = 20; // of lists, to be hit by a finger's tip

// What is pasted ends with its line, as in the system's own field of one line: the toolkit would keep the line end,
// unseen, in what the user takes for a number.
class COneLine final : public QValidator {
public:
    using QValidator::QValidator;

    State validate(QString& text, int& caret) const override
    {
        constexpr QChar line_ends[]{u'\n', u'\r', QChar::LineSeparator, QChar::ParagraphSeparator};
        const auto* const end =
            std::find_first_of(text.cbegin(), text.cend(), std::begin(line_ends), std::end(line_ends));
        const auto first = static_cast<int>(end - text.cbegin());
        if (first < text.size()) { // the caret is behind what was pasted
            text.remove(first, caret > first ? caret - first : static_cast<int>(text.size()));
            caret = first;
        }
        return Acceptable;
    }
};

} // namespace

CDialogEdit::CDialogEdit(QWidget* parent) : QLineEdit(parent), typed_limit_(no_limit)
{
    setValidator(new COneLine(this));
    connect(this, &QLineEdit::textChanged, this, [this] { FollowLimit(); });
}

void CDialogEdit::SetTypedLimit(int characters)
{
    typed_limit_ = characters;
    FollowLimit();
}

void CDialogEdit::SetProgramText(const QString& new_text)
{
    if (new_text.size() > maxLength()) {
        const QSignalBlocker quiet(this);
        setMaxLength(static_cast<int>(new_text.size()));
    }
    setText(new_text);
}

// The field's own limit cuts program text too, so it gives way to a longer one and comes back when that shrinks.
// Setting it moves the caret, hence the care.
void CDialogEdit::FollowLimit()
{
    const int limit = std::max(typed_limit_, static_cast<int>(text().size()));
    if (limit == maxLength()) {
        return;
    }
    const QSignalBlocker quiet(this);
    const int caret = cursorPosition();
    setMaxLength(limit);
    setCursorPosition(caret);
}

void CDialogEdit::ClearSelection()
{
    if (hasSelectedText()) {
        del();
    }
}

void CDialogEdit::MakeReadOnly()
{
    setReadOnly(true);
    setValidator(nullptr); // what the program puts in may have lines
    QPalette greyed = palette();
    greyed.setColor(QPalette::Base, palette().color(QPalette::Window));
    setPalette(greyed);
}

void CDialogEdit::focusOutEvent(QFocusEvent* event)
{
    const int start = selectionStart();
    const int length = selectionLength();
    QLineEdit::focusOutEvent(event);
    if (start >= 0 && !hasSelectedText()) {
        setSelection(start, length);
    }
}

void CDropDownList::AcceptOpenList()
{
    const int row = view()->currentIndex().row();
    hidePopup();
    if (row >= 0 && row != currentIndex()) {
        setCurrentIndex(row);
        Q_EMIT activated(row);
    }
}

void CDropDownList::wheelEvent(QWheelEvent* event)
{
    if (hasFocus()) {
        QComboBox::wheelEvent(event);
    } else {
        event->ignore();
    }
}

CReportList::CReportList(QWidget* parent) : QTreeWidget(parent)
{
    setColumnCount(0);
    setRootIsDecorated(false);
    setUniformRowHeights(true);
    setSelectionMode(ExtendedSelection);
    setEditTriggers(NoEditTriggers);
    setAcceptDrops(true);
    header()->setSectionsMovable(false);
    header()->setStretchLastSection(false);
}

void CReportList::AddColumn(int column, const QString& text, int width)
{
    setColumnCount(std::max(columnCount(), column + 1));
    headerItem()->setText(column, text);
    header()->resizeSection(column, width);
}

void CReportList::AddRow(int row, const QString& text)
{
    auto* item = new QTreeWidgetItem;
    item->setSizeHint(0, {0, row_height});
    insertTopLevelItem(std::clamp(row, 0, topLevelItemCount()), item);
    SetCell(indexOfTopLevelItem(item), 0, text);
}

void CReportList::SetCell(int row, int column, const QString& text)
{
    if (QTreeWidgetItem* item = topLevelItem(row)) {
        item->setText(column, text);
        item->setToolTip(column, text); // columns are narrow, paths are long
    }
}

QString CReportList::Cell(int row, int column) const
{
    const QTreeWidgetItem* item = topLevelItem(row);
    return item == nullptr ? QString() : item->text(column);
}

void CReportList::RemoveRow(int row)
{
    delete topLevelItem(row);
}

int CReportList::SelectedCount() const
{
    return static_cast<int>(selectionModel()->selectedRows().size());
}

int CReportList::NextSelected(int after) const
{
    for (int row = std::max(after + 1, 0); row < topLevelItemCount(); ++row) {
        if (topLevelItem(row)->isSelected()) {
            return row;
        }
    }
    return -1;
}

void CReportList::FocusRow(int row)
{
    selectionModel()->setCurrentIndex(model()->index(row, 0), QItemSelectionModel::NoUpdate);
    scrollTo(currentIndex());
}

void CReportList::TakeDrag(QDropEvent& event) const
{
    const auto* const source = qobject_cast<const QWidget*>(event.source());
    const bool ours = source != nullptr && source->window() == window()->parentWidget();
    const bool parts = event.mimeData()->hasFormat(QLatin1String(dragged_parts_type));
    event.setDropAction(Qt::CopyAction);
    event.setAccepted(ours && parts);
}

void CReportList::dragEnterEvent(QDragEnterEvent* event)
{
    TakeDrag(*event);
}

void CReportList::dragMoveEvent(QDragMoveEvent* event)
{
    TakeDrag(*event);
}

void CReportList::dropEvent(QDropEvent* event)
{
    TakeDrag(*event);
}

QWidget* MakeControlWidget(const TemplateControl& control, QWidget* parent)
{
    switch (control.kind) {
    case ControlKind::PushButton:
    case ControlKind::DefaultPushButton: {
        auto* button = new QPushButton(parent);
        button->setAutoDefault(false); // the dialog decides what Enter presses
        button->setDefault(control.kind == ControlKind::DefaultPushButton);
        return button;
    }
    case ControlKind::CheckBox:
        return new QCheckBox(parent);
    case ControlKind::Edit:
        return new CDialogEdit(parent);
    case ControlKind::ReadOnlyEdit: {
        auto* edit = new CDialogEdit(parent);
        edit->MakeReadOnly();
        return edit;
    }
    case ControlKind::DropDownList:
        return new CDropDownList(parent);
    case ControlKind::ReportList:
        return new CReportList(parent);
    case ControlKind::Label:
    case ControlKind::HostedControl:
        break;
    }
    return new QLabel(parent);
}

} // namespace partkeep
