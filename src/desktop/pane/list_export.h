// Writes the list as it is shown, as a table that spreadsheets read.
#pragma once

#include "desktop/pane/part_list_model.h"

#include <QItemSelection>
#include <QList>
#include <QString>

#include <optional>

namespace partkeep {

// CSV by RFC 4180, in UTF-8 with a mark at the start. The columns in the order given, headers first, and behind them
// the folder where the list shows parts of several. Only the rows of `selection` where there is one, in their order.
// The file is replaced as a whole. How many rows it has; nothing when it cannot be written or a row cannot be read.
[[nodiscard]] std::optional<int> ExportList(const CPartListModel& model, const QList<int>& columns, const QString& file,
                                            const QItemSelection* selection = nullptr);

} // namespace partkeep
