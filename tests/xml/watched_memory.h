// Memory of the XML store for tests: counts what is out, checks the sizes given back, and fails when told to.
#pragma once

#include <cstddef>

namespace watched_memory {

// Every allocation from the `first`-th on fails, counted from 1 from now; only that one when `once` is set; none for 0.
void FailFrom(std::size_t first, bool once);
extern std::size_t fail_from; // 0 ends it
extern std::size_t asked;     // allocations since FailFrom

extern std::size_t live_pieces;
extern bool share_rooms; // whether blocks stand several to a room, as in the product, or each in one of its own

} // namespace watched_memory
