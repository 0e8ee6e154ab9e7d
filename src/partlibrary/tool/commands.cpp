#include "partlibrary/tool/commands.h"

#include "partlibrary/import/library_import.h"
#include "partlibrary/library/library_names.h"
#include "partlibrary/library/library_text.h"
#include "partlibrary/session/library_folder.h"
#include "partlibrary/sqlite/library_check.h"
#include "partlibrary/sqlite/sqlite_library.h"
#include "partlibrary/sqlite/sqlite_writer.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <ostream>
#include <string>

namespace partkeep {

namespace {

constexpr qint64 page_rows = 500;

struct ToolOptions {
    std::string library;
    std::string source;
    std::string folder;
    std::string table;
    unsigned code_page = utf8_code_page;
    bool rebuild = false;
};

struct Streams {
    std::ostream& out;
    std::ostream& err;
};

int Fail(const Streams& streams, const LibraryProblem& problem)
{
    streams.err << "partkeep-library: " << ProblemText(problem) << '\n';
    return 1;
}

QString Native(const std::string& path)
{
    return FromUtf8(path);
}

// A shell makes backslashes awkward, so folders may be given with either separator.
QString FolderOption(const std::string& folder)
{
    return FolderPath(FromUtf8(folder).replace(u'/', u'\\'));
}

int Create(const ToolOptions& options, const Streams& streams)
{
    const QString file = Native(options.library);
    LibraryProblem problem;
    if (!file.endsWith(FromWide(library_extension))) {
        return Fail(streams, {LibraryFault::NameRefused, file, QStringLiteral("a library's name ends in .kpl")});
    }
    if (const NameFault fault = CheckName(ServerOfFile(file)); fault != NameFault::None) {
        return Fail(streams, {LibraryFault::NameRefused, file, NameFaultText(fault)});
    }
    if (!CSqliteWriter::Create(file, problem)) {
        return Fail(streams, problem);
    }
    streams.out << "created " << Printable(Native(options.library)) << '\n';
    return 0;
}

int Import(const ToolOptions& options, const Streams& streams)
{
    LibraryProblem problem;
    const auto writer = CSqliteWriter::Open(Native(options.library), problem);
    if (writer == nullptr) {
        return Fail(streams, problem);
    }
    ImportReport report;
    const ImportOptions import{Native(options.source), FolderOption(options.folder), Native(options.table)};
    if (!ImportFolder(*writer, import, report, problem)) {
        return Fail(streams, problem);
    }
    for (const QString& skipped : report.skipped) {
        streams.err << "partkeep-library: " << Printable(skipped) << ": skipped (no file of a part)\n";
    }
    streams.out << "imported " << report.parts << " parts with " << report.files << " files\n";
    return 0;
}

std::string SlotNames(SlotSet slots)
{
    std::string names;
    for (const FileKind& row : file_kinds) {
        if ((slots & SetOf(row.slot)) == 0) {
            continue;
        }
        names += names.empty() ? "" : " ";
        names += row.tag.empty() ? ToUtf8(FromWide(row.extension)) : std::string(row.tag);
    }
    return names;
}

void PrintPart(const QString& folder, const PartRow& part, std::ostream& out)
{
    const QString thickness = QString::number(part.thickness / 10000.0, 'f', 4);
    for (const QString& text : {folder, part.name, thickness, part.material, part.machine}) {
        out << Printable(text) << '\t';
    }
    out << SlotNames(part.slots) << '\t' << Printable(part.comment) << '\n';
}

bool PrintFolder(CSqliteLibrary& library, const FolderRow& folder, std::ostream& out)
{
    PartListView view;
    view.folder = folder.id;
    const auto list = library.List(view, folder.parts, nullptr);
    list->Finish();
    for (qint64 first = 0; first < list->Count(); first += page_rows) {
        const std::vector<PartRow> rows = list->Rows(first, page_rows);
        for (const PartRow& part : rows) {
            PrintPart(folder.path, part, out);
        }
        if (static_cast<qint64>(rows.size()) < std::min(page_rows, list->Count() - first)) {
            return false;
        }
    }
    return !list->Failed();
}

// Each step down makes the path longer, and a path has a longest.
bool PrintTree(CSqliteLibrary& library, const FolderRow& folder, std::ostream& out) // NOLINT(misc-no-recursion)
{
    const auto folders = library.Folders(folder.path);
    if (!folders || !PrintFolder(library, folder, out)) {
        return false;
    }
    return std::all_of(folders->begin(), folders->end(),
                       [&](const FolderRow& inner) { return PrintTree(library, inner, out); });
}

int List(const ToolOptions& options, const Streams& streams)
{
    LibraryProblem problem;
    const auto library = CSqliteLibrary::Open(Native(options.library), problem);
    if (library == nullptr) {
        return Fail(streams, problem);
    }
    const auto folder = library->FindFolder(FolderOption(options.folder));
    if (!folder || !PrintTree(*library, *folder, streams.out)) {
        return Fail(streams, library->Problem());
    }
    if (library->Refused() > 0) {
        streams.err << "partkeep-library: " << library->Refused() << " folders or parts with names that are refused\n";
        return 1;
    }
    return 0;
}

int Check(const ToolOptions& options, const Streams& streams)
{
    LibraryProblem problem;
    const auto writer = options.rebuild ? CSqliteWriter::Open(Native(options.library), problem) : nullptr;
    if (options.rebuild && (writer == nullptr || !writer->Rebuild())) {
        return Fail(streams, writer != nullptr ? writer->Problem() : problem);
    }
    const auto check = CheckLibrary(Native(options.library), problem);
    if (!check) {
        return Fail(streams, problem);
    }
    for (const QString& finding : check->findings) {
        streams.err << "partkeep-library: " << Printable(Native(options.library)) << ": " << Printable(finding) << '\n';
    }
    if (!check->findings.isEmpty()) {
        return 1;
    }
    streams.out << Printable(Native(options.library)) << " is sound: " << check->folders << " folders, " << check->parts
                << " parts, " << check->files << " files\n";
    return 0;
}

CLI::App* AddCommand(CLI::App& app, const char* name, const char* description, ToolOptions& options)
{
    CLI::App* command = app.add_subcommand(name, description);
    command->add_option("library", options.library, "The library file, <server>.kpl")->required();
    return command;
}

} // namespace

int RunLibraryTool(int argc, const char* const* argv, std::ostream& out, std::ostream& err)
{
    ToolOptions options;
    const Streams streams{out, err};
    CLI::App app("Makes, fills and looks over part libraries.", "partkeep-library");
    app.require_subcommand(1);
    app.set_version_flag("--version", "partkeep-library " PARTKEEP_VERSION);
    app.add_option("--code-page", options.code_page, "System code page that names must fit (65001)");

    const CLI::App* create = AddCommand(app, "create", "Make an empty library", options);

    CLI::App* import = AddCommand(app, "import", "Add a folder of files, whole or not at all", options);
    import->add_option("folder", options.source, "The folder to read, with its subfolders")->required();
    import->add_option("--into", options.folder, "Folder of the library to put everything into");
    import->add_option("--csv", options.table, "Table of attributes: part, folder, thickness, material, ...");

    CLI::App* list = AddCommand(app, "list", "List the parts, a line each", options);
    list->add_option("--folder", options.folder, "Only this folder and those inside it");

    CLI::App* check = AddCommand(app, "check", "Look a library over", options);
    check->add_flag("--rebuild", options.rebuild, "First make all keys and the search index anew");

    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return app.exit(error, out, err);
    }
    if (WidenText("+", options.code_page) != u"+") { // UTF-7, which no system has, writes it otherwise
        return Fail(streams, {LibraryFault::BadInput, QString::number(options.code_page),
                              QStringLiteral("no code page of a system")});
    }
    SetSystemCodePage(options.code_page);
    if (create->parsed()) {
        return Create(options, streams);
    }
    if (import->parsed()) {
        return Import(options, streams);
    }
    if (list->parsed()) {
        return List(options, streams);
    }
    return Check(options, streams);
}

} // namespace partkeep
