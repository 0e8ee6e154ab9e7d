#include "partlibrary/postgres/pg_ahead.h"

#include <algorithm>

namespace partkeep {

namespace {

constexpr std::size_t most_ahead = 16;
constexpr std::size_t most_small_ahead = 64;
constexpr qint64 small_bytes = 2 << 20; // of all that are on their way
constexpr std::size_t told_together = 1024;

} // namespace

// What is under way and is expected again goes on.
void CPgAhead::Expect(std::span<const PartId> parts, SlotSet slots)
{
    const bool goes_on =
        slots == slots_ && sent_.size() + waiting_.size() == parts.size() &&
        std::equal(sent_.begin(), sent_.end(), parts.begin(),
                   [](const Sent& sent, PartId part) { return sent.part == part; }) &&
        std::equal(waiting_.begin(), waiting_.end(), parts.begin() + static_cast<std::ptrdiff_t>(sent_.size()));
    if (goes_on) {
        return;
    }
    GiveUp();
    waiting_.assign(parts.begin(), parts.end());
    slots_ = slots;
    SendMore();
}

void CPgAhead::GiveUp()
{
    next_.reset();
    if (asked_ > 0 && connection_ != nullptr) {
        if (connection_->SilentSince().isValid()) {
            main_->FallSilent();
        }
        connection_->Disconnect();
    }
    sent_.clear();
    waiting_.clear();
    asked_ = 0;
    bytes_sent_for_ = 0;
}

// What is kept is known by the hashes, of which many are told at once.
CPgAtHand::Need CPgAhead::NeedOfNext()
{
    if (at_hand_.Cache() == nullptr) {
        return {{}, small_bytes};
    }
    if (at_hand_.JustTold(waiting_.front(), CPgAtHand::fresh / 2) == nullptr) {
        const auto count = static_cast<std::ptrdiff_t>(std::min(waiting_.size(), told_together));
        const std::vector<PartId> parts(waiting_.begin(), waiting_.begin() + count);
        if (const auto told = main_->Ask(CPgAtHand::Statement(parts))) {
            at_hand_.Take(*told);
        }
    }
    return at_hand_.NeedOf(waiting_.front(), slots_).value_or(CPgAtHand::Need{{}, small_bytes});
}

bool CPgAhead::Connect()
{
    LibraryProblem problem;
    connection_ = connection_ != nullptr ? connection_ : CPgConnection::Open(main_->Place(), PgUse::Browse, problem);
    return connection_ != nullptr && connection_->Id() == main_->Id();
}

void CPgAhead::SendMore()
{
    while (!waiting_.empty() && !main_->SilentSince().isValid() &&
           sent_.size() < (bytes_sent_for_ < small_bytes ? most_small_ahead : most_ahead)) {
        const PartId part = waiting_.front();
        const CPgAtHand::Need need = NeedOfNext();
        const bool is_here = need.bytes == 0;
        if (!is_here && !Connect()) {
            waiting_.clear();
            return;
        }
        sent_.push_back({part, need, is_here});
        waiting_.pop_front();
        asked_ += is_here ? 0 : 1;
        bytes_sent_for_ += need.bytes;
        if (!is_here && !connection_->Send(CPgContent::Statement(part, slots_, need.kept))) {
            GiveUp();
        }
    }
}

const PartRow* CPgAhead::Next()
{
    if (next_ && Clock::now() - read_ > CPgAtHand::fresh) {
        GiveUp();
    }
    if (sent_.empty()) {
        return nullptr;
    }
    if (sent_.front().is_here) {
        const CPgAtHand::Known* const known = at_hand_.JustTold(sent_.front().part);
        if (known == nullptr) {
            GiveUp();
        }
        return known != nullptr ? &known->row : nullptr;
    }
    if (!next_) {
        next_.emplace(*connection_, at_hand_.Cache(), sent_.front().need.kept);
        read_ = Clock::now();
        if (!next_->Begin(sent_.front().part) || next_->Fault() != PgRowFault::None) {
            GiveUp();
        }
    }
    return next_ ? &next_->Part() : nullptr;
}

const PartRow* CPgAhead::Find(PartId part)
{
    return !sent_.empty() && sent_.front().part == part ? Next() : nullptr;
}

const PartRow* CPgAhead::Find(const QString& folder, const QString& name)
{
    const bool known = next_ || (!sent_.empty() && sent_.front().is_here); // only what has been found by its number
    const PartRow* const part = known ? Next() : nullptr;
    return part != nullptr && part->name == name && part->folder_path == folder ? part : nullptr;
}

bool CPgAhead::HandOverNext(SlotSet slots, const ContentSink& sink)
{
    if (!sent_.front().is_here) {
        const bool done = next_->HandOver(slots, sink, *main_);
        if (!done) {
            main_->SetProblem(connection_->Problem());
        }
        return done;
    }
    LibraryProblem problem;
    const bool all = at_hand_.Copy(sent_.front().part, slots, sink, problem);
    if (!all || problem) {
        main_->SetProblem(problem ? problem : LibraryProblem{LibraryFault::NoAnswer, main_->Place().Text(), {}});
    }
    return all && !problem;
}

std::optional<bool> CPgAhead::Copy(PartId part, SlotSet slots, const ContentSink& sink)
{
    if (slots != slots_ || Find(part) == nullptr) {
        return std::nullopt;
    }
    if (!HandOverNext(slots, sink)) {
        GiveUp();
        return false;
    }
    next_.reset();
    asked_ -= sent_.front().is_here ? 0 : 1;
    bytes_sent_for_ -= sent_.front().need.bytes;
    sent_.pop_front();
    SendMore();
    return true;
}

} // namespace partkeep
