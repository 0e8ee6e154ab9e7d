// The part browser as the operator sees it: servers and folders beside the list of their parts, with search, places,
// keys that work anywhere in the dialog, and export. Draws a browser session and works it; everything that the
// component asks for is the session's.
//
// A call of the component changes widgets at once and reads the first rows. What takes longer, the rest of a long list
// and the pictures, is done in slices between events, begun by the next paint.
#pragma once

#include "desktop/hosted_control_factory.h"
#include "desktop/pane/list_follower.h"
#include "desktop/pane/live_list.h"
#include "desktop/pane/pane_places.h"
#include "desktop/pane/pane_texts.h"
#include "desktop/pane/work_slices.h"
#include "partlibrary/session/browser_session.h"

#include <QElapsedTimer>
#include <QList>
#include <QPoint>
#include <QPointer>
#include <QString>
#include <QTimer>
#include <QWidget>

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>

class QFrame;
class QLabel;
class QMenu;
class QSplitter;
class QToolButton;
class QVBoxLayout;

namespace partkeep {

class CKeySheet;
class CPartRowDelegate;
class CSearchBox;
class CSearchLine;
class CServerTree;
class CServerTreeModel;
class CStatusLine;

struct PaneSettings {
    PaneLanguage language = PaneLanguage::English;
    QString places_file; // see CPanePlaces
};

class CBrowserPane : public QWidget, public IWindowKeys, private ISessionPane, private IPartListEvents {
public:
    CBrowserPane(std::shared_ptr<CBrowserSession> session, const PaneSettings& settings, QWidget* parent);
    ~CBrowserPane() override;

    // For tests and the accessibility of the whole.
    [[nodiscard]] CPartListView& List() { return *list_; }
    [[nodiscard]] CPartListModel& Model() { return *model_; }
    [[nodiscard]] bool HasWork() const { return work_->HasWork(); }

    // How many parts were written; nothing when it failed.
    std::optional<int> ExportTo(const QString& file, const QItemSelection* selection = nullptr);

    bool TakeWindowKey(const QKeyEvent& event) override;

protected:
    void changeEvent(QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    // Making the widgets.
    void MakeWidgets();
    [[nodiscard]] QWidget* MakeLeftSide();
    [[nodiscard]] QWidget* MakeRightSide();
    [[nodiscard]] QWidget* MakeProblemLine();
    void MakeList();
    void MakeTree();
    void Connect();
    void DrawIcons();
    [[nodiscard]] QString Number(qint64 value) const { return LocaleOf(settings_.language).toString(value); }
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
    void CopyStarted(const CopyProgress& copy) override;
    void CopyProgressed(const CopyProgress& copy) override;
    void CopyEnded() override;

    // What the user does.
    void Act(bool clicked, const std::function<void()>& action) override;
    void TextTyped(const QString& text) override;
    void ColumnMenu(int column, const QPoint& place) override;
    void RowMenu(const QPoint& place) override;
    void DoubleClicked(PartId part) override;
    void DragSelection() override;
    void ListPainted() override;
    void FollowTree(bool clicked);
    void OnSearchTyped();
    void OnSort(int column, Qt::SortOrder order);
    void GoTo(const PanePlace& place);
    void GoUp();
    void Refresh();
    void BackToResults();
    void GoToSearch();
    void SearchIn(SearchScope scope);
    void ToggleFavourite();
    void RememberPlace();
    void FillPlacesMenu();
    void ArrangeFavourites();
    void ToggleSelected(PartId part);
    void CopyNames();
    void AskExportFile(bool selection_alone);
    void TellExport(const QString& file, std::optional<int> parts);
    void ToggleKeySheet();
    void ShowPictures(PictureSize size);
    void WidenTree(int by);
    void SetRowHeight();

    // Keeping up.
    void ShowCurrentPlace();
    void UpdateTexts();
    [[nodiscard]] QString StatusText() const;
    [[nodiscard]] QString EmptyText() const;
    [[nodiscard]] QString ProblemText() const;
    [[nodiscard]] QString Remarks() const;
    [[nodiscard]] QString AsOfText() const;
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
    CSearchLine* search_line_ = nullptr;
    CSearchBox* search_ = nullptr; // in the line
    QToolButton* columns_button_ = nullptr;
    QToolButton* export_button_ = nullptr;
    QFrame* problem_line_ = nullptr;
    QLabel* problem_icon_ = nullptr;
    QLabel* problem_text_ = nullptr;
    QToolButton* retry_button_ = nullptr;
    CPartListView* list_ = nullptr;
    CPartRowDelegate* delegate_ = nullptr;
    CStatusLine* status_ = nullptr;

    QPointer<CKeySheet> key_sheet_;
    PictureSize pictures_size_ = PictureSize::Small;
    QString note_;         // said in place of the count, until something changes
    QString results_text_; // of the results that were shown last
    PanePlace stay_place_;
    QTimer stay_; // in it

    std::unique_ptr<CListFollower> follower_;
    std::unique_ptr<CWorkSlices> work_;
    std::unique_ptr<CLiveTree> live_tree_;
    std::unique_ptr<CLiveList> live_;
    QElapsedTimer copy_shown_;
    bool dragging_ = false;
};

} // namespace partkeep
