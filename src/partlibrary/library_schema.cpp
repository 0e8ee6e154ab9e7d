#include "partlibrary/library_schema.h"

#include "partlibrary/library_connection.h"

#include <QFileInfo>

#include <array>

namespace partkeep {

namespace {

constexpr qint64 application_id = 0x504B4C42; // "PKLB" in the file's header

struct SchemaObject {
    const char* name;
    const char* sql;
};

constexpr std::array schema{
    SchemaObject{"folder", "CREATE TABLE folder("
                           "id INTEGER PRIMARY KEY, parent INTEGER REFERENCES folder(id), name TEXT NOT NULL, "
                           "path TEXT NOT NULL, sort_key BLOB NOT NULL, parts INTEGER NOT NULL DEFAULT 0) STRICT"},
    SchemaObject{"folder_by_path", "CREATE UNIQUE INDEX folder_by_path ON folder(path)"},
    SchemaObject{"folder_by_parent", "CREATE INDEX folder_by_parent ON folder(parent, sort_key)"},
    SchemaObject{"part", "CREATE TABLE part("
                         "id INTEGER PRIMARY KEY, folder INTEGER NOT NULL REFERENCES folder(id), "
                         "slots INTEGER NOT NULL, thickness INTEGER NOT NULL, name TEXT NOT NULL, "
                         "material TEXT NOT NULL, machine TEXT NOT NULL, comment TEXT NOT NULL, "
                         "search_text TEXT NOT NULL, name_key BLOB NOT NULL, material_key BLOB NOT NULL, "
                         "machine_key BLOB NOT NULL, comment_key BLOB NOT NULL) STRICT"},
    SchemaObject{"part_by_name", "CREATE UNIQUE INDEX part_by_name ON part(folder, name)"},
    SchemaObject{"part_by_name_key", "CREATE INDEX part_by_name_key ON part(folder, name_key)"},
    SchemaObject{"part_by_thickness", "CREATE INDEX part_by_thickness ON part(folder, thickness, name_key)"},
    SchemaObject{"part_by_material", "CREATE INDEX part_by_material ON part(folder, material_key, name_key)"},
    SchemaObject{"part_by_machine", "CREATE INDEX part_by_machine ON part(folder, machine_key, name_key)"},
    SchemaObject{"part_by_comment", "CREATE INDEX part_by_comment ON part(folder, comment_key, name_key)"},
    SchemaObject{"part_file", "CREATE TABLE part_file("
                              "id INTEGER PRIMARY KEY, rest INTEGER NOT NULL, hash INTEGER NOT NULL, "
                              "content BLOB NOT NULL) STRICT"},
    SchemaObject{"part_search", "CREATE VIRTUAL TABLE part_search USING fts5("
                                "pairs, content='', columnsize=0, detail=none, tokenize='ascii')"},
};

bool CheckMarks(CLibraryConnection& connection)
{
    CStatement marks(connection, QStringLiteral("SELECT application_id, user_version FROM "
                                                "pragma_application_id, pragma_user_version"));
    if (!marks.Run() || !marks.Next()) {
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
bool CheckLength(CLibraryConnection& connection)
{
    CStatement pages(connection,
                     QStringLiteral("SELECT page_count * page_size FROM pragma_page_count, pragma_page_size"));
    if (!pages.Run() || !pages.Next()) {
        return false;
    }
    if (QFileInfo(connection.File()).size() < pages.Integer(0)) {
        connection.SetProblem({LibraryFault::Damaged, connection.File(), QStringLiteral("the file is cut short")});
        return false;
    }
    return true;
}

// The full-text index keeps tables of its own, named after it.
const SchemaObject* FindObject(const QString& name)
{
    for (const SchemaObject& object : schema) {
        if (name == QLatin1String(object.name)) {
            return &object;
        }
    }
    return nullptr;
}

bool IsKnown(const QString& type, const QString& name, const QString& sql)
{
    if (const SchemaObject* object = FindObject(name); object != nullptr) {
        return sql == QLatin1String(object->sql);
    }
    return type == QLatin1String("table") && name.startsWith(QLatin1String("part_search_"));
}

} // namespace

bool CreateSchema(CLibraryConnection& connection)
{
    bool done = connection.Execute(QStringLiteral("PRAGMA page_size=65536")) &&
                connection.Execute(QStringLiteral("BEGIN")) &&
                connection.Execute(QStringLiteral("PRAGMA application_id=%1").arg(application_id)) &&
                connection.Execute(QStringLiteral("PRAGMA user_version=%1").arg(library_version));
    for (const SchemaObject& object : schema) {
        done = done && connection.Execute(QString::fromLatin1(object.sql));
    }
    return done &&
           connection.Execute(QStringLiteral("INSERT INTO folder(id, parent, name, path, sort_key) "
                                             "VALUES(?, NULL, '', '', x'')"),
                              {root_folder}) &&
           connection.Execute(QStringLiteral("COMMIT"));
}

bool CheckSchema(CLibraryConnection& connection)
{
    if (!CheckMarks(connection) || !CheckLength(connection)) {
        return false;
    }
    CStatement objects(connection, QStringLiteral("SELECT type, name, sql FROM sqlite_schema"));
    std::size_t known = 0;
    bool foreign = !objects.Run();
    while (!foreign && objects.Next()) {
        foreign = !IsKnown(objects.Text(0), objects.Text(1), objects.Text(2));
        known += FindObject(objects.Text(1)) != nullptr ? 1U : 0U;
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

} // namespace partkeep
