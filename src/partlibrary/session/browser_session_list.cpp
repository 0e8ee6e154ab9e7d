// The session's folders, list and selection.
#include "partlibrary/library/library_names.h"
#include "partlibrary/library/library_walk.h"
#include "partlibrary/session/browser_session.h"

#include <algorithm>
#include <limits>
#include <optional>
#include <utility>
#include <vector>

namespace partkeep {

namespace {

constexpr std::size_t most_names = 32768;       // an index has 16 bits
constexpr std::size_t most_named_at_once = 512; // of a selection; of more than 256 nothing is loaded

// A folder that an administrator has renamed or moved keeps its number.
std::optional<QString> PathNow(IPartLibrary& library, qint64 folder)
{
    for (const FolderRow& row : AllFolders(library).value_or(std::vector<FolderRow>())) {
        if (row.id == folder) {
            return row.path;
        }
    }
    return std::nullopt;
}

} // namespace

void CBrowserSession::OpenFolderSelection()
{
    Tell(&ISessionPane::OpenFolderSelection);
}

bool CBrowserSession::SetCurrentFolder(std::u16string_view folder)
{
    const QString path = FolderPath(FromWide(folder));
    if (library_ == nullptr) {
        wanted_folder_ = path;
        return false;
    }
    wanted_folder_.reset();
    SetProblem({});
    return EnterFolder(path);
}

bool CBrowserSession::EnterFolder(const QString& path)
{
    const auto row = library_->FindFolder(path);
    if (!row) {
        return SetProblem(library_->Problem());
    }
    wanted_folder_.reset();
    const bool same = row->id == current_folder_.id;
    current_folder_ = *row;
    view_.folder = row->id;
    if (same) {
        ListChanged();
        return true;
    }
    EndSearch();
    SetSelection({});
    Tell(&ISessionPane::FolderChanged);
    return true;
}

// A library that has gone stays open as long as the system keeps it: what is listed can still be loaded.
bool CBrowserSession::RefreshPartList()
{
    shown_unit_ = unit_;
    auto library = current_server_.isEmpty() ? nullptr : Reach(current_server_);
    if (library == nullptr) {
        ListChanged();
        return false;
    }
    if (library != library_) {
        return MakeCurrent(current_server_, std::move(library));
    }
    EnterFolderAgain();
    return true;
}

void CBrowserSession::Follow()
{
    const bool shows = current_folder_.id != 0 || wanted_folder_;
    if (library_ != nullptr && library_->Place() == LibraryPlace::Same && shows) {
        const LibraryProblem problem = problem_;
        problem_ = {};
        EnterFolderAgain();
        const bool over = IsAway(problem.fault); // else it has told somebody nothing yet
        SetProblem(problem_ || over ? problem_ : problem);
    }
}

void CBrowserSession::EnterFolderAgain()
{
    const std::size_t before = selection_.size();
    bool there = EnterFolder(wanted_folder_.value_or(current_folder_.path));
    const bool gone = !there && Problem().fault == LibraryFault::NoFolder;
    if (const auto moved = gone ? PathNow(*library_, current_folder_.id) : std::nullopt; moved && EnterFolder(*moved)) {
        SetProblem({});
        Tell(&ISessionPane::FolderChanged);
        there = true;
    }
    if (!there) {
        if (!IsAway(problem_.fault)) { // what is shown stays
            EnterFolder({});
        }
    } else if (selection_.size() < before) {
        SetProblem({LibraryFault::NoPart, current_folder_.path, {}});
    }
}

bool CBrowserSession::Refresh()
{
    libraries_.Retry(current_server_);
    return RefreshPartList() && !IsAway(problem_.fault);
}

bool CBrowserSession::SetPartFilter(std::int16_t kind_mask)
{
    view_.filter = kind_mask;
    ListChanged();
    return library_ != nullptr;
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
    Tell(&ISessionPane::PartListChanged);
    if (!kept) {
        Tell(&ISessionPane::SelectionChanged);
    }
}

// What the list no longer shows is not selected any more. False when the selection has changed.
bool CBrowserSession::KeepVisible()
{
    if (selection_.empty() || library_ == nullptr) {
        return true;
    }
    if (ShowsResults()) {
        SetSelection({});
        return false;
    }
    auto visible = library_->Visible(view_, selection_);
    if (!visible) {
        SetProblem(library_->Problem());
        return true;
    }
    const bool same = *visible == selection_;
    if (!same) {
        SetSelection(std::move(*visible));
    }
    return same;
}

void CBrowserSession::SetDisplayUnit(std::int16_t unit)
{
    unit_ = unit == static_cast<std::int16_t>(DisplayUnit::Inch) ? DisplayUnit::Inch : DisplayUnit::Metric;
}

// The selection.

void CBrowserSession::Select(std::vector<PartId> ids)
{
    if (ShowsResults() && !ids.empty()) {
        Choose(ids.back());
        return;
    }
    SetSelection(std::move(ids));
    Click();
}

void CBrowserSession::SetSelection(std::vector<PartId> ids)
{
    selection_ = std::move(ids);
    if (selection_.empty()) {
        selected_names_.clear();
    }
    named_ = 0;
    if (selection_.size() <= most_named_at_once) {
        RememberNames(selection_.size());
    }
}

bool CBrowserSession::SelectParts(const QStringList& names)
{
    std::vector<PartId> ids;
    const bool listed = library_ != nullptr && !ShowsResults();
    for (const QString& name : names) {
        const auto part = listed ? library_->FindPart(current_folder_.path, name) : std::nullopt;
        if (!part) {
            return false;
        }
        ids.push_back(part->id);
    }
    auto visible = listed ? library_->Visible(view_, ids) : std::nullopt;
    if (!visible || visible->size() != ids.size()) {
        return false;
    }
    SetSelection(std::move(*visible));
    Tell(&ISessionPane::SelectionChanged);
    Click();
    return true;
}

std::int16_t CBrowserSession::SelectAllParts(std::int16_t select)
{
    const bool listed = library_ != nullptr && !ShowsResults();
    auto all = select == 1 && listed ? library_->Ids(view_) : std::nullopt;
    const bool done = select != 1 || all.has_value();
    SetSelection(std::move(all).value_or(std::vector<PartId>{}));
    Tell(&ISessionPane::SelectionChanged);
    return done ? 1 : 0;
}

std::int32_t CBrowserSession::GetSelectedPartCount() const
{
    constexpr std::size_t most = std::numeric_limits<std::int32_t>::max();
    return static_cast<std::int32_t>(std::min(selection_.size(), most));
}

// Of the first ones of the selection, as far as they are not known: while the library answers.
void CBrowserSession::RememberNames(std::size_t count)
{
    std::vector<PartId> unknown;
    for (const PartId id : std::span(selection_).first(count).subspan(std::min(named_, count))) {
        if (!selected_names_.contains(id)) {
            unknown.push_back(id);
        }
    }
    const auto parts = library_ == nullptr || unknown.empty() ? std::nullopt : library_->FindParts(unknown);
    if (!parts && !unknown.empty()) {
        return;
    }
    named_ = std::max(named_, count);
    for (std::size_t i = 0; i < unknown.size(); ++i) {
        const PartRow& part = (*parts)[i];
        selected_names_[unknown[i]] = part.folder == current_folder_.id ? part.name : QString();
    }
}

// A part that has gone is told by an empty name, a library that does not answer by what it said before. Who asks for
// the second will ask for all.
std::optional<SelectedPart> CBrowserSession::GetSelectedPart(std::int16_t index)
{
    const auto place = static_cast<std::size_t>(std::max<std::int16_t>(index, 0));
    if (index < 0 || place >= selection_.size() || library_ == nullptr) {
        return std::nullopt;
    }
    asked_ = place;
    const PartId id = selection_[place];
    const auto part = library_->FindPart(id);
    const LibraryProblem problem = part ? LibraryProblem{} : library_->Problem();
    const QString name = part && part->folder == current_folder_.id ? part->name : QString();
    if (part) {
        selected_names_[id] = name;
    }
    RememberNames(index == 0 ? 1 : std::min(selection_.size(), most_names));
    if (problem && problem.fault != LibraryFault::NoPart) {
        SetProblem(problem);
        const auto known = selected_names_.find(id);
        return known != selected_names_.end() && problem_.fault != LibraryFault::NameRefused
                   ? std::optional(SelectedPart{current_server_, current_folder_.path, known->second})
                   : std::nullopt;
    }
    return SelectedPart{current_server_, current_folder_.path, name};
}

} // namespace partkeep
