// The commands of partkeep-library: create, import, list and check.
#pragma once

#include <iosfwd>

namespace partkeep {

// 0 on success; 1 when the work failed or a check has findings, with one line for each on `err`; the command
// line parser's own codes for a command line that cannot be understood.
int RunLibraryTool(int argc, const char* const* argv, std::ostream& out, std::ostream& err);

} // namespace partkeep
