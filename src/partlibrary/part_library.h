// A part library open for reading: folders, parts and the content of their files. Parts that somebody adds or
// deletes meanwhile show at the next call. Used on the thread that opened it.
#pragma once

#include "partlibrary/content_copy.h"
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

    // Hands over the content of the part's files in `slots`, which must all be there, in pieces: see
    // CContentCopy::ReadShared. False on an error, on content that is not what was once stored, and when the sink
    // has a problem: what was handed over is then worth nothing.
    bool CopyFiles(PartId part, SlotSet slots, const ContentSink& sink);

    // The same on this thread, each file as a whole and in the order of the slots, until the reader says false.
    using FileReader = std::function<bool(FileSlot, const QByteArray&)>;
    bool ReadFiles(PartId part, SlotSet slots, const FileReader& reader);

    [[nodiscard]] CPartList& Parts() { return parts_; }
    [[nodiscard]] CLibraryConnection& Connection() { return *connection_; }          // for look-ups
    [[nodiscard]] CLibraryConnection& Contents() { return contents_->Connection(); } // for the content of files

private:
    CPartLibrary(std::unique_ptr<CLibraryConnection> connection, std::unique_ptr<CContentCopy> contents);
    bool Take(const LibraryProblem& problem);
    [[nodiscard]] std::optional<PartRow> ReadPart(CStatement& statement, const QString& subject);

    std::unique_ptr<CLibraryConnection> connection_;
    std::unique_ptr<CContentCopy> contents_; // opened at once: the file may be gone when it is needed
    CStatement part_by_name_;                // prepared once, since a Load asks for one part after another
    CPartList parts_;
};

} // namespace partkeep
