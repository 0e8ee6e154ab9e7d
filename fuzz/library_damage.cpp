// Damaged and hostile part libraries, one process each: library_damage COUNT [FIRST] [KIND]. File number n is always
// the same file. In every process the library is checked, listed, worked by a browser session as the component does
// it; some are made anew and imported into, and to some a command of the tool is given. A fault is a crash, a process
// that takes too long, a file outside the target folder, or an answer given as good that is not what was stored. KIND
// is bits, pages, cut or rows; none takes them by turns. At the end it tells how many could be opened and how many the
// check called sound, by kind.
#include "fuzz/library_forger.h"
#include "partlibrary/library/library_text.h"
#include "partlibrary/library/library_walk.h"
#include "partlibrary/session/browser_session.h"
#include "partlibrary/sqlite/library_check.h"
#include "partlibrary/sqlite/schema.h"
#include "partlibrary/sqlite/sqlite_library.h"
#include "partlibrary/sqlite/sqlite_writer.h"
#include "partlibrary/tool/commands.h"
#include "platform/files.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <malloc.h>
#include <map>
#include <random>
#include <set>
#include <sstream>
#include <string>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace partkeep {
namespace {

namespace fs = std::filesystem;

constexpr int parts = 12;
constexpr std::size_t most_parts = 1000; // that damage can make of them
constexpr std::size_t most_values = 8;
constexpr unsigned most_seconds = 20; // of a whole process, on a machine that is busy
constexpr rlim_t most_processor_seconds = 2;

// What a process ends with: these two together, or one fault.
enum Result { Opened = 1, Sound = 2, Wrong = 10, Escaped = 11 };

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
    const int bytes = number % 4 == 1 ? number * 20000 : 100 + number; // some of several pieces
    return {bytes, static_cast<char>('a' + number % 20 + static_cast<int>(slot))};
}

std::string ReadAll(const fs::path& path)
{
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
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

// In place: a copy in this process's memory would be copied once more with each process that begins.
void Damage(const fs::path& file, const std::string& kind, std::mt19937& random)
{
    constexpr std::size_t page = std::size_t{page_bytes};
    const auto size = static_cast<std::size_t>(fs::file_size(file));
    std::fstream bytes(file, std::ios::binary | std::ios::in | std::ios::out);
    const auto any_page = [&] { return static_cast<std::streamoff>(random() % (size / page) * page); };
    if (kind == "bits") {
        for (unsigned count = 1 + random() % 8; count > 0; --count) {
            const auto at =
                random() % 2 == 0 ? static_cast<std::size_t>(any_page()) + random() % 2048 : random() % size;
            bytes.seekg(static_cast<std::streamoff>(at));
            const int changed = bytes.get() ^ (1 << random() % 8);
            bytes.seekp(static_cast<std::streamoff>(at));
            bytes.put(static_cast<char>(changed));
        }
    } else if (kind == "pages") {
        std::string other(page, '\0');
        const auto to = any_page();
        if (random() % 2 == 0) {
            bytes.seekg(any_page()).read(other.data(), page_bytes);
        }
        bytes.seekp(to).write(other.data(), page_bytes);
    } else if (kind == "cut") {
        fs::resize_file(file, random() % size);
    }
}

// In the child: the result is its exit code.
class CLook {
public:
    CLook(const fs::path& place, bool rows, int number) : place_(place), rows_(rows), number_(number) {}

    int All()
    {
        const QString file = FromUtf8((place_ / "SRV1.kpl").string());
        LibraryProblem problem;
        const auto check = CheckLibrary(file, {}, problem);
        const bool sound = check && check->findings.isEmpty();
        const auto library = CSqliteLibrary::Open(file, problem);
        if (library != nullptr) {
            Tree(*library, {}, 0);
            WholeServer(*library);
        }
        Session();
        bool bad = (wrong_ && (!rows_ || sound)) || (sound && missing_);
        wrong_ = false;
        if (number_ % 4 == 0) {
            Change(file);
        } else {
            Command(file, sound);
        }
        bad = bad || wrong_;
        return Outside() ? Escaped : bad ? Wrong : (library != nullptr ? Opened : 0) | (sound ? Sound : 0);
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
            missing_ = missing_ || list->Failed() || list->Count() != folder->parts;
            for (const PartRow& row : list->Rows(0, 1000)) {
                if (!row.name.isEmpty()) {
                    Compare(row);
                }
            }
        }
        for (const FolderRow& row : *inner) {
            Tree(library, row.path, depth + 1);
        }
    }

    // Lists of all folders, the values of their columns, and all parts by name: none may show a part twice, or go on.
    void WholeServer(CSqliteLibrary& library)
    {
        for (const char16_t* search : {u"", u"p1", u"note"}) {
            PartListView view{all_folders, -1, FromWide(search)};
            const auto values = library.Values(view, PartColumn::Material, most_values);
            wrong_ = wrong_ || (values && values->size() > most_values);
            CheckList(library, view);
            if (values && !values->empty()) {
                view.only[PartColumn::Material] = values->front();
                CheckList(library, view);
            }
        }
        std::set<PartId> seen;
        for (const FolderRow& folder : AllFolders(library).value_or(std::vector<FolderRow>())) {
            ForEachPart(library, folder.id, [&](const PartRow& row) {
                Compare(row);
                wrong_ = wrong_ || !seen.insert(row.id).second;
                return seen.size() < most_parts;
            });
        }
        wrong_ = wrong_ || seen.size() >= most_parts;
    }
    void CheckList(CSqliteLibrary& library, const PartListView& view)
    {
        const auto list = library.List(view, parts, nullptr);
        list->Finish();
        std::set<PartId> seen;
        for (const PartRow& row : list->Rows(0, most_parts)) {
            row.name.isEmpty() ? void() : Compare(row);
            wrong_ = wrong_ || !seen.insert(row.id).second;
        }
    }

    void Session()
    {
        CBrowserSession session{CLibraryFolder(FromUtf8(place_.string()))};
        ServerTable table{};
        std::array<std::int16_t, view_state_values> view{};
        std::array<char, image_block_bytes> image{};
        session.SetServerList(table);
        session.SetTargetFolder(CorePath((place_ / "out").string()));
        session.SetDataKind(-1);
        session.SetCurrentServer(u"SRV1");
        session.OpenFolderSelection();
        session.SetDisplayUnit(1);
        for (const QString& folder : folders) {
            session.SetCurrentFolder(ToWide(folder));
            session.Go(QStringLiteral("SRV1"), folder);
            session.SearchFor(QStringLiteral("p1"));
            session.SearchFor({});
            session.SortBy(PartColumn::Comment, true);
            session.SetPartFilter(2);
            session.SetPartFilter(-1);
            session.SelectAllParts(1);
            for (std::int16_t part = 0; part < session.GetSelectedPartCount() && part < 3; ++part) {
                static_cast<void>(session.GetSelectedPart(part));
            }
            session.GetPreviewFileTitle();
            session.ReadPartImage(image);
            session.RefreshPartList();
            session.SelectParts({PartName(1), PartName(2)});
            session.GetViewState(view);
            session.SetViewState(view);
            static_cast<void>(session.Folders(QStringLiteral("SRV1"), folder));
        }
        session.SelectNextServer();
        session.GetServerList(table);
        Copies(session);
        session.DisconnectServer();
        session.ConnectServer(u"SRV1");
        session.Refresh();
    }

    void Copies(CBrowserSession& session)
    {
        for (int number = number_ % 2; number < parts; number += 2) {
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

    // Keys made anew and a part put, where a change is not refused.
    static void Change(const QString& file)
    {
        LibraryProblem problem;
        const auto writer = CSqliteWriter::Open(file, problem);
        if (writer == nullptr || !writer->Rebuild() || !writer->Begin()) {
            return;
        }
        const auto folder = writer->MakeFolder(folders[1]);
        const auto part = folder ? writer->PutPart(*folder, PartName(1), {}) : std::nullopt;
        if (part && writer->PutFile(*part, FileSlot::Iga, ContentOf(1, FileSlot::Iga))) {
            writer->RemovePart(folders[1], PartName(4));
        }
        writer->Commit();
        writer->Rollback();
    }

    // What was sound stays so, and what has been repaired is.
    void Command(const QString& file, bool sound)
    {
        const std::string out = (place_ / "out/made").string();
        const std::vector<std::string> commands[] = {
            {"repair"},
            {"repair", "--dry-run"},
            {"check", "--rebuild"},
            {"rename", "A/", "C"},
            {"rename", "A/B/", "D"},
            {"rename", "A/P1", "P99"},
            {"move", "**/P*", "--to", "M"},
            {"move", "A/B/", "--to", "M"},
            {"set", "**", "--material", "X"},
            {"remove", "**/P1*"},
            {"remove", "A/"},
            {"import", out + "/in"},
            {"extract", out + "/all"},
            {"extract", out + "/some", "--folder", "A"},
            {"copy", out + "/copy.kpl"},
            {"backup", out + "/backup.kpl"},
            {"diff", (place_.parent_path() / "sound.kpl").string()},
            {"list", "--names"},
        };
        fs::create_directories(out + "/in/A");
        std::ofstream(out + "/in/A/P1.iga") << "new";
        std::vector<std::string> words = commands[static_cast<std::size_t>(number_) % std::size(commands)];
        words.insert(words.begin() + 1, ToUtf8(file));
        words.insert(words.begin(), "partkeep-library");
        std::vector<const char*> arguments;
        std::transform(words.begin(), words.end(), std::back_inserter(arguments),
                       [](const auto& word) { return word.c_str(); });
        std::ostringstream told;
        const int end = RunLibraryTool(static_cast<int>(arguments.size()), arguments.data(), {told, told});
        const bool repaired = words[1] == "repair" && words.size() == 3 && end <= static_cast<int>(ToolEnd::Found);
        LibraryProblem problem;
        const auto check = CheckLibrary(file, {}, problem);
        wrong_ = wrong_ || ((sound || repaired) && (!check || !check->findings.isEmpty()));
    }

    [[nodiscard]] bool Outside() const
    {
        const std::set<std::string> known{"SRV1.kpl", "SRV1.kpl-journal", "SRV1.kpl.damaged-1", "out"};
        const auto ours = [&known](const auto& entry) { return known.contains(entry.path().filename().string()); };
        return !std::all_of(fs::directory_iterator(place_), fs::directory_iterator(), ours) || fs::exists("/tmp/up") ||
               fs::exists(place_.parent_path() / "up");
    }

    fs::path place_;
    bool rows_;
    int number_;
    bool wrong_ = false;
    bool missing_ = false; // a list does not show what its folder counts
};

void Prepare(const fs::path& place, const fs::path& sound)
{
    fs::remove_all(place);
    fs::create_directories(place / "out");
    fs::copy_file(sound, place / "SRV1.kpl");
}

int Run(const fs::path& place, const fs::path& sound, long number, const std::string& kind)
{
    std::mt19937 random(static_cast<unsigned>(number));
    Prepare(place, sound);
    Damage(place / "SRV1.kpl", kind, random);
    const pid_t child = fork();
    if (child == 0) {
        const rlimit limit{most_processor_seconds, most_processor_seconds};
        setrlimit(RLIMIT_CPU, &limit);
        alarm(most_seconds);
        const bool rows = kind == "rows";
        if (rows) {
            ForgeRows(FromUtf8((place / "SRV1.kpl").string()), parts, random);
        }
        _exit(CLook(place, rows, static_cast<int>(number / 4)).All());
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
    mallopt(M_TRIM_THRESHOLD, 64 << 20); // each page that is given back and taken again is a fault more
    const long count = argc > 1 ? std::atol(argv[1]) : 1000;
    const long first = argc > 2 ? std::atol(argv[2]) : 0;
    const std::array<std::string, 4> kinds{"bits", "pages", "cut", "rows"};
    const fs::path memory = fs::exists("/dev/shm") ? fs::path("/dev/shm") : fs::temp_directory_path();
    const fs::path base = memory / ("partkeep-damage-" + std::to_string(getpid()));
    fs::create_directories(base);
    MakeLibrary(FromUtf8((base / "sound.kpl").string()));
    // What is loaded and bound once here is not done in each process anew.
    if (Prepare(base / "place", base / "sound.kpl"); CLook(base / "place", false, 1).All() != (Opened | Sound)) {
        std::cerr << "the library without damage is not sound\n";
        return 2;
    }
    long faults = 0;
    std::map<std::string, std::array<long, 3>> seen; // by kind: all, opened, sound
    for (long number = first; number < first + count; ++number) {
        const std::string kind = argc > 3 ? argv[3] : kinds[static_cast<std::size_t>(number) % kinds.size()];
        const int status = Run(base / "place", base / "sound.kpl", number, kind);
        const int result = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
        const bool fault = result < 0 || result > (Opened | Sound);
        auto& of_kind = seen[kind];
        of_kind = {of_kind[0] + 1, of_kind[1] + (fault ? 0 : result & 1), of_kind[2] + (fault ? 0 : result / 2)};
        faults += fault ? 1 : 0;
        if (fault) {
            std::cerr << "file " << number << " (" << kind << "): "
                      << (result < 0 ? "signal " + std::to_string(WTERMSIG(status))
                                     : "result " + std::to_string(result))
                      << std::endl;
        }
    }
    fs::remove_all(base);
    for (const auto& [kind, numbers] : seen) {
        std::cout << kind << ": " << numbers[0] << " files, " << numbers[1] << " opened, " << numbers[2] << " sound\n";
    }
    std::cout << count << " files, " << faults << " faults\n";
    return faults == 0 ? 0 : 1;
}
