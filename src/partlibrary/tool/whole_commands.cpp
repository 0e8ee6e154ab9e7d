#include "partlibrary/tool/whole_commands.h"

#include "partlibrary/import/library_extract.h"
#include "partlibrary/import/library_import.h"
#include "partlibrary/library/library_copy.h"
#include "partlibrary/library/library_text.h"
#include "partlibrary/tool/place_pattern.h"

namespace partkeep {

namespace {

constexpr int done = static_cast<int>(ToolEnd::Done);

// "imported 3 parts", or with --dry-run "would have imported 3 parts".
std::string Deed(const ToolOptions& options, const std::string& what)
{
    return (options.dry_run ? "would have " : "") + what;
}

} // namespace

int CreateLibrary(ILibraryAdmin& library, const ToolOptions& options, CToolOutput& output)
{
    LibraryProblem problem;
    if (!library.Create(options.dry_run, problem)) {
        return output.Fail(problem);
    }
    output.Tell("done", Deed(options, "created " + Printable(library.Name())),
                {{QStringLiteral("library"), library.Name()}, {QStringLiteral("dry_run"), options.dry_run}});
    return done;
}

int ImportParts(ILibraryAdmin& library, const ToolOptions& options, CToolOutput& output)
{
    LibraryProblem problem;
    const auto writer = library.Edit(problem);
    if (writer == nullptr) {
        return output.Fail(problem);
    }
    ImportReport report;
    const ImportOptions import{FromUtf8(options.other),
                               CPlacePattern(FromUtf8(options.folder)).Text(),
                               FromUtf8(options.table),
                               {},
                               output.Progress("files and parts"),
                               options.dry_run};
    if (!ImportFolder(*writer, import, report, problem)) {
        return output.Fail(problem);
    }
    for (const QString& skipped : report.skipped) {
        output.Warn("skipped", skipped + QStringLiteral(": skipped (no file of a part)"),
                    {{QStringLiteral("path"), skipped}});
    }
    output.Tell("done",
                Deed(options, "imported " + std::to_string(report.parts) + " parts with " +
                                  std::to_string(report.files) + " files"),
                {{QStringLiteral("parts"), report.parts},
                 {QStringLiteral("files"), report.files},
                 {QStringLiteral("dry_run"), options.dry_run}});
    return done;
}

int ExtractParts(ILibraryAdmin& library, const ToolOptions& options, CToolOutput& output)
{
    LibraryProblem problem;
    const auto open = library.Open(problem);
    if (open == nullptr) {
        return output.Fail(problem);
    }
    ExtractReport report;
    const QString table = FromUtf8(options.table);
    QString target = FromUtf8(options.other);
    while (target.size() > 1 && target.endsWith(u'/')) {
        target.chop(1);
    }
    const ExtractOptions extract{target, CPlacePattern(FromUtf8(options.folder)).Text(),
                                 table.isEmpty() ? target + QStringLiteral(".csv") : table, output.Progress("parts"),
                                 options.dry_run};
    if (!ExtractLibrary(*open, extract, report, problem)) {
        return output.Fail(problem);
    }
    output.Tell("done",
                Deed(options, "extracted " + std::to_string(report.parts) + " parts with " +
                                  std::to_string(report.files) + " files"),
                {{QStringLiteral("parts"), report.parts},
                 {QStringLiteral("files"), report.files},
                 {QStringLiteral("bytes"), report.bytes},
                 {QStringLiteral("dry_run"), options.dry_run}});
    return output.EndWithout(open->Refused());
}

int BackUp(ILibraryAdmin& library, const ToolOptions& options, CToolOutput& output)
{
    LibraryProblem problem;
    const QString target = FromUtf8(options.other);
    if (!library.Backup(target, options.replace, options.dry_run, output.Progress("pages"), problem)) {
        return output.Fail(problem);
    }
    output.Tell("done", Deed(options, "backed up to " + Printable(target)),
                {{QStringLiteral("library"), target}, {QStringLiteral("dry_run"), options.dry_run}});
    return done;
}

int CopyTo(ILibraryAdmin& library, ILibraryAdmin& target, const ToolOptions& options, CToolOutput& output)
{
    LibraryProblem problem;
    const auto from = library.Open(problem);
    if (from == nullptr) {
        return output.Fail(problem);
    }
    const bool made = target.Create(options.dry_run, problem);
    if (!made && (options.dry_run || problem.fault != LibraryFault::AlreadyThere)) {
        return output.Fail(problem);
    }
    if (!options.dry_run) { // what an attempt that failed has left is empty
        const auto to = target.Edit(problem);
        problem = to != nullptr ? LibraryProblem() : problem;
        if (to == nullptr || !CopyWholeLibrary(*from, *to, output.Progress("parts"), problem)) {
            problem.subject = problem.subject.isEmpty() ? target.Name() : problem.subject;
            return output.Fail(problem);
        }
    }
    output.Tell("done", Deed(options, "copied to " + Printable(target.Name())),
                {{QStringLiteral("library"), target.Name()}});
    return done;
}

int Repair(ILibraryAdmin& library, const ToolOptions& options, CToolOutput& output)
{
    LibraryProblem problem;
    const auto repair = library.Repair(options.dry_run, output.Progress("files or parts"), problem);
    if (!repair) {
        return output.Fail(problem);
    }
    for (const QString& line : repair->mended) {
        output.Warn("mended", line, {});
    }
    for (const QString& line : repair->dropped) {
        output.Warn("dropped", line, {});
    }
    const bool sound = repair->mended.isEmpty() && repair->dropped.isEmpty();
    output.Tell("done",
                (sound ? "nothing to repair in " : Deed(options, "repaired ")) + Printable(library.Name()) + ": " +
                    std::to_string(repair->kept.parts) + " parts, " + std::to_string(repair->kept.files) + " files",
                {{QStringLiteral("parts"), repair->kept.parts},
                 {QStringLiteral("files"), repair->kept.files},
                 {QStringLiteral("dropped"), repair->dropped.size()},
                 {QStringLiteral("dry_run"), options.dry_run}});
    return static_cast<int>(repair->dropped.isEmpty() ? ToolEnd::Done : ToolEnd::Found);
}

} // namespace partkeep
