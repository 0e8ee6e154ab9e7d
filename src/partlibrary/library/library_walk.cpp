#include "partlibrary/library/library_walk.h"

#include <QSet>

#include <algorithm>

namespace partkeep {

namespace {

constexpr qint64 page_rows = 500;

} // namespace

std::optional<std::vector<FolderRow>> AllFolders(IPartLibrary& library, const QString& from)
{
    const auto first = library.FindFolder(from);
    if (!first) {
        return std::nullopt;
    }
    std::vector<FolderRow> all;
    std::vector<FolderRow> waiting{*first};
    QSet<QString> met; // twins in each of their twins would be more than anybody can walk through
    while (!waiting.empty()) {
        const FolderRow next = std::move(waiting.back());
        waiting.pop_back();
        if (met.contains(next.path)) {
            continue;
        }
        met.insert(next.path);
        all.push_back(next);
        if (!all.back().has_folders) {
            continue;
        }
        const auto inside = library.Folders(all.back().path);
        if (!inside) {
            return std::nullopt;
        }
        waiting.insert(waiting.end(), inside->rbegin(), inside->rend());
    }
    return all;
}

bool ForEachPart(IPartLibrary& library, qint64 folder, const std::function<bool(const PartRow&)>& each)
{
    for (QString after;;) {
        const auto rows = library.PartsBehind(folder, after, page_rows);
        if (!rows || !std::all_of(rows->begin(), rows->end(), each)) {
            return false;
        }
        if (static_cast<qint64>(rows->size()) < page_rows) {
            return true;
        }
        after = rows->back().name;
    }
}

} // namespace partkeep
