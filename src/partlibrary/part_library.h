// A part library open for reading: folders, parts and the content of their files. Parts that somebody adds or
// deletes meanwhile show at the next call. Used on the thread that opened it.
#pragma once

#include "partlibrary/library_connection.h"
#include "partlibrary/library_problem.h"
#include "partlibrary/part_list.h"

#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace partkeep {

struct FolderRow {
    qint64 id = 0;
    QString name; // the last component
    QString path; // components joined by backslashes; empty for the root
    qint64 parts = 0;
    bool has_folders = false;
};

class CPartLibrary {
public:
    // Null on failure, with the reason. `file` is a native path.
    [[nodiscard]] static std::unique_ptr<CPartLibrary> Open(const QString& file, LibraryProblem& problem);
    ~CPartLibrary();
    CPartLibrary(const CPartLibrary&) = delete;
    CPartLibrary& operator=(const CPartLibrary&) = delete;

    // What the last call that gave nothing met: NoFolder or NoPart for what is not there, else trouble.
    [[nodiscard]] const LibraryProblem& Problem() const { return connection_->Problem(); }

    // Names are compared exactly.
    [[nodiscard]] std::optional<qint64> FindFolder(const QString& path);
    [[nodiscard]] std::optional<PartRow> FindPart(const QString& folder, const QString& name);
    [[nodiscard]] std::optional<PartRow> FindPart(PartId id);

    // The folders directly inside one, in natural order. Nothing on an error.
    [[nodiscard]] std::optional<std::vector<FolderRow>> Folders(qint64 parent);
    [[nodiscard]] std::optional<FolderRow> Folder(qint64 id);

    // Hands over the content of each of the part's files in `slots`, in the order of the slots and piece by
    // piece; `last` marks the last piece of a file. False on an error, on content that is not what was once
    // stored, and when the reader says false: what was handed over of that file is then worth nothing.
    using ChunkReader = std::function<bool(FileSlot, const QByteArray& piece, bool last)>;
    bool ReadChunks(PartId part, SlotSet slots, const ChunkReader& reader);

    // The same with each file as a whole.
    using FileReader = std::function<bool(FileSlot, const QByteArray&)>;
    bool ReadFiles(PartId part, SlotSet slots, const FileReader& reader);

    [[nodiscard]] CPartList& Parts() { return parts_; }
    [[nodiscard]] CLibraryConnection& Connection() { return *connection_; } // for look-ups
    [[nodiscard]] CLibraryConnection& Contents() { return *contents_; }     // for the content of files

private:
    CPartLibrary(std::unique_ptr<CLibraryConnection> connection, std::unique_ptr<CLibraryConnection> contents);
    bool ReadRun(PartId part, FileSlot first, FileSlot last, const ChunkReader& reader);
    bool ReadRows(CStatement& statement, const ChunkReader& reader);
    bool SetDamaged(const char* detail);
    [[nodiscard]] std::optional<PartRow> ReadPart(CStatement& statement, const QString& subject);

    std::unique_ptr<CLibraryConnection> connection_;
    std::unique_ptr<CLibraryConnection> contents_; // opened at once: the file may be gone when it is needed
    std::unique_ptr<CStatement> read_run_;         // prepared once for all parts of a copy; null at first
    CPartList parts_;
};

} // namespace partkeep
