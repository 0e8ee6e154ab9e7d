// What a part library is to those who read it, whatever engine holds it: folders, ordered and searched lists, the
// content of files. A library is used on the thread that opened it, and no call waits for more than two seconds
// without a byte, waits inside the system excepted.
//
// Whatever stands in a library is foreign. A folder or a part whose name an import would refuse is never given; it
// is counted. A row that is not as it was stored is a problem.
#pragma once

#include "partlibrary/library/library_problem.h"
#include "partlibrary/library/part_list.h"

#include <QByteArray>
#include <QDateTime>
#include <QString>

#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <utility>
#include <vector>

namespace partkeep {

inline constexpr qsizetype largest_list_picture = 2 << 20; // bytes

struct FolderRow {
    qint64 id = 0;
    QString name; // the last component
    QString path; // components joined by backslashes; empty for the root
    qint64 parts = 0;
    bool has_folders = false;
};

// One file or picture of a part, without its content.
struct PartFile {
    PartId part = 0;
    FileSlot slot = FileSlot::Iga;
    qint64 bytes = 0;
    QByteArray hash; // SHA-256

    friend bool operator==(const PartFile&, const PartFile&) = default;
};

// A copy of a part's files that is to come.
struct PartCopy {
    PartId part = 0;
    SlotSet slots = 0;

    friend bool operator==(const PartCopy&, const PartCopy&) = default;
};

// Takes the content of files, one after the other. What it gives ends the reading, unless it is no problem.
class ContentSink {
public:
    // A block of a file, the first one even when the file is empty; blocks come in order.
    using Write = std::function<LibraryProblem(FileSlot, std::span<const char> block)>;
    // An open file with nothing in it, for a content that is at hand on this machine, or -1: it is to come in blocks.
    // Blocks may come all the same, when it turns out not to be.
    using FileFor = std::function<int(const PartFile&)>;

    template <typename Writer>
    ContentSink(Writer write, FileFor file = {}) // NOLINT(google-explicit-constructor): a function will do
        : write_(std::move(write)), file_(std::move(file))
    {
    }
    LibraryProblem operator()(FileSlot slot, std::span<const char> block) const { return write_(slot, block); }
    [[nodiscard]] int File(const PartFile& file) const { return file_ ? file_(file) : -1; }

private:
    Write write_;
    FileFor file_;
};

// The rows of a list by number, for a pane that shows a few of very many. It is found out in slices of a few
// milliseconds, between events.
class IPartListing {
public:
    virtual ~IPartListing() = default;

    // Scans one slice. False when there is nothing left to scan, or on an error.
    virtual bool Step() = 0;
    void Finish()
    {
        while (Step()) {
        }
    }

    [[nodiscard]] virtual bool Complete() const = 0;
    [[nodiscard]] virtual bool Failed() const = 0;  // the library holds the problem
    [[nodiscard]] virtual qint64 Count() const = 0; // rows found so far
    [[nodiscard]] virtual const PartListView& View() const = 0;

    // Rows by number. A part that has gone since keeps its row, with an empty name. Fewer on an error.
    [[nodiscard]] virtual std::vector<PartRow> Rows(qint64 first, qint64 limit) = 0;
    [[nodiscard]] virtual std::vector<PartId> Ids(qint64 first, qint64 limit) = 0;

    // The row of a part; nothing when the list does not show it, or has not come to it yet.
    [[nodiscard]] virtual std::optional<qint64> RowOf(PartId part) = 0;
};

// What stands where a library was opened.
enum class LibraryPlace { Same, Another, Nothing };

class IPartLibrary {
public:
    virtual ~IPartLibrary() = default;

    // What the last call that gave nothing met: NoFolder or NoPart for what is not there, else trouble.
    [[nodiscard]] virtual const LibraryProblem& Problem() const = 0;

    // Names are compared exactly.
    [[nodiscard]] virtual std::optional<FolderRow> FindFolder(const QString& path) = 0;
    [[nodiscard]] virtual std::optional<FolderRow> FindFolder(qint64 id) = 0;
    [[nodiscard]] virtual std::optional<PartRow> FindPart(const QString& folder, const QString& name) = 0;
    [[nodiscard]] virtual std::optional<PartRow> FindPart(PartId id) = 0;

    // Several at once, in their order; an empty row for one that has gone. Nothing on an error.
    [[nodiscard]] virtual std::optional<std::vector<PartRow>> FindParts(std::span<const PartId> ids);

    // The folders directly inside one, in natural order. Nothing on an error.
    [[nodiscard]] virtual std::optional<std::vector<FolderRow>> Folders(const QString& path) = 0;

    // A list of a folder, nothing of it read yet. `parts` is what the folder counts; `wider` may be a list that this
    // one narrows, or null. It keeps open what it needs of the library.
    [[nodiscard]] virtual std::unique_ptr<IPartListing> List(const PartListView& view, qint64 parts,
                                                             const IPartListing* wider) = 0;

    // Whether List, Ids and Visible know views of all folders, and views that keep to one value of a column.
    [[nodiscard]] virtual bool ListsAllFolders() const { return false; }

    // What the parts of a list have in a column, in order, for a choice among them: those of the folder where the list
    // is long. At most `most`; nothing on an error or where the library cannot tell.
    [[nodiscard]] virtual std::optional<std::vector<ColumnValue>> Values(const PartListView& /*view*/,
                                                                         PartColumn /*column*/, std::size_t /*most*/)
    {
        return std::nullopt;
    }

    // All ids in the order of the view, and those of `ids` that it shows. Nothing on an error.
    [[nodiscard]] virtual std::optional<std::vector<PartId>> Ids(const PartListView& view) = 0;
    [[nodiscard]] virtual std::optional<std::vector<PartId>> Visible(const PartListView& view,
                                                                     const std::vector<PartId>& ids) = 0;

    // For whoever goes through a whole library, as much at a time as he has room for: the parts of a folder by the
    // bytes of their names in UTF-8, those behind `after` (from the first on where it is empty), at most `limit`, fewer
    // only at the end. Nothing on an error.
    [[nodiscard]] virtual std::optional<std::vector<PartRow>> PartsBehind(qint64 folder, const QString& after,
                                                                          qint64 limit) = 0;

    // The files of these parts, by the order of the ids and of the kinds; none of a part that has gone. Nothing on an
    // error.
    [[nodiscard]] virtual std::optional<std::vector<PartFile>> Files(std::span<const PartId> parts) = 0;

    // Another number after each change that somebody else commits. Nothing on an error.
    [[nodiscard]] virtual std::optional<qint64> Revision() = 0;

    // For whoever shows the library, between what he does for his user: nothing here waits for anyone. Whether somebody
    // else has committed a change since the last call, the first time since it was opened, or the library has begun or
    // ceased to be silent; false also where that cannot be told now.
    [[nodiscard]] virtual bool LookForChange() { return false; }
    // Where something comes when it is time for the next call; -1: nothing tells.
    [[nodiscard]] virtual int ChangeSocket() const { return -1; }
    // Parts whose rows and pictures will be asked for soon, for a library that can have them at hand by then.
    virtual void ReadAhead(std::span<const PartId> /*parts*/) {}
    // A picture as far as it is on this machine; empty where the part has none, or it cannot be read. Nothing where it
    // is still to come, which is then seen to: when it is worth asking again PicturesCame tells, once.
    // One of more than largest_list_picture bytes counts as none.
    [[nodiscard]] virtual std::optional<QByteArray> PictureAtHand(PartId part, FileSlot slot)
    {
        auto content = ReadFile(part, slot, largest_list_picture);
        return content && content->size() <= largest_list_picture ? std::move(*content) : QByteArray();
    }
    [[nodiscard]] virtual bool PicturesCame() { return false; }

    // Hands over the files in `slots` that the part has, all of one state. False on an error, on content that is not
    // what was stored, and when the sink has a problem: what was handed over is then worth nothing.
    virtual bool CopyFiles(PartId part, SlotSet slots, const ContentSink& sink) = 0;

    // What will be copied next, in this order, for a library that can ask for it ahead.
    virtual void Expect(std::span<const PartCopy> /*copies*/) {}

    // One file as a whole, empty where the part has none. Of one with more than `most` bytes the first ones, somewhat
    // more than those: a stranger has no say in how much memory it takes. Nothing on an error.
    [[nodiscard]] std::optional<QByteArray> ReadFile(PartId part, FileSlot slot, qsizetype most)
    {
        QByteArray content;
        const bool read = CopyFiles(part, SetOf(slot), [&](FileSlot, std::span<const char> block) {
            content.append(block.data(), std::ssize(block));
            return LibraryProblem{content.size() > most ? LibraryFault::Damaged : LibraryFault::None, {}, {}};
        });
        return read || content.size() > most ? std::optional(std::move(content)) : std::nullopt;
    }

    [[nodiscard]] virtual LibraryPlace Place() const = 0;
    [[nodiscard]] virtual const QByteArray& Id() const = 0; // made with the library, and never made again

    // Folders and parts that were met and not given because of their names.
    [[nodiscard]] virtual qint64 Refused() const = 0;

    // The last list met keys by other rules than those of now. Lists are right all the same, but slow until all keys
    // are made anew.
    [[nodiscard]] virtual bool HasOtherKeys() const { return false; }

    // What is given while that machine does not answer is as it was then; invalid where nothing is.
    [[nodiscard]] virtual QDateTime AsOf() const { return {}; }

    // Since when the machine that holds the library has not answered; invalid while it does.
    [[nodiscard]] virtual QDateTime SilentSince() const { return {}; }
};

} // namespace partkeep
