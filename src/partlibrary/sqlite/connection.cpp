#include "partlibrary/sqlite/connection.h"

#include "partlibrary/library/library_text.h"
#include "partlibrary/sqlite/engine_files.h"
#include "partlibrary/sqlite/left_journal.h"
#include "partlibrary/sqlite/schema.h"

#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <array>
#include <sqlite3.h>
#include <sys/stat.h>
#include <thread>
#include <utility>

namespace partkeep {

namespace {

using std::chrono::milliseconds;

constexpr milliseconds most_work{2000};         // of a statement without a row
constexpr milliseconds most_work_in_all{10000}; // on rows that take long
constexpr milliseconds impatience{10000};
constexpr std::array<int, 6> busy_waits_ms{1, 2, 5, 10, 20, 25};
constexpr int progress_steps = 2000;    // some of which may have the longest value before them
constexpr qint64 block_bytes = 512;     // of those that stat(2) tells
constexpr qint64 believed = 256 << 20;  // bytes of what a file says that it has, whatever the system has stored of it
constexpr qint64 least_row_bytes = 32;  // no row takes as few, with its entries in indexes
constexpr int longest_value = 16 << 20; // bytes; a library's own rows stay far below

// Look-ups in a large library want as many pages at hand as can be; content that streams through wants few.
constexpr const char* read_cache = "PRAGMA cache_size=-262144";
constexpr const char* read_all_cache = "PRAGMA cache_size=-16384"; // goes through once
constexpr const char* content_cache = "PRAGMA cache_size=-512";
constexpr const char* write_cache = "PRAGMA cache_size=-262144";

// Changes stay in memory until the commit as far as they can: from the moment on that one reaches the file, nobody
// can read.
constexpr const char* write_spill = "PRAGMA cache_spill=8192";

bool IsReading(OpenMode mode)
{
    return mode == OpenMode::Read || mode == OpenMode::ReadAll;
}

const char* CacheOf(OpenMode mode)
{
    return mode == OpenMode::Read ? read_cache : mode == OpenMode::ReadAll ? read_all_cache : write_cache;
}

LibraryFault FaultOfCode(int code)
{
    if (code == SQLITE_READONLY_ROLLBACK || code == SQLITE_READONLY_RECOVERY) {
        return LibraryFault::Unfinished;
    }
    if (code == SQLITE_READONLY_DBMOVED) { // nobody would ever see what is written
        return LibraryFault::Replaced;
    }
    switch (code & 0xFF) {
    case SQLITE_BUSY:
    case SQLITE_LOCKED:
    case SQLITE_INTERRUPT:
        return LibraryFault::Busy;
    case SQLITE_NOMEM:
        return LibraryFault::NoMemory;
    case SQLITE_READONLY:
        return LibraryFault::ReadOnly;
    case SQLITE_IOERR:
        return LibraryFault::ReadFailed;
    case SQLITE_CORRUPT:
        return LibraryFault::Damaged;
    case SQLITE_FULL:
        return LibraryFault::DiskFull;
    case SQLITE_CANTOPEN:
        return LibraryFault::CannotOpen;
    case SQLITE_NOTADB:
        return LibraryFault::NotALibrary;
    default:
        return LibraryFault::Failed;
    }
}

// Opening a pipe or a device in place of a file could wait for ever.
bool CheckFile(const QString& file, LibraryProblem& problem)
{
    const QFileInfo info(file);
    if (!info.exists()) {
        problem = {LibraryFault::NotFound, file, {}};
    } else if (!info.isFile()) {
        problem = {LibraryFault::NotALibrary, file, QStringLiteral("not a file")};
    } else if (!info.isReadable()) {
        problem = {LibraryFault::CannotOpen, file, QStringLiteral("permission denied")};
    }
    return !problem;
}

} // namespace

std::shared_ptr<CConnection> CConnection::Open(const QString& file, OpenMode mode, LibraryProblem& problem)
{
    problem = {};
    const QString absolute = QFileInfo(file).absoluteFilePath(); // the engine takes "file:" for more than a name
    if (mode != OpenMode::Create && !CheckFile(absolute, problem)) {
        return nullptr;
    }
    std::shared_ptr<CConnection> connection(new CConnection(absolute, mode));
    const bool ours = mode != OpenMode::Write || SetForeignJournalAside(absolute, problem);
    if (ours && connection->OpenFile() && connection->SetUp()) {
        return connection;
    }
    problem = problem ? problem : connection->Problem();
    return nullptr;
}

bool CConnection::OpenFile()
{
    const int access = IsReading(mode_) ? SQLITE_OPEN_READONLY : SQLITE_OPEN_READWRITE;
    const std::string file = mode_ == OpenMode::Create ? ":memory:" : ToUtf8(file_);
    const int code = sqlite3_open_v2(file.c_str(), &database_, access | SQLITE_OPEN_NOMUTEX, EngineFiles());
    if (code != SQLITE_OK) {
        problem_ = EngineProblem(database_ != nullptr ? sqlite3_extended_errcode(database_) : code);
        return false;
    }
    sqlite3_extended_result_codes(database_, 1);
    sqlite3_busy_handler(database_, OnBusy, this);
    sqlite3_limit(database_, SQLITE_LIMIT_LENGTH, longest_value);
    sqlite3_db_config(database_, SQLITE_DBCONFIG_DEFENSIVE, 1, nullptr);
    sqlite3_db_config(database_, SQLITE_DBCONFIG_TRUSTED_SCHEMA, 0, nullptr);
    sqlite3_db_config(database_, SQLITE_DBCONFIG_ENABLE_VIEW, 0, nullptr); // also of those that come later
    sqlite3_db_config(database_, SQLITE_DBCONFIG_ENABLE_TRIGGER, 0, nullptr);
    sqlite3_progress_handler(database_, progress_steps, OnProgress, this);
    return true;
}

bool CConnection::SetUp()
{
    const bool ready = Execute("PRAGMA cell_size_check=1") && Execute("PRAGMA temp_store=2") &&
                       Execute(CacheOf(mode_)) &&
                       (IsReading(mode_) || (Execute(write_spill) && Execute("PRAGMA secure_delete=0"))) &&
                       AddRowFunctions(*this, database_);
    const bool sound = ready && (mode_ == OpenMode::Create ? CreateSchema(*this) : HasItsTables());
    if (mode_ != OpenMode::Read) { // which may take its time from here on
        sqlite3_progress_handler(database_, 0, nullptr, nullptr);
    }
    return sound;
}

CConnection::~CConnection()
{
    for (const auto& [sql, statement] : idle_) {
        sqlite3_finalize(statement);
    }
    sqlite3_close_v2(database_);
}

LibraryPlace CConnection::Place() const
{
    int moved = 0;
    sqlite3_file_control(database_, "main", SQLITE_FCNTL_HAS_MOVED, &moved);
    if (moved == 0) {
        return LibraryPlace::Same;
    }
    return QFileInfo::exists(file_) ? LibraryPlace::Another : LibraryPlace::Nothing;
}

bool CConnection::InTransaction() const
{
    return sqlite3_get_autocommit(database_) == 0;
}

bool CConnection::BeginChange()
{
    changing_ = false;
    changing_ = Execute("BEGIN IMMEDIATE");
    return changing_;
}

bool CConnection::CommitChange()
{
    changing_ = !Execute("COMMIT");
    return !changing_;
}

void CConnection::RollBackChange()
{
    if (std::exchange(changing_, false) && InTransaction()) {
        Execute("ROLLBACK");
    }
}

std::optional<qint64> CConnection::State()
{
    CStatement state(*this, "PRAGMA data_version");
    const auto now = state.Next() ? std::optional(state.Integer(0)) : std::nullopt;
    if (now != state_ && now && !HasItsTables()) {
        return std::nullopt;
    }
    state_ = now;
    return now;
}

// The engine takes up what tables somebody makes while the library is open.
bool CConnection::HasItsTables()
{
    const CReadTransaction one_state(*this);
    CStatement version(*this, "PRAGMA schema_version");
    if (!one_state || !version.Next()) {
        return false;
    }
    if (tables_ == version.Integer(0)) {
        return true;
    }
    const QByteArray id = id_;
    bool sound = CheckSchema(*this);
    if (tables_ && id_ != id) { // written over by another
        SetId(id);
        problem_ = {LibraryFault::Damaged, file_, QStringLiteral("another library stands in its place")};
        sound = false;
    }
    if (sound) {
        tables_ = version.Integer(0);
    }
    return sound;
}

std::string CConnection::Image() const
{
    sqlite3_int64 size = 0;
    const std::unique_ptr<unsigned char, decltype(&sqlite3_free)> bytes(sqlite3_serialize(database_, "main", &size, 0),
                                                                        sqlite3_free);
    return bytes != nullptr ? std::string(bytes.get(), bytes.get() + size) : std::string();
}

void CConnection::SetId(QByteArray id)
{
    id_ = std::move(id);
    salt_ = static_cast<qint64>(id_.left(16).toULongLong(nullptr, 16));
}

// Not as a kept statement: the engine obeys this one while it prepares it.
void CConnection::StreamContent(bool streaming)
{
    if (IsReading(mode_)) {
        sqlite3_exec(database_, streaming ? content_cache : CacheOf(mode_), nullptr, nullptr, nullptr);
    }
}

LibraryProblem CConnection::EngineProblem(int code) const
{
    const char* text = database_ != nullptr ? sqlite3_errmsg(database_) : sqlite3_errstr(code);
    return {FaultOfCode(code), file_, FromUtf8(text)};
}

LibraryProblem ProblemOfCode(int code, const QString& file)
{
    return {FaultOfCode(code), file, FromUtf8(sqlite3_errstr(code))};
}

int CConnection::OnBusy(void* connection, int tries)
{
    auto& self = *static_cast<CConnection*>(connection);
    if (!self.waits_) {
        return 0;
    }
    const auto now = Clock::now();
    if (tries == 0) {
        self.wait_began_ = now;
    }
    if (now < self.impatient_until_ && self.patience_ <= usual_patience) {
        return 0;
    }
    if (now - self.wait_began_ >= self.patience_) {
        self.impatient_until_ = now + impatience;
        return 0;
    }
    const auto wait = std::min<std::size_t>(static_cast<std::size_t>(tries), busy_waits_ms.size() - 1);
    std::this_thread::sleep_for(milliseconds(busy_waits_ms[wait]));
    return 1;
}

// The clock is read only where a step takes long enough to come here.
int CConnection::OnProgress(void* connection)
{
    auto& self = *static_cast<CConnection*>(connection);
    const auto now = Clock::now();
    if (!std::exchange(self.work_timed_, true)) {
        self.work_began_ = self.last_look_ = now;
    }
    self.worked_ += now - std::exchange(self.last_look_, now);
    return now - self.work_began_ > most_work || self.worked_ > most_work_in_all ? 1 : 0;
}

// Whether the file has room for so many rows of one statement. The engine does not see that pages of a library lead to
// each other again and again.
bool CConnection::LookForRoom(qint64 rows)
{
    struct stat status = {};
    if (!IsReading(mode_) || stat(QFile::encodeName(file_).constData(), &status) != 0) {
        return true;
    }
    const qint64 taken = std::max(qint64{status.st_blocks} * block_bytes, std::min<qint64>(status.st_size, believed));
    room_ = std::max(room_, taken / (mode_ == OpenMode::Read ? least_row_bytes : 1));
    return rows <= room_;
}

// Makes the statement's place too, since it is given back where nothing may fail.
sqlite3_stmt* CConnection::Take(const std::string& sql)
{
    return std::exchange(idle_[sql], nullptr);
}

void CConnection::GiveBack(const std::string& sql, sqlite3_stmt* statement) noexcept
{
    const auto place = idle_.find(sql);
    sqlite3_finalize(place == idle_.end() ? statement : std::exchange(place->second, statement));
}

} // namespace partkeep
