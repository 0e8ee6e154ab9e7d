// A connection on which nothing is waited for: it tells of changes that others commit, and brings what will be looked
// at next. Works a little at each look, whenever who shows the library has time; between two looks nothing happens.
//
// Changes are told by the server as they are committed, where it takes LISTEN. A standby does not, and a line that has
// gone tells nothing: the revision is asked for each second besides.
#pragma once

#include "partlibrary/postgres/pg_connection.h"
#include "partlibrary/postgres/pg_pictures.h"
#include "partlibrary/postgres/pg_start.h"

#include <chrono>
#include <deque>
#include <memory>
#include <optional>
#include <span>
#include <vector>

namespace partkeep {

class CPgWatch {
public:
    CPgWatch(std::shared_ptr<CPgConnection> main, CPgAtHand& at_hand);

    // True when somebody has committed something since the last look, and when the server does not answer any more, or
    // again.
    bool Look();
    [[nodiscard]] int Socket() const; // where an answer comes; -1: none is waited for

    void Want(std::span<const PartId> parts) { pictures_.Want(parts); }
    [[nodiscard]] std::optional<QByteArray> Picture(PartId part, FileSlot slot);
    [[nodiscard]] bool TakeArrival() { return pictures_.TakeArrival(); }

private:
    using Clock = std::chrono::steady_clock;
    static constexpr std::chrono::seconds between_connections{2};
    enum class State { Closed, Connecting, Open };
    enum class Asked { Setting, Revision, Rows, Picture };
    struct Question {
        Asked asked;
        std::optional<PartFile> picture;
    };

    void Start();
    void GoOnConnecting();
    void SetUp();
    void Close();
    void GiveUp(const LibraryProblem& why);
    void MissRevision(const CPgResult& error);
    void Ask(const CSql& statement, Question question);
    void Receive();
    void Take(const CPgResult& result);
    void TakeRevision(const CPgResult& result);
    void TakeNotices();
    void AskForMore();
    [[nodiscard]] bool IsOverdue() const;

    std::shared_ptr<CPgConnection> main_;
    CPgPictures pictures_;
    std::optional<CPgStart> start_; // while it is connecting
    PqConnection connection_;
    State state_ = State::Closed;
    std::deque<Question> questions_; // asked, and not answered to their end
    CPgAnswer answer_;               // nobody waits for it: only its bytes count
    std::optional<qint64> revision_;
    bool noticed_ = false;
    bool changed_ = false;
    bool misses_revision_ = false; // which has been told
    Clock::time_point last_byte_;
    Clock::time_point asked_for_revision_;
    Clock::time_point closed_;
    Clock::duration pause_ = between_connections;
    int behind_ = 0; // looks at which the main line had not come as far
};

} // namespace partkeep
