#include "partlibrary/sqlite/schema.h"

#include "partlibrary/library/library_names.h"
#include "partlibrary/library/library_text.h"
#include "partlibrary/library/sort_text.h"
#include "partlibrary/sqlite/connection.h"
#include "partlibrary/sqlite/library_rows.h"

#include <QFileInfo>
#include <QRandomGenerator>

#include <algorithm>
#include <array>
#include <sqlite3.h>

namespace partkeep {

namespace {

constexpr qint64 application_id = 0x504B4C42; // "PKLB" in the file's header

struct SchemaObject {
    std::string_view name;
    std::string_view sql;
};

// The library's mark is a comment in the text of its table, and so in the first page. It is behind a text that is the
// same in all libraries.
constexpr std::string_view mark_begin = "next_content INTEGER NOT NULL /*";
constexpr std::string_view mark_end = "*/) STRICT";
constexpr std::size_t mark_bytes = 32;

constexpr std::array schema{
    SchemaObject{"library", "CREATE TABLE library(keys TEXT NOT NULL, importer INTEGER NOT NULL, "
                            "importer_seen INTEGER NOT NULL, next_folder INTEGER NOT NULL, "
                            "next_part INTEGER NOT NULL, next_content INTEGER NOT NULL /*"},
    SchemaObject{"folder", "CREATE TABLE folder("
                           "id INTEGER PRIMARY KEY, parent INTEGER NOT NULL, name TEXT NOT NULL, path TEXT NOT NULL, "
                           "sort_key BLOB NOT NULL, sum INTEGER NOT NULL, parts INTEGER NOT NULL DEFAULT 0) STRICT"},
    SchemaObject{"folder_by_path", "CREATE UNIQUE INDEX folder_by_path ON folder(path)"},
    SchemaObject{"folder_by_parent", "CREATE INDEX folder_by_parent ON folder(parent, sort_key)"},
    SchemaObject{"part", "CREATE TABLE part("
                         "id INTEGER PRIMARY KEY, folder INTEGER NOT NULL, slots INTEGER NOT NULL, "
                         "thickness INTEGER NOT NULL, name TEXT NOT NULL, material TEXT NOT NULL, "
                         "machine TEXT NOT NULL, comment TEXT NOT NULL, sum INTEGER NOT NULL, "
                         "search_text TEXT NOT NULL, name_key BLOB NOT NULL, material_key BLOB NOT NULL, "
                         "machine_key BLOB NOT NULL, comment_key BLOB NOT NULL) STRICT"},
    SchemaObject{"part_by_name", "CREATE UNIQUE INDEX part_by_name ON part(folder, name)"},
    SchemaObject{"part_by_name_key", "CREATE INDEX part_by_name_key ON part(folder, name_key)"},
    SchemaObject{"part_by_thickness", "CREATE INDEX part_by_thickness ON part(folder, thickness, name_key)"},
    SchemaObject{"part_by_material", "CREATE INDEX part_by_material ON part(folder, material_key, name_key)"},
    SchemaObject{"part_by_machine", "CREATE INDEX part_by_machine ON part(folder, machine_key, name_key)"},
    SchemaObject{"part_by_comment", "CREATE INDEX part_by_comment ON part(folder, comment_key, name_key)"},
    SchemaObject{"part_file", "CREATE TABLE part_file(id INTEGER PRIMARY KEY, content INTEGER NOT NULL, "
                              "bytes INTEGER NOT NULL, hash BLOB NOT NULL, sum INTEGER NOT NULL) STRICT"},
    SchemaObject{"piece",
                 "CREATE TABLE piece(id INTEGER PRIMARY KEY, sum INTEGER NOT NULL, content BLOB NOT NULL) STRICT"},
    SchemaObject{"part_search", "CREATE VIRTUAL TABLE part_search USING fts5("
                                "pairs, content='', columnsize=0, detail=none, tokenize='ascii')"},
};

// Tables that the full-text index keeps for itself, in the engine's own words. It reads them as they are told: another
// text could make it reckon without end.
constexpr std::array index_tables{
    SchemaObject{"part_search_data", "CREATE TABLE 'part_search_data'(id INTEGER PRIMARY KEY, block BLOB)"},
    SchemaObject{"part_search_idx", "CREATE TABLE 'part_search_idx'(segid, term, pgno, PRIMARY KEY(segid, term)) "
                                    "WITHOUT ROWID"},
    SchemaObject{"part_search_config", "CREATE TABLE 'part_search_config'(k PRIMARY KEY, v) WITHOUT ROWID"},
};

bool CheckMarks(CConnection& connection)
{
    CStatement marks(connection, "SELECT application_id, user_version FROM pragma_application_id, pragma_user_version");
    if (!marks.Next()) {
        return false;
    }
    if (marks.Integer(0) != application_id) {
        connection.SetProblem({LibraryFault::NotALibrary, connection.File(), {}});
        return false;
    }
    if (marks.Integer(1) != library_version) {
        connection.SetProblem({LibraryFault::OtherVersion, connection.File(), marks.Text(1)});
        return false;
    }
    return true;
}

// The engine reads a last page that is cut short as if the rest were zeros.
bool CheckLength(CConnection& connection)
{
    CStatement pages(connection, "SELECT page_count * page_size, page_size FROM pragma_page_count, pragma_page_size");
    if (!pages.Next()) {
        return false;
    }
    if (QFileInfo(connection.File()).size() < pages.Integer(0) || pages.Integer(1) != page_bytes) {
        connection.SetProblem({LibraryFault::Damaged, connection.File(), QStringLiteral("the file is cut short")});
        return false;
    }
    return true;
}

const SchemaObject* FindObject(std::string_view name)
{
    const auto* const found =
        std::find_if(schema.begin(), schema.end(), [&](const SchemaObject& object) { return object.name == name; });
    return found != schema.end() ? found : nullptr;
}

bool IsKnown(std::string_view name, std::string_view sql)
{
    if (const SchemaObject* const object = FindObject(name); object != nullptr) {
        const bool marked = object == schema.begin();
        return marked ? sql.size() > object->sql.size() + mark_bytes && sql.starts_with(object->sql) &&
                            sql.substr(object->sql.size() + mark_bytes) == mark_end
                      : sql == object->sql;
    }
    return std::any_of(index_tables.begin(), index_tables.end(),
                       [&](const SchemaObject& table) { return table.name == name && table.sql == sql; });
}

std::string NewMark()
{
    auto& random = *QRandomGenerator::system();
    std::string mark;
    while (mark.size() < mark_bytes) {
        mark += "0123456789abcdef"[random.bounded(16)];
    }
    return mark;
}

// What no sound attribute can be stands for no text at all: making keys of it would take long.
QString TextOf(sqlite3_value* value)
{
    constexpr int most_bytes = 4 * static_cast<int>(max_attribute_bytes); // a byte of a code page becomes four at most
    if (sqlite3_value_bytes(value) > most_bytes) {
        return {QChar(QChar::ReplacementCharacter)};
    }
    const auto* bytes = reinterpret_cast<const char*>(sqlite3_value_text(value));
    return FromUtf8({bytes != nullptr ? bytes : "", static_cast<std::size_t>(sqlite3_value_bytes(value))});
}

// Nothing may fly through the engine's frames.
template <auto function>
void Guarded(sqlite3_context* context, int /*count*/, sqlite3_value** values) noexcept
{
    try {
        function(context, values);
    } catch (...) { // whatever else there could be comes of a length that there is no memory for
        sqlite3_result_error_nomem(context);
    }
}

void MakeSortKey(sqlite3_context* context, sqlite3_value** values)
{
    const QByteArray key = SortKey(TextOf(values[0]));
    sqlite3_result_blob(context, key.constData(), static_cast<int>(key.size()), SQLITE_TRANSIENT);
}

void MakeSearchText(sqlite3_context* context, sqlite3_value** values)
{
    const std::string text =
        ToUtf8(SearchText({0, 0, 0, 0, TextOf(values[0]), TextOf(values[1]), TextOf(values[2]), TextOf(values[3])}));
    sqlite3_result_text(context, text.data(), static_cast<int>(text.size()), SQLITE_TRANSIENT);
}

void PartIsSound(sqlite3_context* context, sqlite3_value** values)
{
    const bool sound = IsSoundPart(TextOf(values[1]), TextOf(values[2]), TextOf(values[3]), TextOf(values[4]));
    if (!sound) {
        static_cast<CConnection*>(sqlite3_user_data(context))->CountRefused(sqlite3_value_int64(values[0]));
    }
    sqlite3_result_int(context, sound ? 1 : 0);
}

} // namespace

bool CreateSchema(CConnection& connection)
{
    bool done = connection.Execute("PRAGMA page_size=" + std::to_string(page_bytes)) && connection.Execute("BEGIN") &&
                connection.Execute("PRAGMA application_id=" + std::to_string(application_id)) &&
                connection.Execute("PRAGMA user_version=" + std::to_string(library_version));
    const std::string mark = NewMark();
    connection.SetId(QByteArray::fromStdString(mark));
    for (const SchemaObject& object : schema) {
        const std::string end = &object == schema.begin() ? std::string(mark).append(mark_end) : std::string();
        done = done && connection.Execute(std::string(object.sql) + end);
    }
    return done && connection.Execute("INSERT INTO library VALUES(?, 0, 0, 2, 1, 1)", KeysVersion()) &&
           connection.Execute("INSERT INTO folder(id, parent, name, path, sort_key, sum) VALUES(?, 0, '', '', x'', ?)",
                              root_folder, FolderSum(connection.Salt(), root_folder, 0, {}, {})) &&
           connection.Execute("COMMIT");
}

bool CheckSchema(CConnection& connection)
{
    const CReadTransaction one_state(connection);
    if (!one_state || !CheckMarks(connection) || !CheckLength(connection)) {
        return false;
    }
    CStatement objects(connection, "SELECT name, sql FROM sqlite_schema");
    std::size_t known = 0;
    std::size_t rows = 0;
    bool foreign = false;
    while (!foreign && objects.Next()) {
        foreign = !IsKnown(objects.Raw(0), objects.Raw(1)) || ++rows > schema.size() + index_tables.size();
        known += FindObject(objects.Raw(0)) != nullptr ? 1U : 0U;
        if (objects.Raw(0) == schema.front().name) {
            connection.SetId(LibraryMark(objects.Bytes(1)));
        }
    }
    if (objects.Failed()) {
        return false;
    }
    if (foreign || known != schema.size()) {
        connection.SetProblem({LibraryFault::Damaged, connection.File(), QStringLiteral("unexpected tables")});
        return false;
    }
    return true;
}

bool AddRowFunctions(CConnection& connection, sqlite3* database)
{
    const auto add = [&](const char* name, int values, auto* function) {
        return sqlite3_create_function_v2(database, name, values, SQLITE_UTF8 | SQLITE_DIRECTONLY, &connection,
                                          function, nullptr, nullptr, nullptr) == SQLITE_OK;
    };
    const bool added = add("part_is_sound", 5, Guarded<PartIsSound>) && add("sort_key", 1, Guarded<MakeSortKey>) &&
                       add("search_text_of", 4, Guarded<MakeSearchText>);
    if (!added) { // nothing else can go wrong with them
        connection.SetProblem({LibraryFault::NoMemory, connection.File(), {}});
    }
    return added;
}

QByteArray LibraryMark(const QByteArray& page)
{
    const qsizetype begin = page.indexOf(QByteArrayView(mark_begin.data(), static_cast<qsizetype>(mark_begin.size())));
    return begin < 0 ? QByteArray()
                     : page.mid(begin + static_cast<qsizetype>(mark_begin.size()), qsizetype{mark_bytes});
}

} // namespace partkeep
