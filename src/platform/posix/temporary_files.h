// Files that are written beside their place and renamed: their names, and what is left of them when a process dies
// on the way. Who writes one holds a lock on it until it is renamed, so that nobody takes it for left over.
#pragma once

#include <string>
#include <string_view>

namespace partkeep {

// A name that nobody can foresee, so that nobody can put a link there first. The dot in front hides it and keeps it
// from ever being taken for the file of a part. Empty where no chance is to be had.
[[nodiscard]] std::string NewTemporaryName();

// To be called for each that is made. The lock goes with the descriptor.
void HoldTemporaryFile(int descriptor);

// Removes the file when it is a temporary one of ours and its process is dead: nobody holds it, and either the
// machine has not been started anew since, or it has lain there for a day. `directory` is an open folder.
void RemoveIfLeftOver(int directory, std::string_view name);

// The same for all files of a folder.
void RemoveLeftOvers(const std::string& folder);

} // namespace partkeep
