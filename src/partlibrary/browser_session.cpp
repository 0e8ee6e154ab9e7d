#include "partlibrary/browser_session.h"

#include "partlibrary/library_schema.h"
#include "partlibrary/narrow_text.h"

#include <algorithm>
#include <utility>

namespace partkeep {

CBrowserSession::CBrowserSession(CLibraryFolder folder) : folder_(std::move(folder)) {}

CBrowserSession::~CBrowserSession() = default;

// Servers.

std::unique_ptr<CPartLibrary> CBrowserSession::OpenLibrary(const QString& server)
{
    LibraryProblem problem;
    const QString file = folder_.FileOf(server);
    if (server.isEmpty() && !folder_.Path().isEmpty()) {
        SetProblem(problem); // no server is chosen yet, which is no fault to tell of
        return nullptr;
    }
    if (file.isEmpty()) {
        SetProblem({LibraryFault::NotFound, server,
                    folder_.Path().isEmpty() ? QStringLiteral("no library folder is configured") : QString()});
        return nullptr;
    }
    auto library = CPartLibrary::Open(file, problem);
    SetProblem(problem);
    return library;
}

bool CBrowserSession::ConnectServer(std::u16string_view server)
{
    const QString name = FromWide(server);
    auto library = OpenLibrary(name);
    return library != nullptr && MakeCurrent(name, std::move(library));
}

// The libraries other than the current one are closed: whoever is connected anew sees the files of now.
bool CBrowserSession::MakeCurrent(const QString& server, std::unique_ptr<CPartLibrary> library)
{
    const QString folder = library != nullptr ? std::exchange(wanted_folder_, {}) : QString();
    const bool same = server == current_server_ && library_ != nullptr;
    const QString restored = same ? current_folder_.path : folder;
    others_.clear();
    library_ = std::move(library);
    current_server_ = server;
    if (!same) {
        selection_.clear();
        current_folder_ = {};
        view_.folder = 0;
    }
    Tell(&IBrowserPane::ServersChanged);
    if (library_ != nullptr && !EnterFolder(restored)) {
        EnterFolder({});
    }
    return library_ != nullptr;
}

void CBrowserSession::DisconnectServer()
{
    others_.clear();
    library_.reset();
    selection_.clear();
    current_folder_ = {};
    view_.folder = 0;
    Tell(&IBrowserPane::ServersChanged);
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
    auto library = OpenLibrary(name);
    MakeCurrent(name, std::move(library));
}

bool CBrowserSession::OpenServer(const QString& server)
{
    auto library = OpenLibrary(server);
    const bool reached = library != nullptr;
    if (reached && !servers_.contains(server) && servers_.size() < static_cast<qsizetype>(server_slots)) {
        servers_ += server;
    }
    const qsizetype place = servers_.indexOf(server);
    cursor_ = static_cast<int>(place >= 0 ? place : servers_.size());
    wanted_folder_.clear();
    MakeCurrent(server, std::move(library));
    Click();
    return reached;
}

QStringList CBrowserSession::OtherServers() const
{
    QStringList others = folder_.Servers();
    for (const QString& server : servers_) {
        others.removeAll(server);
    }
    return others;
}

void CBrowserSession::SelectNextServer()
{
    cursor_ = std::min(cursor_ + 1, static_cast<int>(servers_.size()));
    Tell(&IBrowserPane::ServersChanged);
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
        servers_ = folder_.Servers().mid(0, static_cast<qsizetype>(server_slots));
    }
    Tell(&IBrowserPane::ServersChanged);
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

CPartLibrary* CBrowserSession::LibraryOf(std::u16string_view server)
{
    const QString name = FromWide(server);
    if (name == current_server_ && library_ != nullptr) {
        return library_.get();
    }
    auto& library = others_[name];
    if (library == nullptr) {
        library = OpenLibrary(name);
    }
    return library.get();
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
    Tell(&IBrowserPane::ProblemChanged);
    return !problem;
}

void CBrowserSession::Tell(void (IBrowserPane::*change)())
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
