// Changes a part library: folders, parts, files. Everything between Begin and Commit happens whole or not at all,
// whatever ends the process between. Names and pictures are checked here, so that no way of filling a library lets
// in what a copy would have to refuse.
#pragma once

#include "partlibrary/library/library_problem.h"
#include "partlibrary/library/part_list.h"

#include <QByteArray>

#include <functional>
#include <optional>
#include <span>

namespace partkeep {

// Fills a buffer from where the last call ended and gives the number of bytes, fewer only at the end; -1: trouble.
using ContentSource = std::function<qint64(std::span<char> buffer)>;

// Content that no part has yet.
struct StoredContent {
    qint64 id = 0;
    qint64 bytes = 0;
    QByteArray hash; // SHA-256
};

class ILibraryWriter {
public:
    virtual ~ILibraryWriter() = default; // takes back what was not committed

    virtual bool Begin() = 0;
    virtual bool Commit() = 0;
    virtual void Rollback() = 0;

    // Puts content aside for PutFile. As long as nothing else has been changed since Begin, what is put aside may
    // reach the disk early, so that neither memory nor the time that readers wait grows with it; nobody sees it.
    [[nodiscard]] virtual std::optional<StoredContent> Store(FileSlot slot, const ContentSource& source) = 0;

    // The folder, made with its parents where it is missing. Nothing for a path that is refused.
    [[nodiscard]] virtual std::optional<qint64> MakeFolder(const QString& path) = 0;

    // The part, made where it is missing; attributes are replaced where they are given. Nothing for a name or an
    // attribute that is refused.
    [[nodiscard]] virtual std::optional<PartId> PutPart(qint64 folder, const QString& name,
                                                        const std::optional<PartAttributes>& attributes) = 0;

    // Adds or replaces a part's file or picture.
    virtual bool PutFile(PartId part, FileSlot slot, const StoredContent& content) = 0;
    bool PutFile(PartId part, FileSlot slot, const QByteArray& content);

    // False when there is no such part.
    virtual bool RemovePart(qint64 folder, const QString& name) = 0;

    [[nodiscard]] virtual const LibraryProblem& Problem() const = 0;
};

} // namespace partkeep
