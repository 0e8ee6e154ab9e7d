// Damaged and hostile part libraries, one process each: library_damage COUNT [FIRST] [KIND]. File number n is always
// the same file. In every process the library is checked, listed and worked by a browser session as the component
// does it. A fault is a crash, a process that takes too long, a file outside the target folder, or an answer given as
// good that is not what was stored. KIND is bits, pages, cut or rows; none takes them by turns.
#include "partlibrary/library/library_text.h"
#include "partlibrary/session/browser_session.h"
#include "partlibrary/sqlite/library_check.h"
#include "partlibrary/sqlite/library_rows.h"
#include "partlibrary/sqlite/schema.h"
#include "partlibrary/sqlite/sqlite_library.h"
#include "partlibrary/sqlite/sqlite_writer.h"
#include "platform/files.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <random>
#include <string>
#include <sys/wait.h>
#include <unistd.h>

namespace partkeep {
namespace {

namespace fs = std::filesystem;

constexpr int parts = 24;
constexpr unsigned most_seconds = 10; // of a whole process, on a machine that is busy

const std::array<QString, 3> folders{QString(), QStringLiteral("A"), QStringLiteral("A\\B")};

QString PartName(int number)
{
    return QStringLiteral("P%1").arg(number);
}

PartAttributes AttributesOf(int number)
{
    return {number * 100, QStringLiteral("M%1").arg(number % 3), QStringLiteral("EM"),
            QStringLiteral("note %1").arg(number)};
}

QByteArray ContentOf(int number, FileSlot slot)
{
    return QByteArray(100 + number * 9000, static_cast<char>('a' + number % 20 + static_cast<int>(slot)));
}

std::string ReadAll(const fs::path& path)
{
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

void WriteAll(const fs::path& path, const std::string& bytes)
{
    std::ofstream(path, std::ios::binary) << bytes;
}

void MakeLibrary(const QString& file)
{
    LibraryProblem problem;
    bool done = CSqliteWriter::Create(file, problem);
    const auto writer = CSqliteWriter::Open(file, problem);
    done = done && writer != nullptr && writer->Begin();
    for (int i = 0; done && i < parts; ++i) {
        const auto folder = writer->MakeFolder(folders[static_cast<std::size_t>(i) % folders.size()]);
        const auto part = writer->PutPart(*folder, PartName(i), AttributesOf(i));
        done = writer->PutFile(*part, FileSlot::Iga, ContentOf(i, FileSlot::Iga)) &&
               writer->PutFile(*part, FileSlot::Ncd, ContentOf(i, FileSlot::Ncd));
    }
    if (!done || !writer->Commit()) {
        std::cerr << ProblemText(problem) << '\n';
        std::exit(2);
    }
}

// What a stranger may write into rows, with sums that are right.
void ForgeRows(const QString& file, std::mt19937& random)
{
    static const std::array<QString, 12> names{
        QStringLiteral("..\\..\\up"), QStringLiteral("../up"),   QStringLiteral("/tmp/up"),
        QStringLiteral(".."),         QStringLiteral("a\nb"),    QStringLiteral("nul"),
        QStringLiteral("x "),         QString(5000, u'n'),       QString(),
        QStringLiteral("C:x"),        QStringLiteral("A\\B\\C"), QStringLiteral("\x1B[2J")};
    const auto name = [&] { return names[random() % names.size()]; };
    LibraryProblem problem;
    const auto connection = CConnection::Open(file, OpenMode::Write, problem);
    for (unsigned count = 1 + random() % 4; connection != nullptr && count > 0; --count) {
        PartRow row{static_cast<qint64>(1 + random() % parts),
                    static_cast<qint64>(1 + random() % 4),
                    static_cast<SlotSet>(random() % 200),
                    static_cast<std::int32_t>(random()),
                    name(),
                    name(),
                    name(),
                    name()};
        const qint64 folder = 1 + random() % 4;
        const qint64 parent = random() % 5;
        const QString own = name();
        const QString path = random() % 2 == 0 ? own : name();
        switch (random() % 6) {
        case 0:
        case 1:
            connection->Execute(
                "UPDATE OR IGNORE part SET folder = ?, slots = ?, thickness = ?, name = ?, material = ?, "
                "machine = ?, comment = ?, sum = ? WHERE id = ?",
                row.folder, qint64{row.slots}, qint64{row.thickness}, row.name, row.material, row.machine, row.comment,
                PartSum(connection->Salt(), row), row.id);
            break;
        case 2:
        case 3:
            connection->Execute("UPDATE OR IGNORE folder SET parent = ?, name = ?, path = ?, sum = ? WHERE id = ?",
                                parent, own, path,
                                FolderSum(connection->Salt(), folder, parent, ToUtf8(own), ToUtf8(path)), folder);
            break;
        case 4:
            connection->Execute("UPDATE folder SET parts = ? WHERE id = ?",
                                static_cast<qint64>(random()) << (random() % 32), folder);
            break;
        default:
            connection->Execute("UPDATE OR IGNORE part SET id = ? WHERE id = ?", qint64{1} << (random() % 63), row.id);
        }
    }
}

void Damage(const fs::path& file, const std::string& sound, const std::string& kind, std::mt19937& random)
{
    std::string bytes = sound;
    const std::size_t page = std::size_t{page_bytes};
    const auto any_page = [&] { return random() % (bytes.size() / page) * page; };
    if (kind == "bits") {
        for (unsigned count = 1 + random() % 8; count > 0; --count) {
            const std::size_t at = random() % 2 == 0 ? any_page() + random() % 2048 : random() % bytes.size();
            bytes[at] = static_cast<char>(bytes[at] ^ (1 << random() % 8));
        }
    } else if (kind == "pages") {
        const std::size_t to = any_page();
        random() % 2 == 0 ? bytes.replace(to, page, sound, any_page(), page) : bytes.replace(to, page, page, '\0');
    } else if (kind == "cut") {
        bytes.resize(random() % bytes.size());
    }
    WriteAll(file, bytes);
    if (kind == "rows") {
        ForgeRows(FromUtf8(file.string()), random);
    }
}

// In the child: the result is its exit code.
class CLook {
public:
    CLook(const fs::path& place, bool rows) : place_(place), rows_(rows) {}

    int All()
    {
        const QString file = FromUtf8((place_ / "SRV1.kpl").string());
        LibraryProblem problem;
        const auto check = CheckLibrary(file, problem);
        const bool sound = check && check->findings.isEmpty();
        if (const auto library = CSqliteLibrary::Open(file, problem)) {
            Tree(*library, {}, 0);
        }
        Session();
        return Outside() ? 11 : wrong_ && (!rows_ || sound) ? 10 : 0;
    }

private:
    void Compare(const PartRow& row)
    {
        const int number = row.name.mid(1).toInt();
        const PartAttributes stored = AttributesOf(number);
        wrong_ = wrong_ || row.name != PartName(number) || row.thickness != stored.thickness ||
                 row.material != stored.material || row.comment != stored.comment;
    }

    void Tree(CSqliteLibrary& library, const QString& path, int depth) // NOLINT(misc-no-recursion)
    {
        wrong_ = wrong_ || depth > 60;
        const auto folder = library.FindFolder(path);
        const auto inner = library.Folders(path);
        if (!folder || !inner || depth > 60) {
            return;
        }
        for (const char16_t* search : {u"", u"note"}) {
            const auto list = library.List({folder->id, -1, FromWide(search)}, folder->parts, nullptr);
            list->Finish();
            for (const PartRow& row : list->Rows(0, 1000)) {
                if (row.name.isEmpty()) {
                    continue;
                }
                Compare(row);
            }
        }
        for (const FolderRow& row : *inner) {
            Tree(library, row.path, depth + 1);
        }
    }

    void Session()
    {
        CBrowserSession session{CLibraryFolder(FromUtf8(place_.string()))};
        session.SetServerList({});
        session.SetTargetFolder(CorePath((place_ / "out").string()));
        session.SetDataKind(-1);
        for (const QString& folder : folders) {
            session.Go(QStringLiteral("SRV1"), folder);
            session.SearchFor(QStringLiteral("p1"));
            session.SearchFor({});
            session.SortBy(PartColumn::Comment, true);
            session.SelectAllParts(1);
            static_cast<void>(session.GetSelectedPart(0));
            static_cast<void>(session.GetSelectedPart(1));
            session.GetPreviewFileTitle();
            session.RefreshPartList();
        }
        for (int number = 0; number < parts; ++number) {
            const QString path = folders[static_cast<std::size_t>(number) % folders.size()] + u'\\' + PartName(number);
            if (const auto row = session.ReadPartAttributes(u"SRV1", ToWide(path))) {
                Compare(*row);
            }
            if (session.CopyPartFiles(u"SRV1", ToWide(path))) {
                for (const FileSlot slot : {FileSlot::Iga, FileSlot::Ncd}) {
                    const fs::path copy = place_ / "out" / ToUtf8(PartName(number) + FromWide(KindOf(slot).extension));
                    wrong_ = wrong_ || (fs::exists(copy) && ReadAll(copy) != ContentOf(number, slot).toStdString());
                }
            }
        }
    }

    [[nodiscard]] bool Outside() const
    {
        const auto count = std::distance(fs::directory_iterator(place_), fs::directory_iterator());
        return count > 2 + (fs::exists(place_ / "SRV1.kpl-journal") ? 1 : 0);
    }

    fs::path place_;
    bool rows_;
    bool wrong_ = false;
};

int Run(const fs::path& place, const std::string& sound, long number, const std::string& kind)
{
    std::mt19937 random(static_cast<unsigned>(number));
    fs::remove_all(place);
    fs::create_directories(place / "out");
    Damage(place / "SRV1.kpl", sound, kind, random);
    const pid_t child = fork();
    if (child == 0) {
        alarm(most_seconds);
        _exit(CLook(place, kind == "rows").All());
    }
    int status = 0;
    waitpid(child, &status, 0);
    return status;
}

} // namespace
} // namespace partkeep

int main(int argc, char** argv)
{
    using namespace partkeep;
    const long count = argc > 1 ? std::atol(argv[1]) : 1000;
    const long first = argc > 2 ? std::atol(argv[2]) : 0;
    const std::array<std::string, 4> kinds{"bits", "pages", "cut", "rows"};
    const fs::path base = fs::temp_directory_path() / ("partkeep-damage-" + std::to_string(getpid()));
    fs::create_directories(base);
    MakeLibrary(FromUtf8((base / "sound.kpl").string()));
    const std::string sound = ReadAll(base / "sound.kpl");
    long faults = 0;
    for (long number = first; number < first + count; ++number) {
        const std::string kind = argc > 3 ? argv[3] : kinds[static_cast<std::size_t>(number) % kinds.size()];
        const int status = Run(base / "place", sound, number, kind);
        if (status != 0) {
            ++faults;
            std::cerr << "file " << number << " (" << kind << "): "
                      << (WIFSIGNALED(status) ? "signal " + std::to_string(WTERMSIG(status))
                                              : "result " + std::to_string(WEXITSTATUS(status)))
                      << '\n';
        }
    }
    fs::remove_all(base);
    std::cout << count << " files, " << faults << " faults\n";
    return faults == 0 ? 0 : 1;
}
