#include "partlibrary/tool/library_diff.h"

#include "partlibrary/library/library_names.h"
#include "partlibrary/library/library_text.h"
#include "partlibrary/library/library_walk.h"

#include <array>
#include <map>

namespace partkeep {

namespace {

constexpr qint64 page_rows = 500;

// The parts of a folder one by one, in the order of the bytes of their names.
class CPartStream {
public:
    CPartStream(IPartLibrary& library, qint64 folder) : library_(library), folder_(folder) { Load({}); }

    [[nodiscard]] const PartRow* Part() const { return at_ < rows_.size() ? &rows_[at_] : nullptr; }
    [[nodiscard]] bool Failed() const { return failed_; }
    void Next()
    {
        if (++at_ == rows_.size() && static_cast<qint64>(rows_.size()) == page_rows) {
            Load(QString(rows_.back().name));
        }
    }

private:
    void Load(const QString& after)
    {
        auto rows = library_.PartsBehind(folder_, after, page_rows);
        failed_ = !rows;
        rows_ = failed_ ? std::vector<PartRow>() : std::move(*rows);
        at_ = 0;
    }

    IPartLibrary& library_;
    qint64 folder_;
    std::vector<PartRow> rows_;
    std::size_t at_ = 0;
    bool failed_ = false;
};

class CComparison {
public:
    CComparison(IPartLibrary& first, IPartLibrary& second, const std::function<void(const PartDifference&)>& each,
                const WorkProgress& progress, LibraryProblem& problem)
        : first_(first), second_(second), each_(each), progress_(progress), problem_(problem)
    {
    }

    bool Run()
    {
        auto folders = AllFolders(first_);
        if (!folders) {
            return Fail(first_);
        }
        for (const FolderRow& folder : *folders) {
            ids_[folder.path].first = folder.id;
            total_ += folder.parts;
        }
        folders = AllFolders(second_);
        if (!folders) {
            return Fail(second_);
        }
        for (const FolderRow& folder : *folders) {
            ids_[folder.path].second = folder.id;
            total_ += folder.parts;
        }
        for (const auto& [path, ids] : ids_) {
            const bool in_both = ids.first != 0 && ids.second != 0;
            if (!in_both) {
                each_({path + u'\\', {}, ids.first != 0});
            }
            if (!Folder(path, ids.first, ids.second)) {
                return false;
            }
        }
        return true;
    }

private:
    bool Fail(IPartLibrary& library)
    {
        problem_ = library.Problem();
        return false;
    }
    bool Advance(qint64 parts)
    {
        done_ += parts;
        problem_ = progress_(done_, total_) ? LibraryProblem() : LibraryProblem{LibraryFault::Stopped, {}, {}};
        return !problem_;
    }

    // Number 0 is no folder's: it has no parts.
    bool Folder(const QString& path, qint64 first_id, qint64 second_id)
    {
        CPartStream first(first_, first_id);
        CPartStream second(second_, second_id);
        while (!first.Failed() && !second.Failed() && (first.Part() != nullptr || second.Part() != nullptr)) {
            const PartRow* const left = first.Part();
            const PartRow* const right = second.Part();
            const int order = left == nullptr    ? 1
                              : right == nullptr ? -1
                                                 : ToUtf8(left->name).compare(ToUtf8(right->name));
            if (order != 0) {
                each_({JoinPath(path, (order < 0 ? left : right)->name), {}, order < 0});
            } else if (!Both(path, *left, *right)) {
                return false;
            }
            if (!Advance(order == 0 ? 2 : 1)) {
                return false;
            }
            if (order <= 0) {
                first.Next();
            }
            if (order >= 0) {
                second.Next();
            }
        }
        return first.Failed() ? Fail(first_) : !second.Failed() || Fail(second_);
    }

    bool Both(const QString& path, const PartRow& left, const PartRow& right)
    {
        const auto left_files = first_.Files(std::array{left.id});
        const auto right_files = second_.Files(std::array{right.id});
        if (!left_files || !right_files) {
            return Fail(left_files ? second_ : first_);
        }
        PartDifference difference{JoinPath(path, left.name), {}, true};
        const auto compare = [&difference](bool same, const QString& field) {
            if (!same) {
                difference.fields += field;
            }
        };
        compare(left.thickness == right.thickness, QStringLiteral("thickness"));
        compare(left.material == right.material, QStringLiteral("material"));
        compare(left.machine == right.machine, QStringLiteral("machine"));
        compare(left.comment == right.comment, QStringLiteral("comment"));
        for (const FileKind& kind : file_kinds) {
            compare(HashOf(*left_files, kind.slot) == HashOf(*right_files, kind.slot), FromWide(kind.import_end));
        }
        if (!difference.fields.isEmpty()) {
            each_(difference);
        }
        return true;
    }
    static QByteArray HashOf(const std::vector<PartFile>& files, FileSlot slot)
    {
        for (const PartFile& file : files) {
            if (file.slot == slot) {
                return file.hash;
            }
        }
        return {};
    }

    IPartLibrary& first_;
    IPartLibrary& second_;
    const std::function<void(const PartDifference&)>& each_;
    const WorkProgress& progress_;
    LibraryProblem& problem_;
    qint64 done_ = 0;
    qint64 total_ = 0;
    std::map<QString, std::pair<qint64, qint64>> ids_; // of each folder in both
};

} // namespace

bool CompareLibraries(IPartLibrary& first, IPartLibrary& second, const std::function<void(const PartDifference&)>& each,
                      const WorkProgress& progress, LibraryProblem& problem)
{
    return CComparison(first, second, each, progress, problem).Run();
}

} // namespace partkeep
