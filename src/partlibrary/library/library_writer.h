// Changes a part library: folders, parts, files. Everything between Begin and Commit happens whole or not at all,
// whatever ends the process between. Names and pictures are checked here, so that no way of filling a library lets
// in what a copy would have to refuse.
//
// One writer at a time: between Begin and Commit nobody else changes the library. Changes may be gathered, so what one
// of them meets may be told by a later call, at the latest by Commit.
#pragma once

#include "partlibrary/library/library_problem.h"
#include "partlibrary/library/part_list.h"

#include <QByteArray>
#include <QString>

#include <functional>
#include <optional>
#include <span>

namespace partkeep {

class IPartLibrary;

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

    // The library as this writer has changed it so far, for looking things up between Begin and Commit. It lives as
    // long as the writer. Not for CopyFiles and not for lists.
    [[nodiscard]] virtual IPartLibrary& Library() = 0;

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

    // Parts that are there: NoPart for one that is not.
    virtual bool SetAttributes(PartId part, const PartAttributes& attributes) = 0;
    virtual bool MovePart(PartId part, qint64 folder,
                          const QString& name) = 0; // AlreadyThere: another one has the name
    virtual bool RemoveParts(std::span<const PartId> parts) = 0;

    // Gives a folder, with all that is in it, another path, whose parents are made where they are missing. AlreadyThere
    // for the path of another folder, BadInput for a path inside itself, NameRefused where a path would be.
    virtual bool MoveFolder(const QString& path, const QString& new_path) = 0;

    // A folder without parts and folders; BadInput for one that has some, and for the root.
    virtual bool RemoveFolder(const QString& path) = 0;

    // A part by its name; false where there is none.
    bool RemovePart(const QString& folder, const QString& name);

    [[nodiscard]] virtual const LibraryProblem& Problem() const = 0;
};

} // namespace partkeep
