// Replacement of a file as a whole: what stands under the name is the old content or the new, never a part.
#pragma once

#include "platform/files.h"

#include <string>
#include <string_view>

namespace partkeep {

// Writes the bytes to a file beside `native`, flushes them to the disk and renames the file over the old one.
// Links are followed to the file behind them; mode, owner and access list of an existing file are kept. False,
// with the old content in place and nothing left beside it, when the file cannot be opened for writing or when
// anything fails on the way. Only where permission forbids a file beside it, or one of the same owner, is an
// existing file written in place, with the space for it reserved first. An old file that is to be kept is never
// written in place, and false is the answer too where it cannot be kept.
bool ReplaceWholeFile(const std::string& native, std::string_view bytes, OldFile old);

// The same for a file that is not there yet: one that has come meanwhile stays. errno tells why it failed.
bool CreateWholeFile(const std::string& native, std::string_view bytes);

} // namespace partkeep
