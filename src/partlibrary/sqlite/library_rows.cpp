#include "partlibrary/sqlite/library_rows.h"

#include "partlibrary/library/content_hash.h"
#include "partlibrary/library/library_names.h"
#include "partlibrary/library/library_text.h"
#include "partlibrary/sqlite/connection.h"
#include "partlibrary/sqlite/schema.h"

#include <cstring>
#include <limits>

// Compiled in: nothing more is needed where the component is installed.
#define XXH_INLINE_ALL
#include <xxhash.h>

namespace partkeep {

namespace {

constexpr SlotSet all_slots = (SlotSet{1} << file_kinds.size()) - 1;

bool IsWhole(std::string_view bytes, const QString& text)
{
    return ToUtf8(text) == bytes;
}

} // namespace

CRowSum& CRowSum::Add(qint64 number)
{
    char bytes[sizeof number];
    std::memcpy(bytes, &number, sizeof number);
    bytes_.append(bytes, sizeof bytes);
    return *this;
}

CRowSum& CRowSum::Add(std::string_view bytes)
{
    Add(static_cast<qint64>(bytes.size()));
    bytes_ += bytes;
    return *this;
}

qint64 CRowSum::Sum() const
{
    return static_cast<qint64>(XXH3_64bits(bytes_.data(), bytes_.size()));
}

qint64 FolderSum(qint64 salt, qint64 id, qint64 parent, std::string_view name, std::string_view path)
{
    return CRowSum(salt, 'f').Add(id).Add(parent).Add(name).Add(path).Sum();
}

qint64 PartSum(qint64 salt, const PartRow& row)
{
    CRowSum sum(salt, 'p');
    sum.Add(row.id).Add(row.folder).Add(row.slots).Add(row.thickness);
    for (const QString* text : {&row.name, &row.material, &row.machine, &row.comment}) {
        sum.Add(ToUtf8(*text));
    }
    return sum.Sum();
}

qint64 FileSum(qint64 salt, qint64 id, qint64 content, qint64 bytes, std::string_view hash)
{
    return CRowSum(salt, 'c').Add(id).Add(content).Add(bytes).Add(hash).Sum();
}

qint64 PieceSum(qint64 salt, qint64 id, std::string_view content)
{
    return static_cast<qint64>(
        XXH3_64bits_withSeed(content.data(), content.size(), static_cast<XXH64_hash_t>(salt ^ id)));
}

// The root alone has no parent and no name. A path grows with each step down, so no folder is its own ancestor.
RowFault ReadFolderRow(const CStatement& statement, FolderRow& row, int column)
{
    const qint64 parent = statement.Integer(column + 1);
    const std::string_view name = statement.Raw(column + 2);
    const std::string_view path = statement.Raw(column + 3);
    row = {statement.Integer(column), FromUtf8(name), FromUtf8(path), statement.Integer(column + 5),
           statement.Integer(column + 6) != 0};
    const bool in_range = row.id > 0 && row.id <= max_part_id && row.parts >= 0 && row.parts <= max_part_id;
    if (!in_range || statement.Integer(column + 4) != FolderSum(statement.Salt(), row.id, parent, name, path)) {
        return RowFault::Damaged;
    }
    const bool root = row.id == root_folder;
    const bool fits = root ? parent == 0 && path.empty() : row.path == row.name || row.path.endsWith(u'\\' + row.name);
    const bool sound = fits && row.path.isEmpty() == root && IsWhole(path, row.path) &&
                       CheckFolderPath(row.path) == NameFault::None && (root || CheckName(row.name) == NameFault::None);
    return sound ? RowFault::None : RowFault::Refused;
}

RowFault ReadPartRow(const CStatement& statement, PartRow& row)
{
    const qint64 slots = statement.Integer(2);
    const qint64 thickness = statement.Integer(3);
    CRowSum sum(statement.Salt(), 'p');
    sum.Add(statement.Integer(0)).Add(statement.Integer(1)).Add(slots).Add(thickness);
    for (int column = 4; column < 8; ++column) {
        sum.Add(statement.Raw(column));
    }
    const bool in_range = slots >= 0 && slots <= all_slots && thickness == static_cast<std::int32_t>(thickness) &&
                          statement.Integer(0) > 0 && statement.Integer(0) <= max_part_id;
    if (sum.Sum() != statement.Integer(8) || !in_range) {
        return RowFault::Damaged;
    }
    row = {
        statement.Integer(0), statement.Integer(1), static_cast<SlotSet>(slots), static_cast<std::int32_t>(thickness),
        statement.Text(4),    statement.Text(5),    statement.Text(6),           statement.Text(7)};
    return IsSoundPart(row.name, row.material, row.machine, row.comment) ? RowFault::None : RowFault::Refused;
}

RowFault ReadFileRow(const CStatement& statement, FileRow& row)
{
    const qint64 id = statement.Integer(0);
    const std::string_view hash = statement.Raw(3);
    row = {static_cast<FileSlot>(id % slots_per_part), statement.Integer(1), statement.Integer(2), statement.Bytes(3)};
    const bool in_range = id % slots_per_part < static_cast<qint64>(file_kinds.size()) && row.content > 0 &&
                          row.content <= max_content_id && row.bytes >= 0 && row.bytes <= max_file_bytes &&
                          hash.size() == hash_bytes;
    return in_range && statement.Integer(4) == FileSum(statement.Salt(), id, row.content, row.bytes, hash)
               ? RowFault::None
               : RowFault::Damaged;
}

LibraryProblem DamagedRow(const CConnection& connection)
{
    return {LibraryFault::Damaged, connection.File(), QStringLiteral("a row is not as it was stored")};
}

bool IsSoundPart(QStringView name, QStringView material, QStringView machine, QStringView comment)
{
    const auto fine = [](QStringView text) { return CheckAttribute(text) == NameFault::None; };
    return CheckName(name) == NameFault::None && fine(material) && fine(machine) && fine(comment);
}

} // namespace partkeep
