// How the pane is put together, and its focus order.
#include "desktop/pane/browser_pane.h"

#include "desktop/pane/column_menu.h"
#include "desktop/pane/pane_icons.h"
#include "desktop/pane/pane_widgets.h"
#include "desktop/pane/part_row_delegate.h"
#include "desktop/pane/search_line.h"
#include "desktop/pane/server_tree_model.h"
#include "desktop/pane/status_line.h"

#include <QEvent>
#include <QFrame>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QMenu>
#include <QSplitter>

#include <array>

namespace partkeep {

namespace {

constexpr int first_tree_width = 190;
constexpr int stay_ms = 3000; // who stays in a folder so long has work there
constexpr std::array<int, part_columns> first_widths{150, 112, 92, 100, 110};

} // namespace

void CBrowserPane::MakeWidgets()
{
    setAccessibleName(Text(PaneText::Browser));
    setLocale(LocaleOf(settings_.language));
    splitter_ = new QSplitter(this);
    splitter_->setChildrenCollapsible(false);
    splitter_->addWidget(MakeLeftSide());
    splitter_->addWidget(MakeRightSide());
    splitter_->setStretchFactor(1, 1);
    splitter_->setSizes({first_tree_width, 4 * first_tree_width});
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(splitter_);
    setFocusPolicy(Qt::StrongFocus);
    setFocusProxy(list_);
    DrawIcons();
    UpdateTexts();
}

QWidget* CBrowserPane::MakeLeftSide()
{
    MakeTree();
    places_menu_ = new QMenu(this);
    places_button_ = MakePaneButton(Text(PaneText::Places), nullptr);
    places_button_->setMenu(places_menu_);
    places_button_->setPopupMode(QToolButton::InstantPopup);
    places_button_->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    auto* side = new QWidget;
    auto* layout = new QVBoxLayout(side);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(4);
    layout->addWidget(places_button_);
    layout->addWidget(tree_);
    return side;
}

QWidget* CBrowserPane::MakeRightSide()
{
    MakeList();
    search_line_ = new CSearchLine(*session_, settings_.language, [this](SearchScope scope) { SearchIn(scope); });
    search_ = &search_line_->Box();
    columns_button_ = MakePaneButton(Text(PaneText::Columns), nullptr);
    export_button_ = MakePaneButton(Text(PaneText::Export), nullptr);
    export_button_->setToolTip(Text(PaneText::ExportTitle));
    status_ = new CStatusLine;
    search_line_->AddButton(columns_button_);
    search_line_->AddButton(export_button_);
    auto* side = new QWidget;
    auto* layout = new QVBoxLayout(side);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(4);
    layout->addWidget(search_line_);
    layout->addWidget(MakeProblemLine());
    layout->addWidget(list_, 1);
    layout->addWidget(status_);
    return side;
}

QWidget* CBrowserPane::MakeProblemLine()
{
    problem_line_ = new QFrame;
    problem_line_->setFrameShape(QFrame::StyledPanel);
    problem_line_->setAutoFillBackground(true);
    problem_icon_ = new QLabel;
    problem_text_ = new QLabel;
    problem_text_->setTextFormat(Qt::PlainText);
    problem_text_->setWordWrap(true);
    retry_button_ = MakePaneButton(Text(PaneText::Retry), nullptr);
    auto* layout = new QHBoxLayout(problem_line_);
    layout->setContentsMargins(8, 2, 4, 2);
    layout->addWidget(problem_icon_);
    layout->addWidget(problem_text_, 1);
    layout->addWidget(retry_button_);
    problem_line_->hide();
    return problem_line_;
}

void CBrowserPane::MakeTree()
{
    tree_ = new CServerTree(*this, nullptr);
    tree_->setAccessibleName(Text(PaneText::Servers));
    tree_->setModel(servers_.get());
    tree_->setIconSize({20, 20});
    tree_->setMinimumWidth(110);
}

void CBrowserPane::MakeList()
{
    list_ = new CPartListView(*this, nullptr);
    list_->setAccessibleName(Text(PaneText::Parts));
    list_->setModel(model_.get());
    list_->setMinimumWidth(200);
    delegate_ = new CPartRowDelegate(list_);
    list_->setItemDelegate(delegate_);
    for (int column = 0; column < part_columns; ++column) {
        list_->Header().resizeSection(column, first_widths[static_cast<std::size_t>(column)]);
    }
    list_->Header().setSortIndicator(0, Qt::AscendingOrder);
    model_->SetPictures([this](const PartRow& row) {
        pictures_.SetSize(delegate_->PictureSide(), devicePixelRatioF());
        return delegate_->PictureSide() > 0 ? pictures_.Picture(row) : QPixmap();
    });
    model_->SetFailureSink([this] {
        QMetaObject::invokeMethod(
            this, [this] { UpdateTexts(); }, Qt::QueuedConnection);
    });
    ShowPictures(PictureSize::Small);
}

void CBrowserPane::Connect()
{
    connect(search_, &QLineEdit::textChanged, this, [this] {
        if (follower_->State() != PaneState::Showing) {
            OnSearchTyped();
        }
    });
    search_->SetListKeys([this](QKeyEvent* event) { list_->TakeKey(event); });
    connect(list_->selectionModel(), &QItemSelectionModel::selectionChanged, this,
            [this] { follower_->SelectionChanged(); });
    connect(&list_->Header(), &QHeaderView::sortIndicatorChanged, this,
            [this](int column, Qt::SortOrder order) { OnSort(column, order); });
    connect(places_menu_, &QMenu::aboutToShow, this, [this] { FillPlacesMenu(); });
    connect(columns_button_, &QToolButton::clicked, this, [this] {
        ColumnMenu(list_->Header().sortIndicatorSection(),
                   columns_button_->mapToGlobal(QPoint(0, columns_button_->height())));
    });
    connect(export_button_, &QToolButton::clicked, this, [this] { AskExportFile(false); });
    connect(retry_button_, &QToolButton::clicked, this, [this] { Refresh(); });
    stay_.setSingleShot(true);
    stay_.setInterval(stay_ms);
    connect(&stay_, &QTimer::timeout, this, [this] { RememberPlace(); });
}

void CBrowserPane::DrawIcons()
{
    const QPalette& colours = palette();
    StyleMenu(*places_menu_, Text(PaneText::Places));
    servers_->SetIcons(DrawPaneIcon(PaneIcon::Server, colours), DrawPaneIcon(PaneIcon::ServerAway, colours),
                       DrawPaneIcon(PaneIcon::Folder, colours));
    places_button_->setIcon(DrawPaneIcon(PaneIcon::Star, colours));
    columns_button_->setIcon(DrawPaneIcon(PaneIcon::Columns, colours));
    export_button_->setIcon(DrawPaneIcon(PaneIcon::Export, colours));
    search_line_->DrawIcons();
    problem_icon_->setPixmap(DrawPaneIcon(PaneIcon::Warning, colours).pixmap(20, 20));
    QPalette warning = colours;
    warning.setColor(QPalette::Window, IsDark(colours) ? QColor(92, 66, 10) : QColor(255, 240, 200));
    warning.setColor(QPalette::WindowText, IsDark(colours) ? QColor(255, 240, 210) : QColor(50, 35, 0));
    problem_line_->setPalette(warning);
}

void CBrowserPane::changeEvent(QEvent* event)
{
    QWidget::changeEvent(event);
    if (event->type() == QEvent::PaletteChange && problem_line_ != nullptr) {
        DrawIcons();
    }
}

// Focus.

QList<QWidget*> CBrowserPane::FocusStops() const
{
    const QList<QWidget*> all = QList<QWidget*>{places_button_, tree_} + search_line_->FocusStops() +
                                QList<QWidget*>{columns_button_, export_button_, retry_button_, list_};
    QList<QWidget*> stops;
    for (QWidget* stop : all) {
        if (stop->isVisibleTo(this) && stop->isEnabledTo(this)) {
            stops += stop;
        }
    }
    return stops;
}

std::int16_t CBrowserPane::MoveFocus(std::int16_t code)
{
    if (code != focus_forward && code != focus_backward) {
        return 0;
    }
    const QList<QWidget*> stops = FocusStops();
    const bool forward = code == focus_forward;
    const QWidget* focused = window()->focusWidget();
    const bool inside = focused != nullptr && isAncestorOf(focused);
    const qsizetype at = inside ? stops.indexOf(focused) : (forward ? -1 : stops.size());
    const qsizetype to = forward ? at + 1 : at - 1;
    if (to < 0 || to >= stops.size()) {
        return 0;
    }
    stops[to]->setFocus(forward ? Qt::TabFocusReason : Qt::BacktabFocusReason);
    return 1;
}

} // namespace partkeep
