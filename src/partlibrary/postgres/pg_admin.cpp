#include "partlibrary/postgres/pg_admin.h"

#include "partlibrary/library/library_copy.h"
#include "partlibrary/library/library_names.h"
#include "partlibrary/library/library_text.h"
#include "partlibrary/postgres/pg_check.h"
#include "partlibrary/postgres/pg_library.h"
#include "partlibrary/postgres/pg_schema.h"
#include "partlibrary/postgres/pg_writer.h"

#include <array>

namespace partkeep {

std::unique_ptr<IPartLibrary> CPgAdmin::Open(LibraryProblem& problem)
{
    return CPgLibrary::Open(place_, PgUse::Whole, problem);
}

std::unique_ptr<ILibraryWriter> CPgAdmin::Edit(LibraryProblem& problem)
{
    return CPgWriter::Open(place_, problem);
}

bool CPgAdmin::Create(bool dry_run, LibraryProblem& problem)
{
    if (const NameFault fault = CheckName(place_.server); fault != NameFault::None) {
        problem = {LibraryFault::NameRefused, place_.Text(), NameFaultText(fault)};
        return false;
    }
    if (!IsSchemaName(place_.server)) {
        problem = {LibraryFault::NameRefused, place_.Text(),
                   QStringLiteral("a schema has at most 63 bytes, does not begin with pg_, and is not $user")};
        return false;
    }
    const auto connection = CPgConnection::Open(place_, PgUse::Administer, problem);
    if (connection == nullptr) {
        return false;
    }
    if (!dry_run) {
        return CreatePgSchema(*connection, problem);
    }
    const auto there = connection->Ask(CSql("SELECT 1 FROM pg_namespace WHERE nspname = ").Value(place_.server));
    problem = !there              ? connection->Problem()
              : there->Rows() > 0 ? LibraryProblem{LibraryFault::AlreadyThere, place_.Text(), {}}
                                  : LibraryProblem();
    return !problem;
}

bool CPgAdmin::Backup(const QString& /*target*/, bool /*replace*/, bool /*dry_run*/, const WorkProgress& /*progress*/,
                      LibraryProblem& problem)
{
    problem = {LibraryFault::BadInput, place_.Text(), QStringLiteral("a copy out of a database replaces nothing")};
    return false;
}

std::optional<LibraryCheck> CPgAdmin::Check(const WorkProgress& progress, LibraryProblem& problem)
{
    return CheckPgLibrary(place_, progress, problem);
}

bool CPgAdmin::Rebuild(const WorkProgress& progress, LibraryProblem& problem)
{
    const auto writer = CPgWriter::Open(place_, problem);
    if (writer == nullptr) {
        return false;
    }
    if (!writer->Rebuild(progress)) {
        problem = writer->Problem();
    }
    return !problem;
}

std::optional<LibraryRepair> CPgAdmin::Repair(bool /*dry_run*/, const WorkProgress& progress, LibraryProblem& problem)
{
    const auto check = Check(progress, problem);
    if (check && !check->findings.isEmpty()) {
        problem = {
            LibraryFault::BadInput, place_.Text(),
            QStringLiteral("check --rebuild makes keys and the search index anew; for the rest restore a backup")};
    }
    return check && !problem ? std::optional(LibraryRepair{*check, {}, {}}) : std::nullopt;
}

} // namespace partkeep
