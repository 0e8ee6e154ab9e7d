// The commands that look at libraries and change nothing.
#pragma once

#include "partlibrary/tool/tool_options.h"
#include "partlibrary/tool/tool_output.h"

namespace partkeep {

int ListParts(ILibraryAdmin& library, const ToolOptions& options, CToolOutput& output);
int CheckOrRebuild(ILibraryAdmin& library, const ToolOptions& options, CToolOutput& output);
int TellDifferences(ILibraryAdmin& library, ILibraryAdmin& other, CToolOutput& output);

} // namespace partkeep
