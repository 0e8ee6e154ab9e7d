#include "partlibrary/sqlite/library_beside.h"

#include "partlibrary/library/library_text.h"
#include "partlibrary/sqlite/left_journal.h"
#include "platform/posix/temporary_files.h"

#include <QFileInfo>

#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace partkeep {

namespace {

bool Fail(LibraryProblem& problem, const QString& file)
{
    problem = WriteProblem(errno, file);
    return false;
}

} // namespace

std::unique_ptr<CLibraryBeside> CLibraryBeside::Make(const QString& place, LibraryProblem& problem)
{
    const QString folder = QFileInfo(place).absolutePath();
    RemoveLeftOvers(ToUtf8(folder));
    const QString file = folder + u'/' + FromUtf8(NewTemporaryName());
    CFileHandle handle = CFileHandle::Open(ToUtf8(file), O_RDWR | O_CREAT | O_EXCL, 0666);
    if (!handle.IsOpen()) {
        Fail(problem, place);
        return nullptr;
    }
    HoldTemporaryFile(handle.Descriptor());
    return std::unique_ptr<CLibraryBeside>(new CLibraryBeside(place, file, std::move(handle)));
}

CLibraryBeside::~CLibraryBeside()
{
    if (!put_) {
        unlink(ToUtf8(file_).c_str());
    }
}

bool CLibraryBeside::Write(std::string_view bytes, LibraryProblem& problem)
{
    return handle_.WriteAll(bytes) || Fail(problem, place_);
}

bool CLibraryBeside::Keep(const QString& place, const QString& name, LibraryProblem& problem)
{
    return link(ToUtf8(place).c_str(), ToUtf8(name).c_str()) == 0 || Fail(problem, name);
}

// A library that is replaced keeps its mode; where the system allows it, its owner, too.
bool CLibraryBeside::Put(bool replace, LibraryProblem& problem)
{
    struct stat old {};
    const std::string place = ToUtf8(place_);
    if (replace && stat(place.c_str(), &old) == 0) {
        static_cast<void>(fchown(handle_.Descriptor(), old.st_uid, old.st_gid) == 0 ||
                          fchown(handle_.Descriptor(), static_cast<uid_t>(-1), old.st_gid) == 0);
        static_cast<void>(fchmod(handle_.Descriptor(), old.st_mode & 07777));
    }
    if (fsync(handle_.Descriptor()) != 0) {
        return Fail(problem, place_);
    }
    if (!SetForeignJournalAside(place_, problem)) {
        return false;
    }
    const unsigned flags = replace ? 0 : RENAME_NOREPLACE;
    put_ = renameat2(AT_FDCWD, ToUtf8(file_).c_str(), AT_FDCWD, place.c_str(), flags) == 0;
    if (!put_) {
        return Fail(problem, place_);
    }
    const CFileHandle folder = CFileHandle::Open(ToUtf8(QFileInfo(place_).absolutePath()), O_RDONLY | O_DIRECTORY);
    static_cast<void>(fsync(folder.Descriptor())); // not every file system can
    return true;
}

} // namespace partkeep
