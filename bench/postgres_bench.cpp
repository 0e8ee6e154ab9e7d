// Part libraries in a database beside files and beside `cp -r`, everything by turns in one run; see postgres_figures.
// Medians in milliseconds. Arguments: how many parts the large library has (0: only copies), how many clients work at
// once, and the services that parts are copied from, where not from all of them.
#include "partlibrary/import/library_import.h"
#include "partlibrary/postgres/pg_admin.h"
#include "partlibrary/postgres/pg_connection.h"
#include "partlibrary/session/browser_session.h"
#include "partlibrary/sqlite/sqlite_admin.h"
#include "platform/files.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iostream>
#include <map>
#include <mutex>
#include <random>
#include <span>
#include <string>
#include <thread>
#include <vector>

namespace partkeep {
namespace {

namespace fs = std::filesystem;
using std::chrono::steady_clock;

const std::array<QString, 3> services{QStringLiteral("partkeep"), QStringLiteral("line1"), QStringLiteral("line20")};
constexpr std::int16_t every_machine = 15;
const fs::path folder = fs::temp_directory_path() / ("partkeep-bench-" + std::to_string(std::random_device{}()));

void Require(bool done, const LibraryProblem& problem)
{
    if (!done) {
        std::cerr << ProblemText(problem) << std::endl;
        std::exit(1);
    }
}

double Milliseconds(const std::function<void()>& action)
{
    const auto start = steady_clock::now();
    action();
    return std::chrono::duration<double, std::milli>(steady_clock::now() - start).count();
}

double At(std::vector<double> values, double part)
{
    std::sort(values.begin(), values.end());
    return values.empty() ? 0 : values[static_cast<std::size_t>(part * static_cast<double>(values.size() - 1))];
}

void Tell(const std::string& what, const std::vector<double>& values)
{
    std::printf("%-44s %9.1f   (least %.1f, most %.1f)\n", what.c_str(), At(values, 0.5), At(values, 0), At(values, 1));
    std::fflush(stdout);
}

fs::path MakeSource(int parts, std::size_t least, std::size_t most)
{
    fs::remove_all(folder / "source");
    fs::create_directories(folder / "source");
    std::mt19937_64 random(1);
    std::uniform_int_distribution<std::size_t> size(least, most);
    std::vector<std::uint64_t> content(most / 8);
    for (int part = 0; part < parts; ++part) {
        std::generate(content.begin(), content.end(), std::ref(random));
        for (const char* ending : {".iga", ".bmf", ".SY5", ".NCD"}) {
            std::ofstream file(folder / "source" / ("P" + std::to_string(part) + ending), std::ios::binary);
            file.write(reinterpret_cast<const char*>(content.data()), static_cast<std::streamsize>(size(random)));
        }
    }
    return folder / "source";
}

std::unique_ptr<ILibraryAdmin> Place(const QString& service, const QString& server)
{
    if (service.isEmpty()) {
        return std::make_unique<CSqliteAdmin>(
            QString::fromStdString((folder / (server.toStdString() + ".kpl")).string()));
    }
    return std::make_unique<CPgAdmin>(PgPlace{service, server});
}

void Import(ILibraryAdmin& library, const fs::path& source)
{
    LibraryProblem problem;
    ImportReport report;
    Require(library.Create(false, problem), problem);
    const auto writer = library.Edit(problem);
    Require(writer != nullptr &&
                ImportFolder(*writer, {QString::fromStdString(source.string()), {}, {}}, report, problem),
            problem);
}

CLibraryFolder Places(const QString& service, qint64 kept_bytes = 0)
{
    return service.isEmpty() ? CLibraryFolder(QString::fromStdString(folder.string()))
                             : CLibraryFolder({}, {service}, {(folder / "cache").string(), kept_bytes});
}

fs::path Target()
{
    static int count = 0;
    const fs::path made = folder / ("target" + std::to_string(++count));
    fs::create_directories(made);
    return made;
}

// As a Load asks with the filter MARVEN: name, attributes, the part's own files, the machine's, one part after the
// other.
void CopySelection(CBrowserSession& session, const QString& server)
{
    session.SelectAllParts(1);
    for (std::int16_t i = 0; i < session.GetSelectedPartCount(); ++i) {
        const auto part = session.GetSelectedPart(i);
        Require(part.has_value(), session.Problem());
        const std::u16string path = u"\\" + part->name.toStdU16String();
        Require(session.ReadPartAttributes(server.toStdU16String(), path).has_value(), session.Problem());
        for (const std::int16_t kind : {part_data_kind, every_machine}) {
            session.SetDataKind(kind);
            Require(session.CopyPartFiles(server.toStdU16String(), path), session.Problem());
        }
    }
}

double CopyOf(const QString& service, const QString& server, qint64 kept_bytes)
{
    const fs::path target = Target();
    CBrowserSession session{Places(service, kept_bytes)};
    Require(session.Go(server, {}), session.Problem());
    session.SetTargetFolder(CorePath(target.string()));
    session.SetPartFilter(every_machine);
    const double took = Milliseconds([&] { CopySelection(session, server); });
    fs::remove_all(target);
    return took;
}

// All contents as one answer: as fast as the line brings them.
double Fetch(const QString& service, const QString& server)
{
    LibraryProblem problem;
    const auto connection = CPgConnection::Open({service, server}, PgUse::Browse, problem);
    Require(connection != nullptr, problem);
    return Milliseconds([&] {
        CPgResult row;
        auto next = connection->SendForFirst(CSql("SELECT data FROM piece"), row);
        while (next == CPgConnection::Next::Row) {
            next = connection->Receive(row);
        }
        Require(next == CPgConnection::Next::End, connection->Problem());
    });
}

double MegabytesOver(const QString& service)
{
    std::ifstream file(std::string(std::getenv("PARTKEEP_POSTGRES")) + '/' + service.toStdString());
    double bytes = 0;
    file >> bytes;
    return bytes / 1e6;
}

void MeasureCopies(std::span<const QString> lines)
{
    constexpr qint64 enough = qint64{1} << 31;
    const fs::path source = MakeSource(256, 10 << 10, 500 << 10);
    const QString server = QStringLiteral("COPY");
    Import(*Place({}, server), source);
    Import(*Place(services[0], server), source);
    std::map<std::string, std::vector<double>> times;
    std::map<std::string, std::vector<double>> megabytes;
    for (int round = 0; round < 7; ++round) {
        const fs::path target = Target();
        times["cp -r"].push_back(Milliseconds(
            [&] { Require(std::system(("cp -r " + source.string() + "/. " + target.string()).c_str()) == 0, {}); }));
        fs::remove_all(target);
        times["file"].push_back(CopyOf({}, server, 0));
        for (const QString& service : lines) {
            const std::string name = service.toStdString();
            times[name].push_back(CopyOf(service, server, 0));
            times[name + ", all as one answer"].push_back(Fetch(service, server));
            fs::remove_all(folder / "cache");
            for (const char* const which : {", kept the first time", ", kept the second time"}) {
                const double before = MegabytesOver(service);
                times[name + which].push_back(CopyOf(service, server, enough));
                megabytes[name + which].push_back(MegabytesOver(service) - before);
            }
        }
    }
    for (const auto& [what, values] : times) {
        Tell("copy 256 parts, 4 files each: " + what, values);
    }
    for (const QString& service : lines) {
        const std::string name = service.toStdString();
        const auto quotient = [&](const std::string& what, const std::string& by) {
            std::vector<double> values(times[what].size());
            std::transform(times[what].begin(), times[what].end(), times[by].begin(), values.begin(), std::divides());
            Tell(what + ", by " + by, values);
        };
        quotient(name + ", kept the first time", name + ", all as one answer");
        quotient(name + ", kept the second time", "cp -r");
    }
    for (const auto& [what, values] : megabytes) {
        Tell("megabytes over the line: " + what, values);
    }
}

void MeasureImports()
{
    const fs::path source = MakeSource(10000, 1 << 10, 10 << 10);
    std::map<std::string, std::vector<double>> times;
    for (int round = 0; round < 3; ++round) {
        for (const QString& service : {QString(), services[0], services[1], services[2]}) {
            const QString server = QStringLiteral("I%1%2").arg(service).arg(round);
            times[service.isEmpty() ? "file" : service.toStdString()].push_back(
                Milliseconds([&] { Import(*Place(service, server), source); }));
        }
    }
    for (const auto& [what, values] : times) {
        Tell("import 10,000 parts, 4 files each: " + what, values);
    }
}

void FillLarge(int parts)
{
    LibraryProblem problem;
    const auto library = Place(services[0], QStringLiteral("LARGE"));
    Require(library->Create(false, problem), problem);
    const auto writer = library->Edit(problem);
    Require(writer != nullptr && writer->Begin(), problem);
    std::mt19937 random(2);
    for (int part = 0; part < parts; ++part) {
        const bool large = part < 10000;
        const auto id =
            writer->MakeFolder(large ? QStringLiteral("Large") : QStringLiteral("Plates\\%1").arg(part / 100));
        const PartAttributes attributes{static_cast<std::int32_t>(random() % 300) * 100, QStringLiteral("SPCC"),
                                        QStringLiteral("TURRET-%1").arg(random() % 30),
                                        QStringLiteral("bracket %1").arg(random() % 10000)};
        Require(id && writer->PutPart(*id, QStringLiteral("BRK-%1").arg(part), attributes), writer->Problem());
    }
    Require(writer->Commit(), writer->Problem());
}

void TellSize()
{
    LibraryProblem problem;
    const auto connection = CPgConnection::Open({services[0], QStringLiteral("LARGE")}, PgUse::Administer, problem);
    Require(connection != nullptr, problem);
    const auto size = connection->Ask(CSql("SELECT sum(pg_total_relation_size(oid))::bigint FROM pg_class "
                                           "WHERE relkind = 'r' AND relnamespace = '\"LARGE\"'::regnamespace"));
    Require(size.has_value(), connection->Problem());
    std::printf("they take %.0f MB with their indexes\n", static_cast<double>(size->Integer(0, 0)) / 1e6);
    std::fflush(stdout);
}

void MeasureLists(int parts)
{
    std::printf("filling %d parts took %.0f ms\n", parts, Milliseconds([&] { FillLarge(parts); }));
    TellSize();
    const struct {
        const char* label;
        QString folder;
        PartListView view;
        bool whole; // to the end, not only the first page
    } rows[] = {
        {"folder of 100", QStringLiteral("Plates\\500"), {}, true},
        {"first 50 of 10,000", QStringLiteral("Large"), {}, false},
        {"first 50 of 10,000 by comment", QStringLiteral("Large"), {0, -1, {}, PartColumn::Comment, true}, false},
        {"10,000 counted", QStringLiteral("Large"), {}, true},
        {"search in 10,000, frequent",
         QStringLiteral("Large"),
         {0, -1, QStringLiteral("br"), PartColumn::Name, false},
         false},
        {"search in 10,000, rare",
         QStringLiteral("Large"),
         {0, -1, QStringLiteral("9988"), PartColumn::Name, false},
         false},
        {"search in all, frequent", {}, {0, -1, QStringLiteral("br"), PartColumn::Name, false}, false},
        {"search in all, rare", {}, {0, -1, QStringLiteral("99881"), PartColumn::Name, false}, false},
        {"search in all, of frequent pairs", {}, {0, -1, QStringLiteral("9988 777"), PartColumn::Name, false}, false},
        {"search in all, none", {}, {0, -1, QStringLiteral("qzx"), PartColumn::Name, false}, false},
    };
    for (const auto& row : rows) {
        std::map<QString, std::vector<double>> times;
        for (int round = 0; round < 9; ++round) {
            for (const QString& service : services) {
                CBrowserSession session{Places(service)};
                Require(session.Go(QStringLiteral("LARGE"), row.folder), session.Problem());
                PartListView view = row.view;
                view.folder = row.folder.isEmpty() ? all_folders : session.CurrentFolder().id;
                times[service].push_back(Milliseconds([&] {
                    const auto list = session.Library()->List(view, session.CurrentFolder().parts, nullptr);
                    while (list->Step() && (row.whole || list->Count() < 50)) {
                    }
                    Require(!list->Failed(), session.Library()->Problem());
                    static_cast<void>(list->Rows(0, 50));
                }));
            }
        }
        for (const QString& service : services) {
            Tell(std::string(row.label) + ": " + service.toStdString(), times[service]);
        }
    }
}

void MeasureClients(int clients)
{
    std::mutex mutex;
    std::vector<double> lists;
    std::vector<double> copies;
    std::vector<std::thread> threads;
    const auto end = steady_clock::now() + std::chrono::seconds(20);
    for (int client = 0; client < clients; ++client) {
        const fs::path target = Target();
        threads.emplace_back([&, client, target] {
            std::mt19937 random(static_cast<unsigned>(client));
            std::this_thread::sleep_for(std::chrono::milliseconds(random() % 1000));
            CBrowserSession large{Places(services[0])};
            CBrowserSession session{Places(services[0])};
            Require(large.Go(QStringLiteral("LARGE"), {}) && session.Go(QStringLiteral("COPY"), {}), session.Problem());
            session.SetTargetFolder(CorePath(target.string()));
            session.SetDataKind(-1);
            while (steady_clock::now() < end) {
                const double list = Milliseconds([&] {
                    Require(large.SetCurrentFolder(
                                (u"Plates\\" + std::u16string(1, static_cast<char16_t>(u'1' + random() % 9)) + u"50")),
                            large.Problem());
                    const auto rows = large.Library()->List(large.ListView(), 100, nullptr);
                    rows->Finish();
                    static_cast<void>(rows->Rows(0, 50));
                });
                std::this_thread::sleep_for(std::chrono::milliseconds(500));
                const std::u16string part = u"\\P" + QString::number(random() % 256).toStdU16String();
                const double copy =
                    Milliseconds([&] { Require(session.CopyPartFiles(u"COPY", part), session.Problem()); });
                std::this_thread::sleep_for(std::chrono::milliseconds(500));
                const std::scoped_lock lock(mutex);
                lists.push_back(list);
                copies.push_back(copy);
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    std::printf(
        "%d clients, half a second between actions: list %.1f ms (95%%: %.1f), a part's copy %.1f ms (95%%: %.1f)\n",
        clients, At(lists, 0.5), At(lists, 0.95), At(copies, 0.5), At(copies, 0.95));
}

} // namespace
} // namespace partkeep

int main(int argc, char** argv)
{
    using namespace partkeep;
    fs::create_directories(folder);
    std::vector<QString> chosen;
    for (int i = 3; i < argc; ++i) {
        chosen.push_back(QString::fromUtf8(argv[i]));
    }
    MeasureCopies(chosen.empty() ? std::span<const QString>(services) : chosen);
    if (const int parts = argc > 1 ? std::atoi(argv[1]) : 1000000; parts > 0) {
        MeasureImports();
        MeasureLists(parts);
        MeasureClients(argc > 2 ? std::atoi(argv[2]) : 100);
    }
    fs::remove_all(folder);
    return 0;
}
