#include "desktop/pane/list_export.h"

#include <QSaveFile>

#include <algorithm>

namespace partkeep {

namespace {

constexpr auto byte_order_mark = "\xEF\xBB\xBF"; // without it spreadsheets take the text for the system's code page

QString Field(QString text)
{
    const bool plain = !text.contains(u'"') && !text.contains(u',') && !text.contains(u'\n') && !text.contains(u'\r');
    return plain ? text : u'"' + text.replace(u'"', QStringLiteral("\"\"")) + u'"';
}

bool WriteLine(QSaveFile& file, const QStringList& fields)
{
    const QByteArray line = fields.join(u',').toUtf8() + "\r\n";
    return file.write(line) == line.size();
}

QStringList HeaderFields(const CPartListModel& model, const QList<int>& columns)
{
    QStringList fields;
    for (const int column : columns) {
        fields += Field(model.HeaderText(static_cast<PartColumn>(column)));
    }
    if (model.ShowsAllFolders()) {
        fields += Field(model.FolderHeader());
    }
    return fields;
}

bool WriteRow(QSaveFile& file, const CPartListModel& model, const QList<int>& columns, int row)
{
    const PartRow* part = model.Row(row);
    if (part == nullptr) {
        return false;
    }
    QStringList fields;
    for (const int column : columns) {
        fields += Field(model.CellText(*part, static_cast<PartColumn>(column)));
    }
    if (model.ShowsAllFolders()) {
        fields += Field(model.FolderText(*part));
    }
    return WriteLine(file, fields);
}

} // namespace

std::optional<int> ExportList(const CPartListModel& model, const QList<int>& columns, const QString& file_name,
                              const QItemSelection* selection)
{
    QList<QItemSelectionRange> ranges{{model.index(0, 0), model.index(model.rowCount() - 1, 0)}};
    if (selection != nullptr) {
        ranges = *selection;
        std::sort(ranges.begin(), ranges.end(), [](const auto& a, const auto& b) { return a.top() < b.top(); });
    }
    QSaveFile file(file_name);
    int rows = 0;
    bool written = file.open(QIODevice::WriteOnly) && file.write(byte_order_mark) > 0 &&
                   WriteLine(file, HeaderFields(model, columns));
    for (const QItemSelectionRange& range : ranges) {
        for (int row = range.top(); range.isValid() && written && row <= range.bottom(); ++row, ++rows) {
            written = WriteRow(file, model, columns, row);
        }
    }
    if (!written) {
        file.cancelWriting();
    }
    return file.commit() && written ? std::optional(rows) : std::nullopt;
}

} // namespace partkeep
