// The pane's menus and what they lead to.
#include "desktop/pane/browser_pane.h"

#include "desktop/pane/busy_pointer.h"
#include "desktop/pane/column_menu.h"
#include "desktop/pane/favourites_dialog.h"
#include "desktop/pane/key_sheet.h"
#include "desktop/pane/list_export.h"
#include "desktop/pane/row_menu.h"

#include <QClipboard>
#include <QFileDialog>
#include <QFileSystemModel>
#include <QGuiApplication>
#include <QHeaderView>
#include <QIdentityProxyModel>
#include <QMenu>
#include <QMessageBox>
#include <QStandardPaths>
#include <QToolButton>

#include <algorithm>

namespace partkeep {

namespace {

constexpr int most_copied_names = 10000;

// The toolkit's model tells sizes and dates in the language of the desktop.
class CFilesByLocale : public QIdentityProxyModel {
public:
    CFilesByLocale(const QLocale& locale, QObject* parent) : QIdentityProxyModel(parent), locale_(locale) {}

    [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override
    {
        const auto* files = qobject_cast<const QFileSystemModel*>(sourceModel());
        QVariant told = QIdentityProxyModel::data(index, role);
        if (files == nullptr || role != Qt::DisplayRole || told.toString().isEmpty()) {
            return told;
        }
        const QModelIndex file = mapToSource(index);
        switch (index.column()) {
        case size_column:
            return locale_.formattedDataSize(files->size(file));
        case date_column:
            return locale_.toString(files->lastModified(file), QLocale::ShortFormat);
        default:
            return told;
        }
    }

private:
    static constexpr int size_column = 1;
    static constexpr int date_column = 3;

    QLocale locale_;
};

QString MenuText(QString text)
{
    return text.replace(u'&', QStringLiteral("&&"));
}

} // namespace

void CBrowserPane::ColumnMenu(int column, const QPoint& place)
{
    auto* menu = new QMenu(this);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    StyleMenu(*menu, Text(PaneText::Columns));
    FillColumnMenu(*menu, {list_->Header(), column, settings_.language, pictures_size_,
                           [this](int by, Qt::SortOrder order) { list_->Header().setSortIndicator(by, order); },
                           [this](PictureSize size) { ShowPictures(size); }, [this](int by) { WidenTree(by); }});
    menu->popup(place);
}

// Nothing stands twice: what is a favourite is found among the favourites.
void CBrowserPane::FillPlacesMenu()
{
    places_menu_->clear();
    const PanePlace here = CurrentPlace();
    const PaneText toggle_text = places_.IsFavourite(here) ? PaneText::RemoveFavourite : PaneText::AddFavourite;
    QAction* toggle = places_menu_->addAction(Text(toggle_text), this, [this] { ToggleFavourite(); });
    toggle->setShortcut(Qt::CTRL | Qt::Key_D);
    toggle->setEnabled(session_->CurrentFolder().id != 0);
    const auto add = [this](const QString& name, const PanePlace& place) {
        QAction* action = places_menu_->addAction(MenuText(name), this, [this, place] { GoTo(place); });
        action->setToolTip(PlaceText(place));
    };
    AddMenuTitle(*places_menu_, Text(PaneText::Favourites));
    for (const PaneFavourite& favourite : places_.Favourites()) {
        add(NameOf(favourite), favourite.place);
    }
    if (places_.Favourites().isEmpty()) {
        places_menu_->addAction(Text(PaneText::NoPlaces))->setEnabled(false);
    } else {
        places_menu_->addAction(Text(PaneText::ArrangeFavourites) + QStringLiteral(" …"), this,
                                [this] { ArrangeFavourites(); });
    }
    QList<PanePlace> recent = places_.Recent();
    recent.removeIf([this](const PanePlace& place) { return places_.IsFavourite(place); });
    if (!recent.isEmpty()) {
        AddMenuTitle(*places_menu_, Text(PaneText::Recent));
    }
    for (const PanePlace& place : recent) {
        add(PlaceText(place), place);
    }
}

void CBrowserPane::ArrangeFavourites()
{
    (new CFavouritesDialog(places_, settings_.language, this))->open(); // deletes itself
}

void CBrowserPane::ToggleFavourite()
{
    if (session_->CurrentFolder().id == 0) {
        return;
    }
    const bool was = places_.IsFavourite(CurrentPlace());
    places_.ToggleFavourite(CurrentPlace());
    const PaneText added = places_.IsFavourite(CurrentPlace()) ? PaneText::FavouriteAdded : PaneText::FavouritesFull;
    note_ = Text(was ? PaneText::FavouriteRemoved : added).arg(PlaceText(CurrentPlace()));
    UpdateTexts();
}

void CBrowserPane::ToggleKeySheet()
{
    if (key_sheet_ != nullptr) {
        key_sheet_->close();
        return;
    }
    key_sheet_ = new CKeySheet(settings_.language, window());
    key_sheet_->show();
}

// Rows.

void CBrowserPane::RowMenu(const QPoint& place)
{
    const PartId current = model_->PartAt(list_->currentIndex().row());
    const bool results = session_->ShowsResults();
    const bool any = results ? current != 0 : !session_->Selection().empty();
    RowMenuState state{settings_.language, list_->selectionModel()->isSelected(list_->currentIndex()), {}, {}, {}, {}};
    if (current != 0 && !results) {
        state.toggle = [this, current] { ToggleSelected(current); };
    }
    if (any) {
        state.copy_names = [this] { CopyNames(); };
    }
    if (any && results) {
        state.open_folder = [this, current] { session_->Select({current}); };
    }
    if (any && !results) {
        state.export_selection = [this] { AskExportFile(true); };
    }
    auto* menu = new QMenu(this);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    StyleMenu(*menu, Text(PaneText::Parts));
    FillRowMenu(*menu, state);
    menu->popup(place);
}

// The list may have gone on while the menu was open.
void CBrowserPane::ToggleSelected(PartId part)
{
    if (const auto row = model_->RowOf(part)) {
        Act(true, [this, row = static_cast<int>(*row)] {
            list_->selectionModel()->select(model_->index(row, 0),
                                            QItemSelectionModel::Toggle | QItemSelectionModel::Rows);
        });
    }
}

// Of what is selected; among results, where nothing is, of the current row.
void CBrowserPane::CopyNames()
{
    const CBusyPointer busy;
    QItemSelection selection = list_->selectionModel()->selection();
    if (session_->ShowsResults() && list_->currentIndex().isValid()) {
        selection = QItemSelection(list_->currentIndex(), list_->currentIndex());
    }
    std::sort(selection.begin(), selection.end(), [](const auto& a, const auto& b) { return a.top() < b.top(); });
    QStringList names;
    for (const QItemSelectionRange& range : selection) {
        for (int row = range.top(); row <= range.bottom() && names.size() < most_copied_names; ++row) {
            const PartRow* part = model_->Row(row);
            names += part != nullptr ? part->name : QString();
        }
    }
    if (!names.isEmpty()) {
        QGuiApplication::clipboard()->setText(names.join(u'\n'));
    }
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

std::optional<int> CBrowserPane::ExportTo(const QString& file, const QItemSelection* selection)
{
    const CBusyPointer busy;
    model_->Finish();
    return model_->Failed() ? std::nullopt : ExportList(*model_, ShownColumns(), file, selection);
}

void CBrowserPane::AskExportFile(bool selection_alone)
{
    const PaneText title = selection_alone ? PaneText::ExportSelection : PaneText::ExportTitle;
    auto* dialog = new QFileDialog(this, Text(title));
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setOption(QFileDialog::DontUseNativeDialog); // that one has the language of the desktop
    dialog->setProxyModel(new CFilesByLocale(LocaleOf(settings_.language), dialog));
    dialog->setAcceptMode(QFileDialog::AcceptSave);
    dialog->setNameFilter(Text(PaneText::ExportFilter));
    dialog->setDefaultSuffix(QStringLiteral("csv"));
    dialog->setDirectory(QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation));
    const QString place = session_->ShowsResults() ? session_->CurrentServer() : PlaceText(CurrentPlace());
    dialog->selectFile(Text(PaneText::ExportName) + u' ' + QString(place).replace(u'\\', u' ') +
                       QStringLiteral(".csv"));
    connect(dialog, &QFileDialog::fileSelected, this, [this, selection_alone](const QString& file) {
        const QItemSelection selection = list_->selectionModel()->selection();
        TellExport(file, ExportTo(file, selection_alone ? &selection : nullptr));
    });
    dialog->open();
}

void CBrowserPane::TellExport(const QString& file, std::optional<int> parts)
{
    if (parts) {
        note_ = Text(PaneText::ExportDone).arg(Number(*parts), file);
        UpdateTexts();
        return;
    }
    auto* message = new QMessageBox(QMessageBox::Warning, Text(PaneText::ExportTitle),
                                    Text(PaneText::ExportFailed).arg(file), QMessageBox::Ok, this);
    message->setAttribute(Qt::WA_DeleteOnClose);
    message->open();
}

} // namespace partkeep
