// The session's search: in the folder, or in the whole server.
#include "partlibrary/library/sort_text.h"
#include "partlibrary/session/browser_session.h"

namespace partkeep {

bool CBrowserSession::ShowsResults() const
{
    const bool asked = !view_.only.empty() || !SearchWords(view_.search).isEmpty();
    return scope_ == SearchScope::Server && asked && SearchesServers();
}

PartListView CBrowserSession::ListView() const
{
    PartListView shown = view_;
    if (ShowsResults()) {
        shown.folder = all_folders;
    }
    return shown;
}

void CBrowserSession::ChangeView(const std::function<void()>& change)
{
    const std::size_t before = selection_.size();
    change();
    ListChanged();
    if (selection_.size() != before) {
        Click();
    }
}

void CBrowserSession::SearchFor(const QString& text)
{
    ChangeView([&] { view_.search = text; });
}

void CBrowserSession::SearchIn(SearchScope scope)
{
    ChangeView([&] { scope_ = scope; });
}

void CBrowserSession::NarrowTo(PartColumn column, const std::optional<ColumnValue>& value)
{
    ChangeView([&] {
        if (value) {
            view_.only[column] = *value;
        } else {
            view_.only.erase(column);
        }
    });
}

void CBrowserSession::EndSearch()
{
    view_.search.clear();
    view_.only.clear();
}

// The folder may be the current one, whose list comes back then.
void CBrowserSession::Choose(PartId id)
{
    const auto part = library_->FindPart(id);
    const auto folder = part ? library_->FindFolder(part->folder) : std::nullopt;
    if (SetProblem(folder ? LibraryProblem{} : library_->Problem())) {
        current_folder_ = *folder;
        view_.folder = folder->id;
        EndSearch();
        SetSelection({id});
        Tell(&ISessionPane::FolderChanged);
    }
    Click();
}

} // namespace partkeep
