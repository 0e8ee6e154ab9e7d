// Writes the list as it is shown, as a table that spreadsheets read.
#pragma once

#include "desktop/pane/part_list_model.h"

#include <QList>
#include <QString>

namespace partkeep {

// CSV by RFC 4180, in UTF-8 with a mark at the start. The columns in the order given, headers first. The file is
// replaced as a whole; false when it cannot be written or a row cannot be read.
[[nodiscard]] bool ExportList(const CPartListModel& model, const QList<int>& columns, const QString& file);

} // namespace partkeep
