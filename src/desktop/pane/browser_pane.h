// The part browser as the operator sees it: servers and folders beside the list of their parts, with search, places
// and export. Draws a browser session and works it; everything that the component asks for is the session's.
//
// A call of the component changes widgets at once and reads the first rows. What takes longer, the rest of a long list
// and the pictures, is done in slices between events, begun by the next paint.
#pragma once

#include "desktop/pane/pane_places.h"
#include "desktop/pane/pane_texts.h"
#include "desktop/pane/part_list_model.h"
#include "desktop/pane/part_list_view.h"
#include "desktop/pane/part_pictures.h"
#include "partlibrary/session/browser_session.h"

#include <QElapsedTimer>
#include <QTimer>
#include <QWidget>

#include <memory>

class QFrame;
class QLabel;
class QMenu;
class QSplitter;
class QToolButton;
class QVBoxLayout;

namespace partkeep {

class CPartRowDelegate;
class CSearchBox;
class CServerTree;
class CServerTreeModel;

struct PaneSettings {
    PaneLanguage language = PaneLanguage::English;
    QString places_file; // see CPanePlaces
};

class CBrowserPane : public QWidget, private ISessionPane, private IPartListEvents {
public:
    CBrowserPane(std::shared_ptr<CBrowserSession> session, const PaneSettings& settings, QWidget* parent);
    ~CBrowserPane() override;

    // For tests and the accessibility of the whole.
    [[nodiscard]] CPartListView& List() { return *list_; }
    [[nodiscard]] CPartListModel& Model() { return *model_; }
    [[nodiscard]] bool HasWork() const;

    bool ExportTo(const QString& file);

protected:
    void changeEvent(QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    // Making the widgets.
    void MakeWidgets();
    [[nodiscard]] QWidget* MakeLeftSide();
    [[nodiscard]] QWidget* MakeRightSide();
    [[nodiscard]] QWidget* MakeProblemLine();
    [[nodiscard]] QToolButton* MakeButton(PaneText text);
    void MakeList();
    void MakeTree();
    void Connect();
    void DrawIcons();
    [[nodiscard]] QString Text(PaneText text) const { return PaneString(text, settings_.language); }

    // The session's calls.
    void ServersChanged() override;
    void FolderChanged() override;
    void PartListChanged() override;
    void SelectionChanged() override;
    void ProblemChanged() override;
    std::int16_t MoveFocus(std::int16_t code) override;
    void ApplyViewState(const ViewState& state) override;
    void CaptureViewState(ViewState& state) override;
    void CopyStarted(const QString& part) override;
    void CopyEnded() override;

    // What the user does.
    void BeginAction() override;
    void EndAction(bool clicked) override;
    void TextTyped(const QString& text) override;
    void ColumnMenu(int column, const QPoint& place) override;
    void ListPainted() override;
    void FollowTree(bool clicked);
    void FollowSelection();
    void OnSearchTyped();
    void OnSort(int column, Qt::SortOrder order);
    void GoTo(const PanePlace& place);
    void GoUp();
    void Refresh();
    void RememberPlace();
    void FillPlacesMenu();
    void AskExportFile();
    void ShowPictures(bool shown);

    // Keeping up.
    void StartWork();
    void Work();
    void Search();
    void ShowList(bool narrowed);
    void ShowSelection();
    void ShowCurrentPlace();
    void SelectRow(qint64 row, QItemSelection& selection) const;
    void SelectAmongAll(const std::vector<PartId>& ids, QItemSelection& selection);
    [[nodiscard]] QItemSelection RowsOf(const std::vector<PartId>& ids);
    void UpdateTexts();
    [[nodiscard]] QString StatusText() const;
    [[nodiscard]] QString EmptyText() const;
    [[nodiscard]] QString ProblemText() const;
    [[nodiscard]] LibraryProblem ShownProblem() const;
    [[nodiscard]] QList<QWidget*> FocusStops() const;
    [[nodiscard]] QList<int> ShownColumns() const;
    [[nodiscard]] PanePlace CurrentPlace() const;

    std::shared_ptr<CBrowserSession> session_;
    PaneSettings settings_;
    CPanePlaces places_;
    std::unique_ptr<CPartListModel> model_;
    std::unique_ptr<CServerTreeModel> servers_;
    CPartPictures pictures_;

    QSplitter* splitter_ = nullptr;
    QToolButton* places_button_ = nullptr;
    QMenu* places_menu_ = nullptr;
    CServerTree* tree_ = nullptr;
    CSearchBox* search_ = nullptr;
    QToolButton* columns_button_ = nullptr;
    QToolButton* export_button_ = nullptr;
    QFrame* problem_line_ = nullptr;
    QLabel* problem_icon_ = nullptr;
    QLabel* problem_text_ = nullptr;
    QToolButton* retry_button_ = nullptr;
    CPartListView* list_ = nullptr;
    CPartRowDelegate* delegate_ = nullptr;
    QLabel* status_ = nullptr;

    QTimer work_;
    QElapsedTimer copy_shown_;
    bool search_waits_ = false;
    bool searching_ = false; // the session is told of a search text
    bool pictures_shown_ = true;
    int showing_ = 0; // the selection and the tree follow the session, not the user
    int actions_ = 0; // events of the user that are under way
    bool selection_changed_ = false;
    bool selection_waits_ = false; // for rows that are not known yet
};

} // namespace partkeep
