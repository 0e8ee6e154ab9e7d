// Replacement of a file as a whole: what stands under the name is the old content or the new, never a part.
#pragma once

#include "platform/files.h"

#include <string>
#include <string_view>

namespace partkeep {

// Writes the bytes to a file beside the old one, flushes them to the disk and puts the file in the place of the
// old one, whose access list and attributes it takes over. Links are followed. False, with the old content in
// place and nothing left beside it, when the file cannot be opened for writing or when anything fails on the way.
// Only where permission forbids a file beside it, an existing file is written in place. An old file that is to be
// kept is never written in place, and false is the answer too where it cannot be kept.
bool ReplaceWholeFile(const std::u16string& system_path, std::string_view bytes, OldFile old);

} // namespace partkeep
