// The tool's commands while the engine finds no memory, its files cannot be read or written, a statement of it is cut
// off, a call of the system fails, somebody stops them, or the disk fills: each is done whole, or tells of it and has
// changed nothing.
#include "partlibrary/tool/commands.h"
#include "tests/partlibrary/library_fixture.h"
#include "tests/support/linux_faults.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdarg>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <optional>
#include <set>
#include <sqlite3.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace partkeep {
namespace {

enum class Want { Memory, Files, Statements, Calls, Stop, Room };

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
        stop_asked = stop_asked || FailsNow(Want::Stop); // at the moment of a statement
        return 0;
    };
    const auto watch = [](sqlite3* database, char**, const sqlite3_api_routines*) {
        const bool wanted =
            engine.wants >= Want::Statements; // it takes memory of its own, and nobody looks whether it is
        return wanted ? sqlite3_trace_v2(database, SQLITE_TRACE_STMT, decltype(cut_off){}, database) : SQLITE_OK;
    };
    const auto each =
        reinterpret_cast<void (*)()>(static_cast<int (*)(sqlite3*, char**, const sqlite3_api_routines*)>(watch));
    return set && sqlite3_vfs_register(&files, 1) == SQLITE_OK && sqlite3_auto_extension(each) == SQLITE_OK;
}();

template <typename... A>
auto SystemCall(long number, A... arguments)
{
    return FailsNow(Want::Calls) ? (errno = EIO, -1L) : syscall(number, arguments...);
}

} // namespace

// In place of the system's library, for ours, the toolkit's and the engine's calls.
extern "C" {
int open64(const char* name, int flags, ...)
{
    va_list more;
    va_start(more, flags);
    const auto mode = va_arg(more, unsigned); // some register, where none is given
    va_end(more);
    return static_cast<int>(SystemCall(SYS_openat, AT_FDCWD, name, flags | O_LARGEFILE, mode));
}
int open(const char* name, int flags, ...) __attribute__((alias("open64")));
#define PARTKEEP_CALL(result, name, parameters, ...)                                                                   \
    result name parameters                                                                                             \
    {                                                                                                                  \
        return static_cast<result>(SystemCall(SYS_##name, __VA_ARGS__));                                               \
    }
PARTKEEP_CALL(int, mkdir, (const char* name, mode_t mode), name, mode)
PARTKEEP_CALL(int, rename, (const char* from, const char* to), from, to)
PARTKEEP_CALL(int, renameat2, (int there, const char* from, int here, const char* to, unsigned how), there, from, here,
              to, how)
PARTKEEP_CALL(int, link, (const char* from, const char* to), from, to)
PARTKEEP_CALL(int, fsync, (int file), file)
PARTKEEP_CALL(ssize_t, write, (int file, const void* bytes, size_t size), file, bytes, size)
PARTKEEP_CALL(ssize_t, read, (int file, void* bytes, size_t size), file, bytes, size)
#undef PARTKEEP_CALL
}

namespace {

// What a command has made beside the library.
std::string Made()
{
    std::string made = fs::exists("B.kpl") ? RunTool({"list", "B.kpl"}).out : "";
    std::set<fs::path> files{fs::recursive_directory_iterator(fs::exists("out") ? "out" : "in"), {}};
    files.insert("out.csv");
    for (const std::string& name : NamesIn(".")) {
        made += name.find('~') != std::string::npos ? name : "";
    }
    for (const fs::path& file : files) {
        made += file.string() + (fs::is_regular_file(file) ? ReadBytes(file.string()) : "") + "\n";
    }
    return made;
}

// What a browser reads of S.kpl: lists by every way, places in them, the values of a column.
ToolRun Browse()
{
    CBrowserSession session{CLibraryFolder(FromUtf8(fs::current_path().string()))};
    ToolRun ended;
    bool whole = session.Go(u"S"_s, u"Plates\\2008"_s) && session.CurrentFolder().path == u"Plates\\2008"_s;
    const auto library = session.ShareLibrary();
    for (int way = 0; whole && way < 24; ++way) {
        const QString search[] = {{}, u"p"_s, u"p1 spcc"_s, u"xy"_s};
        PartListView view{way / 4 % 2 == 0 ? session.CurrentFolder().id : all_folders,
                          -1,
                          {},
                          static_cast<PartColumn>(way % 5),
                          way % 3 == 0};
        const auto wider = WholeList(*library, view, 5);
        view.search = search[way % 4];
        const auto list = WholeList(*library, view, way < 12 ? 5 : 1000000, way % 3 == 0 ? wider.get() : nullptr);
        const std::vector<PartId> ids = list->Ids(0, list->Count());
        const auto rows = list->Rows(0, list->Count());
        const auto values = library->Values(view, PartColumn::Material, 9);
        const auto all = library->Ids(view);
        whole =
            !list->Failed() && rows.size() == ids.size() && values && all == ids && library->Visible(view, ids) == ids;
        whole = whole && (ids.empty() || list->RowOf(ids.back()) == static_cast<qint64>(ids.size()) - 1);
        for (const PartRow& row : whole ? rows : std::vector<PartRow>()) {
            ended.out += ToUtf8(row.folder_path + row.name) + " ";
        }
        ended.out += values ? std::to_string(values->size()) + "\n" : "";
    }
    const LibraryProblem problem = library != nullptr && library->Problem() ? library->Problem() : session.Problem();
    ended.end = whole ? 0 : static_cast<int>(EndOf(problem.fault));
    ended.err = whole ? "" : ProblemText(problem);
    return ended;
}

class LibraryFailures : public LibraryShop, public testing::WithParamInterface<Want> {};

TEST_P(LibraryFailures, EachCommandIsDoneWholeOrTellsOfIt)
{
    ASSERT_TRUE(is_watched);
    const CTemporaryFolder work;
    std::optional<CMountedDisk> disk;
    if (GetParam() == Want::Room) {
        PARTKEEP_NEEDS_MOUNTS();
        disk.emplace(work.Path(), "16m");
    }
    engine.wants = GetParam();
    fs::current_path(work.Path());
    for (const char* name : {"in/New/A.iga", "in/New/A.SY5", "in/B.ncd", "more/New/C.iga", "more/Plates/2008/P1.iga"}) {
        fs::create_directories(fs::path(name).parent_path());
        WriteBytes(name, name);
    }
    disk ? WriteBytes("more/New/C.iga", std::string(600000, 'x')) : void();
    fs::copy_file(library_file_.toStdString(), "whole");
    fs::copy_file("whole", "D.kpl");
    ASSERT_EQ(RunTool({"remove", "D.kpl", "Plates/Top"}).end, 0);
    fs::copy_file("whole", "damaged");
    const auto spoil = CConnection::Open(u"damaged"_s, OpenMode::Write, problem_);
    ASSERT_TRUE(spoil->Execute("UPDATE part SET material = 'x' WHERE name = 'P1'") &&
                spoil->Execute("UPDATE folder SET sum = 1 WHERE path = 'Plates'"));
    fs::copy_file("whole", "foreign");
    const auto rule = CConnection::Open(u"foreign"_s, OpenMode::Write, problem_);
    ASSERT_TRUE(rule->Execute("UPDATE library SET keys = 'other'"));
    WriteBytes("set.csv", "folder,part,material,comment\nPlates/2008,P1,SUS,new\nPlates/2008,P2,,\n");
    const std::pair<const char*, std::vector<std::string>> commands[] = {
        {"whole", {"remove", "S.kpl", "Plates/2008/P1"}},
        {"whole", {"rename", "S.kpl", "Plates/", "Sheets"}},
        {"whole", {"move", "S.kpl", "**/P*", "--to", "M"}},
        {"whole", {"watch", "S.kpl", "in", "--once", "--seconds", "1"}},
        {"whole", {"create", "B.kpl"}},
        {"whole", {"create", "B.kpl", "--dry-run"}},
        {"whole", {"backup", "S.kpl", "B.kpl", "--dry-run"}},
        {"damaged", {"repair", "S.kpl", "--dry-run"}},
        {"whole", {"remove", "S.kpl", "Plates/"}},
        {"whole", {"set", "S.kpl", "**", "--material", "Cu", "--json"}},
        {"whole", {"copy", "S.kpl", "B.kpl"}},
        {"whole", {"extract", "S.kpl", "out"}},
        {"whole", {"diff", "S.kpl", "D.kpl"}},
        {"whole", {"import", "S.kpl", "more"}},
        {"whole", {"set", "S.kpl", "--csv", "set.csv"}},
        {"whole", {"list", "S.kpl", "--names", "--folder", "Plates/2008"}},
        {"whole", {"list", "S.kpl"}},
        {"whole", {"backup", "S.kpl", "B.kpl"}},
        {"whole", {"extract", "S.kpl", "out", "--folder", "Plates/2008"}},
        {"whole", {"extract", "S.kpl", "out", "--dry-run"}},
        {"whole", {"repair", "S.kpl"}},
        {"damaged", {"repair", "S.kpl"}},
        {"damaged", {"list", "S.kpl"}},
        {"whole", {"browse"}},
        {"foreign", {"browse"}},
        {"whole", {"check", "S.kpl"}},
        {"whole", {"check", "S.kpl", "--rebuild"}},
    };
    const std::string nothing = Made();
    const char* const asked_for = std::getenv("PARTKEEP_EVERY_CALL");
    const std::size_t every = asked_for != nullptr ? std::strtoul(asked_for, nullptr, 10) : 0;
    for (const auto& [source, command] : commands) {
        const auto play = [&, &source = source, &command = command](std::size_t fails_from, bool once) {
            for (const char* made : {"S.kpl", "S.kpl.damaged-1", "B.kpl", "out", "out.csv"}) {
                fs::remove_all(made);
            }
            fs::copy_file(source, "S.kpl");
            engine.asked = 0;
            engine.fails_from = fails_from;
            engine.fails_once = once;
            disk.has_value() && fails_from != 0 ? disk->Fill((fails_from - 1) * (once ? 4096 : 65536)) : void();
            const ToolRun ended = command[0] == "browse" ? Browse() : RunTool(command);
            engine.fails_from = 0;
            disk ? disk->MakeRoom() : void();
            stop_asked = 0;
            return ended;
        };
        if (engine.wants != Want::Memory &&
            (command[0] == "watch" || (command[0] == "repair" && engine.wants == Want::Files))) {
            continue; // the one waits until it can read, the other leaves out what cannot be
        }
        const char* const full = command[0] == "extract" ? "No space left on device" : "the disk is full";
        const ToolRun undisturbed = play(0, false);
        const std::size_t calls = disk ? 36 : engine.asked;
        const std::string whole = Made();
        const std::string after = RunTool({"list", "S.kpl"}).out;
        const std::string before = RunTool({"list", source}).out;
        const int is = RunTool({"check", "S.kpl"}).end;
        const int was = RunTool({"check", source}).end;
        const std::size_t least = command[0] == "watch" ? calls / 30 : 1; // each time it waits for a second
        const std::size_t step = every == 0                         ? 1 + calls / 5
                                 : engine.wants >= Want::Statements ? 1
                                                                    : std::max(every, least);
        for (std::size_t at = 1; at <= calls; at += step) {
            for (const bool once : {true, false}) {
                SCOPED_TRACE(command[0] + " " + std::to_string(at) + (once ? " once" : ""));
                const ToolRun ended = play(at, once);
                const bool told = !ended.err.empty() || ended.out.find(R"("event":"error")") != std::string::npos;
                EXPECT_TRUE(ended.end == undisturbed.end ? ended.out == undisturbed.out : told)
                    << ended.end << ended.out << ended.err;
                EXPECT_EQ(ended.err.find('~'), std::string::npos) << ended.err << "a name of the moment";
                const std::string said = ended.out + ended.err;
                EXPECT_TRUE(!disk || ended.end == undisturbed.end || said.find(full) != std::string::npos) << said;
                EXPECT_EQ(Made(), ended.end == undisturbed.end ? whole : nothing) << ended.err;
                const std::string left = RunTool({"list", "S.kpl"}).out;
                EXPECT_EQ(left, ended.end == undisturbed.end ? after : before) << ended.err;
                const ToolRun checked = RunTool({"check", "S.kpl"});
                EXPECT_EQ(checked.end, left == after ? is : was) << checked.out << checked.err << ended.err;
            }
        }
    }
    fs::current_path("/");
}

INSTANTIATE_TEST_SUITE_P(, LibraryFailures,
                         testing::Values(Want::Memory, Want::Files, Want::Statements, Want::Calls, Want::Stop,
                                         Want::Room));

} // namespace
} // namespace partkeep
