#include "desktop/pane/favourites_dialog.h"

#include "desktop/finger.h"
#include "desktop/pane/pane_widgets.h"

#include <QAction>
#include <QHBoxLayout>
#include <QListWidget>
#include <QPushButton>
#include <QVBoxLayout>

#include <algorithm>

namespace partkeep {

CFavouritesDialog::CFavouritesDialog(CPanePlaces& places, PaneLanguage language, QWidget* parent)
    : QDialog(parent), places_(places), language_(language), favourites_(places.Favourites()),
      list_(new QListWidget(this))
{
    setAttribute(Qt::WA_DeleteOnClose);
    setWindowTitle(PaneString(PaneText::ArrangeFavourites, language));
    list_->setAccessibleName(PaneString(PaneText::Favourites, language));
    list_->setEditTriggers(QListWidget::EditKeyPressed | QListWidget::DoubleClicked);
    list_->setMinimumWidth(280);
    auto* line = new QHBoxLayout(this);
    line->addWidget(list_, 1);
    auto* side = new QVBoxLayout;
    line->addLayout(side);
    for (const PaneText text : {PaneText::Up, PaneText::Down, PaneText::Rename, PaneText::Remove, PaneText::Close}) {
        side->addWidget(AddButton(text));
    }
    side->insertStretch(static_cast<int>(buttons_.size()) - 1);
    connect(buttons_[0], &QPushButton::clicked, this, [this] { Move(-1); });
    connect(buttons_[1], &QPushButton::clicked, this, [this] { Move(1); });
    connect(buttons_[2], &QPushButton::clicked, this, [this] { list_->editItem(list_->currentItem()); });
    connect(buttons_[3], &QPushButton::clicked, this, [this] { Remove(); });
    connect(buttons_[4], &QPushButton::clicked, this, [this] { close(); });
    connect(list_, &QListWidget::itemChanged, this, [this] { TakeNames(); });
    auto* remove = new QAction(this);
    remove->setShortcut(Qt::Key_Delete);
    connect(remove, &QAction::triggered, this, [this] { Remove(); });
    list_->addAction(remove);
    remove->setShortcutContext(Qt::WidgetShortcut);
    Fill(0);
}

QPushButton* CFavouritesDialog::AddButton(PaneText text)
{
    auto* button = new QPushButton(PaneString(text, language_), this);
    button->setAutoDefault(false);
    button->setMinimumHeight(FingerSide(button_side));
    buttons_ += button;
    return button;
}

void CFavouritesDialog::Fill(int current)
{
    filling_ = true;
    list_->clear();
    for (const PaneFavourite& favourite : favourites_) {
        auto* item = new QListWidgetItem(NameOf(favourite), list_);
        item->setFlags(item->flags() | Qt::ItemIsEditable);
        item->setToolTip(PlaceText(favourite.place));
        item->setSizeHint({0, FingerSide(button_side)});
    }
    list_->setCurrentRow(std::clamp<int>(current, -1, list_->count() - 1));
    for (qsizetype i = 0; i + 1 < buttons_.size(); ++i) {
        buttons_[i]->setEnabled(!favourites_.isEmpty());
    }
    filling_ = false;
}

void CFavouritesDialog::Move(int by)
{
    const int from = list_->currentRow();
    const int to = from + by;
    if (from >= 0 && to >= 0 && to < static_cast<int>(favourites_.size())) {
        favourites_.swapItemsAt(from, to);
        Save();
        Fill(to);
    }
}

void CFavouritesDialog::Remove()
{
    const int row = list_->currentRow();
    if (row >= 0) {
        favourites_.removeAt(row);
        Save();
        Fill(std::min(row, static_cast<int>(favourites_.size()) - 1));
    }
}

// A name that is emptied, or is the place's own, is none.
void CFavouritesDialog::TakeNames()
{
    if (filling_) {
        return;
    }
    for (int row = 0; row < list_->count(); ++row) {
        PaneFavourite& favourite = favourites_[row];
        const QString name = list_->item(row)->text().trimmed();
        favourite.name = name == PlaceText(favourite.place) ? QString() : name;
        filling_ = true;
        list_->item(row)->setText(NameOf(favourite));
        filling_ = false;
    }
    Save();
}

void CFavouritesDialog::Save()
{
    places_.SetFavourites(favourites_);
}

} // namespace partkeep
