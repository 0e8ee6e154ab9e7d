#include "partlibrary/postgres/pg_ahead.h"

#include <algorithm>

namespace partkeep {

namespace {

constexpr std::size_t most_ahead = 8;
constexpr std::chrono::seconds fresh{2};

} // namespace

// What is under way and is expected again goes on.
void CPgAhead::Expect(std::span<const PartId> parts, SlotSet slots)
{
    const bool goes_on =
        slots == slots_ && sent_.size() + waiting_.size() == parts.size() &&
        std::equal(sent_.begin(), sent_.end(), parts.begin()) &&
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
    if (!sent_.empty() && connection_ != nullptr) {
        if (connection_->SilentSince().isValid()) {
            main_->FallSilent();
        }
        connection_->Disconnect();
    }
    sent_.clear();
    waiting_.clear();
}

void CPgAhead::SendMore()
{
    if (waiting_.empty() || main_->SilentSince().isValid()) {
        return;
    }
    LibraryProblem problem;
    connection_ = connection_ != nullptr ? connection_ : CPgConnection::Open(main_->Place(), PgUse::Browse, problem);
    if (connection_ == nullptr || connection_->Id() != main_->Id()) {
        waiting_.clear();
        return;
    }
    while (!waiting_.empty() && sent_.size() < most_ahead) {
        if (!connection_->Send(CPgContent::Statement(waiting_.front(), slots_))) {
            sent_.push_back(waiting_.front());
            GiveUp();
            return;
        }
        sent_.push_back(waiting_.front());
        waiting_.pop_front();
    }
}

const PartRow* CPgAhead::Next()
{
    if (next_ && Clock::now() - read_ > fresh) {
        GiveUp();
    }
    if (!next_ && !sent_.empty()) {
        next_.emplace(*connection_);
        read_ = Clock::now();
        if (!next_->Begin(sent_.front()) || next_->Fault() != PgRowFault::None) {
            GiveUp();
        }
    }
    return next_ ? &next_->Part() : nullptr;
}

const PartRow* CPgAhead::Find(PartId part)
{
    return !sent_.empty() && sent_.front() == part ? Next() : nullptr;
}

const PartRow* CPgAhead::Find(const QString& folder, const QString& name)
{
    const PartRow* const part = next_ ? Next() : nullptr; // only what has been found by its number
    return part != nullptr && part->name == name && part->folder_path == folder ? part : nullptr;
}

std::optional<bool> CPgAhead::Copy(PartId part, SlotSet slots, const ContentSink& sink)
{
    if (slots != slots_ || Find(part) == nullptr) {
        return std::nullopt;
    }
    const bool done = next_->HandOver(slots, sink);
    if (!done) {
        main_->SetProblem(connection_->Problem());
        GiveUp();
        return false;
    }
    next_.reset();
    sent_.pop_front();
    SendMore();
    return true;
}

} // namespace partkeep
