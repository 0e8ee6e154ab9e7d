// The commands of partkeep-library.
#pragma once

#include "partlibrary/tool/tool_output.h"

namespace partkeep {

// Ends as ToolEnd tells, with a line for each trouble on the streams.
int RunLibraryTool(int argc, const char* const* argv, const ToolStreams& streams);

} // namespace partkeep
