// What an administrator does to a library in a database. Making copies of a whole database, and repairing one, is what
// the server's own tools are for.
#pragma once

#include "partlibrary/library/library_admin.h"
#include "partlibrary/postgres/pg_place.h"

namespace partkeep {

class CPgAdmin : public ILibraryAdmin {
public:
    explicit CPgAdmin(PgPlace place) : place_(std::move(place)) {}

    [[nodiscard]] QString Name() const override { return place_.Text(); }
    [[nodiscard]] std::unique_ptr<IPartLibrary> Open(LibraryProblem& problem) override;
    [[nodiscard]] std::unique_ptr<ILibraryWriter> Edit(LibraryProblem& problem) override;
    bool Create(bool dry_run, LibraryProblem& problem) override;
    bool Backup(const QString& target, bool replace, bool dry_run, const WorkProgress& progress,
                LibraryProblem& problem) override;
    [[nodiscard]] std::optional<LibraryCheck> Check(const WorkProgress& progress, LibraryProblem& problem) override;
    bool Rebuild(const WorkProgress& progress, LibraryProblem& problem) override;
    [[nodiscard]] std::optional<LibraryRepair> Repair(bool dry_run, const WorkProgress& progress,
                                                      LibraryProblem& problem) override;

private:
    PgPlace place_;
};

} // namespace partkeep
