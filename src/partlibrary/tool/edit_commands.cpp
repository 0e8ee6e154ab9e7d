#include "partlibrary/tool/edit_commands.h"

#include "partlibrary/import/attribute_table.h"
#include "partlibrary/library/library_names.h"
#include "partlibrary/library/library_text.h"
#include "partlibrary/library/library_walk.h"
#include "partlibrary/tool/place_pattern.h"

#include <algorithm>
#include <array>
#include <span>

namespace partkeep {

namespace {

// One edit of a library: its writer, and what is told of it.
class CEdit {
public:
    CEdit(ILibraryWriter& writer, const ToolOptions& options, CToolOutput& output)
        : writer_(writer), options_(options), output_(output), progress_(output.Progress("parts"))
    {
    }

    [[nodiscard]] ILibraryWriter& Writer() { return writer_; }
    [[nodiscard]] const ToolOptions& Options() const { return options_; }
    [[nodiscard]] bool Find(std::vector<FoundPlace>& places)
    {
        const std::vector<CPlacePattern> patterns = [this] {
            std::vector<CPlacePattern> all;
            for (const std::string& place : options_.places) {
                all.emplace_back(FromUtf8(place));
            }
            if (!options_.place.empty()) {
                all.emplace_back(FromUtf8(options_.place));
            }
            return all;
        }();
        return FindPlaces(writer_.Library(), patterns, places, problem_);
    }

    // Counts one part or folder, and tells it where somebody wants each.
    bool Did(bool done, const FoundPlace& place, const QString& to = {})
    {
        if (!done) {
            problem_ = writer_.Problem();
            if (place.part != 0 && EndOf(problem_.fault) == ToolEnd::Refused) { // told by its name alone
                problem_.subject = to.isEmpty() ? place.path : to;
            }
            return false;
        }
        ++(place.part != 0 ? parts_ : folders_);
        if (output_.Json() || options_.dry_run) {
            QJsonObject fields{
                {QStringLiteral("path"), place.path},
                {QStringLiteral("kind"), place.part != 0 ? QStringLiteral("part") : QStringLiteral("folder")}};
            if (!to.isEmpty()) {
                fields[QStringLiteral("to")] = to;
            }
            output_.Tell("changed", Printable(to.isEmpty() ? place.path : place.path + QStringLiteral(" -> ") + to),
                         fields);
        }
        return progress_(parts_ + folders_, total_) || Refuse({LibraryFault::Stopped, {}, {}});
    }
    bool Refuse(LibraryProblem problem)
    {
        problem_ = std::move(problem);
        return false;
    }
    void Expect(std::size_t total) { total_ = static_cast<qint64>(total); }

    [[nodiscard]] const LibraryProblem& Problem() const { return problem_ ? problem_ : writer_.Problem(); }
    void TellSum(const char* done)
    {
        const std::string parts = parts_ > 0 || folders_ == 0 ? Counted(parts_, "part") : "";
        const std::string folders = folders_ > 0 ? Counted(folders_, "folder") : "";
        const std::string sum = parts + (parts.empty() || folders.empty() ? "" : ", ") + folders;
        output_.Tell("done", (options_.dry_run ? "would have " : "") + std::string(done) + ' ' + sum,
                     {{QStringLiteral("parts"), parts_},
                      {QStringLiteral("folders"), folders_},
                      {QStringLiteral("dry_run"), options_.dry_run}});
    }

private:
    static std::string Counted(qint64 count, const char* what)
    {
        return std::to_string(count) + ' ' + what + (count == 1 ? "" : "s");
    }

    ILibraryWriter& writer_;
    const ToolOptions& options_;
    CToolOutput& output_;
    WorkProgress progress_;
    LibraryProblem problem_;
    qint64 parts_ = 0;
    qint64 folders_ = 0;
    qint64 total_ = 0;
};

using EditWork = bool (*)(CEdit& edit);

int Edit(ILibraryAdmin& library, const ToolOptions& options, CToolOutput& output, const char* done, EditWork work)
{
    LibraryProblem problem;
    const auto writer = library.Edit(problem);
    if (writer == nullptr) {
        return output.Fail(problem);
    }
    CEdit edit(*writer, options, output);
    if (!writer->Begin() || !work(edit)) {
        problem = edit.Problem();
        writer->Rollback();
        return output.Fail(problem);
    }
    if (options.dry_run) {
        writer->Rollback();
    } else if (!writer->Commit()) {
        problem = writer->Problem();
        writer->Rollback();
        return output.Fail(problem);
    }
    edit.TellSum(done);
    return static_cast<int>(ToolEnd::Done);
}

// What lies inside a folder stands behind it. From the inside out, a folder that goes takes none along that is named
// by itself.
void PutInnerFirst(std::vector<FoundPlace>& places)
{
    std::stable_sort(places.begin(), places.end(), [](const FoundPlace& left, const FoundPlace& right) {
        return left.path.count(u'\\') > right.path.count(u'\\');
    });
}

// In place of each folder all parts in it and in those inside it, and behind them the folders themselves, from the
// inside out. Each once.
bool Unfold(CEdit& edit, std::vector<FoundPlace>& places)
{
    IPartLibrary& library = edit.Writer().Library();
    std::vector<FoundPlace> parts;
    std::vector<FoundPlace> folders;
    for (FoundPlace& place : places) {
        if (place.part != 0) {
            parts.push_back(std::move(place));
            continue;
        }
        const auto inside = AllFolders(library, place.path);
        if (!inside) {
            return edit.Refuse(library.Problem());
        }
        for (const FolderRow& folder : *inside) {
            folders.push_back({0, folder.id, folder.path, {}});
        }
    }
    KeepFirst(folders);
    for (const FoundPlace& folder : folders) {
        const bool read = ForEachPart(library, folder.folder, [&](const PartRow& row) {
            parts.push_back({row.id, folder.folder, JoinPath(folder.path, row.name), {}});
            return true;
        });
        if (!read) {
            return edit.Refuse(library.Problem());
        }
    }
    KeepFirst(parts);
    PutInnerFirst(folders);
    places = std::move(parts);
    places.insert(places.end(), folders.begin(), folders.end());
    return true;
}

bool Remove(CEdit& edit)
{
    std::vector<FoundPlace> places;
    if (!edit.Find(places) || !Unfold(edit, places)) {
        return false;
    }
    edit.Expect(places.size());
    return std::all_of(places.begin(), places.end(), [&edit](const FoundPlace& place) {
        return edit.Did(place.part != 0 ? edit.Writer().RemoveParts(std::array{place.part})
                                        : edit.Writer().RemoveFolder(place.path),
                        place);
    });
}

bool Rename(CEdit& edit)
{
    std::vector<FoundPlace> places;
    if (!edit.Find(places)) {
        return false;
    }
    PutInnerFirst(places);
    edit.Expect(places.size());
    const QString name = FromUtf8(edit.Options().name);
    if (places.size() > 1 && !name.contains(u'*') && !name.contains(u'?')) {
        return edit.Refuse({LibraryFault::BadInput, name, QStringLiteral("one name for several")});
    }
    return std::all_of(places.begin(), places.end(), [&](const FoundPlace& place) {
        const QString now = FillWildcards(name, place.wild);
        if (const NameFault fault = CheckName(now); fault != NameFault::None) {
            return edit.Refuse({LibraryFault::NameRefused, JoinPath(place.Parent(), now), NameFaultText(fault)});
        }
        const QString path = JoinPath(place.Parent(), now);
        return edit.Did(place.part != 0 ? edit.Writer().MovePart(place.part, place.folder, now)
                                        : edit.Writer().MoveFolder(place.path, path),
                        place, path);
    });
}

bool Move(CEdit& edit)
{
    std::vector<FoundPlace> places;
    if (!edit.Find(places)) {
        return false;
    }
    PutInnerFirst(places);
    edit.Expect(places.size());
    const QString target = CPlacePattern(FromUtf8(edit.Options().folder)).Text();
    const auto folder = edit.Writer().MakeFolder(target);
    return folder && std::all_of(places.begin(), places.end(), [&](const FoundPlace& place) {
               const QString path = JoinPath(target, place.Name());
               return edit.Did(place.part != 0 ? edit.Writer().MovePart(place.part, *folder, place.Name())
                                               : edit.Writer().MoveFolder(place.path, path),
                               place, path);
           });
}

// Those of the table or of the command line over those that the part has.
bool SetOne(CEdit& edit, const std::optional<PartRow>& row, const QString& path, const PartAttributes& given,
            const QStringList& columns)
{
    if (!row) {
        return edit.Refuse(edit.Writer().Library().Problem());
    }
    const auto chosen = [&columns](const char* column, const auto& now, const auto& before) {
        return columns.contains(QLatin1String(column)) ? now : before;
    };
    return edit.Did(edit.Writer().SetAttributes(row->id, {chosen("thickness", given.thickness, row->thickness),
                                                          chosen("material", given.material, row->material),
                                                          chosen("machine", given.machine, row->machine),
                                                          chosen("comment", given.comment, row->comment)}),
                    {row->id, row->folder, path, {}});
}

bool SetByPattern(CEdit& edit)
{
    const ToolOptions& options = edit.Options();
    const auto thickness = options.thickness.empty() ? std::optional(0) : ParseThickness(FromUtf8(options.thickness));
    std::vector<FoundPlace> places;
    if (!thickness) {
        return edit.Refuse({LibraryFault::BadInput, FromUtf8(options.thickness), QStringLiteral("no thickness")});
    }
    if (!edit.Find(places) || !Unfold(edit, places)) {
        return false;
    }
    std::erase_if(places, [](const FoundPlace& place) { return place.part == 0; });
    edit.Expect(places.size());
    const PartAttributes given{*thickness, FromUtf8(options.material), FromUtf8(options.machine),
                               FromUtf8(options.comment)};
    QStringList columns;
    for (const std::string& column : options.columns) {
        columns += FromUtf8(column);
    }
    return std::all_of(places.begin(), places.end(), [&](const FoundPlace& place) {
        return SetOne(edit, edit.Writer().Library().FindPart(place.part), place.path, given, columns);
    });
}

bool SetByTable(CEdit& edit)
{
    LibraryProblem problem;
    const auto table = ReadAttributeTable(FromUtf8(edit.Options().table), problem);
    if (!table) {
        return edit.Refuse(problem);
    }
    edit.Expect(table->rows.size());
    const QString inside = CPlacePattern(FromUtf8(edit.Options().folder)).Text();
    return std::all_of(table->rows.begin(), table->rows.end(), [&](const AttributeRow& row) {
        if (row.part.isEmpty()) {
            return true;
        }
        const QString folder = JoinPath(inside, FolderPath(row.folder));
        const auto part = edit.Writer().Library().FindPart(folder, row.part);
        if (!part) {
            problem = edit.Writer().Library().Problem();
            problem.detail = FromUtf8(edit.Options().table) + QStringLiteral(", line %1").arg(row.line);
            return edit.Refuse(problem);
        }
        return SetOne(edit, part, JoinPath(folder, row.part), row.attributes, table->columns);
    });
}

} // namespace

int RemovePlaces(ILibraryAdmin& library, const ToolOptions& options, CToolOutput& output)
{
    return Edit(library, options, output, "removed", Remove);
}

int RenamePlaces(ILibraryAdmin& library, const ToolOptions& options, CToolOutput& output)
{
    return Edit(library, options, output, "renamed", Rename);
}

int MovePlaces(ILibraryAdmin& library, const ToolOptions& options, CToolOutput& output)
{
    return Edit(library, options, output, "moved", Move);
}

int SetAttributes(ILibraryAdmin& library, const ToolOptions& options, CToolOutput& output)
{
    return Edit(library, options, output, "set", options.table.empty() ? SetByPattern : SetByTable);
}

} // namespace partkeep
