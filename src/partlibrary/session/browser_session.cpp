#include "partlibrary/session/browser_session.h"

#include <algorithm>
#include <utility>

namespace partkeep {

CBrowserSession::CBrowserSession(CLibraryFolder folder) : libraries_(std::move(folder)) {}

CBrowserSession::~CBrowserSession() = default;

// Servers.

// That no server is chosen yet is no fault to tell of.
std::shared_ptr<IPartLibrary> CBrowserSession::Reach(const QString& server)
{
    const bool none = server.isEmpty();
    auto library = none ? nullptr : libraries_.Look(server);
    SetProblem(none ? LibraryProblem{} : libraries_.Problem());
    return library;
}

bool CBrowserSession::ConnectServer(std::u16string_view server)
{
    const QString name = FromWide(server);
    auto library = Reach(name);
    return library != nullptr && MakeCurrent(name, std::move(library));
}

// Another library in the place of the one that was shown has other parts by the same numbers.
bool CBrowserSession::MakeCurrent(const QString& server, std::shared_ptr<IPartLibrary> library)
{
    const bool same = server == current_server_ && library_ != nullptr;
    const QString restored = wanted_folder_.value_or(same ? current_folder_.path : QString());
    const bool replaced = !same || library == nullptr || library->Id() != library_->Id();
    library_ = std::move(library);
    current_server_ = server;
    if (replaced) {
        SetSelection({});
        current_folder_ = {};
        view_.folder = 0;
    }
    libraries_.CloseOthers(server);
    TellServers();
    if (library_ == nullptr) {
        return false;
    }
    if (EnterFolder(restored)) {
        return true;
    }
    if (IsAway(problem_.fault)) { // the folder may be there all the same
        wanted_folder_ = restored;
        return false;
    }
    return EnterFolder({});
}

void CBrowserSession::DisconnectServer()
{
    library_.reset();
    libraries_.CloseOthers({});
    SetSelection({});
    current_folder_ = {};
    view_.folder = 0;
    TellServers();
}

// A server that cannot be reached is current all the same, so that its name is not lost between runs.
void CBrowserSession::SetCurrentServer(std::u16string_view server)
{
    const QString name = FromWide(server);
    if (name == current_server_ && library_ != nullptr) {
        return;
    }
    if (name.isEmpty()) {
        MakeCurrent(name, nullptr);
        return;
    }
    MakeCurrent(name, Reach(name));
}

bool CBrowserSession::Go(const QString& server, const QString& folder)
{
    const auto library = Reach(server);
    if (library != nullptr && !servers_.contains(server) && servers_.size() < static_cast<qsizetype>(server_slots)) {
        servers_ += server;
    }
    const qsizetype place = servers_.indexOf(server);
    cursor_ = static_cast<int>(place >= 0 ? place : servers_.size());
    if (ShowsResults()) {
        EndSearch();
        Tell(&ISessionPane::FolderChanged);
    }
    const bool here = library != nullptr && library == library_ && server == current_server_;
    const bool there = here && current_folder_.id != 0 && current_folder_.path == folder;
    wanted_folder_ = here ? std::nullopt : std::optional(folder);
    const bool reached = there || (here ? EnterFolder(folder) : MakeCurrent(server, library));
    Click();
    return reached;
}

std::optional<std::vector<FolderRow>> CBrowserSession::Folders(const QString& server, const QString& path)
{
    const bool current = server == current_server_ && library_ != nullptr;
    const auto library = current ? library_ : libraries_.Look(server);
    return library != nullptr ? library->Folders(path) : std::nullopt;
}

LibraryProblem CBrowserSession::Problem() const
{
    if (problem_ || library_ == nullptr || library_->Place() == LibraryPlace::Same) {
        return problem_;
    }
    const bool gone = library_->Place() == LibraryPlace::Nothing;
    return {gone ? LibraryFault::NotFound : LibraryFault::Replaced, current_server_, {}};
}

QStringList CBrowserSession::OtherServers() const
{
    QStringList others = LibraryFolder().Servers();
    for (const QString& server : servers_) {
        others.removeAll(server);
    }
    return others;
}

void CBrowserSession::SelectNextServer()
{
    cursor_ = std::min(cursor_ + 1, static_cast<int>(servers_.size()));
    TellServers();
}

// With an empty table the operator would have no way in, so it is filled with what the folder holds.
bool CBrowserSession::SetServerList(const ServerTable& table)
{
    servers_.clear();
    cursor_ = 0;
    for (const auto& slot : table.slots) {
        const std::string_view name(slot.data(), std::find(slot.begin(), slot.end(), '\0'));
        if (name.empty()) {
            break;
        }
        servers_ += FromWide(WidenText(name));
    }
    if (servers_.isEmpty()) {
        servers_ = LibraryFolder().Servers().mid(0, static_cast<qsizetype>(server_slots));
    }
    TellServers();
    return true;
}

bool CBrowserSession::GetServerList(ServerTable& table) const
{
    table = {};
    std::size_t slot = 0;
    for (const QString& server : servers_) {
        if (!server.isEmpty() && slot < table.slots.size()) {
            CopyNarrow(server, table.slots[slot++]);
        }
    }
    return true;
}

// What is shown is copied from, even when its file has gone: it stays open as long as the system keeps it.
std::shared_ptr<IPartLibrary> CBrowserSession::LibraryOf(std::u16string_view server)
{
    const QString name = FromWide(server);
    return name == current_server_ && library_ != nullptr ? library_ : Reach(name);
}

// The rest of the state.

bool CBrowserSession::GetViewState(std::span<std::int16_t, view_state_values> values)
{
    if (pane_ != nullptr) {
        pane_->CaptureViewState(view_state_);
    }
    PackViewState(view_state_, values);
    return true;
}

void CBrowserSession::SetViewState(std::span<const std::int16_t, view_state_values> values)
{
    if (!UnpackViewState(values, view_state_)) {
        return;
    }
    view_.sort = view_state_.sort;
    view_.descending = view_state_.descending;
    if (pane_ != nullptr) {
        pane_->ApplyViewState(view_state_);
    }
    ListChanged();
}

std::int16_t CBrowserSession::MoveFocus(std::int16_t code)
{
    return pane_ != nullptr ? pane_->MoveFocus(code) : std::int16_t{0};
}

bool CBrowserSession::SetProblem(const LibraryProblem& problem)
{
    problem_ = problem;
    Tell(&ISessionPane::ProblemChanged);
    return !problem;
}

// A pane reads its list anew as well.
void CBrowserSession::TellServers()
{
    KeepVisible();
    Tell(&ISessionPane::ServersChanged);
}

void CBrowserSession::Tell(void (ISessionPane::*change)())
{
    if (pane_ != nullptr) {
        (pane_->*change)();
    }
}

void CBrowserSession::Click()
{
    if (click_) {
        click_();
    }
}

} // namespace partkeep
