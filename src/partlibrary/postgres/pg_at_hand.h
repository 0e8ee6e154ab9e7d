// What this machine knows of parts in a database without asking: their rows and the hashes of their files, as they were
// told a moment ago, and the contents that it keeps by these hashes. All of it is of one revision of the library; what
// was told of an earlier one is forgotten.
#pragma once

#include "partlibrary/cache/content_cache.h"
#include "partlibrary/library/part_library.h"
#include "partlibrary/postgres/pg_result.h"

#include <QByteArray>
#include <QDateTime>
#include <QString>

#include <chrono>
#include <memory>
#include <optional>
#include <set>
#include <span>
#include <unordered_map>
#include <utility>
#include <vector>

namespace partkeep {

class CPgAtHand {
public:
    struct Known {
        PartRow row; // with the path of its folder
        std::vector<PartFile> files;
        std::chrono::steady_clock::time_point told;
    };
    // Of the files of a part: which of their contents need not come, which will be kept once they have come, and how
    // many bytes come.
    struct Need {
        std::vector<QByteArray> kept;
        std::vector<QByteArray> coming;
        qint64 bytes = 0;
    };

    explicit CPgAtHand(std::shared_ptr<CContentCache> cache) : cache_(std::move(cache)) {}

    // Null: nothing is kept, and nothing need be told.
    [[nodiscard]] CContentCache* Cache() const { return cache_.get(); }

    // What the server is asked for these parts, and its answer, whose rows begin with those of the parts.
    [[nodiscard]] static CSql Statement(std::span<const PartId> parts);
    [[nodiscard]] static CSql Statement(const QString& folder, const QString& name);
    void Take(const CPgResult& result);
    void Forget(PartId part) { known_.erase(part); } // which is gone, or is none that may be shown
    // The server has told the revision just now.
    void Confirm(qint64 revision);

    [[nodiscard]] const Known* Find(PartId part) const;
    [[nodiscard]] const Known* Find(const QString& folder, const QString& name) const;
    // Only what was told in the last moment, in which a run of copies asks for many parts together.
    [[nodiscard]] const Known* JustTold(PartId part, std::chrono::milliseconds within = fresh) const;
    // What has been asked for already, and will be kept before these files are handed over, need not come again.
    // Nothing where the part is not known.
    [[nodiscard]] std::optional<Need> NeedOf(PartId part, SlotSet slots,
                                             const std::set<QByteArray>& asked_for = {}) const;

    // A moment ago is as good as now.
    static constexpr std::chrono::milliseconds fresh{2000};
    [[nodiscard]] bool IsFresh() const { return Clock::now() - confirmed_ < fresh; }
    // Invalid where nothing is at hand.
    [[nodiscard]] QDateTime AsOf() const { return known_.empty() ? QDateTime() : as_of_; }

    // Hands over the files in `slots` from what is kept. False, with nothing handed over, where that is not all of
    // them.
    [[nodiscard]] bool Copy(PartId part, SlotSet slots, const ContentSink& sink, LibraryProblem& problem) const;

private:
    using Clock = std::chrono::steady_clock;

    [[nodiscard]] bool Enter(qint64 revision);
    void Forget();

    std::shared_ptr<CContentCache> cache_;
    std::unordered_map<PartId, Known> known_;
    std::unordered_map<QString, PartId> places_;
    std::optional<qint64> revision_;
    Clock::time_point confirmed_;
    QDateTime as_of_;
};

// Hands a content over that is kept: as a file where the sink has one. Nothing where it is not kept after all.
[[nodiscard]] std::optional<LibraryProblem> HandOverKept(CContentCache& cache, const PartFile& file,
                                                         const ContentSink& sink);

} // namespace partkeep
