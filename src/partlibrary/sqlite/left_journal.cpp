// A journal as the engine writes it: a header that fills a sector and begins
//
//   0  8 bytes that mark a journal      20  bytes of a sector      24  bytes of a page
//
// and then each page with its number before it and a sum behind it. A journal without one page belongs to a change
// that had not reached the library yet. Our writer changes the first page before any
// other, so its old form is the first that a journal has. Numbers are big-endian.
//
// The first page of the library tells whose it is: the library's mark, as text among the names of the tables, and at
// 24 a count of its changes, which the change that was cut off may have raised by one.
#include "partlibrary/sqlite/left_journal.h"

#include "partlibrary/library/library_text.h"
#include "partlibrary/sqlite/connection.h"
#include "partlibrary/sqlite/engine_files.h"
#include "partlibrary/sqlite/schema.h"

#include <QFile>
#include <QFileInfo>
#include <QRandomGenerator>
#include <QtEndian>

#include <algorithm>
#include <fcntl.h>
#include <sqlite3.h>
#include <sys/stat.h>
#include <unistd.h>

namespace partkeep {

namespace {

constexpr char journal_mark[] = "\xd9\xd5\x05\xf9\x20\xa1\x63\xd7";
constexpr qsizetype change_count = 24;

quint32 Number(const QByteArray& bytes, qsizetype offset)
{
    return bytes.size() >= offset + 4 ? qFromBigEndian<quint32>(bytes.constData() + offset) : 0;
}

// Not for a library: whoever closes a descriptor of it drops all locks that the process has there.
QByteArray ReadStart(const QString& file, qsizetype size)
{
    const int descriptor = open(QFile::encodeName(file).constData(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    QByteArray bytes(size, Qt::Uninitialized);
    const ssize_t got = descriptor >= 0 ? pread(descriptor, bytes.data(), static_cast<std::size_t>(size), 0) : 0;
    if (descriptor >= 0) {
        close(descriptor);
    }
    bytes.truncate(std::max<qsizetype>(got, 0));
    return bytes;
}

// The library as the engine has it open, without asking for a lock.
class CLibraryFile {
public:
    explicit CLibraryFile(const QString& library)
    {
        code_ = sqlite3_open_v2(ToUtf8(library).c_str(), &database_, SQLITE_OPEN_READONLY | SQLITE_OPEN_NOMUTEX,
                                EngineFiles());
        if (database_ != nullptr) { // there is none without memory
            sqlite3_file_control(database_, "main", SQLITE_FCNTL_FILE_POINTER, &file_);
        }
    }
    ~CLibraryFile() { sqlite3_close_v2(database_); }
    CLibraryFile(const CLibraryFile&) = delete;
    CLibraryFile& operator=(const CLibraryFile&) = delete;

    [[nodiscard]] bool IsOpen() const { return file_ != nullptr && file_->pMethods != nullptr; }
    [[nodiscard]] int Code() const { return code_; } // of the engine, for the opening
    [[nodiscard]] QByteArray FirstPage() const
    {
        QByteArray page(page_bytes, '\0');
        return IsOpen() && file_->pMethods->xRead(file_, page.data(), page_bytes, 0) == SQLITE_OK ? page : QByteArray();
    }
    // A change is under way, and the journal belongs to it.
    [[nodiscard]] bool IsBeingChanged() const
    {
        int reserved = 0;
        return IsOpen() && file_->pMethods->xCheckReservedLock(file_, &reserved) == SQLITE_OK && reserved != 0;
    }

private:
    int code_ = SQLITE_OK;
    sqlite3* database_ = nullptr;
    sqlite3_file* file_ = nullptr;
};

enum class Owner { ThisState, Another, Unknown };

Owner OwnerOf(const QByteArray& journal, const QByteArray& library)
{
    const qsizetype sector = Number(journal, 20);
    if (journal.isEmpty() || journal.front() == '\0') {
        return Owner::ThisState; // the engine takes no notice of it
    }
    if (!journal.startsWith(journal_mark) || Number(journal, 24) != page_bytes || sector > page_bytes ||
        journal.size() < sector + page_bytes + 8) {
        return Owner::Another;
    }
    if (Number(journal, sector) != 1) {
        return Owner::Unknown;
    }
    const QByteArray before = journal.mid(sector + 4, page_bytes);
    const quint32 since = Number(library, change_count) - Number(before, change_count);
    const QByteArray mark = LibraryMark(library);
    return since <= 1 && !mark.isEmpty() && mark == LibraryMark(before) ? Owner::ThisState : Owner::Another;
}

struct stat StatusOf(const QString& file)
{
    struct stat status = {};
    const bool found = lstat(QFile::encodeName(file).constData(), &status) == 0;
    status.st_ino = found ? status.st_ino : 0;
    return status;
}

bool Refuse(LibraryProblem& problem, const QString& library)
{
    problem = {LibraryFault::Unfinished, library, QStringLiteral("the journal beside it may be another library's")};
    return false;
}

} // namespace

// A writer that begins between the look and the renaming keeps its journal: it is put back.
bool SetForeignJournalAside(const QString& library, LibraryProblem& problem)
{
    const QString itself = QFileInfo(library).canonicalFilePath(); // beside which the engine looks
    const QString journal = (itself.isEmpty() ? library : itself) + QStringLiteral("-journal");
    const struct stat status = StatusOf(journal);
    if (status.st_ino == 0) {
        return true;
    }
    const CLibraryFile file(library);
    if (!file.IsOpen() && QFile::exists(library)) { // whose the journal is cannot be told
        problem = ProblemOfCode(file.Code(), library);
        return false;
    }
    if (file.IsBeingChanged()) {
        return true;
    }
    const Owner owner = S_ISREG(status.st_mode)
                            ? OwnerOf(ReadStart(journal, qsizetype{3} * page_bytes), file.FirstPage())
                            : Owner::Another; // the engine writes none as a link or a pipe
    if (owner != Owner::Another) {
        return owner == Owner::ThisState || Refuse(problem, library);
    }
    const QString aside =
        journal + QStringLiteral("-foreign-") + QString::number(QRandomGenerator::system()->generate64(), 16);
    const QByteArray name = QFile::encodeName(aside);
    if (rename(QFile::encodeName(journal).constData(), name.constData()) != 0) {
        return Refuse(problem, library);
    }
    if (StatusOf(aside).st_ino != status.st_ino) {
        static_cast<void>(link(name.constData(), QFile::encodeName(journal).constData()));
        unlink(name.constData());
    }
    return true;
}

// Who opens for writing makes the engine play a journal back.
bool TakeBackLeftChanges(const QString& library)
{
    LibraryProblem problem;
    return CConnection::Open(library, OpenMode::Write, problem) != nullptr;
}

} // namespace partkeep
