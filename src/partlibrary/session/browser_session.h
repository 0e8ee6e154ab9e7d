// The open part browser without its screen: the state that the contract speaks of, one member per operation of
// the contract, and what a pane needs to draw and to work it. Owns the open libraries; a pane that is attached
// is borrowed. Everything happens on one thread.
//
// The operations of the contract answer by result and never show anything. What went wrong last stands in
// Problem, for a pane to show. They never fire a click; what the user does through a pane does.
#pragma once

#include "controls/part_browser_contract.h"
#include "partlibrary/library/library_text.h"
#include "partlibrary/session/folder_names.h"
#include "partlibrary/session/open_libraries.h"
#include "partlibrary/session/session_pane.h"
#include "partlibrary/session/view_state.h"

#include <QString>
#include <QStringList>

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace partkeep {

enum class DisplayUnit : std::int16_t { Metric = 0, Inch = 1 };
enum class SearchScope : std::uint8_t { Folder, Server };

struct SelectedPart {
    QString server;
    QString folder;
    QString name; // empty: the part is gone
};

class CStagedFiles;

class CBrowserSession {
public:
    explicit CBrowserSession(CLibraryFolder folder);
    ~CBrowserSession();
    CBrowserSession(const CBrowserSession&) = delete;
    CBrowserSession& operator=(const CBrowserSession&) = delete;

    // The contract's operations.
    bool ConnectServer(std::u16string_view server);
    void DisconnectServer();
    bool SetTargetFolder(std::u16string_view folder);
    std::u16string GetPreviewFileTitle();
    bool SetDataKind(std::int16_t kind_mask);
    [[nodiscard]] std::int32_t GetLastStatus() const { return last_status_; }
    [[nodiscard]] std::u16string GetCurrentServer() const { return ToWide(current_server_); }
    void SetCurrentServer(std::u16string_view server);
    void SetDisplayUnit(std::int16_t unit);
    void SelectNextServer();
    void OpenFolderSelection();
    bool SetCurrentFolder(std::u16string_view folder);
    [[nodiscard]] std::u16string GetCurrentFolder() const { return ToWide(current_folder_.path); }
    bool RefreshPartList();
    bool GetServerList(ServerTable& table) const;
    bool SetServerList(const ServerTable& table);
    bool GetViewState(std::span<std::int16_t, view_state_values> values);
    [[nodiscard]] std::int16_t GetViewStateCount() const { return static_cast<std::int16_t>(view_state_values); }
    void SetViewState(std::span<const std::int16_t, view_state_values> values);
    bool SetPartFilter(std::int16_t kind_mask);
    bool ReadPartImage(std::span<char, image_block_bytes> image);
    std::int16_t MoveFocus(std::int16_t code);
    bool CopyPartFiles(std::u16string_view server, std::u16string_view part_path);
    [[nodiscard]] std::optional<PartRow> ReadPartAttributes(std::u16string_view server, std::u16string_view part_path);
    [[nodiscard]] std::int32_t GetSelectedPartCount() const;
    [[nodiscard]] std::optional<SelectedPart> GetSelectedPart(std::int16_t index);
    std::int16_t SelectAllParts(std::int16_t select);

    // For a pane. Null detaches it.
    void AttachPane(ISessionPane* pane) { pane_ = pane; }
    void SetClickSink(std::function<void()> sink) { click_ = std::move(sink); }

    [[nodiscard]] const QStringList& Servers() const { return servers_; } // the table, in order; at most ten
    [[nodiscard]] QStringList OtherServers() const;                       // found in the folder, not in the table
    [[nodiscard]] int ServerCursor() const { return cursor_; }            // index into Servers, or their count
    [[nodiscard]] const QString& CurrentServer() const { return current_server_; }
    [[nodiscard]] const CLibraryFolder& LibraryFolder() const { return libraries_.Folder(); }
    [[nodiscard]] IPartLibrary* Library() { return library_.get(); } // of the current server; null: not reached
    [[nodiscard]] std::shared_ptr<IPartLibrary> ShareLibrary() const { return library_; }
    [[nodiscard]] const FolderRow& CurrentFolder() const { return current_folder_; } // id 0: none
    [[nodiscard]] PartListView ListView() const; // what the list shows: of all folders for the results of a server
    [[nodiscard]] DisplayUnit ShownUnit() const { return shown_unit_; }
    [[nodiscard]] const std::vector<PartId>& Selection() const { return selection_; } // in the order of the list

    // What went wrong last, or what is wrong now with the file behind the library that is shown.
    [[nodiscard]] LibraryProblem Problem() const;
    [[nodiscard]] bool IsTwice() const { return libraries_.IsTwice(current_server_); } // as a file, which is shown, too
    [[nodiscard]] QDateTime FailsSince() const { return libraries_.FailsSince(current_server_); }

    // The folders in one of any server's. Nothing where it is not reached; told only for the current server.
    [[nodiscard]] std::optional<std::vector<FolderRow>> Folders(const QString& server, const QString& path);

    // What the user does. Each fires one click at its end, except SortBy and Refresh.
    // To a place, as far as it is not there yet. A server joins the table where there is room.
    bool Go(const QString& server, const QString& folder);
    bool Refresh(); // tries again what failed
    // Shows what others have changed, as a refresh does, but for the unit and for what the pane tells.
    void Follow();
    void Select(std::vector<PartId> ids); // in the order of the list; empty for a click beside it
    void SearchFor(const QString& text);  // clicks only when the selection has changed
    void SortBy(PartColumn column, bool descending);

    // What is searched for or narrowed down in the whole server is no list of the contract's: nothing in it is
    // selected. Selecting one of its parts goes to that part's folder. Both click as SearchFor does.
    void SearchIn(SearchScope scope);
    void NarrowTo(PartColumn column, const std::optional<ColumnValue>& value); // nothing: to all of them
    [[nodiscard]] SearchScope Scope() const { return scope_; }
    [[nodiscard]] bool SearchesServers() const { return library_ != nullptr && library_->ListsAllFolders(); }
    [[nodiscard]] bool ShowsResults() const;

    // Selects by name in the current folder; false, with nothing changed, when one is not shown.
    bool SelectParts(const QStringList& names);

private:
    [[nodiscard]] std::shared_ptr<IPartLibrary> Reach(const QString& server);
    [[nodiscard]] std::shared_ptr<IPartLibrary> LibraryOf(std::u16string_view server);
    bool MakeCurrent(const QString& server, std::shared_ptr<IPartLibrary> library);
    bool EnterFolder(const QString& path);
    void EnterFolderAgain();
    void ListChanged();
    void ChangeView(const std::function<void()>& change);
    void EndSearch();
    void Choose(PartId part);
    bool KeepVisible();
    void SetSelection(std::vector<PartId> ids);
    void RememberNames(std::size_t count);
    [[nodiscard]] std::optional<PartRow> FindByPath(IPartLibrary& library, std::u16string_view part_path);
    [[nodiscard]] std::optional<PartRow> FirstSelected();
    void ExpectRest(PartId part);
    bool StageFiles(IPartLibrary& library, const PartRow& part, SlotSet slots, CopyProgress* progress = nullptr);
    bool SetProblem(const LibraryProblem& problem); // true for no problem
    void TellServers();
    void Tell(void (ISessionPane::*change)());
    void Click();

    COpenLibraries libraries_;
    QStringList servers_;
    int cursor_ = 0;
    QString current_server_;
    std::shared_ptr<IPartLibrary> library_;
    FolderRow current_folder_;
    std::optional<QString> wanted_folder_; // asked for while its server is not there
    PartListView view_;                    // of the current folder
    SearchScope scope_ = SearchScope::Folder;
    std::vector<PartId> selection_;
    std::size_t asked_ = 0;                              // entry of the selection that was asked for last
    CopyProgress copy_;                                  // the last one
    std::unordered_map<PartId, QString> selected_names_; // for when the library does not answer
    std::size_t named_ = 0;                              // so many of the selection are among them
    std::size_t next_copy_ = 0;                          // behind the one of the selection that was copied last
    std::optional<std::u16string> target_folder_;
    CFolderNames target_names_;
    std::int16_t data_kind_ = part_data_kind;
    DisplayUnit unit_ = DisplayUnit::Metric;
    DisplayUnit shown_unit_ = DisplayUnit::Metric;
    ViewState view_state_;
    std::int32_t last_status_ = 0;
    LibraryProblem problem_;
    ISessionPane* pane_ = nullptr;
    std::function<void()> click_;
};

} // namespace partkeep
