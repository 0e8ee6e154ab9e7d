// Statements of a connection: each is prepared once, run as often as it is wanted, and told how it ended.
#include "partlibrary/library/library_text.h"
#include "partlibrary/sqlite/connection.h"
#include "partlibrary/sqlite/left_journal.h"

#include <sqlite3.h>
#include <utility>

namespace partkeep {

CStatement::CStatement(CConnection& connection, std::string sql)
    : connection_(connection), sql_(std::move(sql)), statement_(connection.Take(sql_))
{
    if (statement_ != nullptr) {
        return;
    }
    connection_.work_timed_ = false;
    const auto prepare = [this] {
        return sqlite3_prepare_v3(connection_.database_, sql_.data(), static_cast<int>(sql_.size()),
                                  SQLITE_PREPARE_PERSISTENT, &statement_, nullptr);
    };
    int code = prepare(); // reads the tables' names when it is the first
    if (code == SQLITE_READONLY_ROLLBACK && TakeBackLeftChanges(connection_.file_)) {
        code = prepare();
    }
    if (code != SQLITE_OK) {
        Fail(code);
    }
}

CStatement::~CStatement()
{
    if (statement_ != nullptr) {
        Reset();
        connection_.GiveBack(sql_, statement_);
    }
}

void CStatement::Reset()
{
    failed_ = statement_ == nullptr;
    rows_ = 0;
    connection_.worked_ = {};
    if (statement_ != nullptr) {
        sqlite3_reset(statement_);
        sqlite3_clear_bindings(statement_);
    }
}

CStatement& CStatement::WithAll(const std::vector<SqlValue>& values)
{
    Reset();
    int place = 0;
    for (const SqlValue& value : values) {
        std::visit([&](const auto& held) { Bind(++place, held); }, value);
    }
    return *this;
}

// A value that found no memory would be stored as none.
void CStatement::Bound(int code)
{
    if (code != SQLITE_OK && !failed_) {
        Fail(code);
    }
}

void CStatement::Bind(int place, qint64 value)
{
    Bound(sqlite3_bind_int64(statement_, place, value));
}

void CStatement::Bind(int place, const QString& value)
{
    const std::string text = ToUtf8(value);
    Bound(sqlite3_bind_text64(statement_, place, text.data(), text.size(), SQLITE_TRANSIENT, SQLITE_UTF8));
}

void CStatement::Bind(int place, const QByteArray& value)
{
    Bound(sqlite3_bind_blob64(statement_, place, value.constData(), static_cast<sqlite3_uint64>(value.size()),
                              SQLITE_TRANSIENT));
}

void CStatement::Bind(int place, std::span<const char> value)
{
    const char* const bytes = value.data() != nullptr ? value.data() : "";
    Bound(sqlite3_bind_blob64(statement_, place, bytes, value.size(), SQLITE_STATIC));
}

int CStatement::Step()
{
    connection_.work_timed_ = false;
    if (connection_.watcher_) {
        connection_.watcher_(sql_);
    }
    const bool taken_back = connection_.changing_ && !connection_.InTransaction();
    return taken_back ? SQLITE_ABORT_ROLLBACK : sqlite3_step(statement_);
}

// A writer may be cut off while somebody reads: what it left is taken back, and the statement begun again.
bool CStatement::Next()
{
    if (failed_) {
        return false;
    }
    int code = Step();
    if (code == SQLITE_READONLY_ROLLBACK && TakeBackLeftChanges(connection_.file_)) {
        sqlite3_reset(statement_);
        code = Step();
    }
    if (code == SQLITE_ROW && !connection_.HasRoomFor(++rows_)) {
        failed_ = true;
        connection_.problem_ = {LibraryFault::Damaged, connection_.file_,
                                QStringLiteral("its pages lead to each other")};
        return false;
    }
    return code == SQLITE_ROW || (code != SQLITE_DONE && Fail(code));
}

bool CStatement::Done()
{
    while (Next()) {
    }
    return !failed_;
}

bool CStatement::Fail(int code)
{
    failed_ = true;
    if (code != SQLITE_ABORT_ROLLBACK || !connection_.problem_) { // else what came before is the reason
        connection_.problem_ = connection_.EngineProblem(code);
    }
    return false;
}

qint64 CStatement::Integer(int column) const
{
    return sqlite3_column_int64(statement_, column);
}

std::string_view CStatement::Raw(int column) const
{
    const auto* bytes = static_cast<const char*>(sqlite3_column_blob(statement_, column));
    if (bytes != nullptr) {
        return {bytes, static_cast<std::size_t>(sqlite3_column_bytes(statement_, column))};
    }
    if (sqlite3_errcode(sqlite3_db_handle(statement_)) == SQLITE_NOMEM) { // it only looks empty
        failed_ = true;
        connection_.problem_ = connection_.EngineProblem(SQLITE_NOMEM);
    }
    return ""; // of null and of no bytes
}

QString CStatement::Text(int column) const
{
    return FromUtf8(Raw(column));
}

QByteArray CStatement::Bytes(int column) const
{
    const std::string_view bytes = Raw(column);
    return {bytes.data(), static_cast<qsizetype>(bytes.size())};
}

} // namespace partkeep
