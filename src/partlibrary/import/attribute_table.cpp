#include "partlibrary/import/attribute_table.h"

#include "controls/part_browser_contract.h"
#include "partlibrary/library/library_names.h"
#include "partlibrary/library/library_text.h"

#include <QFile>
#include <QStringDecoder>
#include <QStringList>

#include <algorithm>
#include <limits>
#include <utility>

namespace partkeep {

namespace {

constexpr qsizetype thickness_decimals = 4;

struct TableRecord {
    int line = 0;
    QStringList fields;
};

// Splits text into records. Quoted fields may hold separators, line ends and doubled quotes.
class CTableReader {
public:
    explicit CTableReader(const QString& text) : text_(text) {}

    [[nodiscard]] bool AtEnd() const { return at_ >= text_.size(); }

    // False for a quote that is never closed or that text follows.
    bool Read(TableRecord& record)
    {
        record = {line_, {}};
        do {
            QString field;
            if (!ReadField(field)) {
                return false;
            }
            record.fields += field;
        } while (Take(u','));
        Take(u'\r');
        return Take(u'\n') || AtEnd();
    }

private:
    bool Take(char16_t unit)
    {
        if (AtEnd() || text_[at_] != unit) {
            return false;
        }
        ++at_;
        line_ += unit == u'\n' ? 1 : 0;
        return true;
    }

    bool ReadField(QString& field)
    {
        if (Take(u'"')) {
            return ReadQuoted(field);
        }
        while (!AtEnd() && !QStringView(u",\r\n\"").contains(text_[at_])) {
            field += text_[at_++];
        }
        field = field.trimmed();
        return true;
    }

    bool ReadQuoted(QString& field)
    {
        while (!AtEnd()) {
            if (Take(u'"')) {
                if (!Take(u'"')) {
                    return true;
                }
                field += u'"';
                continue;
            }
            field += text_[at_];
            Take(text_[at_].unicode());
        }
        return false;
    }

    const QString& text_;
    qsizetype at_ = 0;
    int line_ = 1;
};

bool Refuse(LibraryProblem& problem, int line, const QString& reason)
{
    problem = {LibraryFault::BadInput, QStringLiteral("line %1").arg(line), reason};
    return false;
}

bool StoreFiles(AttributeRow& row, const QString& field, LibraryProblem& problem)
{
    bool number = field.isEmpty();
    row.files = number ? std::nullopt : std::optional(qsizetype{field.toUShort(&number)});
    return number || Refuse(problem, row.line, QStringLiteral("no number of files: ") + field);
}

bool StoreField(AttributeRow& row, const QString& column, const QString& field, LibraryProblem& problem)
{
    if (column == QLatin1String("thickness")) {
        const auto thickness = field.isEmpty() ? 0 : ParseThickness(field);
        row.attributes.thickness = thickness.value_or(0);
        return thickness.has_value() || Refuse(problem, row.line, QStringLiteral("no thickness: ") + field);
    }
    if (column == QLatin1String("files")) {
        return StoreFiles(row, field, problem);
    }
    const std::pair<const char*, QString*> texts[] = {{"folder", &row.folder},
                                                      {"part", &row.part},
                                                      {"material", &row.attributes.material},
                                                      {"machine", &row.attributes.machine},
                                                      {"comment", &row.attributes.comment}};
    for (const auto& [name, target] : texts) {
        if (column != QLatin1String(name)) {
            continue;
        }
        *target = field;
        const bool of_place = target == &row.folder || target == &row.part; // refused with the name, where it is used
        const NameFault fault = of_place ? NameFault::None : CheckAttribute(field);
        return fault == NameFault::None ||
               Refuse(problem, row.line, column + QStringLiteral(": ") + NameFaultText(fault));
    }
    return Refuse(problem, 1, QStringLiteral("unknown column: ") + column);
}

bool ReadRow(const TableRecord& record, const QStringList& columns, AttributeRow& row, LibraryProblem& problem)
{
    if (record.fields.size() != columns.size()) {
        return Refuse(problem, record.line,
                      QStringLiteral("%1 fields in place of %2").arg(record.fields.size()).arg(columns.size()));
    }
    row.line = record.line;
    for (qsizetype i = 0; i < columns.size(); ++i) {
        if (!StoreField(row, columns[i], record.fields[i], problem)) {
            return false;
        }
    }
    row.folder.replace(u'/', u'\\');
    const bool folder_alone = !row.folder.isEmpty() && row.files.value_or(0) == 0 && row.attributes == PartAttributes{};
    return !row.part.isEmpty() || folder_alone || Refuse(problem, record.line, QStringLiteral("no part name"));
}

// Before any row: a table of something else may have none that tells it.
bool CheckColumns(QStringList columns, int line, LibraryProblem& problem)
{
    AttributeRow none;
    return (columns.removeDuplicates() == 0 || Refuse(problem, line, QStringLiteral("a column comes twice"))) &&
           std::all_of(columns.begin(), columns.end(),
                       [&](const QString& column) { return StoreField(none, column, {}, problem); }) &&
           (columns.contains(QLatin1String("part")) ||
            Refuse(problem, line, QStringLiteral("no part names: there is no such column")));
}

bool IsBlank(const TableRecord& record)
{
    return record.fields.size() == 1 && record.fields.front().isEmpty();
}

} // namespace

std::optional<AttributeTable> ParseAttributeTable(const QByteArray& text, LibraryProblem& problem)
{
    QStringDecoder decoder(QStringDecoder::Utf8);
    const QString wide = decoder.decode(text);
    if (decoder.hasError()) {
        problem = {LibraryFault::BadInput, {}, QStringLiteral("the table is not in UTF-8")};
        return std::nullopt;
    }
    CTableReader reader(wide);
    TableRecord record;
    AttributeTable table;
    while (!reader.AtEnd()) {
        if (!reader.Read(record)) {
            Refuse(problem, record.line,
                   QStringLiteral("a quote that does not close its field, or a line that no line feed ends"));
            return std::nullopt;
        }
        if (IsBlank(record)) {
            continue;
        }
        if (table.columns.isEmpty()) {
            table.columns = record.fields.join(u'\n').toLower().split(u'\n');
            if (!CheckColumns(table.columns, record.line, problem)) {
                return std::nullopt;
            }
            continue;
        }
        AttributeRow row;
        if (!ReadRow(record, table.columns, row, problem)) {
            return std::nullopt;
        }
        table.rows.push_back(std::move(row));
    }
    return table;
}

std::optional<AttributeTable> ReadAttributeTable(const QString& path, LibraryProblem& problem)
{
    QFile file(path);
    const QByteArray text = file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    if (file.error() != QFileDevice::NoError) {
        problem = {LibraryFault::ReadFailed, path, file.errorString()};
        return std::nullopt;
    }
    auto table = ParseAttributeTable(text, problem);
    if (!table) {
        problem.subject = problem.subject.isEmpty() ? path : path + QStringLiteral(", ") + problem.subject;
    }
    return table;
}

std::string TableLine(const QStringList& fields)
{
    std::string line;
    for (const QString& field : fields) {
        const bool plain = field == field.trimmed() && !field.contains(u',') && !field.contains(u'"');
        QString quoted = field;
        quoted.replace(u'"', QStringLiteral("\"\""));
        line += line.empty() && &field == &fields.front() ? "" : ",";
        line += plain ? ToUtf8(field) : '"' + ToUtf8(quoted) + '"';
    }
    return line + '\n';
}

std::optional<std::int32_t> ParseThickness(QStringView text)
{
    const bool negative = text.startsWith(u'-');
    const QStringView digits = negative ? text.sliced(1) : text;
    const qsizetype dot = digits.indexOf(u'.');
    const QStringView whole = dot < 0 ? digits : digits.first(dot);
    const QStringView decimals = dot < 0 ? QStringView() : digits.sliced(dot + 1);
    if (whole.isEmpty() || whole.size() > 6 || decimals.size() > thickness_decimals || digits.endsWith(u'.')) {
        return std::nullopt;
    }
    qint64 value = 0;
    for (const QStringView part : {whole, decimals}) {
        for (const QChar digit : part) {
            if (digit < u'0' || digit > u'9') {
                return std::nullopt;
            }
            value = value * 10 + (digit.unicode() - u'0');
        }
    }
    for (qsizetype i = decimals.size(); i < thickness_decimals; ++i) {
        value *= 10;
    }
    static_assert(std::numeric_limits<std::int32_t>::max() / thickness_units > 199999);
    if (value > std::numeric_limits<std::int32_t>::max()) {
        return std::nullopt;
    }
    return static_cast<std::int32_t>(negative ? -value : value);
}

} // namespace partkeep
