// A library file that is made beside its place, and put there when it is whole. One that is not goes, with this object
// or, where the process died, with the next file that is made in the folder.
#pragma once

#include "partlibrary/library/library_problem.h"
#include "platform/posix/file_handle.h"

#include <QString>

#include <memory>
#include <string_view>

namespace partkeep {

class CLibraryBeside {
public:
    // Null on failure, with the reason. `place` is a native path.
    [[nodiscard]] static std::unique_ptr<CLibraryBeside> Make(const QString& place, LibraryProblem& problem);
    ~CLibraryBeside();
    CLibraryBeside(const CLibraryBeside&) = delete;
    CLibraryBeside& operator=(const CLibraryBeside&) = delete;

    [[nodiscard]] const QString& File() const { return file_; } // empty at first
    bool Write(std::string_view bytes, LibraryProblem& problem);
    // What stands in the place already stays unless `replace` is set. Nobody may have the file open as a library.
    bool Put(bool replace, LibraryProblem& problem);

    // Gives the file that stands there now a second name, under which it stays.
    static bool Keep(const QString& place, const QString& name, LibraryProblem& problem);

private:
    CLibraryBeside(QString place, QString file, CFileHandle handle)
        : place_(std::move(place)), file_(std::move(file)), handle_(std::move(handle))
    {
    }

    QString place_;
    QString file_;
    CFileHandle handle_; // holds the lock that tells that somebody is at work on it
    bool put_ = false;
};

} // namespace partkeep
