// The program's own memory for tests: fails when told to. Linked in, it serves every `new` of the program.
#pragma once

#include <cstddef>

namespace failing_memory {

// Allocations until one fails; none does for 0.
extern std::size_t allocations_left;
extern bool fails_for_good; // each one from then on
extern bool one_failed;

} // namespace failing_memory
