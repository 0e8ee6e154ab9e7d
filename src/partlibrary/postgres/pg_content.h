// The content of one part on its way from the server, row by row: a part and its files are of one statement, so they
// are of one state.
#pragma once

#include "partlibrary/postgres/pg_connection.h"
#include "partlibrary/postgres/pg_rows.h"

namespace partkeep {

class CPgContent {
public:
    explicit CPgContent(CPgConnection& connection) : connection_(connection) {}

    [[nodiscard]] static CSql Statement(PartId part, SlotSet slots);

    // Waits for the part itself, of what was sent or is sent now. False on an error, and NoPart where there is none.
    [[nodiscard]] bool Begin(PartId part) { return Take(connection_.Receive(row_), part); }
    [[nodiscard]] bool Begin(PartId part, SlotSet slots)
    {
        return Take(connection_.SendForFirst(Statement(part, slots), row_), part);
    }
    [[nodiscard]] const PartRow& Part() const { return part_; }
    [[nodiscard]] PgRowFault Fault() const { return fault_; }

    // Hands the files over that the statement was for, to its end.
    bool HandOver(SlotSet slots, const ContentSink& sink);

private:
    bool Take(CPgConnection::Next next, PartId part);
    LibraryProblem Take(const CPgResult& row, SlotSet& found, const ContentSink& sink);
    [[nodiscard]] LibraryProblem Damage() const;

    CPgConnection& connection_;
    CPgResult row_;
    PartRow part_;
    PgRowFault fault_ = PgRowFault::None;
    qint64 slot_ = -1; // that is under way
    qint64 bytes_ = 0; // of it
    qint64 done_ = 0;
};

} // namespace partkeep
