#include "partlibrary/postgres/pg_ahead.h"
#include "partlibrary/postgres/pg_waits.h"

#include <algorithm>
#include <utility>

namespace partkeep {

namespace {

constexpr std::size_t most_ahead = 16;
constexpr std::size_t most_small_ahead = 64;
constexpr qint64 small_bytes = 2 << 20; // of all that are on their way
constexpr std::size_t told_together = 1024;

} // namespace

// What is under way and is expected again goes on.
void CPgAhead::Expect(std::span<const PartCopy> copies)
try {
    const bool goes_on =
        sent_.size() + waiting_.size() == copies.size() &&
        std::equal(sent_.begin(), sent_.end(), copies.begin(),
                   [](const Sent& sent, const PartCopy& copy) { return sent.copy == copy; }) &&
        std::equal(waiting_.begin(), waiting_.end(), copies.begin() + static_cast<std::ptrdiff_t>(sent_.size()));
    if (goes_on) {
        return;
    }
    GiveUp();
    Use();
    waiting_.assign(copies.begin(), copies.end());
    SendMore();
} catch (...) {
    GiveUp(); // what was asked and what was noted may differ
    throw;
}

void CPgAhead::Use()
{
    const auto now = Clock::now();
    idle_ += now - std::exchange(used_, now);
}

void CPgAhead::Rest()
{
    if (connection_ != nullptr && sent_.empty() && Clock::now() - used_ > impatience) {
        connection_.reset();
    }
}

void CPgAhead::GiveUp()
{
    next_.reset();
    if (asked_ > 0 && connection_ != nullptr) {
        if (connection_->SilentSince().isValid()) {
            main_->FallSilent(connection_->Silence());
        }
        connection_->Disconnect();
    }
    sent_.clear();
    waiting_.clear();
    coming_.clear();
    asked_ = 0;
    bytes_sent_for_ = 0;
}

// What is kept is known by the hashes, of which many are told at once.
void CPgAhead::AskForHashes()
{
    std::vector<PartId> parts;
    const auto add = [&parts](PartId part) {
        if (parts.size() < told_together && (parts.empty() || parts.back() != part)) {
            parts.push_back(part);
        }
    };
    for (const Sent& sent : sent_) {
        add(sent.copy.part);
    }
    for (const PartCopy& copy : waiting_) {
        add(copy.part);
    }
    if (const auto told = main_->Ask(CPgAtHand::Statement(parts))) {
        at_hand_.Take(*told);
    }
}

CPgAtHand::Need CPgAhead::NeedOfNext()
{
    const PartCopy& next = waiting_.front();
    if (at_hand_.Cache() == nullptr) {
        return {{}, {}, small_bytes};
    }
    if (at_hand_.JustTold(next.part, CPgAtHand::fresh / 2) == nullptr) {
        AskForHashes();
    }
    return at_hand_.NeedOf(next.part, next.slots, coming_).value_or(CPgAtHand::Need{{}, {}, small_bytes});
}

CSql CPgAhead::StatementFor(PartId part, SlotSet slots, std::span<const QByteArray> kept) const
{
    return CPgContent::Statement(part, slots, kept, at_hand_.Cache() != nullptr);
}

bool CPgAhead::Connect()
{
    if (connection_ == nullptr && Clock::now() >= again_at_) { // there may be no room for a second one
        LibraryProblem problem;
        connection_ = CPgConnection::Open(main_->Place(), PgUse::Browse, problem, StatementFor({}, {}, {}));
        again_at_ = Clock::now() + impatience;
    }
    return connection_ != nullptr && connection_->Id() == main_->Id();
}

void CPgAhead::SendMore()
{
    while (!waiting_.empty() && !main_->SilentSince().isValid() &&
           sent_.size() < (bytes_sent_for_ < small_bytes ? most_small_ahead : most_ahead)) {
        const PartCopy copy = waiting_.front();
        const CPgAtHand::Need need = NeedOfNext();
        const bool is_here = need.bytes == 0;
        if (!is_here && !Connect()) {
            waiting_.clear();
            return;
        }
        sent_.push_back({copy, need, is_here, idle_});
        waiting_.pop_front();
        coming_.insert(need.coming.begin(), need.coming.end());
        asked_ += is_here ? 0 : 1;
        bytes_sent_for_ += need.bytes;
        if (!is_here && !connection_->SendOften(StatementFor(copy.part, copy.slots, need.kept))) {
            GiveUp();
        }
    }
}

// Behind many others it may be a while until it is the turn of a part that is here: then it is asked once more whether
// what is here is still what it has.
const PartRow* CPgAhead::Next()
try {
    Use();
    const bool is_old = !sent_.empty() && idle_ - sent_.front().idle > CPgAtHand::fresh;
    if (is_old || (next_ && used_ - read_ > CPgAtHand::fresh)) {
        GiveUp(); // what is on its way is as it was before the pauses
    }
    if (sent_.empty()) {
        return nullptr;
    }
    const PartId part = sent_.front().copy.part;
    if (sent_.front().is_here) {
        if (at_hand_.JustTold(part) == nullptr) {
            AskForHashes();
        }
        const CPgAtHand::Known* const known = at_hand_.JustTold(part);
        if (known == nullptr) {
            GiveUp();
        }
        return known != nullptr ? &known->row : nullptr;
    }
    if (!next_) {
        next_.emplace(*connection_, at_hand_.Cache(), sent_.front().need.kept);
        read_ = Clock::now();
        if (!next_->Begin(part) || next_->Fault() != PgRowFault::None) {
            GiveUp();
        }
    }
    return next_ ? &next_->Part() : nullptr;
} catch (...) {
    GiveUp();
    throw;
}

const PartRow* CPgAhead::Find(PartId part)
{
    return !sent_.empty() && sent_.front().copy.part == part ? Next() : nullptr;
}

// Nobody waits for the next part but who has asked for it by its number, or has had other files of it just now.
const PartRow* CPgAhead::Find(const QString& folder, const QString& name)
{
    const bool again = !sent_.empty() && sent_.front().copy.part == copied_.id && copied_.name == name &&
                       copied_.folder_path == folder;
    const bool known = next_ || again || (!sent_.empty() && sent_.front().is_here);
    const PartRow* const part = known ? Next() : nullptr;
    return part != nullptr && part->name == name && part->folder_path == folder ? part : nullptr;
}

std::optional<bool> CPgAhead::HandOverNext(const ContentSink& sink)
{
    const PartCopy copy = sent_.front().copy;
    if (!sent_.front().is_here) {
        const bool done = next_->HandOver(copy.slots, sink, *main_);
        files_ = next_->Files();
        if (!done) {
            main_->SetProblem(connection_->Problem());
        }
        return done;
    }
    LibraryProblem problem;
    const CPgAtHand::Known* const known = at_hand_.Find(copy.part);
    files_ = known != nullptr ? known->files : std::vector<PartFile>();
    if (!at_hand_.Copy(copy.part, copy.slots, sink, problem)) {
        return std::nullopt; // what was to be kept was not
    }
    if (problem) {
        main_->SetProblem(problem);
    }
    return !problem;
}

void CPgAhead::DropNext()
{
    const Sent& next = sent_.front();
    next_.reset();
    asked_ -= next.is_here ? 0 : 1;
    bytes_sent_for_ -= next.need.bytes;
    for (const QByteArray& hash : next.need.coming) {
        coming_.erase(hash);
    }
    sent_.pop_front();
}

std::optional<bool> CPgAhead::Copy(PartId part, SlotSet slots, const ContentSink& sink)
try {
    const PartRow* const row = !sent_.empty() && sent_.front().copy.slots == slots ? Find(part) : nullptr;
    if (row == nullptr) {
        return std::nullopt;
    }
    copied_ = *row;
    const auto copied = HandOverNext(sink);
    if (copied && !*copied) {
        GiveUp();
        return false;
    }
    DropNext();
    SendMore();
    used_ = Clock::now();
    return copied;
} catch (...) {
    GiveUp();
    throw;
}

} // namespace partkeep
