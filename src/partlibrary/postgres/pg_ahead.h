// Parts that will be copied one after the other, asked for before it is their turn, on a connection of their own: so a
// run of copies goes as fast as the line, however long an answer takes. What does not come in the order that was told
// is asked for anew.
#pragma once

#include "partlibrary/postgres/pg_content.h"

#include <chrono>
#include <deque>
#include <memory>
#include <optional>
#include <span>
#include <vector>

namespace partkeep {

class CPgAhead {
public:
    explicit CPgAhead(std::shared_ptr<CPgConnection> main) : main_(std::move(main)) {}

    void Expect(std::span<const PartId> parts, SlotSet slots);

    // The part that is next, if it is this one and is there. Null: ask otherwise.
    [[nodiscard]] const PartRow* Find(PartId part);
    [[nodiscard]] const PartRow* Find(const QString& folder, const QString& name);

    // Nothing where this part is not next, or nothing of it was handed over yet.
    [[nodiscard]] std::optional<bool> Copy(PartId part, SlotSet slots, const ContentSink& sink);

private:
    using Clock = std::chrono::steady_clock;

    void SendMore();
    [[nodiscard]] const PartRow* Next();
    void GiveUp();

    std::shared_ptr<CPgConnection> main_;
    std::shared_ptr<CPgConnection> connection_;
    std::deque<PartId> waiting_; // not asked for yet
    std::deque<PartId> sent_;
    SlotSet slots_ = 0;
    std::optional<CPgContent> next_; // of the first that was sent
    Clock::time_point read_;
};

} // namespace partkeep
