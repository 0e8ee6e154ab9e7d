// How the pane is put together, its menus, its focus order and what it remembers of its looks.
#include "desktop/pane/browser_pane.h"

#include "desktop/pane/busy_pointer.h"
#include "desktop/pane/column_menu.h"
#include "desktop/pane/list_export.h"
#include "desktop/pane/pane_icons.h"
#include "desktop/pane/pane_widgets.h"
#include "desktop/pane/part_row_delegate.h"
#include "desktop/pane/server_tree_model.h"

#include <QEvent>
#include <QFileDialog>
#include <QFrame>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QMenu>
#include <QMessageBox>
#include <QSplitter>

#include <algorithm>
#include <array>
#include <limits>

namespace partkeep {

namespace {

constexpr int button_side = 32; // large enough for a finger
constexpr int row_with_picture = 38;
constexpr int row_without_picture = 32;
constexpr int first_tree_width = 190;
constexpr int largest_column = 4000;
constexpr std::array<int, part_columns> first_widths{150, 112, 92, 100, 110};

std::int16_t ToInt16(int value)
{
    return static_cast<std::int16_t>(std::clamp<int>(value, 0, std::numeric_limits<std::int16_t>::max()));
}

} // namespace

void CBrowserPane::MakeWidgets()
{
    setAccessibleName(Text(PaneText::Browser));
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

QToolButton* CBrowserPane::MakeButton(PaneText text)
{
    auto* button = new QToolButton;
    button->setText(Text(text));
    button->setAccessibleName(Text(text));
    button->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    button->setFocusPolicy(Qt::StrongFocus);
    button->setMinimumHeight(button_side);
    return button;
}

QWidget* CBrowserPane::MakeLeftSide()
{
    MakeTree();
    places_menu_ = new QMenu(this);
    places_button_ = MakeButton(PaneText::Places);
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
    search_ = new CSearchBox(nullptr);
    search_->setPlaceholderText(Text(PaneText::SearchHint));
    search_->setAccessibleName(Text(PaneText::Search));
    search_->setMinimumHeight(button_side);
    search_->ClearButton().setAccessibleName(Text(PaneText::ClearSearch));
    search_->ClearButton().setToolTip(Text(PaneText::ClearSearch));
    columns_button_ = MakeButton(PaneText::Columns);
    export_button_ = MakeButton(PaneText::Export);
    export_button_->setToolTip(Text(PaneText::ExportTitle));
    status_ = new QLabel;
    status_->setTextFormat(Qt::PlainText);
    status_->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
    auto* line = new QHBoxLayout;
    line->setSpacing(4);
    line->addWidget(search_, 1);
    line->addWidget(columns_button_);
    line->addWidget(export_button_);
    auto* side = new QWidget;
    auto* layout = new QVBoxLayout(side);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(4);
    layout->addLayout(line);
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
    retry_button_ = MakeButton(PaneText::Retry);
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
        pictures_.SetScale(devicePixelRatioF());
        return delegate_->PicturesShown() ? pictures_.Picture(row) : QPixmap();
    });
    model_->SetFailureSink([this] {
        QMetaObject::invokeMethod(
            this, [this] { UpdateTexts(); }, Qt::QueuedConnection);
    });
    ShowPictures(true);
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
    connect(export_button_, &QToolButton::clicked, this, [this] { AskExportFile(); });
    connect(retry_button_, &QToolButton::clicked, this, [this] { Refresh(); });
}

void CBrowserPane::DrawIcons()
{
    const QPalette& colours = palette();
    StyleMenu(*places_menu_);
    servers_->SetIcons(DrawPaneIcon(PaneIcon::Server, colours), DrawPaneIcon(PaneIcon::ServerAway, colours),
                       DrawPaneIcon(PaneIcon::Folder, colours));
    places_button_->setIcon(DrawPaneIcon(PaneIcon::Star, colours));
    columns_button_->setIcon(DrawPaneIcon(PaneIcon::Columns, colours));
    export_button_->setIcon(DrawPaneIcon(PaneIcon::Export, colours));
    search_->ClearButton().setIcon(DrawPaneIcon(PaneIcon::Clear, colours));
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

// Menus.

void CBrowserPane::ColumnMenu(int column, const QPoint& place)
{
    auto* menu = new QMenu(this);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    StyleMenu(*menu);
    FillColumnMenu(*menu, {list_->Header(), column, settings_.language, delegate_->PicturesShown(),
                           [this](int by, Qt::SortOrder order) { list_->Header().setSortIndicator(by, order); },
                           [this](bool shown) { ShowPictures(shown); }});
    menu->popup(place);
}

void CBrowserPane::FillPlacesMenu()
{
    places_menu_->clear();
    const PanePlace here = CurrentPlace();
    QAction* toggle =
        places_menu_->addAction(Text(places_.IsFavourite(here) ? PaneText::RemoveFavourite : PaneText::AddFavourite),
                                this, [this, here] { places_.ToggleFavourite(here); });
    toggle->setShortcut(Qt::CTRL | Qt::Key_D);
    toggle->setEnabled(session_->CurrentFolder().id != 0);
    const auto add_places = [this](PaneText title, const QList<PanePlace>& places) {
        AddMenuTitle(*places_menu_, Text(title));
        for (const PanePlace& place : places) {
            QString name = place.server + (place.folder.isEmpty() ? QString() : u'\\' + place.folder);
            places_menu_->addAction(name.replace(u'&', QStringLiteral("&&")), this, [this, place] { GoTo(place); });
        }
    };
    add_places(PaneText::Favourites, places_.Favourites());
    if (places_.Favourites().isEmpty()) {
        places_menu_->addAction(Text(PaneText::NoPlaces))->setEnabled(false);
    }
    if (!places_.Recent().isEmpty()) {
        add_places(PaneText::Recent, places_.Recent());
    }
}

void CBrowserPane::ShowPictures(bool shown)
{
    delegate_->ShowPictures(shown);
    list_->SetRowHeight(std::max(shown ? row_with_picture : row_without_picture, fontMetrics().height() + 12));
}

// Export.

QList<int> CBrowserPane::ShownColumns() const
{
    QList<int> columns;
    for (int place = 0; place < part_columns; ++place) {
        const int column = list_->Header().logicalIndex(place);
        if (!list_->Header().isSectionHidden(column)) {
            columns += column;
        }
    }
    return columns;
}

bool CBrowserPane::ExportTo(const QString& file)
{
    const CBusyPointer busy;
    model_->Finish();
    return !model_->Failed() && ExportList(*model_, ShownColumns(), file);
}

void CBrowserPane::AskExportFile()
{
    auto* dialog = new QFileDialog(this, Text(PaneText::ExportTitle));
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setAcceptMode(QFileDialog::AcceptSave);
    dialog->setNameFilter(Text(PaneText::ExportFilter));
    dialog->setDefaultSuffix(QStringLiteral("csv"));
    connect(dialog, &QFileDialog::fileSelected, this, [this](const QString& file) {
        if (ExportTo(file)) {
            return;
        }
        auto* message = new QMessageBox(QMessageBox::Warning, Text(PaneText::ExportTitle),
                                        Text(PaneText::ExportFailed).arg(file), QMessageBox::Ok, this);
        message->setAttribute(Qt::WA_DeleteOnClose);
        message->open();
    });
    dialog->open();
}

// Focus.

QList<QWidget*> CBrowserPane::FocusStops() const
{
    const QList<QWidget*> all{places_button_,  tree_,          search_,       &search_->ClearButton(),
                              columns_button_, export_button_, retry_button_, list_};
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

// View state.

void CBrowserPane::ApplyViewState(const ViewState& state)
{
    QHeaderView& header = list_->Header();
    if (state.tree_width > 0) {
        splitter_->setSizes({state.tree_width, std::max(1, splitter_->width() - state.tree_width)});
    }
    int place = 0;
    for (const ViewColumn& column : state.columns) {
        if (column.id < 0 || column.id >= part_columns) {
            continue;
        }
        header.moveSection(header.visualIndex(column.id), place++);
        if (column.width > 0) {
            header.resizeSection(column.id, std::clamp<int>(column.width, smallest_column, largest_column));
        }
        header.setSectionHidden(column.id, !column.visible);
    }
    if (header.hiddenSectionCount() == header.count()) {
        header.showSection(static_cast<int>(PartColumn::Name));
    }
    ShowPictures(state.thumbnails);
}

void CBrowserPane::CaptureViewState(ViewState& state)
{
    const QHeaderView& header = list_->Header();
    state.tree_width = ToInt16(splitter_->sizes().front());
    state.thumbnails = delegate_->PicturesShown();
    for (int place = 0; place < part_columns; ++place) {
        const int column = header.logicalIndex(place);
        const bool hidden = header.isSectionHidden(column);
        state.columns[static_cast<std::size_t>(place)] = {ToInt16(column),
                                                          ToInt16(hidden ? 0 : header.sectionSize(column)), !hidden};
    }
}

} // namespace partkeep
