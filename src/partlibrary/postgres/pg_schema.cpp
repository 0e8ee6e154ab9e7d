#include "partlibrary/postgres/pg_schema.h"

#include "partlibrary/library/sort_text.h"

#include <QRandomGenerator>

#include <algorithm>
#include <array>
#include <utility>

namespace partkeep {

namespace {

// The name of the schema is a setting of the transaction: a statement of this kind takes no parameters.
constexpr SqlText make_schema = R"(DO $$ BEGIN
EXECUTE format('CREATE SCHEMA %I', current_setting('partkeep.schema'));
END $$)";

constexpr std::array<SqlText, 15> make_tables{
    "CREATE TABLE partkeep_library(version int8 NOT NULL, mark text NOT NULL, keys text NOT NULL, revision int8 NOT "
    "NULL, next_folder int8 NOT NULL, next_part int8 NOT NULL, next_content int8 NOT NULL)",
    "CREATE TABLE folder(id int8 PRIMARY KEY, parent int8 NOT NULL, name text COLLATE \"C\" NOT NULL, "
    "path text COLLATE \"C\" NOT NULL, sort_key bytea NOT NULL, parts int8 NOT NULL)",
    "CREATE UNIQUE INDEX folder_by_path ON folder(path)",
    "CREATE INDEX folder_by_parent ON folder(parent, sort_key)",
    "CREATE TABLE part(id int8 PRIMARY KEY, folder int8 NOT NULL, slots int4 NOT NULL, thickness int4 NOT NULL, "
    "name text COLLATE \"C\" NOT NULL, material text COLLATE \"C\" NOT NULL, machine text COLLATE \"C\" NOT NULL, "
    "comment text COLLATE \"C\" NOT NULL, search_text text COLLATE \"C\" NOT NULL, name_key bytea NOT NULL, "
    "material_key bytea NOT NULL, machine_key bytea NOT NULL, comment_key bytea NOT NULL, pairs int4[] NOT NULL, "
    "changed_by text NOT NULL DEFAULT session_user, changed_at timestamptz NOT NULL DEFAULT now())",
    "CREATE UNIQUE INDEX part_by_name ON part(folder, name)",
    "CREATE INDEX part_by_name_key ON part(folder, name_key, id)",
    "CREATE INDEX part_by_thickness ON part(folder, thickness, name_key, id)",
    "CREATE INDEX part_by_material ON part(folder, material_key, name_key, id)",
    "CREATE INDEX part_by_machine ON part(folder, machine_key, name_key, id)",
    "CREATE INDEX part_by_comment ON part(folder, comment_key, name_key, id)",
    "CREATE INDEX part_by_pairs ON part USING gin(pairs) WITH (fastupdate = off)",
    "CREATE TABLE part_file(part int8, slot int4, content int8 NOT NULL, bytes int8 NOT NULL, hash bytea NOT NULL, "
    "PRIMARY KEY(part, slot))",
    "CREATE TABLE piece(content int8, nr int4, data bytea NOT NULL, PRIMARY KEY(content, nr))",
    "CREATE TABLE pair(pair int4 PRIMARY KEY, parts int8 NOT NULL)",
};

// The roles are the administrator's to make; those that are there get their rights. Of pairs the server would count
// what the table of pairs tells better. A content that a page has room for stays in it: chunks elsewhere, with an
// index of their own, take longer to store.
constexpr SqlText grant_rights = R"(DO $$ DECLARE s text := current_setting('partkeep.schema'); BEGIN
ALTER TABLE piece SET (toast_tuple_target = 8160), ALTER COLUMN data SET STORAGE EXTERNAL;
ALTER TABLE part ALTER COLUMN pairs SET STATISTICS 0, ALTER COLUMN search_text SET STATISTICS 0;
IF EXISTS(SELECT 1 FROM pg_roles WHERE rolname = 'partkeep_station') THEN
EXECUTE format('GRANT USAGE ON SCHEMA %I TO partkeep_station', s);
EXECUTE format('GRANT SELECT ON ALL TABLES IN SCHEMA %I TO partkeep_station', s);
END IF;
IF EXISTS(SELECT 1 FROM pg_roles WHERE rolname = 'partkeep_librarian') THEN
EXECUTE format('GRANT USAGE ON SCHEMA %I TO partkeep_librarian', s);
EXECUTE format('GRANT SELECT, INSERT, UPDATE, DELETE ON ALL TABLES IN SCHEMA %I TO partkeep_librarian', s);
END IF;
END $$)";

QString NewMark()
{
    QString mark;
    for (int i = 0; i < 2; ++i) {
        mark += QStringLiteral("%1").arg(QRandomGenerator::system()->generate64(), 16, 16, QLatin1Char('0'));
    }
    return mark;
}

std::int32_t CodeOf(char32_t first, char32_t second)
{
    const std::uint32_t mixed = (static_cast<std::uint32_t>(first) * 0x9E3779B1U) ^ static_cast<std::uint32_t>(second);
    return static_cast<std::int32_t>(mixed * 0x85EBCA6BU);
}

// A single letter or digit is in most parts; a character of a script with thousands is not.
bool IsTelling(char32_t character)
{
    return character >= 0x80;
}

void Settle(std::vector<std::int32_t>& codes)
{
    std::sort(codes.begin(), codes.end());
    codes.erase(std::unique(codes.begin(), codes.end()), codes.end());
}

} // namespace

bool CreatePgSchema(CPgConnection& connection, LibraryProblem& problem)
{
    const QString& server = connection.Place().server;
    const QString mark = NewMark();
    std::vector<CSql> statements;
    const auto add = [&statements](CSql sql) { statements.push_back(std::move(sql)); };
    add(CSql("SELECT set_config('partkeep.schema', ").Value(server).Add(", true)"));
    add(CSql(make_schema));
    for (const SqlText table : make_tables) {
        add(CSql(table));
    }
    add(CSql("INSERT INTO partkeep_library VALUES(")
            .Value(postgres_library_version)
            .Add(", ")
            .Value(mark)
            .Add(", ")
            .Value(KeysVersion())
            .Add(", 0, 2, 1, 1)"));
    add(CSql("INSERT INTO folder VALUES(1, 0, '', '', '', 0)"));
    add(CSql(grant_rights));
    std::vector<CPgResult> results;
    const CSql look = std::move(CSql("SELECT mark = ").Value(mark).Add(" FROM partkeep_library"));
    if (connection.Begin(statements, results) && connection.Commit({}, look)) {
        return true;
    }
    connection.Rollback();
    problem = connection.Problem();
    return false;
}

std::vector<std::int32_t> PairCodes(const QString& folded)
{
    std::vector<std::int32_t> codes;
    for (const QString& word : folded.simplified().split(u' ', Qt::SkipEmptyParts)) {
        const QList<uint> characters = word.toUcs4();
        for (qsizetype i = 0; i < characters.size(); ++i) {
            if (IsTelling(characters[i])) {
                codes.push_back(CodeOf(characters[i], 0));
            }
            if (i + 1 < characters.size()) {
                codes.push_back(CodeOf(characters[i], characters[i + 1]));
            }
        }
    }
    Settle(codes);
    return codes;
}

std::vector<std::int32_t> WordCodes(const QStringList& words)
{
    std::vector<std::int32_t> codes;
    for (const QString& word : words) {
        const QList<uint> characters = word.toUcs4();
        if (characters.size() == 1 && IsTelling(characters.front())) {
            codes.push_back(CodeOf(characters.front(), 0));
        }
        for (qsizetype i = 0; i + 1 < characters.size(); ++i) {
            codes.push_back(CodeOf(characters[i], characters[i + 1]));
        }
    }
    Settle(codes);
    return codes;
}

} // namespace partkeep
