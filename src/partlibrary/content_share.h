// Which pieces of a part's files are still to be read, shared out between the threads that read them: each thread
// takes a file that nobody has begun, and later the rear half of what another still has before it. Any thread.
#pragma once

#include "partlibrary/file_chunks.h"
#include "partlibrary/library_problem.h"

#include <array>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <optional>

namespace partkeep {

inline constexpr qint64 unknown_end = slot_id_step + 1; // a number that no end can have

// A run of pieces that one thread reads in order.
struct ContentSpan {
    FileSlot slot;
    qint64 next; // number of the piece to be read next
    qint64 end;  // the first number that is another's; unknown_end while nobody knows how long the file is
};

class CContentShare {
public:
    explicit CContentShare(SlotSet files) : fresh_(files) {}

    // Waits while a file's length is still to be learnt. Null when all is taken, and after a failure. A thread
    // that takes a span reads it to its end or fails. The span stays the share's.
    [[nodiscard]] ContentSpan* Take();

    // The number of the span's next piece; nothing at its end, which others may have drawn nearer.
    [[nodiscard]] std::optional<qint64> Next(ContentSpan& span);

    // Tells the length of a file, in bytes, as a piece of the span gives it. False when another gave another.
    [[nodiscard]] bool Learn(ContentSpan& span, qint64 file_bytes);

    // Ends the work of all. The first problem stays.
    void Fail(const LibraryProblem& problem);
    [[nodiscard]] LibraryProblem Problem() const;

private:
    ContentSpan* TakeFresh();
    ContentSpan* TakeRear();

    mutable std::mutex mutex_;
    std::condition_variable changed_;
    SlotSet fresh_;                                              // files that nobody has begun
    std::deque<ContentSpan> spans_;                              // at places that do not change
    std::array<std::optional<qint64>, file_kinds.size()> bytes_; // of each file, once known
    LibraryProblem problem_;
};

} // namespace partkeep
