#include "partlibrary/tool/look_commands.h"

#include "partlibrary/library/library_names.h"
#include "partlibrary/library/library_text.h"
#include "partlibrary/library/library_walk.h"
#include "partlibrary/tool/library_diff.h"
#include "partlibrary/tool/place_pattern.h"

#include <QJsonArray>

#include <algorithm>

namespace partkeep {

namespace {

constexpr qint64 page_rows = 500;

QStringList SlotNames(SlotSet slots)
{
    QStringList names;
    for (const FileKind& row : file_kinds) {
        if ((slots & SetOf(row.slot)) != 0) {
            names += row.tag.empty() ? FromWide(row.extension) : FromUtf8(row.tag);
        }
    }
    return names;
}

QString ThicknessText(std::int32_t thickness)
{
    return QString::number(thickness / 10000.0, 'f', 4);
}

void TellPart(const QString& folder, const PartRow& part, CToolOutput& output)
{
    const QStringList files = SlotNames(part.slots);
    if (output.Json()) {
        output.Tell("part", {},
                    {{QStringLiteral("folder"), folder},
                     {QStringLiteral("part"), part.name},
                     {QStringLiteral("thickness"), ThicknessText(part.thickness)},
                     {QStringLiteral("material"), part.material},
                     {QStringLiteral("machine"), part.machine},
                     {QStringLiteral("comment"), part.comment},
                     {QStringLiteral("files"), QJsonArray::fromStringList(files)}});
        return;
    }
    std::string line;
    for (const QString& text : {folder, part.name, ThicknessText(part.thickness), part.material, part.machine,
                                files.join(u' '), part.comment}) {
        line += Printable(text) + '\t';
    }
    line.pop_back();
    output.Tell("part", line, {});
}

// In the order of the browser.
bool TellFolder(IPartLibrary& library, const FolderRow& folder, CToolOutput& output, LibraryProblem& problem)
{
    PartListView view;
    view.folder = folder.id;
    const auto list = library.List(view, folder.parts, nullptr);
    list->Finish();
    for (qint64 first = 0; first < list->Count(); first += page_rows) {
        const std::vector<PartRow> rows = list->Rows(first, page_rows);
        for (const PartRow& part : rows) {
            TellPart(folder.path, part, output);
        }
        problem = stop_asked ? LibraryProblem{LibraryFault::Stopped, {}, {}} : LibraryProblem();
        if (problem || static_cast<qint64>(rows.size()) < std::min(page_rows, list->Count() - first)) {
            problem = problem ? problem : library.Problem();
            return false;
        }
    }
    problem = list->Failed() ? library.Problem() : LibraryProblem();
    return !problem;
}

// What lies directly in a folder, as a command line names it.
bool TellNames(IPartLibrary& library, const FolderRow& folder, CToolOutput& output, LibraryProblem& problem)
{
    const auto tell = [&](const QString& name, bool of_folder) {
        const QString path =
            JoinPath(folder.path, name).replace(u'\\', u'/') + (of_folder ? QStringLiteral("/") : QString());
        output.Tell("name", Printable(path), {{QStringLiteral("path"), QString(path).replace(u'/', u'\\')}});
        return !stop_asked;
    };
    const auto inside = library.Folders(folder.path);
    for (const FolderRow& row : inside.value_or(std::vector<FolderRow>())) {
        tell(row.name, true);
    }
    if (inside && ForEachPart(library, folder.id, [&](const PartRow& row) { return tell(row.name, false); })) {
        return true;
    }
    problem = stop_asked ? LibraryProblem{LibraryFault::Stopped, {}, {}} : library.Problem();
    return false;
}

// Those that a command line names: the folder or, by a pattern, several; unless only names are asked for, with those
// inside them.
std::optional<std::vector<FolderRow>> ChosenFolders(IPartLibrary& library, const ToolOptions& options,
                                                    LibraryProblem& problem)
{
    const CPlacePattern place(FromUtf8(options.folder));
    if (options.names && place.IsPlain()) {
        const auto folder = library.FindFolder(place.Text());
        problem = folder ? LibraryProblem() : library.Problem();
        return folder ? std::optional(std::vector{*folder}) : std::nullopt;
    }
    const CPlacePattern inside(place.Text() + (options.names ? QStringLiteral("\\*") : QStringLiteral("\\**")));
    auto folders = AllFolders(library, place.IsPlain() ? place.Text() : QString());
    if (!folders) {
        problem = library.Problem();
        return std::nullopt;
    }
    std::erase_if(*folders, [&](const FolderRow& row) { return !place.IsPlain() && !inside.MayHold(row.path); });
    problem = folders->empty() ? LibraryProblem{LibraryFault::NoFolder, place.Text(), {}} : LibraryProblem();
    return problem ? std::nullopt : std::move(folders);
}

bool TellAll(IPartLibrary& library, const ToolOptions& options, CToolOutput& output, LibraryProblem& problem)
{
    const auto folders = ChosenFolders(library, options, problem);
    return folders && std::all_of(folders->begin(), folders->end(), [&](const FolderRow& row) {
               return options.names ? TellNames(library, row, output, problem)
                                    : TellFolder(library, row, output, problem);
           });
}

} // namespace

int ListParts(ILibraryAdmin& library, const ToolOptions& options, CToolOutput& output)
{
    LibraryProblem problem;
    const auto open = library.Open(problem);
    if (open == nullptr || !TellAll(*open, options, output, problem)) {
        return output.Fail(problem);
    }
    if (open->HasOtherKeys()) {
        output.Warn("warning", library.Name() + QStringLiteral(": ") + QLatin1String(other_keys_text), {});
    }
    return output.EndWithout(open->Refused());
}

int CheckOrRebuild(ILibraryAdmin& library, const ToolOptions& options, CToolOutput& output)
{
    LibraryProblem problem;
    if (options.rebuild && !options.dry_run && !library.Rebuild(output.Progress("parts"), problem)) {
        return output.Fail(problem);
    }
    const auto check = library.Check(output.Progress("files"), problem);
    if (!check) {
        return output.Fail(problem);
    }
    for (const QString& finding : check->findings) {
        output.Warn("finding", library.Name() + QStringLiteral(": ") + finding, {});
    }
    if (!check->findings.isEmpty()) {
        return static_cast<int>(ToolEnd::Found);
    }
    output.Tell("done",
                Printable(library.Name()) + " is sound: " + std::to_string(check->folders) + " folders, " +
                    std::to_string(check->parts) + " parts, " + std::to_string(check->files) + " files",
                {{QStringLiteral("folders"), check->folders},
                 {QStringLiteral("parts"), check->parts},
                 {QStringLiteral("files"), check->files}});
    return static_cast<int>(ToolEnd::Done);
}

int TellDifferences(ILibraryAdmin& library, ILibraryAdmin& other, CToolOutput& output)
{
    LibraryProblem problem;
    const auto left = library.Open(problem);
    const auto right = left != nullptr ? other.Open(problem) : nullptr;
    qint64 count = 0;
    const auto tell = [&](const PartDifference& difference) {
        ++count;
        const char* const mark = difference.fields.isEmpty() ? (difference.in_first ? "- " : "+ ") : "~ ";
        const QString fields = difference.fields.join(u' ');
        const QString text = difference.path + (fields.isEmpty() ? QString() : QStringLiteral(": ") + fields);
        output.Tell("difference", mark + Printable(text),
                    {{QStringLiteral("path"), difference.path},
                     {QStringLiteral("kind"),
                      QLatin1String(difference.fields.isEmpty() ? (difference.in_first ? "only-first" : "only-second")
                                                                : "both")},
                     {QStringLiteral("fields"), QJsonArray::fromStringList(difference.fields)}});
    };
    if (right == nullptr || !CompareLibraries(*left, *right, tell, output.Progress("parts"), problem)) {
        return output.Fail(problem);
    }
    return static_cast<int>(count == 0 ? ToolEnd::Done : ToolEnd::Found);
}

} // namespace partkeep
