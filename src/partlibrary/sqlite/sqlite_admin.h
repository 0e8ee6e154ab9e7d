// What an administrator does to a library that is a SQLite file.
#pragma once

#include "partlibrary/library/library_admin.h"

namespace partkeep {

class CSqliteAdmin : public ILibraryAdmin {
public:
    explicit CSqliteAdmin(QString file) : file_(std::move(file)) {} // a native path

    [[nodiscard]] QString Name() const override { return file_; }
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
    QString file_;
};

} // namespace partkeep
