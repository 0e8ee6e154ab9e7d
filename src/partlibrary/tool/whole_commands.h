// The commands that deal with a library as a whole, or bring much into it at once.
#pragma once

#include "partlibrary/tool/tool_options.h"
#include "partlibrary/tool/tool_output.h"

namespace partkeep {

int CreateLibrary(ILibraryAdmin& library, const ToolOptions& options, CToolOutput& output);
int ImportParts(ILibraryAdmin& library, const ToolOptions& options, CToolOutput& output);
int ExtractParts(ILibraryAdmin& library, const ToolOptions& options, CToolOutput& output);
int CopyTo(ILibraryAdmin& library, ILibraryAdmin& target, const ToolOptions& options, CToolOutput& output);
int BackUp(ILibraryAdmin& library, const ToolOptions& options, CToolOutput& output);
int Repair(ILibraryAdmin& library, const ToolOptions& options, CToolOutput& output);
int Watch(ILibraryAdmin& library, const ToolOptions& options, CToolOutput& output);

} // namespace partkeep
