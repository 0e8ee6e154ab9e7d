#include "partlibrary/postgres/pg_safe_schema.h"

namespace partkeep {

namespace {

// Relations of other names are never touched, and may be there. No trigger of ours is there, nor does a key need one.
// What else compares, computes or is called by itself takes a superuser to make.
constexpr SqlText unsafe_tables =
    "::pg_catalog.name AND c.relname IN ('partkeep_library', 'folder', 'part', 'part_file', 'piece', 'pair')) "
    "SELECT relname || ' is not a table' FROM its WHERE relkind <> 'r' "
    "UNION ALL SELECT relname || ' belongs to another role than the schema' FROM its WHERE relowner <> nspowner "
    "UNION ALL SELECT relname || ' has a rule' FROM its JOIN pg_catalog.pg_rewrite ON ev_class = its.oid "
    "UNION ALL SELECT relname || ' has a trigger' FROM its JOIN pg_catalog.pg_trigger ON tgrelid = its.oid "
    "UNION ALL SELECT relname || ' has row-level security' FROM its WHERE relrowsecurity "
    "UNION ALL SELECT relname || ' has a policy' FROM its JOIN pg_catalog.pg_policy ON polrelid = its.oid "
    "UNION ALL SELECT relname || ' inherits' FROM its JOIN pg_catalog.pg_inherits ON inhrelid = its.oid "
    "UNION ALL SELECT relname || ' is inherited' FROM its JOIN pg_catalog.pg_inherits ON inhparent = its.oid "
    "UNION ALL SELECT relname || ' has a constraint' FROM its JOIN pg_catalog.pg_constraint ON conrelid = its.oid "
    "WHERE contype NOT IN ('p', 'u', 'n') "
    "UNION ALL SELECT relname || ' has a column of another type' FROM its JOIN pg_catalog.pg_attribute "
    "ON attrelid = its.oid WHERE attnum > 0 AND NOT attisdropped AND (attcollation NOT IN (0, 100, 950) OR atttypid "
    "<> ALL ('{int4, int8, text, bytea, int4[], timestamptz}'::pg_catalog.regtype[])) "
    "UNION ALL SELECT relname || ' computes a column' FROM its, LATERAL (SELECT adbin, adrelid "
    "FROM pg_catalog.pg_attrdef WHERE adrelid = its.oid OFFSET 0) own " // the texts of these alone: each one takes time
    "WHERE pg_catalog.pg_get_expr(adbin, adrelid) NOT IN ('SESSION_USER', 'now()') "
    "UNION ALL SELECT relname || ' has an index that computes' FROM its JOIN pg_catalog.pg_index "
    "ON indrelid = its.oid WHERE indexprs IS NOT NULL OR indpred IS NOT NULL "
    "UNION ALL SELECT 'the schema holds functions, operators or types' FROM pg_catalog.pg_depend "
    "JOIN pg_catalog.pg_namespace n ON n.oid = refobjid "
    "WHERE refclassid = 'pg_catalog.pg_namespace'::pg_catalog.regclass AND classid = ANY "
    "('{pg_catalog.pg_proc, pg_catalog.pg_operator, pg_catalog.pg_type}'::pg_catalog.regclass[]) AND n.nspname = ";

void AddUnsafe(CSql& sql, const QString& schema)
{
    sql.Add("WITH its AS (SELECT c.*, n.nspowner FROM pg_catalog.pg_class c JOIN pg_catalog.pg_namespace n "
            "ON n.oid = c.relnamespace WHERE n.nspname = ");
    sql.Value(schema).Add(unsafe_tables).Value(schema).Add("::pg_catalog.name");
}

} // namespace

// The catalogue, which the path does not name, comes first by itself. Where it is named, new tables are made in it.
CSql EnterPgSchema(const QString& schema)
{
    const QString quoted = QString(schema).replace(QStringLiteral("\""), QStringLiteral("\"\""));
    CSql sql("SELECT pg_catalog.set_config('search_path', CASE WHEN EXISTS(");
    AddUnsafe(sql, schema);
    sql.Add(") THEN '").Add(pg_catalogue_path).Add("' ELSE ");
    sql.Value(QStringLiteral("\"%1\", pg_temp").arg(quoted)).Add(" END, false)");
    return sql;
}

CSql UnsafeInPgSchema(const QString& schema)
{
    CSql sql("");
    AddUnsafe(sql, schema);
    return sql;
}

} // namespace partkeep
