// The session's folders, list and selection.
#include "partlibrary/browser_session.h"
#include "partlibrary/narrow_text.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace partkeep {

namespace {

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

} // namespace partkeep
