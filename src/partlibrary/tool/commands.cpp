#include "partlibrary/tool/commands.h"

#include "partlibrary/library/library_text.h"
#include "partlibrary/postgres/pg_admin.h"
#include "partlibrary/sqlite/sqlite_admin.h"
#include "partlibrary/tool/edit_commands.h"
#include "partlibrary/tool/look_commands.h"
#include "partlibrary/tool/tool_options.h"
#include "partlibrary/tool/whole_commands.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <functional>
#include <iterator>
#include <memory>
#include <numeric>
#include <ostream>
#include <string>
#include <string_view>
#include <tuple>
#include <utility>
#include <vector>

namespace partkeep {

namespace {

using Command = std::function<int(ILibraryAdmin& library, const ToolOptions& options, CToolOutput& output)>;

std::unique_ptr<ILibraryAdmin> LibraryAt(const std::string& text)
{
    const QString place = FromUtf8(text);
    if (auto in_database = PgPlaceOf(place)) {
        return std::make_unique<CPgAdmin>(std::move(*in_database));
    }
    return std::make_unique<CSqliteAdmin>(place);
}

int Diff(ILibraryAdmin& library, const ToolOptions& options, CToolOutput& output)
{
    return TellDifferences(library, *LibraryAt(options.other), output);
}

int Copy(ILibraryAdmin& library, const ToolOptions& options, CToolOutput& output)
{
    return CopyTo(library, *LibraryAt(options.other), options, output);
}

// Out of a database a copy is a backup; it takes the place of nothing.
int BackUpAny(ILibraryAdmin& library, const ToolOptions& options, CToolOutput& output)
{
    const bool copies = PgPlaceOf(FromUtf8(options.library)) && !options.replace;
    return copies ? Copy(library, options, output) : BackUp(library, options, output);
}

// How many letters lie between two words, as slips of the fingers go.
std::size_t Distance(std::string_view left, std::string_view right)
{
    std::vector<std::size_t> row(right.size() + 1);
    std::iota(row.begin(), row.end(), std::size_t{0});
    for (std::size_t i = 1; i <= left.size(); ++i) {
        std::size_t corner = std::exchange(row[0], i);
        for (std::size_t j = 1; j <= right.size(); ++j) {
            const std::size_t change = corner + (left[i - 1] == right[j - 1] ? 0 : 1);
            corner = std::exchange(row[j], std::min({change, row[j] + 1, row[j - 1] + 1}));
        }
    }
    return row.back();
}

class CCommandLine {
public:
    CCommandLine()
    {
        app_.require_subcommand(0, 1);
        app_.fallthrough();
        app_.set_version_flag("--version", "partkeep-library " PARTKEEP_VERSION);
        app_.add_option("--code-page", options_.code_page, "System code page that names must fit")
            ->default_val(utf8_code_page);
        app_.add_flag("--json", options_.json, "Answer by an object a line");
        app_.add_flag("--dry-run", options_.dry_run, "Tell what would be done, and change nothing");
        AddWholes();
        AddLooks();
        AddEdits();
    }

    int Run(int argc, const char* const* argv, const ToolStreams& streams)
    {
        const bool json = std::find(argv, argv + argc, std::string_view("--json")) != argv + argc;
        CToolOutput output(streams, json);
        if (argc < 2) {
            streams.err << app_.help();
            return static_cast<int>(ToolEnd::CommandLine);
        }
        // Options that stand in front may be any command's; only one of them has a value behind it.
        int word = 1;
        while (word + 1 < argc && argv[word][0] == '-') {
            word += std::string_view(argv[word]) == "--code-page" && word + 2 < argc ? 2 : 1;
        }
        if (const QString wrong = WrongCommand(argv[word]); !wrong.isEmpty()) {
            return output.Misunderstand(wrong);
        }
        try {
            app_.parse(argc, argv);
        } catch (const CLI::Success& asked) {
            return app_.exit(asked, streams.out, streams.err); // help, or the version
        } catch (const CLI::ParseError& error) {
            return output.Misunderstand(FromUtf8(error.what()));
        }
        const auto chosen = std::find_if(commands_.begin(), commands_.end(),
                                         [](const auto& command) { return command.first->parsed(); });
        if (chosen == commands_.end()) {
            return output.Misunderstand(QStringLiteral("no command"));
        }
        if (WidenText("+", options_.code_page) != u"+") { // UTF-7, which no system has, writes it otherwise
            return output.Fail({LibraryFault::BadInput, QString::number(options_.code_page),
                                QStringLiteral("no code page of a system")});
        }
        SetSystemCodePage(options_.code_page);
        return chosen->second(*LibraryAt(options_.library), options_, output);
    }

private:
    CLI::App& Add(const char* name, const char* description, Command command)
    {
        CLI::App* const added = app_.add_subcommand(name, description);
        added
            ->add_option("library", options_.library,
                         "The library: a file <server>.kpl, or SERVICE:SERVER for one in a database")
            ->required();
        commands_.emplace_back(added, std::move(command));
        return *added;
    }
    void AddWholes()
    {
        Add("create", "Make an empty library", CreateLibrary);
        CLI::App& import = Add("import", "Add a folder of files, whole or not at all", ImportParts);
        import.add_option("folder", options_.other, "The folder to read, with its subfolders")->required();
        import.add_option("--into", options_.folder, "Folder of the library to put everything into");
        import.add_option("--csv", options_.table, "Table of attributes: part, folder, thickness, material, ...");
        CLI::App& watch = Add("watch", "Import what arrives in a folder, until it is stopped", Watch);
        watch.add_option("folder", options_.other, "The folder to watch, with its subfolders")->required();
        watch.add_option("--into", options_.folder, "Folder of the library to put everything into");
        watch.add_option("--seconds", options_.seconds, "Between two looks")
            ->check(CLI::Range(1U, 3600U))
            ->default_val(2);
        watch.add_flag("--once", options_.once, "End when what is there has been imported");
        CLI::App& extract = Add("extract", "Write the parts out as an import reads them", ExtractParts);
        // Newer releases of the parser want a name of its own for each, with dashes or without.
        extract.add_option("target", options_.other, "The folder to make")->required();
        extract.add_option("--folder", options_.folder, "Only this folder of the library and those inside it");
        extract.add_option("--csv", options_.table, "Where the table of attributes goes (<folder>.csv)");
        CLI::App& backup = Add("backup", "Copy the library while it is in use", BackUpAny);
        backup.add_option("target", options_.other, "The file to make")->required();
        backup.add_flag("--replace", options_.replace, "Put it in the place of what is there");
        Add("copy", "Make a library with all that is in this one", Copy)
            .add_option("target", options_.other, "The library to make: a file, or SERVICE:SERVER")
            ->required();
        Add("repair", "Make a damaged library sound, and keep the damaged one beside it", Repair);
    }
    void AddLooks()
    {
        CLI::App& list = Add("list", "List the parts, a line each", ListParts);
        list.add_option("--folder", options_.folder, "Only this folder, or those of a pattern, and those inside");
        list.add_flag("--names", options_.names, "Only the names directly in the folder");
        Add("check", "Look a library over", CheckOrRebuild)
            .add_flag("--rebuild", options_.rebuild, "First make all keys and the search index anew");
        Add("diff", "Tell what differs between two libraries", Diff)
            .add_option("other", options_.other, "The second library")
            ->required();
    }
    void AddEdits()
    {
        constexpr const char* which = "Parts such as Plates/P1 or 'Plates/*/P?', folders such as Plates/Old/";
        Add("remove", "Remove parts, and folders with all in them", RemovePlaces)
            .add_option("places", options_.places, which)
            ->required();
        CLI::App& rename = Add("rename", "Give parts or folders other names", RenamePlaces);
        rename.add_option("place", options_.place, which)->required();
        rename.add_option("name", options_.name, "The new name; its * and ? stand for what those of the place do")
            ->required();
        CLI::App& move = Add("move", "Put parts or folders into another folder", MovePlaces);
        move.add_option("--to", options_.folder, "The folder, made where it is missing; / is the top")->required();
        move.add_option("places", options_.places, which)->required();
        CLI::App& set = Add("set", "Change attributes of parts", SetAttributes);
        CLI::Option* const places = set.add_option("places", options_.places, which);
        CLI::Option* const table =
            set.add_option("--csv", options_.table, "A table of attributes; those it has no column for stay");
        set.add_option("--folder", options_.folder, "Folder of the library that those of the table lie in")
            ->needs(table);
        for (const auto& [name, text, holds] :
             {std::tuple{"thickness", &options_.thickness, "Their thickness in millimetres"},
              {"material", &options_.material, "Their material"},
              {"machine", &options_.machine, "Their machine"},
              {"comment", &options_.comment, "Their comment"}}) {
            set.add_option(std::string("--") + name, *text, holds)
                ->needs(places)
                ->excludes(table)
                ->each([this, name = std::string(name)](const std::string&) { options_.columns.push_back(name); });
        }
        places->excludes(table);
        set.callback([this] {
            if (options_.table.empty() && (options_.places.empty() || options_.columns.empty())) {
                throw CLI::RequiredError("parts and what to set of them, or --csv with a table,");
            }
        });
    }

    // What to tell of one that is none, in plain words and before the parser sees it.
    QString WrongCommand(const std::string& word) const
    {
        const auto is_word = [&word](const auto& command) { return command.first->get_name() == word; };
        if (word.starts_with('-') || std::any_of(commands_.begin(), commands_.end(), is_word)) {
            return {};
        }
        const auto nearest =
            std::min_element(commands_.begin(), commands_.end(), [&word](const auto& a, const auto& b) {
                return Distance(word, a.first->get_name()) < Distance(word, b.first->get_name());
            });
        const QString unknown = QStringLiteral("there is no command \"") + FromUtf8(word) + u'"';
        const std::string& name = nearest->first->get_name();
        return Distance(word, name) > 2 ? unknown : unknown + QStringLiteral(", but one \"") + FromUtf8(name) + u'"';
    }

    ToolOptions options_;
    CLI::App app_{"Makes, fills, changes and looks over part libraries.", "partkeep-library"};
    std::vector<std::pair<CLI::App*, Command>> commands_;
};

} // namespace

int RunLibraryTool(int argc, const char* const* argv, const ToolStreams& streams)
{
    return CCommandLine().Run(argc, argv, streams);
}

} // namespace partkeep
