#include "partlibrary/library_connection.h"

#include "partlibrary/library_schema.h"

#include <QFile>
#include <QFileInfo>
#include <QSqlError>

#include <atomic>

namespace partkeep {

namespace {

constexpr int busy_timeout_ms = 1000;

// Look-ups in a large library want as many pages at hand as can be. Content that streams through wants few, so
// that each page lands in memory that the processor still has in its cache.
constexpr int read_cache_kb = 128 * 1024;
constexpr int content_cache_kb = 512;
constexpr int write_cache_kb = 256 * 1024;

int CacheSize(OpenMode mode)
{
    switch (mode) {
    case OpenMode::Read:
        return read_cache_kb;
    case OpenMode::ReadContent:
    case OpenMode::ReadAlong:
        return content_cache_kb;
    default:
        return write_cache_kb;
    }
}

bool IsReading(OpenMode mode)
{
    return mode != OpenMode::Write && mode != OpenMode::Create;
}

// Result codes of the database engine (sqlite3.h), without their extension.
LibraryFault FaultOfCode(int code)
{
    switch (code & 0xFF) {
    case 5:
    case 6:
        return LibraryFault::Busy;
    case 7:
        return LibraryFault::NoMemory;
    case 8:
        return LibraryFault::ReadOnly;
    case 10:
        return LibraryFault::ReadFailed;
    case 11:
        return LibraryFault::Damaged;
    case 13:
        return LibraryFault::DiskFull;
    case 14:
        return LibraryFault::CannotOpen;
    case 26:
        return LibraryFault::NotALibrary;
    default:
        return LibraryFault::Failed;
    }
}

LibraryProblem ProblemOf(const QSqlError& error, const QString& file)
{
    return {FaultOfCode(error.nativeErrorCode().toInt()), file, error.databaseText()};
}

QString NewConnectionName()
{
    static std::atomic<unsigned> count{0};
    return QStringLiteral("partkeep-library-%1").arg(++count);
}

QString ConnectOptions(OpenMode mode)
{
    const QString timeout =
        QStringLiteral("QSQLITE_BUSY_TIMEOUT=%1").arg(mode == OpenMode::ReadAlong ? 0 : busy_timeout_ms);
    return IsReading(mode) ? timeout + QStringLiteral(";QSQLITE_OPEN_READONLY") : timeout;
}

// Opening a pipe or a device in place of a file could wait for ever.
bool CheckFile(const QString& file, LibraryProblem& problem)
{
    const QFileInfo info(file);
    if (!info.exists()) {
        problem = {LibraryFault::NotFound, file, {}};
        return false;
    }
    if (!info.isFile()) {
        problem = {LibraryFault::NotALibrary, file, QStringLiteral("not a file")};
        return false;
    }
    if (!info.isReadable()) {
        problem = {LibraryFault::CannotOpen, file, QStringLiteral("permission denied")};
        return false;
    }
    return true;
}

// The driver stores text and bytes that were never assigned as null; a library has only empty ones.
QVariant StoredValue(const QVariant& value)
{
    if (value.typeId() == QMetaType::QString && value.toString().isNull()) {
        return QStringLiteral("");
    }
    if (value.typeId() == QMetaType::QByteArray && value.toByteArray().isNull()) {
        return QByteArray("", 0);
    }
    return value;
}

} // namespace

std::unique_ptr<CLibraryConnection> CLibraryConnection::Open(const QString& file, OpenMode mode,
                                                             LibraryProblem& problem)
{
    if (mode != OpenMode::Create && !CheckFile(file, problem)) {
        return nullptr;
    }
    std::unique_ptr<CLibraryConnection> connection(new CLibraryConnection(file, NewConnectionName()));
    if (connection->OpenDatabase(mode)) {
        return connection;
    }
    problem = connection->Problem();
    // A journal beside the library belongs to a writer that was cut off. Only a connection that may write
    // can take its changes back.
    if (IsReading(mode) && QFile::exists(file + QStringLiteral("-journal"))) {
        connection.reset(new CLibraryConnection(file, NewConnectionName()));
        if (connection->OpenDatabase(OpenMode::Write) && connection->Execute(QStringLiteral("PRAGMA query_only=1"))) {
            return connection;
        }
    }
    return nullptr;
}

bool CLibraryConnection::OpenDatabase(OpenMode mode)
{
    QSqlDatabase database = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), name_);
    if (!database.isValid()) {
        problem_ = {LibraryFault::CannotOpen, file_, QStringLiteral("the database driver QSQLITE is not installed")};
        return false;
    }
    database.setDatabaseName(file_);
    database.setConnectOptions(ConnectOptions(mode));
    if (!database.open()) {
        problem_ = ProblemOf(database.lastError(), file_);
        return false;
    }
    // No memory mapping: a mapped library that somebody cuts short would end the host process.
    const bool ready = Execute(QStringLiteral("PRAGMA trusted_schema=0")) &&
                       Execute(QStringLiteral("PRAGMA cell_size_check=1")) &&
                       Execute(QStringLiteral("PRAGMA cache_size=-%1").arg(CacheSize(mode)));
    return ready && (mode == OpenMode::Create ? CreateSchema(*this) : CheckSchema(*this));
}

CLibraryConnection::~CLibraryConnection()
{
    Database().close();
    QSqlDatabase::removeDatabase(name_);
}

bool CLibraryConnection::Execute(const QString& sql, std::initializer_list<QVariant> values)
{
    CStatement statement(*this, sql);
    return statement.Run(values);
}

CStatement::CStatement(CLibraryConnection& connection, const QString& sql)
    : connection_(connection), sql_(sql), query_(connection.Database())
{
    query_.setForwardOnly(true);
    Prepare();
}

bool CStatement::Prepare()
{
    prepared_ = query_.prepare(sql_);
    return prepared_ || Fail();
}

bool CStatement::Run(std::initializer_list<QVariant> values)
{
    return RunWith(QVariantList(values));
}

bool CStatement::RunWith(const QVariantList& values)
{
    if (!prepared_ && !Prepare()) {
        return false;
    }
    if (connection_.watcher_) {
        connection_.watcher_(sql_);
    }
    failed_ = false;
    int position = 0;
    for (const QVariant& value : values) {
        query_.bindValue(position++, StoredValue(value));
    }
    return query_.exec() || Fail();
}

bool CStatement::Next()
{
    if (failed_) {
        return false;
    }
    if (query_.next()) {
        return true;
    }
    if (query_.lastError().isValid()) {
        Fail();
    }
    return false;
}

bool CStatement::Fail()
{
    failed_ = true;
    connection_.SetProblem(ProblemOf(query_.lastError(), connection_.File()));
    return false;
}

} // namespace partkeep
