// One open library file: owns the database connection, runs statements and keeps the last problem.
// Used on the thread that opened it. Statements live no longer than their connection.
#pragma once

#include "partlibrary/library_problem.h"

#include <QSqlDatabase>
#include <QSqlQuery>
#include <QString>
#include <QVariant>

#include <functional>
#include <initializer_list>
#include <memory>

namespace partkeep {

// ReadAlong is ReadContent for a helper, which gives up at once where others wait for a writer.
enum class OpenMode { Read, ReadContent, ReadAlong, Write, Create };

class CLibraryConnection {
public:
    // Null on failure, with the reason. Reading changes nothing on disk, except that changes which a writer
    // left half done are taken back first where that is allowed. `file` is a native path.
    [[nodiscard]] static std::unique_ptr<CLibraryConnection> Open(const QString& file, OpenMode mode,
                                                                  LibraryProblem& problem);
    ~CLibraryConnection();
    CLibraryConnection(const CLibraryConnection&) = delete;
    CLibraryConnection& operator=(const CLibraryConnection&) = delete;

    // Runs one statement that gives no rows.
    bool Execute(const QString& sql, std::initializer_list<QVariant> values = {});

    // What the last failed call met; a call that succeeds leaves it standing.
    [[nodiscard]] const LibraryProblem& Problem() const { return problem_; }
    void SetProblem(LibraryProblem problem) { problem_ = std::move(problem); }
    void ClearProblem() { problem_ = {}; }

    [[nodiscard]] const QString& File() const { return file_; }

    // Is told each statement from now on, for whoever asks the engine how it goes about them.
    void WatchStatements(std::function<void(const QString& sql)> watcher) { watcher_ = std::move(watcher); }

private:
    friend class CStatement;

    CLibraryConnection(QString file, QString name) : file_(std::move(file)), name_(std::move(name)) {}
    bool OpenDatabase(OpenMode mode);
    [[nodiscard]] QSqlDatabase Database() const { return QSqlDatabase::database(name_, false); }

    QString file_;
    QString name_;
    LibraryProblem problem_;
    std::function<void(const QString& sql)> watcher_;
};

// One prepared statement. Empty text and bytes are stored as such, never as null.
class CStatement {
public:
    CStatement(CLibraryConnection& connection, const QString& sql);

    // May be run again, after a failure too. False on an error, which the connection then holds.
    bool Run(std::initializer_list<QVariant> values = {});
    bool RunWith(const QVariantList& values);

    // True while there is a row. False at the end and on an error: see Failed.
    bool Next();
    [[nodiscard]] bool Failed() const { return failed_; }

    [[nodiscard]] QString Text(int column) const { return query_.value(column).toString(); }
    [[nodiscard]] qint64 Integer(int column) const { return query_.value(column).toLongLong(); }
    [[nodiscard]] QByteArray Bytes(int column) const { return query_.value(column).toByteArray(); }
    [[nodiscard]] QVariant Value(int column) const { return query_.value(column); }
    [[nodiscard]] qint64 InsertedId() const { return query_.lastInsertId().toLongLong(); }

    // Lets go of the rows, and with them of the lock that reading holds.
    void Finish() { query_.finish(); }

private:
    bool Prepare();
    bool Fail();

    CLibraryConnection& connection_;
    QString sql_;
    QSqlQuery query_;
    bool prepared_ = false;
    bool failed_ = false;
};

} // namespace partkeep
