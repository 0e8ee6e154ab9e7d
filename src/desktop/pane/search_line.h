// The line above the list: what is searched for, where, and what the list is narrowed down to. Works the session.
#pragma once

#include "desktop/pane/pane_texts.h"
#include "desktop/pane/pane_widgets.h"
#include "partlibrary/session/browser_session.h"

#include <QList>
#include <QWidget>

#include <functional>

class QHBoxLayout;
class QMenu;
class QToolButton;

namespace partkeep {

class CSearchLine : public QWidget {
public:
    // `scope_chosen` is told what the user has switched to. All are borrowed.
    CSearchLine(CBrowserSession& session, PaneLanguage language, std::function<void(SearchScope)> scope_chosen);

    [[nodiscard]] CSearchBox& Box() { return *box_; }
    void AddButton(QWidget* button); // behind everything else
    [[nodiscard]] QList<QWidget*> FocusStops() const;

    void Switch(); // to the other scope, as the button does
    void ShowState();
    void DrawIcons();

private:
    [[nodiscard]] QToolButton* MakeButton(PaneText text);
    [[nodiscard]] bool SearchesServer() const;
    void FillNarrowMenu();
    void FillValues(QMenu& menu, PartColumn column);
    [[nodiscard]] QString ValueText(PartColumn column, const ColumnValue& value) const;
    [[nodiscard]] QString Text(PaneText text) const { return PaneString(text, language_); }

    CBrowserSession& session_;
    PaneLanguage language_;
    std::function<void(SearchScope)> scope_chosen_;
    CSearchBox* box_;
    QToolButton* scope_;
    QToolButton* narrow_;
    QMenu* narrow_menu_;
    QHBoxLayout* line_;
};

} // namespace partkeep
