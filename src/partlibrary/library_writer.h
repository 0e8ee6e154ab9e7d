// Changes a part library: folders, parts, files. Everything between Begin and Commit happens whole or not at
// all, whatever ends the process between. Names and pictures are checked here, so that no way of filling a
// library lets in what a copy would have to refuse.
#pragma once

#include "partlibrary/file_kinds.h"
#include "partlibrary/library_connection.h"
#include "partlibrary/library_problem.h"
#include "partlibrary/part_list.h"

#include <QByteArray>
#include <QString>

#include <map>
#include <memory>
#include <optional>

namespace partkeep {

struct PartAttributes {
    std::int32_t thickness = 0; // 1/10000
    QString material;
    QString machine;
    QString comment;
};

class CLibraryWriter {
public:
    // Makes an empty library, which appears under its name only when it is whole. A file that is there
    // already is left alone.
    static bool Create(const QString& file, LibraryProblem& problem);

    // Null on failure, with the reason.
    [[nodiscard]] static std::unique_ptr<CLibraryWriter> Open(const QString& file, LibraryProblem& problem);
    ~CLibraryWriter(); // takes back what was not committed
    CLibraryWriter(const CLibraryWriter&) = delete;
    CLibraryWriter& operator=(const CLibraryWriter&) = delete;

    bool Begin();
    bool Commit();
    void Rollback();

    // The folder, made with its parents where it is missing. Nothing for a path that is refused.
    [[nodiscard]] std::optional<qint64> MakeFolder(const QString& path);

    // The part, made where it is missing; attributes are replaced where they are given. Nothing for a name or
    // an attribute that is refused.
    [[nodiscard]] std::optional<PartId> PutPart(qint64 folder, const QString& name,
                                                const std::optional<PartAttributes>& attributes);

    // Adds or replaces a part's file or picture.
    bool PutFile(PartId part, FileSlot slot, const QByteArray& content);

    // False when there is no such part.
    bool RemovePart(qint64 folder, const QString& name);

    [[nodiscard]] const LibraryProblem& Problem() const { return connection_->Problem(); }

private:
    struct Statements;

    explicit CLibraryWriter(std::unique_ptr<CLibraryConnection> connection);
    bool Refuse(LibraryFault fault, const QString& subject, const QString& detail);
    bool CheckAttributes(const QString& name, const PartAttributes& attributes);
    std::optional<qint64> AddFolder(const QString& path);
    std::optional<PartId> AddPart(qint64 folder, const QString& name, const PartAttributes& attributes);
    bool UpdatePart(PartId part, const QString& name, const PartAttributes& attributes, const QString& old_search);
    bool PutChunks(qint64 id, const QByteArray& content);
    bool AddToIndex(PartId part, const QString& search_text);
    bool RemoveFromIndex(PartId part, const QString& search_text);

    std::unique_ptr<CLibraryConnection> connection_;
    std::unique_ptr<Statements> statements_;
    std::map<QString, qint64> folders_;
    std::map<qint64, qint64> new_parts_; // by folder
    bool open_ = false;
};

} // namespace partkeep
