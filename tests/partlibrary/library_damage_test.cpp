// Libraries that are cut short, altered, foreign or gone: a clear reason, never a crash or wrong content.
#include "partlibrary/library/library_names.h"
#include "partlibrary/library/library_walk.h"
#include "partlibrary/sqlite/library_rows.h"
#include "partlibrary/sqlite/schema.h"
#include "tests/partlibrary/library_fixture.h"

#include <filesystem>
#include <numeric>
#include <random>
#include <set>
#include <sqlite3.h>
#include <sys/stat.h>
#include <tuple>

namespace partkeep {
namespace {

class LibraryDamage : public LibraryShop {
protected:
    // Does what a browser does with a server and gives what it had to tell. What arrives is as it was stored.
    std::string UseServer(const std::string& label = "")
    {
        CCopyingSession session(libraries_.Places(), target_);
        session.ConnectServer(u"SRV1");
        session.SetCurrentFolder(u"Plates\\2008");
        session.SelectAllParts(1);
        static_cast<void>(session.GetSelectedPart(0));
        session.RefreshPartList();
        session.CopyPartFiles(u"SRV1", u"Plates\\2008\\P1");
        for (const std::string& name : Take()) {
            EXPECT_NE(name.front(), '!') << label << ": " << name;
        }
        return ProblemText(session.Problem());
    }

    // A file with other bytes at one place.
    static std::string With(std::size_t at, std::string_view bytes, std::string file)
    {
        return file.replace(at, std::min(bytes.size(), file.size() - at), bytes);
    }

    std::string file_ = library_file_.toStdString();
    std::string sound_ = ReadBytes(file_);
};

TEST_F(LibraryDamage, CutShortAtAnyPlaceIsToldAndNotRead)
{
    std::set<std::size_t> lengths{0, 1, 15, 16, 99, 100, 101, sound_.size() - 1};
    for (std::size_t length = 4096; length < sound_.size(); length += 65536 / 2) {
        lengths.insert(length);
    }
    for (const std::size_t length : lengths) {
        WriteBytes(file_, std::string_view(sound_).substr(0, length));
        EXPECT_NE(UseServer(std::to_string(length)), "") << length;
        EXPECT_NE(Check(), "") << length;
    }
}

TEST_F(LibraryDamage, TurnedBytesNeverReachATargetFolder)
{
    std::mt19937 random(7);
    for (int round = 0; round < 200; ++round) {
        std::string damaged = sound_;
        const std::size_t at =
            round < 100 ? random() % 4096 + 65536 * (random() % (sound_.size() / 65536)) : random() % sound_.size();
        for (std::size_t i = at; i < std::min(at + 1 + random() % 64, damaged.size()); ++i) {
            damaged[i] = static_cast<char>(random());
        }
        WriteBytes(file_, damaged);
        UseServer(std::to_string(round));
        static_cast<void>(Check());
    }
}

TEST_F(LibraryDamage, AChangedOrMissingPieceIsFound)
{
    libraries_.Put({}, u"Large"_s, {{FileSlot::Iga, QByteArray(200000, 'x')}}); // in four pieces
    sound_ = ReadBytes(file_);
    // What a copy of the part tells, nothing when it succeeds; and what the check finds.
    const std::tuple<const char*, const char*, const char*> rows[] = {
        {"DELETE FROM piece WHERE id < 0", "", ""},
        {"UPDATE piece SET content = zeroblob(65408) WHERE id % 65536 = 1", "content", "part Large"},
        {"DELETE FROM piece WHERE id % 65536 = 1", "content", "part Large"},
        {"UPDATE piece SET id = id + 1 WHERE id % 65536 = 3", "content", "part Large"},
        {"DELETE FROM piece WHERE id = (SELECT max(id) FROM piece)", "content", "part Large"},
        {"UPDATE part_file SET bytes = 65408 WHERE bytes = 200000", "a row", "row of a file"},
        {"UPDATE part_file SET content = 1 WHERE bytes = 200000", "a row", "row of a file"},
        {"UPDATE part SET slots = 5 WHERE name = 'Large'", "a row", "part Large: the row"},
        {"UPDATE part SET thickness = thickness + 4294967296 WHERE name = 'Large'", "a row", "part Large: the row"},
        {"DELETE FROM part_file WHERE bytes = 200000", "a file is missing", "missing or left over"},
        {"UPDATE part_file SET id = 1600 WHERE id = 49", "", "no part"},
        {"DELETE FROM part_file WHERE id = 49", "", "belongs to no file"},
        {"UPDATE part SET search_text = '' WHERE name = 'P2'", "", "search text"},
        {"UPDATE part SET comment_key = x'00' WHERE name = 'P2'", "", "keys"},
        {"INSERT INTO part_search(rowid, pairs) VALUES(1, 'zz')", "", "search index"},
        {"UPDATE library SET next_part = 2", "", "numbers"},
        {"UPDATE folder SET parent = 3 WHERE id = 2", "", "not as it was stored"},
        {"UPDATE folder SET sort_key = x'' WHERE id = 2", "", "its key"},
        {"UPDATE folder SET parts = 7", "", "count of parts"},
        {"UPDATE folder SET parts = 1 << 62", "", "folder : the row"},
        {"UPDATE folder SET parent = 7 WHERE id = 1", "a row", "folder : the row"},
    };
    for (const auto& [damage, told, found] : rows) {
        WriteBytes(file_, sound_);
        Forge(QString::fromLatin1(damage));
        CCopyingSession session(libraries_.Places(), target_);
        session.Go(u"SRV1"_s, {});
        EXPECT_EQ(session.CopyPartFiles(u"SRV1", u"\\Large"), *told == '\0') << damage;
        EXPECT_NE(ProblemText(session.Problem()).find(told), std::string::npos) << damage;
        EXPECT_EQ(Take().size(), *told == '\0' ? 1U : 0U) << damage;
        EXPECT_NE(Check().find(found), std::string::npos) << damage << ": " << Check();
        EXPECT_EQ(Check().empty(), *found == '\0') << damage << ": " << Check();
    }
}

TEST_F(LibraryDamage, WhatIsNoLibraryIsTold)
{
    const auto forge = [&](const char* sql) {
        WriteBytes(file_, sound_);
        Forge(QString::fromLatin1(sql));
    };
    const std::tuple<const char*, LibraryFault, std::function<void()>> rows[] = {
        {"missing", LibraryFault::NotFound, [] {}},
        {"folder", LibraryFault::NotALibrary, [&] { std::filesystem::create_directory(file_); }},
        {"pipe", LibraryFault::NotALibrary, [&] { mkfifo(file_.c_str(), 0600); }},
        {"text", LibraryFault::NotALibrary, [&] { WriteBytes(file_, std::string(70000, 'x')); }},
        {"another's", LibraryFault::NotALibrary, [&] { forge("PRAGMA application_id=7"); }},
        {"earlier version", LibraryFault::OtherVersion, [&] { forge("PRAGMA user_version=1"); }},
        {"later version", LibraryFault::OtherVersion, [&] { forge("PRAGMA user_version=9"); }},
        {"a stranger's view", LibraryFault::Damaged, [&] { forge("CREATE VIEW extra AS SELECT 1"); }},
        {"a table gone", LibraryFault::Damaged, [&] { forge("DROP TABLE part_search"); }},
        {"the index's own table in other words", LibraryFault::Damaged,
         [&] { WriteBytes(file_, With(sound_.find("k PRIMARY KEY, v)"), "k PRIMARY KEY, w)", sound_)); }},
        {"one with a log", LibraryFault::CannotOpen, [&] { WriteBytes(file_, With(18, "\2\2", sound_)); }},
    };
    for (const auto& [label, fault, make] : rows) {
        std::filesystem::remove_all(file_);
        make();
        problem_ = {};
        EXPECT_EQ(CSqliteLibrary::Open(library_file_, problem_), nullptr) << label;
        EXPECT_EQ(problem_.fault, fault) << label << ": " << ProblemText(problem_);
    }
    EXPECT_FALSE(std::filesystem::exists(file_ + "-shm")) << "which anybody could cut short";
}

// The first page of a table leads to pages that all lead to one page with rows, many million times in all.
TEST_F(LibraryDamage, PagesThatLeadToEachOtherEndARead)
{
    const auto upper = [](quint32 below) {
        constexpr int entries = 10000;
        constexpr int at = page_bytes - 16; // the only entry there is, above any number that is asked for
        const std::string number = BigEndian(below);
        std::string page = "\5" + BigEndian(entries) + BigEndian(at).substr(2) + std::string(1, '\0') + number;
        for (int entry = 0; entry < entries; ++entry) {
            page += BigEndian(at).substr(2);
        }
        page.resize(at);
        return (page + number + "\x7F").append(11, '\0');
    };
    const auto pages = static_cast<quint32>(sound_.size() / page_bytes);
    for (const QString& table : {u"folder"_s, u"part_file"_s}) {
        WriteBytes(file_, sound_);
        const auto root = static_cast<std::size_t>(RootOf(table));
        const std::string rows = sound_.substr(root, page_bytes) + upper(pages + 1);
        WriteBytes(file_, With(28, BigEndian(pages + 2), With(root, upper(pages + 2), sound_) + rows));
        const auto library = CSqliteLibrary::Open(library_file_, problem_);
        ASSERT_NE(library, nullptr) << ProblemText(problem_);
        EXPECT_FALSE(table == u"folder" ? library->Ids({all_folders, -1, {}}).has_value()
                                        : library->Files(std::array{PartId{5}}).has_value());
        EXPECT_EQ(library->Problem().fault, LibraryFault::Damaged) << ProblemText(library->Problem());
        EXPECT_TRUE(libraries_.At(u"SRV1"_s)->Repair(false, {}, problem_)) << ProblemText(problem_);
        EXPECT_EQ(Check(), "");
    }
}

TEST_F(LibraryDamage, AReadWithoutARowEnds)
{
    const auto reader = CConnection::Open(library_file_, OpenMode::Read, problem_);
    EXPECT_FALSE(reader->Execute("WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n) "
                                 "SELECT i FROM n WHERE i < 0"));
    EXPECT_EQ(reader->Problem().fault, LibraryFault::Busy);
}

TEST_F(LibraryDamage, TablesThatComeLaterAreNotTaken)
{
    const auto library = CSqliteLibrary::Open(library_file_, problem_);
    const auto forger = Forger();
    ASSERT_TRUE(forger->Execute("ALTER TABLE part RENAME TO parts") &&
                forger->Execute("CREATE VIEW part AS SELECT * FROM parts"));
    EXPECT_FALSE(library->FindPart(u"Plates\\2008"_s, u"P1"_s)) << "nothing is run in a stranger's words";
    EXPECT_FALSE(library->Ids({all_folders, -1, {}}));
    EXPECT_EQ(library->Problem().fault, LibraryFault::Damaged) << ProblemText(library->Problem());
}

TEST_F(LibraryDamage, SearchAndImportEndWhateverTheRowsSay)
{
    Forge(u"UPDATE folder SET parts = 1000000"_s);
    Forge(u"UPDATE part SET id = 1 << 40 WHERE slots = 127"_s);
    const auto library = CSqliteLibrary::Open(library_file_, problem_);
    EXPECT_EQ(library->Ids({library->FindFolder(u"Plates\\2008"_s)->id, -1, u"zzz"_s}), std::vector<PartId>{});
    Forge(u"DELETE FROM folder WHERE path = ''"_s);
    const auto writer = CSqliteWriter::Open(library_file_, problem_);
    EXPECT_FALSE(writer->Begin() && writer->MakeFolder(u"New"_s));
    EXPECT_EQ(writer->Problem().fault, LibraryFault::Damaged);
}

// Twins among folders, each with twins inside, and names out of order.
TEST_F(LibraryDamage, WalksEndWhateverTheIndexesSay)
{
    auto forger = Forger();
    sqlite3_db_config(forger->Engine(), SQLITE_DBCONFIG_DEFENSIVE, 0, nullptr);
    ASSERT_TRUE(forger->Execute("DROP INDEX folder_by_path"));
    QString path;
    for (qint64 id = 100; id < 160; ++id) {
        const qint64 parent = id < 102 ? 1 : id / 2 * 2 - 2;
        path = JoinPath(path, id % 2 == 0 ? u"a"_s : QString()); // the twin has the same
        ASSERT_TRUE(forger->Execute("INSERT INTO folder VALUES(?, ?, 'a', ?, x'', ?, 0)", id, parent, path,
                                    FolderSum(forger->Salt(), id, parent, "a", path.toStdString())));
    }
    for (const char* sql : {"CREATE INDEX folder_by_path ON folder(path)", "PRAGMA writable_schema=1",
                            "UPDATE sqlite_schema SET sql = replace(sql, 'TE IN', 'TE UNIQUE IN') "
                            "WHERE name = 'folder_by_path'"}) {
        ASSERT_TRUE(forger->Execute(sql)) << sql;
    }
    forger.reset();
    SwapEntries(u"part_by_name"_s, 1, 3);
    const auto library = CSqliteLibrary::Open(library_file_, problem_);
    ASSERT_NE(library, nullptr) << ProblemText(problem_);
    EXPECT_EQ(AllFolders(*library)->size(), 3U + 30U);
    EXPECT_FALSE(library->PartsBehind(library->FindFolder(u"Plates\\2008"_s)->id, {}, 9));
    EXPECT_EQ(library->Problem().fault, LibraryFault::Damaged);
}

// A writer that was cut off leaves its journal: it is taken back when the next reader comes, or while one is reading.
// Beside another library, or another state of the same, it is set aside.
TEST_F(LibraryDamage, AnInterruptedWriteIsTakenBackWhereItBelongs)
{
    auto writer = Forger();
    for (const char* sql :
         {"PRAGMA cache_spill=1", "PRAGMA cache_size=2", "BEGIN", "PRAGMA user_version=4", "DELETE FROM piece",
          "UPDATE part SET comment = 'half'", "INSERT INTO piece VALUES(900000, 0, zeroblob(4000000))"}) {
        ASSERT_TRUE(writer->Execute(sql)) << sql;
    }
    const std::string half = ReadBytes(file_);
    const std::string journal = ReadBytes(file_ + "-journal");
    writer.reset();
    ASSERT_NE(half, sound_);
    const auto leave = [&](const std::string& library, const std::string& end = {}) {
        WriteBytes(file_, library);
        WriteBytes(file_ + "-journal", journal + end);
    };
    leave(half);
    EXPECT_EQ(UseServer(), "");
    EXPECT_TRUE(CopyP1());
    EXPECT_EQ(session_.ReadPartAttributes(u"SRV1", u"Plates\\2008\\P1")->comment, u"取付板"_s);
    leave(half); // while session_ has the library open
    EXPECT_TRUE(CopyP1()) << ProblemText(session_.Problem());
    EXPECT_EQ(Check(), "");
    const std::string named = file_ + ".mine"; // by the journal, as what the change has to do with as well
    WriteBytes(named, "mine");
    leave(half, BigEndian((1 << 30) / page_bytes + 1) + named + BigEndian(named.size()) +
                    BigEndian(std::accumulate(named.begin(), named.end(), 0U)) + journal.substr(0, 8));
    UseServer();
    EXPECT_EQ(ReadBytes(named), "mine");
    std::filesystem::remove(file_ + "-journal");
    ASSERT_EQ(mkfifo((file_ + "-journal").c_str(), 0600), 0);
    WriteBytes(file_, sound_);
    EXPECT_EQ(UseServer(), "") << "a pipe would be waited for";

    for (const QString& name : {u"L"_s, u"M"_s}) {
        libraries_.Fill(u"SRV1"_s, [&](ILibraryWriter& other) { PutTestPart(other, u"Later"_s, name, 1); });
    }
    const std::string later = ReadBytes(file_);
    leave(later);
    EXPECT_EQ(Check(), "") << "a later state of the same library";
    EXPECT_TRUE(ReadBytes(file_) == later);
    std::filesystem::remove(file_);
    WriteBytes(file_ + "-journal", journal);
    ASSERT_TRUE(CSqliteWriter::Create(library_file_, problem_)) << "what a library of this name has left behind";
    const std::string other = ReadBytes(file_);
    leave(other);
    EXPECT_EQ(Check(), "") << "another library";
    EXPECT_TRUE(ReadBytes(file_) == other);
    std::size_t aside = 0;
    for (const std::string& name : NamesIn(std::filesystem::path(file_).parent_path())) {
        aside += name.find("-journal-foreign-") != std::string::npos ? 1 : 0;
    }
    EXPECT_EQ(aside, 4U) << "nothing is deleted";

    const std::string number(4, '\2');
    for (const std::string& bad : {std::string(), With(0, std::string(8, '\0'), journal), With(0, "no mark", journal),
                                   With(24, number, journal), With(20, number, journal), journal.substr(0, 600)}) {
        WriteBytes(file_, other);
        WriteBytes(file_ + "-journal", bad);
        const auto again = CSqliteWriter::Open(library_file_, problem_);
        EXPECT_TRUE(again != nullptr && again->Begin()) << bad.size() << ProblemText(problem_);
    }
    WriteBytes(file_, other);
    WriteBytes(file_ + "-journal", With(512, number, journal)); // of another page first: whose it is cannot be told
    EXPECT_EQ(CSqliteWriter::Open(library_file_, problem_), nullptr);
    EXPECT_EQ(problem_.fault, LibraryFault::Unfinished);
    EXPECT_TRUE(ReadBytes(file_) == other);
}

} // namespace
} // namespace partkeep
