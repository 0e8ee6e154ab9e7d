// The tool's commands while the engine finds no memory: each is done whole, or tells of it and has changed nothing.
#include "partlibrary/tool/commands.h"
#include "tests/partlibrary/library_fixture.h"

#include <algorithm>
#include <filesystem>
#include <sqlite3.h>
#include <sstream>

namespace partkeep {
namespace {

namespace fs = std::filesystem;

struct EngineMemory {
    sqlite3_mem_methods plain{};
    std::size_t asked = 0;
    std::size_t fails_from = 0; // 0 for never
    bool fails_once = false;
};

EngineMemory memory;

bool FailsNow()
{
    ++memory.asked;
    return memory.fails_from != 0 &&
           (memory.fails_once ? memory.asked == memory.fails_from : memory.asked >= memory.fails_from);
}

// Before anybody uses the engine, and without the small pieces that it else keeps for each connection.
const bool is_watched = [] {
    sqlite3_config(SQLITE_CONFIG_GETMALLOC, &memory.plain);
    sqlite3_mem_methods methods = memory.plain;
    methods.xMalloc = [](int size) { return FailsNow() ? nullptr : memory.plain.xMalloc(size); };
    methods.xRealloc = [](void* piece, int size) { return FailsNow() ? nullptr : memory.plain.xRealloc(piece, size); };
    return sqlite3_config(SQLITE_CONFIG_MALLOC, &methods) == SQLITE_OK &&
           sqlite3_config(SQLITE_CONFIG_LOOKASIDE, 0, 0) == SQLITE_OK;
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

using LibraryMemory = LibraryShop;

TEST_F(LibraryMemory, EachCommandIsDoneWholeOrTellsOfIt)
{
    ASSERT_TRUE(is_watched);
    const CTemporaryFolder work;
    fs::current_path(work.Path());
    for (const char* name : {"in/New/A.iga", "in/New/A.SY5", "in/B.ncd"}) {
        fs::create_directories(fs::path(name).parent_path());
        WriteBytes(name, name);
    }
    fs::copy_file(library_file_.toStdString(), "whole");
    fs::copy_file("whole", "D.kpl");
    ASSERT_EQ(Tool({"remove", "D.kpl", "Plates/Top"}).code, 0);
    const std::vector<std::string> commands[] = {
        {"remove", "S.kpl", "Plates/2008/P1"},
        {"rename", "S.kpl", "Plates/", "Sheets"},
        {"move", "S.kpl", "**/P*", "--to", "M"},
        {"watch", "S.kpl", "in", "--once"},
        {"create", "B.kpl"},
        {"copy", "S.kpl", "B.kpl"},
        {"extract", "S.kpl", "out"},
        {"diff", "S.kpl", "D.kpl"},
        {"check", "S.kpl"},
        {"check", "S.kpl", "--rebuild"},
    };
    for (const auto& command : commands) {
        const auto play = [&](std::size_t fails_from, bool once) {
            for (const char* made : {"S.kpl", "B.kpl", "out", "out.csv"}) {
                fs::remove_all(made);
            }
            fs::copy_file("whole", "S.kpl");
            memory.asked = 0;
            memory.fails_from = fails_from;
            memory.fails_once = once;
            const Ended ended = Tool(command);
            memory.fails_from = 0;
            return ended;
        };
        const Ended undisturbed = play(0, false);
        const std::size_t allocations = memory.asked;
        const std::string after = Tool({"list", "S.kpl"}).out;
        const std::string before = Tool({"list", "whole"}).out;
        for (std::size_t at = 1; at <= allocations; at += 1 + allocations / 5) {
            for (const bool once : {true, false}) {
                SCOPED_TRACE(command[0] + " " + std::to_string(at) + (once ? " once" : ""));
                const Ended ended = play(at, once);
                EXPECT_TRUE(ended.code == undisturbed.code ? ended.out == undisturbed.out : !ended.err.empty())
                    << ended.code << ended.out << ended.err;
                const std::string left = Tool({"list", "S.kpl"}).out;
                EXPECT_EQ(left, ended.code == undisturbed.code ? after : before) << ended.err;
                EXPECT_EQ(Tool({"check", "S.kpl"}).code, 0);
            }
        }
    }
    fs::current_path("/");
}

} // namespace
} // namespace partkeep
