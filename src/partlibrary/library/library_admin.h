// What an administrator does to a library as a whole. How that is done is each engine's own affair; whatever goes part
// by part is done through IPartLibrary and ILibraryWriter instead.
#pragma once

#include "partlibrary/library/library_problem.h"
#include "partlibrary/library/library_writer.h"
#include "partlibrary/library/part_library.h"

#include <QStringList>

#include <functional>
#include <memory>
#include <optional>

namespace partkeep {

inline constexpr int max_findings = 100;

// Told of a library whose keys are by other rules than those of now.
inline constexpr const char* other_keys_text =
    "its keys are by other rules: lists are slow until partkeep-library check --rebuild makes them anew";

struct LibraryCheck {
    qint64 folders = 0;
    qint64 parts = 0;
    qint64 files = 0;
    QStringList findings; // a line each; empty for a sound library; at most max_findings
};

struct LibraryRepair {
    LibraryCheck kept;
    QStringList mended;  // a line each: what was made anew from other data
    QStringList dropped; // a line each: what could not be kept
};

// Is told from time to time how much is done, of what; a total of 0 is not known yet. False ends the work, which then
// fails as Stopped.
using WorkProgress = std::function<bool(qint64 done, qint64 total)>;

class ILibraryAdmin {
public:
    virtual ~ILibraryAdmin() = default;

    [[nodiscard]] virtual QString Name() const = 0; // the place, as it was given

    // For a look through the whole library: without the limits that keep a browser from waiting, and with little
    // memory.
    [[nodiscard]] virtual std::unique_ptr<IPartLibrary> Open(LibraryProblem& problem) = 0;
    [[nodiscard]] virtual std::unique_ptr<ILibraryWriter> Edit(LibraryProblem& problem) = 0;

    // An empty library where there is none. With `dry_run` here and below nothing is written, and only what stands
    // against it is told.
    virtual bool Create(bool dry_run, LibraryProblem& problem) = 0;

    // Copies one state of the library, while others read and write, to a place of the same kind (for a file, another
    // file). What stands there is left alone unless `replace` is set, and as it was until the copy is whole.
    virtual bool Backup(const QString& target, bool replace, bool dry_run, const WorkProgress& progress,
                        LibraryProblem& problem) = 0;

    // Nothing when the library cannot be read to its end.
    [[nodiscard]] virtual std::optional<LibraryCheck> Check(const WorkProgress& progress, LibraryProblem& problem) = 0;

    // Makes all keys, search texts and their index anew, by the rules of now.
    virtual bool Rebuild(const WorkProgress& progress, LibraryProblem& problem) = 0;

    // Makes a library sound again: what follows from other data is made anew, what cannot be is dropped. Nothing when
    // that fails; the library is then as it was.
    [[nodiscard]] virtual std::optional<LibraryRepair> Repair(bool dry_run, const WorkProgress& progress,
                                                              LibraryProblem& problem) = 0;
};

} // namespace partkeep
