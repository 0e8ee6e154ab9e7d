// Memory of the XML store for tests: counts what is out, checks the sizes given back, and fails when told to.
#pragma once

#include <cstddef>

namespace watched_memory {

// Every allocation from the `first`-th on fails, counted from 1 from now; only that one when `once` is set; none for 0.
void FailFrom(std::size_t first, bool once);
void StopFailing();

// Allocations asked for since FailFrom.
std::size_t Asked();

std::size_t LivePieces();

// Whether blocks stand several to a room, as in the product, or each in one of its own, which is so without being told.
void ShareRooms(bool share);

} // namespace watched_memory
