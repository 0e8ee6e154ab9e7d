#include "desktop/pane/list_export.h"

#include <QSaveFile>

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

} // namespace

bool ExportList(const CPartListModel& model, const QList<int>& columns, const QString& file_name)
{
    QSaveFile file(file_name);
    QStringList fields;
    for (const int column : columns) {
        fields += Field(model.HeaderText(static_cast<PartColumn>(column)));
    }
    bool written = file.open(QIODevice::WriteOnly) && file.write(byte_order_mark) > 0 && WriteLine(file, fields);
    for (int row = 0; written && row < model.rowCount(); ++row) {
        const PartRow* part = model.Row(row);
        fields.clear();
        for (const int column : columns) {
            fields += part != nullptr ? Field(model.CellText(*part, static_cast<PartColumn>(column))) : QString();
        }
        written = part != nullptr && WriteLine(file, fields);
    }
    if (!written) {
        file.cancelWriting();
    }
    return file.commit() && written;
}

} // namespace partkeep
