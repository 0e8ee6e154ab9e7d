// Parts that will be copied one after the other, asked for before it is their turn, on a connection of their own: so a
// run of copies goes as fast as the line, however long an answer takes. What does not come in the order that was told
// is asked for anew. Of parts that are all kept only the hashes are asked for, many at once. A content that several of
// them have comes once.
#pragma once

#include "partlibrary/postgres/pg_at_hand.h"
#include "partlibrary/postgres/pg_content.h"

#include <chrono>
#include <deque>
#include <memory>
#include <optional>
#include <set>
#include <span>
#include <vector>

namespace partkeep {

class CPgAhead {
public:
    CPgAhead(std::shared_ptr<CPgConnection> main, CPgAtHand& at_hand) : main_(std::move(main)), at_hand_(at_hand) {}

    void Expect(std::span<const PartCopy> copies);

    // The part that is next, if it is this one and is there. Null: ask otherwise.
    [[nodiscard]] const PartRow* Find(PartId part);
    [[nodiscard]] const PartRow* Find(const QString& folder, const QString& name);

    // Nothing where this copy is not next, or nothing of it was handed over yet.
    [[nodiscard]] std::optional<bool> Copy(PartId part, SlotSet slots, const ContentSink& sink);
    // All files that the part of the last copy has.
    [[nodiscard]] const std::vector<PartFile>& Files() const { return files_; }

    // Between what a user does: after a while there is no connection for what nobody copies.
    void Rest();

private:
    using Clock = std::chrono::steady_clock;

    struct Sent {
        PartCopy copy;
        CPgAtHand::Need need;
        bool is_here; // all of it is kept, and nothing was asked for
        Clock::duration idle;
    };

    void SendMore();
    [[nodiscard]] CSql StatementFor(PartId part, SlotSet slots, std::span<const QByteArray> kept) const;
    bool Connect();
    void AskForHashes();
    [[nodiscard]] CPgAtHand::Need NeedOfNext();
    [[nodiscard]] const PartRow* Next();
    [[nodiscard]] std::optional<bool> HandOverNext(const ContentSink& sink);
    void DropNext();
    void GiveUp();
    void Use();

    std::shared_ptr<CPgConnection> main_;
    CPgAtHand& at_hand_;
    std::shared_ptr<CPgConnection> connection_;
    std::deque<PartCopy> waiting_; // not asked for yet
    std::deque<Sent> sent_;
    std::size_t asked_ = 0;          // of these
    qint64 bytes_sent_for_ = 0;      // as far as it is known
    std::set<QByteArray> coming_;    // contents that were asked for and will be kept
    PartRow copied_;                 // the last one
    std::vector<PartFile> files_;    // of it
    std::optional<CPgContent> next_; // of the first that was sent
    Clock::time_point read_;
    Clock::time_point used_; // by whoever copies
    Clock::duration idle_{}; // in which nobody was
    Clock::time_point again_at_;
};

} // namespace partkeep
