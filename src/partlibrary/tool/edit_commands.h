// The commands that change what stands in a library: each one transaction, by patterns.
#pragma once

#include "partlibrary/tool/tool_options.h"
#include "partlibrary/tool/tool_output.h"

namespace partkeep {

int RemovePlaces(ILibraryAdmin& library, const ToolOptions& options, CToolOutput& output);
int RenamePlaces(ILibraryAdmin& library, const ToolOptions& options, CToolOutput& output);
int MovePlaces(ILibraryAdmin& library, const ToolOptions& options, CToolOutput& output);
int SetAttributes(ILibraryAdmin& library, const ToolOptions& options, CToolOutput& output);

} // namespace partkeep
