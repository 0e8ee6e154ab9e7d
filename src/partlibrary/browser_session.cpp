#include "partlibrary/browser_session.h"

#include "partlibrary/library_schema.h"
#include "partlibrary/narrow_text.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace partkeep {

namespace {

QString FromWide(std::u16string_view text)
{
    return QString::fromUtf16(text.data(), static_cast<qsizetype>(text.size()));
}

// Folders are told without separators at their ends; a caller may have kept one.
QString FolderPath(std::u16string_view text)
{
    while (!text.empty() && text.front() == u'\\') {
        text.remove_prefix(1);
    }
    while (!text.empty() && text.back() == u'\\') {
        text.remove_suffix(1);
    }
    return FromWide(text);
}

} // namespace

CBrowserSession::CBrowserSession(CLibraryFolder folder) : folder_(std::move(folder)) {}

CBrowserSession::~CBrowserSession() = default;

// Servers.

std::unique_ptr<CPartLibrary> CBrowserSession::OpenLibrary(const QString& server)
{
    LibraryProblem problem;
    const QString file = folder_.FileOf(server);
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

// Folders and the list.

void CBrowserSession::OpenFolderSelection()
{
    Tell(&IBrowserPane::OpenFolderSelection);
}

bool CBrowserSession::SetCurrentFolder(std::u16string_view folder)
{
    const QString path = FolderPath(folder);
    if (library_ == nullptr) {
        wanted_folder_ = path;
        return false;
    }
    SetProblem({});
    return EnterFolder(path);
}

bool CBrowserSession::EnterFolder(const QString& path)
{
    const auto id = library_->FindFolder(path);
    const auto row = id ? library_->Folder(*id) : std::nullopt;
    if (!row) {
        return SetProblem(library_->Problem());
    }
    const bool same = row->id == current_folder_.id;
    current_folder_ = *row;
    view_.folder = row->id;
    if (same) {
        ListChanged();
        return true;
    }
    view_.search.clear();
    selection_.clear();
    Tell(&IBrowserPane::FolderChanged);
    return true;
}

bool CBrowserSession::OpenFolder(const QString& path)
{
    if (library_ != nullptr) {
        SetProblem({});
    }
    const bool entered = library_ != nullptr && EnterFolder(path);
    Click();
    return entered;
}

// A library that has gone stays open as long as the system keeps it: what is listed can still be loaded.
bool CBrowserSession::RefreshPartList()
{
    shown_unit_ = unit_;
    if (current_server_.isEmpty()) {
        Tell(&IBrowserPane::PartListChanged);
        return false;
    }
    auto library = OpenLibrary(current_server_);
    const bool reached = library != nullptr;
    if (library_ == nullptr && reached) {
        return MakeCurrent(current_server_, std::move(library));
    }
    if (reached) {
        library_ = std::move(library);
        if (!EnterFolder(current_folder_.path)) {
            EnterFolder({});
        }
        return true;
    }
    Tell(&IBrowserPane::PartListChanged);
    return false;
}

bool CBrowserSession::SetPartFilter(std::int16_t kind_mask)
{
    view_.filter = kind_mask;
    ListChanged();
    return library_ != nullptr;
}

void CBrowserSession::SearchFor(const QString& text)
{
    view_.search = text;
    const std::size_t before = selection_.size();
    ListChanged();
    if (selection_.size() != before) {
        Click();
    }
}

void CBrowserSession::SortBy(PartColumn column, bool descending)
{
    view_.sort = column;
    view_.descending = descending;
    view_state_.sort = column;
    view_state_.descending = descending;
    ListChanged();
}

// The rows first, so that a pane can find the selection among them.
void CBrowserSession::ListChanged()
{
    const bool kept = KeepVisible();
    Tell(&IBrowserPane::PartListChanged);
    if (!kept) {
        Tell(&IBrowserPane::SelectionChanged);
    }
}

// What the list no longer shows is not selected any more. False when the selection has changed.
bool CBrowserSession::KeepVisible()
{
    if (selection_.empty() || library_ == nullptr) {
        return true;
    }
    auto visible = library_->Parts().Visible(view_, selection_);
    if (!visible) {
        SetProblem(library_->Problem());
        return true;
    }
    const bool same = *visible == selection_;
    selection_ = std::move(*visible);
    return same;
}

void CBrowserSession::SetDisplayUnit(std::int16_t unit)
{
    unit_ = unit == static_cast<std::int16_t>(DisplayUnit::Inch) ? DisplayUnit::Inch : DisplayUnit::Metric;
}

// The selection.

void CBrowserSession::Select(std::vector<PartId> ids)
{
    selection_ = std::move(ids);
    Click();
}

bool CBrowserSession::SelectParts(const QStringList& names)
{
    std::vector<PartId> ids;
    for (const QString& name : names) {
        const auto part = library_ != nullptr ? library_->FindPart(current_folder_.path, name) : std::nullopt;
        if (!part) {
            return false;
        }
        ids.push_back(part->id);
    }
    auto visible = library_ != nullptr ? library_->Parts().Visible(view_, ids) : std::nullopt;
    if (!visible || visible->size() != ids.size()) {
        return false;
    }
    selection_ = std::move(*visible);
    Tell(&IBrowserPane::SelectionChanged);
    Click();
    return true;
}

std::int16_t CBrowserSession::SelectAllParts(std::int16_t select)
{
    selection_.clear();
    bool done = true;
    if (select == 1) {
        auto all = library_ != nullptr ? library_->Parts().Ids(view_) : std::nullopt;
        done = all.has_value();
        selection_ = std::move(all).value_or(std::vector<PartId>{});
    }
    Tell(&IBrowserPane::SelectionChanged);
    return done ? 1 : 0;
}

std::int32_t CBrowserSession::GetSelectedPartCount() const
{
    constexpr std::size_t most = std::numeric_limits<std::int32_t>::max();
    return static_cast<std::int32_t>(std::min(selection_.size(), most));
}

std::optional<SelectedPart> CBrowserSession::GetSelectedPart(std::int16_t index)
{
    if (index < 0 || static_cast<std::size_t>(index) >= selection_.size() || library_ == nullptr) {
        return std::nullopt;
    }
    const auto part = library_->FindPart(selection_[static_cast<std::size_t>(index)]);
    const bool gone = !part && library_->Problem().fault == LibraryFault::NoPart;
    if (!part && !gone) {
        SetProblem(library_->Problem());
        return std::nullopt;
    }
    const QString name = part && part->folder == current_folder_.id ? part->name : QString();
    return SelectedPart{current_server_, current_folder_.path, name};
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
