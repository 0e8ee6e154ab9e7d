#include "partlibrary/library/library_copy.h"

#include "partlibrary/library/library_walk.h"

#include <algorithm>
#include <map>
#include <optional>
#include <utility>
#include <vector>

namespace partkeep {

namespace {

constexpr std::size_t parts_at_once = 64;

class CCopying {
public:
    CCopying(IPartLibrary& from, ILibraryWriter& to, const WorkProgress& progress, LibraryProblem& problem)
        : from_(from), to_(to), progress_(progress), problem_(problem)
    {
    }

    bool All()
    {
        const auto before = from_.Revision();
        const auto folders = before ? AllFolders(from_) : std::nullopt;
        if (!folders) {
            return Refuse(from_.Problem());
        }
        for (const FolderRow& folder : *folders) {
            total_ += folder.parts;
        }
        const bool copied =
            std::all_of(folders->begin(), folders->end(), [this](const FolderRow& row) { return Folder(row); });
        if (copied && from_.Revision() != before) {
            return Refuse({LibraryFault::Busy, {}, QStringLiteral("the library was changed meanwhile")});
        }
        if (copied && from_.Refused() > 0) {
            return Refuse({LibraryFault::NameRefused,
                           {},
                           QStringLiteral("of %1 folders or parts to be copied").arg(from_.Refused())});
        }
        return copied;
    }

    bool Refuse(LibraryProblem problem)
    {
        problem_ = problem_ ? problem_ : std::move(problem);
        return false;
    }

private:
    bool Folder(const FolderRow& folder)
    {
        const auto id = to_.MakeFolder(folder.path);
        if (!id) {
            return Refuse(to_.Problem());
        }
        std::vector<PartRow> parts;
        const bool read = ForEachPart(from_, folder.id, [&](const PartRow& part) {
            parts.push_back(part);
            return parts.size() < parts_at_once || Parts(*id, std::exchange(parts, {}));
        });
        return read ? Parts(*id, parts) : Refuse(from_.Problem());
    }

    // Contents go before the rows that have them.
    bool Parts(qint64 folder, const std::vector<PartRow>& parts)
    {
        for (const PartRow& part : parts) {
            contents_.emplace_back();
            if (!Contents(part)) {
                return false;
            }
        }
        for (std::size_t i = 0; i < parts.size(); ++i) {
            if (!Put(folder, parts[i], contents_[i])) {
                return false;
            }
        }
        contents_.clear();
        return true;
    }

    // A file comes in blocks and is wanted in blocks of another size.
    bool Contents(const PartRow& part)
    {
        QByteArray file;
        std::optional<FileSlot> slot;
        LibraryProblem trouble;
        const auto store = [&] {
            qsizetype at = 0;
            const auto stored = to_.Store(*slot, [&](std::span<char> buffer) {
                const auto size = std::min<qsizetype>(file.size() - at, static_cast<qsizetype>(buffer.size()));
                std::copy_n(file.constData() + at, size, buffer.begin());
                at += size;
                return qint64{size};
            });
            trouble = stored ? LibraryProblem() : to_.Problem();
            contents_.back()[*slot] = stored.value_or(StoredContent());
            file.clear();
            return trouble;
        };
        const bool read = from_.CopyFiles(part.id, part.slots, [&](FileSlot next, std::span<const char> block) {
            if (slot && *slot != next && store()) {
                return trouble;
            }
            slot = next;
            file.append(block.data(), static_cast<qsizetype>(block.size()));
            return LibraryProblem();
        });
        return (read && (!slot || !store())) || Refuse(trouble ? trouble : from_.Problem());
    }

    bool Put(qint64 folder, const PartRow& part, const std::map<FileSlot, StoredContent>& contents)
    {
        const auto id =
            to_.PutPart(folder, part.name, PartAttributes{part.thickness, part.material, part.machine, part.comment});
        const bool put = id && std::all_of(contents.begin(), contents.end(), [&](const auto& content) {
                             return to_.PutFile(*id, content.first, content.second);
                         });
        if (put && progress_ && !progress_(++done_, total_)) {
            return Refuse({LibraryFault::Stopped, {}, {}});
        }
        return put || Refuse(to_.Problem());
    }

    IPartLibrary& from_;
    ILibraryWriter& to_;
    const WorkProgress& progress_;
    LibraryProblem& problem_;
    std::vector<std::map<FileSlot, StoredContent>> contents_;
    qint64 done_ = 0;
    qint64 total_ = 0;
};

} // namespace

bool CopyWholeLibrary(IPartLibrary& from, ILibraryWriter& to, const WorkProgress& progress, LibraryProblem& problem)
{
    CCopying copying(from, to, progress, problem);
    if (!to.Begin()) {
        return copying.Refuse(to.Problem());
    }
    const auto root = to.Library().FindFolder(QString());
    const bool empty = root && root->parts == 0 && !root->has_folders;
    const bool copied = root && (empty || copying.Refuse({LibraryFault::AlreadyThere, {}, {}})) && copying.All() &&
                        (to.Commit() || copying.Refuse(to.Problem()));
    if (!copied) {
        copying.Refuse(to.Problem());
        to.Rollback();
    }
    return copied;
}

} // namespace partkeep
