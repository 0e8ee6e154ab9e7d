#include "partlibrary/sqlite/sqlite_admin.h"

#include "partlibrary/library/library_names.h"
#include "partlibrary/library/library_text.h"
#include "partlibrary/sqlite/library_backup.h"
#include "partlibrary/sqlite/library_beside.h"
#include "partlibrary/sqlite/library_check.h"
#include "partlibrary/sqlite/library_salvage.h"
#include "partlibrary/sqlite/sqlite_library.h"
#include "partlibrary/sqlite/sqlite_writer.h"

#include <QFileInfo>

namespace partkeep {

namespace {

// A server of that name could be shown.
bool CheckPlace(const QString& file, LibraryProblem& problem)
{
    const QString ending = FromWide(library_extension);
    const QString name = QFileInfo(file).fileName();
    if (!name.endsWith(ending)) {
        problem = {LibraryFault::NameRefused, file, QStringLiteral("a library's name ends in .kpl")};
    } else if (const NameFault fault = CheckName(QStringView(name).chopped(ending.size())); fault != NameFault::None) {
        problem = {LibraryFault::NameRefused, file, NameFaultText(fault)};
    }
    return !problem;
}

// The damaged one stays at hand under the first name of these that is free.
bool KeepDamaged(const QString& file, LibraryProblem& problem)
{
    for (int number = 1; number < 1000; ++number) {
        const QString kept = file + QStringLiteral(".damaged-%1").arg(number);
        if (!QFileInfo::exists(kept)) {
            return CLibraryBeside::Keep(file, kept, problem);
        }
    }
    problem = {LibraryFault::AlreadyThere, file + QStringLiteral(".damaged-1"), {}};
    return false;
}

} // namespace

std::unique_ptr<IPartLibrary> CSqliteAdmin::Open(LibraryProblem& problem)
{
    return CSqliteLibrary::Open(file_, problem, OpenMode::ReadAll);
}

std::unique_ptr<ILibraryWriter> CSqliteAdmin::Edit(LibraryProblem& problem)
{
    return CSqliteWriter::Open(file_, problem);
}

bool CSqliteAdmin::Create(bool dry_run, LibraryProblem& problem)
{
    if (!CheckPlace(file_, problem)) {
        return false;
    }
    if (dry_run && QFileInfo::exists(file_)) {
        problem = {LibraryFault::AlreadyThere, file_, {}};
        return false;
    }
    return dry_run || CSqliteWriter::Create(file_, problem);
}

bool CSqliteAdmin::Backup(const QString& target, bool replace, bool dry_run, const WorkProgress& progress,
                          LibraryProblem& problem)
{
    const QFileInfo there(target);
    if (there.exists() && (!replace || !there.isFile() || there == QFileInfo(file_))) {
        problem = {LibraryFault::AlreadyThere, target, {}};
        return false;
    }
    if (dry_run) {
        return Open(problem) != nullptr;
    }
    const auto copy = CLibraryBeside::Make(target, problem);
    return copy != nullptr && CopyLibrary(file_, copy->File(), progress, problem) && copy->Put(replace, problem);
}

std::optional<LibraryCheck> CSqliteAdmin::Check(const WorkProgress& progress, LibraryProblem& problem)
{
    return CheckLibrary(file_, progress, problem);
}

bool CSqliteAdmin::Rebuild(const WorkProgress& progress, LibraryProblem& problem)
{
    const auto writer = CSqliteWriter::Open(file_, problem);
    if (writer == nullptr) {
        return false;
    }
    if (!writer->Rebuild(progress)) {
        problem = writer->Problem();
    }
    return !problem;
}

std::optional<LibraryRepair> CSqliteAdmin::Repair(bool dry_run, const WorkProgress& progress, LibraryProblem& problem)
{
    LibraryRepair repair;
    LibraryProblem unreadable;
    const auto check = CheckLibrary(file_, progress, unreadable);
    if (check && check->findings.isEmpty()) {
        repair.kept = *check;
        return repair;
    }
    if (!check && unreadable.fault != LibraryFault::Damaged) {
        problem = unreadable;
        return std::nullopt;
    }
    repair.mended = check ? check->findings : QStringList(FromUtf8(ProblemText(unreadable)));
    const std::string empty = CSqliteWriter::EmptyLibrary(problem);
    const auto fresh = !problem ? CLibraryBeside::Make(file_, problem) : nullptr;
    if (fresh == nullptr || !fresh->Write(empty, problem)) {
        return std::nullopt;
    }
    const auto held = SalvageLibrary(file_, fresh->File(), progress, repair, problem);
    const auto made = held != nullptr ? CheckLibrary(fresh->File(), progress, problem) : std::nullopt;
    if (!made) {
        return std::nullopt;
    }
    if (!made->findings.isEmpty()) {
        problem = {LibraryFault::Failed, file_, made->findings.front()};
        return std::nullopt;
    }
    repair.kept = *made;
    repair.mended.removeIf([&repair](const QString& line) { return repair.dropped.contains(line); });
    const bool put = dry_run || (KeepDamaged(file_, problem) && fresh->Put(true, problem));
    return put ? std::optional(std::move(repair)) : std::nullopt;
}

} // namespace partkeep
