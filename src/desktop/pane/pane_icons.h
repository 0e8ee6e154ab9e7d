// The pane's few pictures, drawn in the colours of a palette, so that they are sharp at every scale and show on
// light and dark alike.
#pragma once

#include <QIcon>
#include <QPalette>

namespace partkeep {

enum class PaneIcon { Server, ServerAway, Folder, Search, Clear, Star, Columns, Export, Narrow, Warning };

[[nodiscard]] QIcon DrawPaneIcon(PaneIcon icon, const QPalette& palette);

// Black or white ground behind the text of the palette.
[[nodiscard]] bool IsDark(const QPalette& palette);

} // namespace partkeep
