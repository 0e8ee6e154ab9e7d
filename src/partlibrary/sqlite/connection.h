// One open library file: owns the engine's connection, runs statements and keeps the last problem. No call waits
// without end: for another program's lock until the connection's patience is over, and once that has happened not at
// all for some seconds; and a statement that reads ends after two seconds of work without a row.
#pragma once

#include "partlibrary/library/library_problem.h"
#include "partlibrary/library/part_library.h"

#include <QByteArray>
#include <QString>

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <variant>
#include <vector>

struct sqlite3;
struct sqlite3_stmt;

namespace partkeep {

// ReadAll is for who looks through a whole library, and may take its time. What is made stands in memory, see Image.
enum class OpenMode { Read, ReadAll, Write, Create };

using SqlValue = std::variant<qint64, QString, QByteArray>;

inline constexpr std::chrono::milliseconds usual_patience{2000};

class CConnection {
public:
    // Null on failure, with the reason. Reading changes nothing on disk, except that changes which a writer left half
    // done are taken back first where that is allowed. `file` is a native path.
    [[nodiscard]] static std::shared_ptr<CConnection> Open(const QString& file, OpenMode mode, LibraryProblem& problem);
    ~CConnection();
    CConnection(const CConnection&) = delete;
    CConnection& operator=(const CConnection&) = delete;

    // Runs one statement that gives no rows.
    template <typename... Values>
    bool Execute(std::string_view sql, const Values&... values);

    // A change of several statements. One that the engine has taken back, as it does for want of memory or room, takes
    // no more of them: each would count by itself.
    bool BeginChange();
    bool CommitChange();
    void RollBackChange(); // if there is one

    // What the last failed call met; a call that succeeds leaves it standing.
    [[nodiscard]] const LibraryProblem& Problem() const { return problem_; }
    void SetProblem(LibraryProblem problem) { problem_ = std::move(problem); }

    [[nodiscard]] const QString& File() const { return file_; }
    [[nodiscard]] LibraryPlace Place() const;
    [[nodiscard]] const QByteArray& Id() const { return id_; }
    void SetId(QByteArray id);
    [[nodiscard]] qint64 Salt() const { return salt_; } // of the sums of rows, by the id
    [[nodiscard]] bool InTransaction() const;
    [[nodiscard]] std::optional<qint64> State(); // another number after each change that somebody else commits
    [[nodiscard]] sqlite3* Engine() const { return database_; } // for what the engine does with files as a whole
    [[nodiscard]] std::string Image() const;                    // the whole as it would stand in a file
    void SetPatience(std::chrono::milliseconds patience) { patience_ = patience; }

    // While it lives a lock of somebody else's is no reason to wait, nor to be told of.
    class CWithoutWaiting {
    public:
        explicit CWithoutWaiting(CConnection& connection) : connection_(connection), problem_(connection.problem_)
        {
            connection_.waits_ = false;
        }
        ~CWithoutWaiting()
        {
            connection_.waits_ = true;
            connection_.problem_ = problem_;
        }
        CWithoutWaiting(const CWithoutWaiting&) = delete;
        CWithoutWaiting& operator=(const CWithoutWaiting&) = delete;

    private:
        CConnection& connection_;
        LibraryProblem problem_;
    };

    // Few pages at hand: for content that streams through, so that each page lands in memory that the processor
    // still has in its cache.
    void StreamContent(bool streaming);

    // Folders and parts that were not given because of their names.
    void CountRefused(qint64 key)
    {
        if (refused_.size() < most_refused) {
            refused_.insert(key);
        }
    }
    [[nodiscard]] qint64 Refused() const { return static_cast<qint64>(refused_.size()); }

    // Is told each step of a statement from now on, for whoever asks the engine how it goes about them.
    void WatchStatements(std::function<void(std::string_view sql)> watcher) { watcher_ = std::move(watcher); }

private:
    friend class CStatement;
    using Clock = std::chrono::steady_clock;
    static constexpr std::size_t most_refused = 100000; // are told apart

    CConnection(QString file, OpenMode mode) : file_(std::move(file)), mode_(mode) {}
    bool OpenFile();
    bool SetUp();
    [[nodiscard]] bool HasItsTables();
    [[nodiscard]] bool HasRoomFor(qint64 rows) { return rows <= room_ || LookForRoom(rows); }
    [[nodiscard]] bool LookForRoom(qint64 rows);
    [[nodiscard]] sqlite3_stmt* Take(const std::string& sql);
    void GiveBack(const std::string& sql, sqlite3_stmt* statement) noexcept;
    [[nodiscard]] LibraryProblem EngineProblem(int code) const;
    static int OnBusy(void* connection, int tries);
    static int OnProgress(void* connection);

    QString file_; // absolute
    OpenMode mode_;
    sqlite3* database_ = nullptr;
    std::unordered_map<std::string, sqlite3_stmt*> idle_; // prepared and not in use
    LibraryProblem problem_;
    QByteArray id_;
    qint64 salt_ = 0;
    qint64 room_ = 4096; // in rows; for so few nobody looks
    std::chrono::milliseconds patience_ = usual_patience;
    Clock::time_point wait_began_;
    Clock::time_point impatient_until_;
    std::optional<qint64> state_;  // that was seen last
    std::optional<qint64> tables_; // and the version of the tables then
    Clock::time_point work_began_; // of the step that is under way
    Clock::time_point last_look_;
    Clock::duration worked_{}; // of the statement, as far as a step was long enough to be looked at
    bool work_timed_ = false;
    bool waits_ = true;
    bool changing_ = false;
    std::unordered_set<qint64> refused_; // ids of parts, and of folders below 0
    std::function<void(std::string_view sql)> watcher_;
};

// What a result code of the engine (sqlite3.h) is told as.
[[nodiscard]] LibraryProblem ProblemOfCode(int code, const QString& file);

// One prepared statement; the connection keeps it for the next that wants the same. Rows, and with them the lock that
// reading holds, are let go when it ends.
class CStatement {
public:
    CStatement(CConnection& connection, std::string sql);
    ~CStatement();
    CStatement(const CStatement&) = delete;
    CStatement& operator=(const CStatement&) = delete;

    // Begins anew with these values. A span of bytes must stand until the statement has ended.
    template <typename... Values>
    CStatement& With(const Values&... values)
    {
        Reset();
        int place = 0;
        (Bind(++place, values), ...);
        return *this;
    }
    CStatement& WithAll(const std::vector<SqlValue>& values);

    // True while there is a row. False at the end and on an error: see Failed.
    bool Next();
    bool Done(); // to its end; false on an error
    [[nodiscard]] bool Failed() const { return failed_; }
    [[nodiscard]] qint64 Salt() const { return connection_.Salt(); }

    [[nodiscard]] qint64 Integer(int column) const;
    [[nodiscard]] std::string_view Raw(int column) const; // of text or bytes; stands until the next row
    [[nodiscard]] QString Text(int column) const;
    [[nodiscard]] QByteArray Bytes(int column) const;

private:
    void Reset();
    void Bound(int code);
    void Bind(int place, qint64 value);
    void Bind(int place, const QString& value);
    void Bind(int place, const QByteArray& value);
    void Bind(int place, std::span<const char> value);
    int Step();
    bool Fail(int code);

    CConnection& connection_;
    std::string sql_;
    sqlite3_stmt* statement_;
    qint64 rows_ = 0;             // so far
    mutable bool failed_ = false; // also by a value that there is no memory for
};

template <typename... Values>
bool CConnection::Execute(std::string_view sql, const Values&... values)
{
    return CStatement(*this, std::string(sql)).With(values...).Done();
}

// From here to its end everything that is read is of one state. Within a transaction that is so anyway.
class CReadTransaction {
public:
    explicit CReadTransaction(CConnection& connection)
        : connection_(connection), end_(connection, "ROLLBACK"), within_(connection.InTransaction()),
          begun_(!within_ && connection.Execute("BEGIN"))
    {
    }
    ~CReadTransaction()
    {
        if (begun_) {
            const LibraryProblem problem = connection_.Problem();
            end_.Done();
            connection_.SetProblem(problem);
        }
    }
    CReadTransaction(const CReadTransaction&) = delete;
    CReadTransaction& operator=(const CReadTransaction&) = delete;
    explicit operator bool() const { return begun_ || within_; }

private:
    CConnection& connection_;
    CStatement end_; // made at the beginning: the end may need no memory
    bool within_;
    bool begun_;
};

} // namespace partkeep
