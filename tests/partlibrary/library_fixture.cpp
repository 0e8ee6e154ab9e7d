#include "tests/partlibrary/library_fixture.h"

#include "partlibrary/library/library_text.h"
#include "partlibrary/postgres/pg_admin.h"
#include "partlibrary/sqlite/library_rows.h"
#include "partlibrary/sqlite/schema.h"
#include "partlibrary/sqlite/sqlite_admin.h"
#include "partlibrary/tool/commands.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <iterator>
#include <sstream>
#include <thread>

namespace partkeep {

namespace {

void Require(bool done, const LibraryProblem& problem)
{
    if (!done) {
        std::cerr << "fixture: " << ProblemText(problem) << std::endl;
        std::abort();
    }
}

} // namespace

bool Comes(const std::function<bool()>& state, int looks)
{
    for (; looks > 0 && !state(); --looks) {
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    return looks > 0;
}

bool InDatabase()
{
    return std::getenv("PARTKEEP_POSTGRES") != nullptr;
}

void RunInDatabase(const std::string& sql)
{
    FILE* const shell = popen("psql -qAt -v ON_ERROR_STOP=1 service=partkeep >/dev/null", "w");
    std::fputs("SET client_min_messages = warning; SET search_path = \"SRV1\"; ", shell);
    std::fputs((sql + ";\n").c_str(), shell);
    if (pclose(shell) != 0) {
        std::cerr << "fixture: " << sql << std::endl;
        std::abort();
    }
}

void AddService(const std::string& name, const std::string& settings)
{
    const std::string file = std::getenv("PGSERVICEFILE");
    WriteBytes(file, "[" + name + "]\n" + settings + "dbname=postgres\nuser=station\n" + ReadBytes(file));
}

bool SignalDatabase(const std::string& signal)
{
    const std::string find =
        "P=$(head -n 1 $PARTKEEP_POSTGRES/data/postmaster.pid); C=$(cat /proc/$P/task/*/children); ";
    const std::string children = "; [ $? = 0 ] && { kill -" + signal + " $C 2>/dev/null; true; }"; // some may be gone
    return std::system((find + "kill -" + signal + " $P" + children).c_str()) == 0;
}

// What is left of the one before it may keep it from starting at first.
void RestartDatabase()
{
    if (!Comes([] { return std::system("$PARTKEEP_POSTGRES/restart") == 0; })) {
        std::cerr << "fixture: the server does not start" << std::endl;
        static_cast<void>(std::system("tail -n 20 $PARTKEEP_POSTGRES/log >&2"));
        std::abort();
    }
}

QByteArray SmallBitmap(qsizetype size)
{
    QByteArray file(size, '\x55');
    const char head[] = "BM\0\0\0\0\0\0\0\0\x36\0\0\0\x28\0\0";
    file.replace(0, sizeof head, QByteArray(head, sizeof head));
    for (qsizetype i = 0; i < 4; ++i) {
        file[2 + i] = static_cast<char>(size >> (8 * i) & 0xFF);
    }
    return file;
}

QByteArray SmallPng()
{
    return QByteArray("\x89PNG\r\n\x1a\n", 8) + "picture";
}

void PutTestPart(ILibraryWriter& writer, const QString& folder, const QString& name, SlotSet slots,
                 const PartAttributes& attributes)
{
    const auto folder_id = writer.MakeFolder(folder);
    const auto part = folder_id ? writer.PutPart(*folder_id, name, attributes) : std::nullopt;
    Require(part.has_value(), writer.Problem());
    for (const FileKind& kind : file_kinds) {
        QByteArray content = (name + QString::fromUtf16(kind.extension)).toUtf8();
        if (!kind.tag.empty()) {
            content = kind.slot == FileSlot::Png ? SmallPng() : SmallBitmap();
        }
        Require((slots & SetOf(kind.slot)) == 0 || writer.PutFile(*part, kind.slot, content), writer.Problem());
    }
}

void PutTestParts(ILibraryWriter& writer, const QString& folder, const QString& name, int first, int end,
                  const std::function<PartAttributes(int)>& attributes)
{
    for (int part = first; part < end; ++part) {
        PutTestPart(writer, folder, name.arg(part), SetOf(FileSlot::Iga), attributes(part));
    }
}

std::unique_ptr<IPartListing> WholeList(IPartLibrary& library, const PartListView& view, qint64 parts,
                                        const IPartListing* wider)
{
    auto list = library.List(view, parts, wider);
    list->Finish();
    return list;
}

ToolRun RunTool(const std::vector<std::string>& words, bool watched)
{
    std::vector<const char*> argv{"partkeep-library"};
    std::ranges::transform(words, std::back_inserter(argv), &std::string::c_str);
    std::ostringstream out;
    std::ostringstream err;
    const int end = RunLibraryTool(static_cast<int>(argv.size()), argv.data(), {out, err, watched});
    return {end, out.str(), err.str()};
}

Names Words(const std::string& line)
{
    Names words;
    std::istringstream stream(line);
    for (std::string word; std::getline(stream, word, ' ');) {
        word.empty() ? void() : words.push_back(word);
    }
    return words;
}

CTestLibraries::CTestLibraries()
{
    if (InDatabase()) {
        RunInDatabase("DO $$ DECLARE s text; BEGIN FOR s IN SELECT relnamespace::regnamespace::text FROM pg_class "
                      "WHERE relname = 'partkeep_library' LOOP EXECUTE 'DROP SCHEMA ' || s || ' CASCADE'; END LOOP; "
                      "END $$");
    }
}

CLibraryFolder CTestLibraries::Places() const
{
    return InDatabase() ? CLibraryFolder({}, {test_service}, {cache_.Path("contents"), 1 << 26})
                        : CLibraryFolder(Folder());
}

QString CTestLibraries::PlaceOf(const QString& server) const
{
    return InDatabase() ? test_service + u':' + server : FileOf(server);
}

std::unique_ptr<ILibraryAdmin> CTestLibraries::At(const QString& server) const
{
    if (InDatabase()) {
        return std::make_unique<CPgAdmin>(PgPlace{test_service, server});
    }
    return std::make_unique<CSqliteAdmin>(FileOf(server));
}

void CTestLibraries::Fill(const QString& server, const std::function<void(ILibraryWriter&)>& fill)
{
    LibraryProblem problem;
    const auto library = At(server);
    Require(library->Create(false, problem) || problem.fault == LibraryFault::AlreadyThere, problem);
    const auto writer = library->Edit(problem);
    Require(writer != nullptr, problem);
    Require(writer->Begin(), writer->Problem());
    fill(*writer);
    Require(writer->Commit(), writer->Problem());
}

void CTestLibraries::Put(const QString& folder, const QString& part,
                         const std::vector<std::pair<FileSlot, QByteArray>>& files)
{
    Fill(u"SRV1"_s, [&](ILibraryWriter& writer) {
        const auto id = writer.PutPart(*writer.MakeFolder(folder), part, std::nullopt);
        for (const auto& [slot, content] : files) {
            Require(id && writer.PutFile(*id, slot, content), writer.Problem());
        }
    });
}

void CTestLibraries::MakeShop()
{
    using enum FileSlot;
    Fill(u"SRV1"_s, [](ILibraryWriter& writer) {
        const QString folder = u"Plates\\2008"_s;
        const SlotSet everything = SlotsOfMask(-1) | SetOf(Flat) | SetOf(Bent) | SetOf(Png);
        PutTestPart(writer, u"Plates"_s, u"Top"_s, SetOf(Iga));
        PutTestPart(writer, folder, u"P10"_s, SetOf(Iga) | SetOf(Ncd), {-1, {}, {}, {}});
        PutTestPart(writer, folder, u"P2"_s, SetOf(Bmf));
        PutTestPart(writer, folder, u"P1"_s, everything, {15000, u"SPCC"_s, u"タレット"_s, u"取付板"_s});
        PutTestPart(writer, folder, u"p1"_s, SetOf(Sy5));
        PutTestPart(writer, folder, u"Bare"_s, 0);
    });
    Fill(u"板金"_s, [](ILibraryWriter& writer) { PutTestPart(writer, u"筐体"_s, u"カバー1"_s, SetOf(Iga)); });
}

LibraryShop::LibraryShop()
{
    libraries_.MakeShop();
}

Names LibraryShop::Take()
{
    Names names = NamesIn(target_.Path());
    for (std::string& name : names) {
        const std::filesystem::path file = target_.Path(name);
        name = ReadBytes(file) == name ? name : '!' + name;
        std::filesystem::remove_all(file);
    }
    return names;
}

// The same statement for both engines, but for how each writes bytes.
void LibraryShop::Forge(const QString& sql)
{
    if (InDatabase()) {
        const QString translated = QString(sql).replace(u"UPDATE library"_s, u"UPDATE partkeep_library"_s);
        RunInDatabase(ToUtf8(QString(translated).replace(u"x'"_s, u"'\\x"_s).replace(u"BLOB"_s, u"bytea"_s)));
        return;
    }
    const auto connection = Forger();
    Require(connection->Execute(ToUtf8(sql)), connection->Problem());
}

std::shared_ptr<CConnection> LibraryShop::Forger() const
{
    LibraryProblem problem;
    auto connection = CConnection::Open(library_file_, OpenMode::Write, problem);
    Require(connection != nullptr, problem);
    return connection;
}

void LibraryShop::ForgePart(const QString& name)
{
    if (InDatabase()) {
        RunInDatabase("UPDATE part SET name = $q$" + ToUtf8(name) + "$q$ WHERE slots = 127");
        return;
    }
    const auto connection = Forger();
    PartRow row;
    {
        CStatement find(*connection, std::string("SELECT ") + part_row_columns + " FROM part WHERE slots = 127");
        Require(find.Next(), connection->Problem());
        static_cast<void>(ReadPartRow(find, row));
    }
    row.name = name;
    Require(connection->Execute("UPDATE part SET name = ?, sum = ? WHERE id = ?", name,
                                PartSum(connection->Salt(), row), row.id),
            connection->Problem());
}

void LibraryShop::ForgeFolder(const QString& path)
{
    const QString name = path.mid(path.lastIndexOf(u'\\') + 1);
    if (InDatabase()) {
        RunInDatabase("UPDATE folder SET name = $q$" + ToUtf8(name) + "$q$, path = $q$" + ToUtf8(path) +
                      "$q$ WHERE id = 2");
        return;
    }
    const auto connection = Forger();
    Require(connection->Execute("UPDATE folder SET name = ?, path = ?, sum = ? WHERE id = 2", name, path,
                                FolderSum(connection->Salt(), 2, root_folder, ToUtf8(name), ToUtf8(path))),
            connection->Problem());
}

qint64 LibraryShop::RootOf(const QString& name)
{
    const auto connection = Forger();
    CStatement root(*connection, "SELECT rootpage FROM sqlite_schema WHERE name = ?");
    return root.With(name).Next() ? (root.Integer(0) - 1) * page_bytes : 0;
}

void LibraryShop::SwapEntries(const QString& name, qsizetype first, qsizetype second)
{
    std::string bytes = ReadBytes(library_file_.toStdString());
    const auto entries = bytes.begin() + RootOf(name) + 8; // behind the head of a page without others below
    std::swap_ranges(entries + 2 * first, entries + 2 * first + 2, entries + 2 * second);
    WriteBytes(library_file_.toStdString(), bytes);
}

std::string LibraryShop::All(IPartLibrary& library, const QString& path) // NOLINT(misc-no-recursion)
{
    const auto folder = library.FindFolder(path);
    const auto parts = library.PartsBehind(folder ? folder->id : 0, {}, 100);
    const auto inside = library.Folders(path);
    if (!folder || !parts || !inside || library.FindFolder(folder->id)->path != path) {
        ADD_FAILURE() << path.toStdString() << ": " << ProblemText(library.Problem());
        return "?";
    }
    std::string told = "[" + ToUtf8(path) + "]";
    for (const PartRow& part : *parts) {
        const auto files = library.Files(std::array{part.id});
        EXPECT_TRUE(files && library.FindPart(path, part.name)->id == part.id) << part.name.toStdString();
        told += ToUtf8(part.name + u'=' + part.material) + std::to_string(files ? files->size() : 0);
        told += (part.thickness != 0 ? "/" + std::to_string(part.thickness) : "") + " ";
    }
    for (const FolderRow& row : *inside) {
        told += All(library, row.path);
    }
    return told;
}

std::string LibraryShop::Check() const
{
    LibraryProblem problem;
    const auto check = libraries_.At(u"SRV1"_s)->Check({}, problem);
    return check ? check->findings.join(u'\n').toStdString() : ProblemText(problem);
}

} // namespace partkeep
