#include "partlibrary/content_share.h"

#include <algorithm>
#include <bit>

namespace partkeep {

namespace {

qint64 Pieces(qint64 file_bytes)
{
    return std::max<qint64>((file_bytes + chunk_bytes - 1) / chunk_bytes, 1);
}

// While the end is not known, nothing can be given away.
qint64 Left(const ContentSpan& span)
{
    return span.end == unknown_end ? 0 : span.end - span.next;
}

} // namespace

ContentSpan* CContentShare::Take()
{
    std::unique_lock lock(mutex_);
    for (;;) {
        if (problem_) {
            return nullptr;
        }
        if (fresh_ != 0) {
            return TakeFresh();
        }
        if (ContentSpan* const rear = TakeRear(); rear != nullptr) {
            return rear;
        }
        const auto unknown = [](const ContentSpan& span) { return span.end == unknown_end; };
        if (std::none_of(spans_.begin(), spans_.end(), unknown)) {
            return nullptr;
        }
        changed_.wait(lock);
    }
}

ContentSpan* CContentShare::TakeFresh()
{
    const auto slot = static_cast<FileSlot>(std::countr_zero(fresh_));
    fresh_ &= ~SetOf(slot);
    return &spans_.emplace_back(ContentSpan{slot, 0, unknown_end});
}

ContentSpan* CContentShare::TakeRear()
{
    const auto shorter = [](const ContentSpan& one, const ContentSpan& other) { return Left(one) < Left(other); };
    const auto longest = std::max_element(spans_.begin(), spans_.end(), shorter);
    if (longest == spans_.end() || Left(*longest) == 0) {
        return nullptr;
    }
    const qint64 end = longest->end;
    const qint64 middle = end - (Left(*longest) + 1) / 2;
    longest->end = middle;
    return &spans_.emplace_back(ContentSpan{longest->slot, middle, end});
}

std::optional<qint64> CContentShare::Next(ContentSpan& span)
{
    const std::lock_guard lock(mutex_);
    if (problem_ || span.next >= span.end) {
        return std::nullopt;
    }
    return span.next++;
}

bool CContentShare::Learn(ContentSpan& span, qint64 file_bytes)
{
    const std::lock_guard lock(mutex_);
    std::optional<qint64>& known = bytes_[static_cast<std::size_t>(span.slot)];
    if (known) {
        return *known == file_bytes;
    }
    known = file_bytes;
    span.end = Pieces(file_bytes);
    changed_.notify_all();
    return true;
}

void CContentShare::Fail(const LibraryProblem& problem)
{
    const std::lock_guard lock(mutex_);
    if (!problem_) {
        problem_ = problem;
    }
    changed_.notify_all();
}

LibraryProblem CContentShare::Problem() const
{
    const std::lock_guard lock(mutex_);
    return problem_;
}

} // namespace partkeep
