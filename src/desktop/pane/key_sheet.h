// The sheet of keys: a window that stands beside the dialog, as far as the screen has room, while the user goes on.
#pragma once

#include "desktop/pane/pane_texts.h"

#include <QDialog>
#include <QString>

namespace partkeep {

class CKeySheet : public QDialog {
public:
    CKeySheet(PaneLanguage language, QWidget* dialog);

protected:
    void keyPressEvent(QKeyEvent* event) override; // F1 closes it, too

private:
    void PlaceBeside(const QWidget& dialog);
};

} // namespace partkeep
