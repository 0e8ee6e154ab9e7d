// The window in which favourites are named, put in order and taken out. What is done there holds at once.
#pragma once

#include "desktop/pane/pane_places.h"
#include "desktop/pane/pane_texts.h"

#include <QDialog>
#include <QList>

class QListWidget;
class QPushButton;

namespace partkeep {

class CFavouritesDialog : public QDialog {
public:
    // `places` must outlive the window.
    CFavouritesDialog(CPanePlaces& places, PaneLanguage language, QWidget* parent);

private:
    [[nodiscard]] QPushButton* AddButton(PaneText text);
    void Fill(int current);
    void Move(int by);
    void Remove();
    void Save();
    void TakeNames();

    CPanePlaces& places_;
    PaneLanguage language_;
    QList<PaneFavourite> favourites_; // as the rows show them
    QListWidget* list_;
    QList<QPushButton*> buttons_;
    bool filling_ = false;
};

} // namespace partkeep
