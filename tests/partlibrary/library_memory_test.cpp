// The tool's commands while the engine finds no memory, its files cannot be read or written, or a statement of it is
// cut off: each is done whole, or tells of it and has changed nothing.
#include "partlibrary/tool/commands.h"
#include "tests/partlibrary/library_fixture.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <filesystem>
#include <set>
#include <sqlite3.h>
#include <sstream>

namespace partkeep {
namespace {

namespace fs = std::filesystem;

enum class Want { Memory, Files, Statements };

struct Engine {
    sqlite3_mem_methods memory{};
    sqlite3_vfs files{};
    std::array<sqlite3_io_methods, 2> plain{};
    Want wants = Want::Memory; // what fails
    std::size_t asked = 0;
    std::size_t fails_from = 0; // 0 for never
    bool fails_once = false;
};

Engine engine;

bool FailsNow(Want what)
{
    engine.asked += what == engine.wants ? 1 : 0;
    return what == engine.wants && engine.fails_from != 0 &&
           (engine.fails_once ? engine.asked == engine.fails_from : engine.asked >= engine.fails_from);
}

// A library has other methods than its journal.
template <bool library, auto method, int error, typename... A>
int Call(sqlite3_file* file, A... arguments)
{
    return FailsNow(Want::Files) ? error : (engine.plain[library].*method)(file, arguments...);
}

template <bool library>
void Watch(sqlite3_file* file)
{
    using Methods = sqlite3_io_methods;
    static Methods watched;
    engine.plain[library] = watched = *file->pMethods;
    watched.iVersion = 1; // nothing is mapped into memory
    watched.xRead = Call<library, &Methods::xRead, SQLITE_IOERR_READ>;
    watched.xWrite = Call<library, &Methods::xWrite, SQLITE_FULL>;
    watched.xTruncate = Call<library, &Methods::xTruncate, SQLITE_IOERR_TRUNCATE>;
    watched.xSync = Call<library, &Methods::xSync, SQLITE_IOERR_FSYNC>;
    watched.xLock = Call<library, &Methods::xLock, SQLITE_IOERR_LOCK>;
    file->pMethods = &watched;
}

int Open(sqlite3_vfs* files, const char* name, sqlite3_file* file, int flags, int* got)
{
    const int opened = FailsNow(Want::Files) ? SQLITE_CANTOPEN : engine.files.xOpen(files, name, file, flags, got);
    if (opened == SQLITE_OK) {
        (flags & SQLITE_OPEN_MAIN_DB) != 0 ? Watch<true>(file) : Watch<false>(file);
    }
    return opened;
}

// Before anybody uses the engine, and without the small pieces that it else keeps for each connection.
const bool is_watched = [] {
    sqlite3_config(SQLITE_CONFIG_GETMALLOC, &engine.memory);
    sqlite3_mem_methods methods = engine.memory;
    methods.xMalloc = [](int size) { return FailsNow(Want::Memory) ? nullptr : engine.memory.xMalloc(size); };
    methods.xRealloc = [](void* piece, int size) {
        return FailsNow(Want::Memory) ? nullptr : engine.memory.xRealloc(piece, size);
    };
    const bool set = sqlite3_config(SQLITE_CONFIG_MALLOC, &methods) == SQLITE_OK &&
                     sqlite3_config(SQLITE_CONFIG_LOOKASIDE, 0, 0) == SQLITE_OK;
    static sqlite3_vfs files = engine.files = *sqlite3_vfs_find(nullptr);
    files.zName = "watched";
    files.xOpen = Open;
    files.xDelete = [](sqlite3_vfs* plain, const char* name, int durable) {
        return FailsNow(Want::Files) ? SQLITE_IOERR_DELETE : engine.files.xDelete(plain, name, durable);
    };
    const auto cut_off = [](unsigned, void* database, void*, void*) {
        FailsNow(Want::Statements) ? sqlite3_interrupt(static_cast<sqlite3*>(database)) : void();
        return 0;
    };
    const auto watch = [](sqlite3* database, char**, const sqlite3_api_routines*) {
        return sqlite3_trace_v2(database, SQLITE_TRACE_STMT, decltype(cut_off){}, database);
    };
    const auto each =
        reinterpret_cast<void (*)()>(static_cast<int (*)(sqlite3*, char**, const sqlite3_api_routines*)>(watch));
    return set && sqlite3_vfs_register(&files, 1) == SQLITE_OK && sqlite3_auto_extension(each) == SQLITE_OK;
}();

struct Ended {
    int code = 0;
    std::string out;
    std::string err;
};

Ended Tool(const std::vector<std::string>& arguments)
{
    std::vector<const char*> argv{"partkeep-library"};
    std::transform(arguments.begin(), arguments.end(), std::back_inserter(argv),
                   [](const std::string& argument) { return argument.c_str(); });
    std::ostringstream out;
    std::ostringstream err;
    const int code = RunLibraryTool(static_cast<int>(argv.size()), argv.data(), {out, err});
    return {code, out.str(), err.str()};
}

// What a command has made beside the library.
std::string Made()
{
    std::string made = fs::exists("B.kpl") ? Tool({"list", "B.kpl"}).out : "";
    std::set<fs::path> files{fs::recursive_directory_iterator(fs::exists("out") ? "out" : "more"), {}};
    files.insert("out.csv");
    for (const fs::path& file : files) {
        made += file.string() + (fs::is_regular_file(file) ? ReadBytes(file.string()) : "") + "\n";
    }
    return made;
}

using LibraryMemory = LibraryShop;

TEST_F(LibraryMemory, EachCommandIsDoneWholeOrTellsOfIt)
{
    ASSERT_TRUE(is_watched);
    const CTemporaryFolder work;
    fs::current_path(work.Path());
    for (const char* name : {"in/New/A.iga", "in/New/A.SY5", "in/B.ncd", "more/New/C.iga", "more/Plates/2008/P1.iga"}) {
        fs::create_directories(fs::path(name).parent_path());
        WriteBytes(name, name);
    }
    fs::copy_file(library_file_.toStdString(), "whole");
    fs::copy_file("whole", "D.kpl");
    ASSERT_EQ(Tool({"remove", "D.kpl", "Plates/Top"}).code, 0);
    WriteBytes("set.csv", "folder,part,material,comment\nPlates/2008,P1,SUS,new\nPlates/2008,P2,,\n");
    const std::vector<std::string> commands[] = {
        {"remove", "S.kpl", "Plates/2008/P1"},
        {"rename", "S.kpl", "Plates/", "Sheets"},
        {"move", "S.kpl", "**/P*", "--to", "M"},
        {"watch", "S.kpl", "in", "--once", "--seconds", "1"},
        {"create", "B.kpl"},
        {"copy", "S.kpl", "B.kpl"},
        {"extract", "S.kpl", "out"},
        {"diff", "S.kpl", "D.kpl"},
        {"import", "S.kpl", "more"},
        {"set", "S.kpl", "--csv", "set.csv"},
        {"list", "S.kpl", "--names", "--folder", "Plates/2008"},
        {"list", "S.kpl"},
        {"backup", "S.kpl", "B.kpl"},
        {"repair", "S.kpl"},
        {"check", "S.kpl"},
        {"check", "S.kpl", "--rebuild"},
    };
    const char* const asked_for = std::getenv("PARTKEEP_EVERY_CALL");
    const std::size_t every = asked_for != nullptr ? std::strtoul(asked_for, nullptr, 10) : 0;
    for (const auto& command : commands) {
        const auto play = [&](std::size_t fails_from, bool once) {
            for (const char* made : {"S.kpl", "B.kpl", "out", "out.csv"}) {
                fs::remove_all(made);
            }
            fs::copy_file("whole", "S.kpl");
            engine.asked = 0;
            engine.fails_from = fails_from;
            engine.fails_once = once;
            const Ended ended = Tool(command);
            engine.fails_from = 0;
            return ended;
        };
        for (const Want wants : {Want::Memory, Want::Files, Want::Statements}) {
            if (wants != Want::Memory && (command[0] == "watch" || (command[0] == "repair" && wants == Want::Files))) {
                continue; // the one waits until it can read, the other leaves out what cannot be
            }
            engine.wants = wants;
            const Ended undisturbed = play(0, false);
            const std::size_t calls = engine.asked;
            const std::string whole = Made();
            const std::string after = Tool({"list", "S.kpl"}).out;
            const std::string before = Tool({"list", "whole"}).out;
            const std::size_t least = command[0] == "watch" ? calls / 30 : 1; // each time it waits for a second
            const std::size_t step = every == 0                  ? 1 + calls / 5
                                     : wants == Want::Statements ? 1
                                                                 : std::max(every, least);
            for (std::size_t at = 1; at <= calls; at += step) {
                for (const bool once : {true, false}) {
                    const std::string what[] = {"", " files", " statement"};
                    SCOPED_TRACE(command[0] + " " + std::to_string(at) + (once ? " once" : "") +
                                 what[static_cast<std::size_t>(wants)]);
                    const Ended ended = play(at, once);
                    EXPECT_TRUE(ended.code == undisturbed.code ? ended.out == undisturbed.out : !ended.err.empty())
                        << ended.code << ended.out << ended.err;
                    EXPECT_TRUE(ended.code != undisturbed.code || Made() == whole) << ended.err;
                    const std::string left = Tool({"list", "S.kpl"}).out;
                    EXPECT_EQ(left, ended.code == undisturbed.code ? after : before) << ended.err;
                    const Ended checked = Tool({"check", "S.kpl"});
                    EXPECT_EQ(checked.code, 0) << checked.out << checked.err << ended.err;
                }
            }
        }
    }
    fs::current_path("/");
}

} // namespace
} // namespace partkeep
