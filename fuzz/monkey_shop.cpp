#include "fuzz/monkey_shop.h"

#include "partlibrary/sqlite/sqlite_writer.h"
#include "tests/partlibrary/library_fixture.h"

#include <array>
#include <cstdlib>
#include <iostream>

namespace partkeep {

namespace fs = std::filesystem;

namespace {

const std::array<const char*, 3> servers{"PLATES", "SHAPES", "板金"};
const std::array<const char*, 4> folders{"", "A", "A\\B", "C"};
constexpr int parts_at_first = 60;
constexpr int parts_in_all = 70;

void Need(bool holds, const char* what)
{
    if (!holds) {
        std::cerr << "the shop has no " << what << "\n";
        std::abort();
    }
}

// Tells its part and its version in every block, so that a mixture or another part's file shows.
std::string Mark(const std::string& server, const std::string& folder, const std::string& name)
{
    return server + "|" + folder + "|" + name + "|";
}
QByteArray ContentOf(const std::string& mark, int version)
{
    const QByteArray block = QByteArray::fromStdString(mark + std::to_string(version)) + ' ';
    return block.repeated(version % 9 == 0 ? 5000 : 1 + version % 7);
}

std::string PartName(int number)
{
    return (number % 5 == 0 ? "金具-" : "P-") + std::to_string(100 + number);
}

} // namespace

CMonkeyShop::CMonkeyShop(const fs::path& place) : place_(place)
{
    fs::create_directories(place);
    for (const char* server : servers) {
        LibraryProblem problem;
        Need(CSqliteWriter::Create(File(server), problem), "library");
        for (int number = 0; number < parts_at_first; ++number) {
            Put(server, folders[static_cast<std::size_t>(number) % folders.size()], number);
        }
    }
}

void CMonkeyShop::Change(unsigned choice)
{
    const char* server = servers[choice % servers.size()];
    const char* folder = folders[choice / 3 % folders.size()];
    const int number = static_cast<int>(choice / 12 % parts_in_all);
    const fs::path away = place_ / "away";
    switch (choice % 7) {
    case 0:
        Write(server, [&](ILibraryWriter& writer) {
            writer.RemovePart(QString::fromUtf8(folder), QString::fromStdString(PartName(number)));
        });
        break;
    case 1:
        if (!fs::exists(away)) {
            fs::rename(File(server).toStdString(), away);
            taken_ = server;
        }
        break;
    case 2:
    case 3:
        GiveBack();
        break;
    default:
        Put(server, folder, number);
    }
}

void CMonkeyShop::GiveBack()
{
    if (fs::exists(place_ / "away")) {
        fs::rename(place_ / "away", File(taken_).toStdString());
    }
}

std::string CMonkeyShop::FaultIn(const std::string& file, const std::string& server, const std::string& folder,
                                 const std::string& name)
{
    const std::string mark = Mark(server, folder, name);
    const std::string bytes = ReadBytes(file);
    if (!bytes.starts_with(mark)) {
        return file + " is of another part";
    }
    const std::string block = bytes.substr(0, bytes.find(' ') + 1);
    const int version = std::atoi(block.substr(mark.size()).c_str());
    return bytes == ContentOf(mark, version).toStdString() ? "" : file + " is not one version, whole";
}

QString CMonkeyShop::File(const char* server) const
{
    return Folder() + u'/' + QString::fromUtf8(server) + u".kpl"_s;
}

void CMonkeyShop::Put(const char* server, const char* folder, int number)
{
    const std::string name = PartName(number);
    const std::string mark = Mark(server, folder, name);
    ++version_;
    Write(server, [&](ILibraryWriter& writer) {
        const auto place = writer.MakeFolder(QString::fromUtf8(folder));
        const PartAttributes attributes{version_, u'M' + QString::number(version_ % 4), {}, {}};
        const auto part = place ? writer.PutPart(*place, QString::fromStdString(name), attributes) : std::nullopt;
        for (const FileSlot slot : {FileSlot::Iga, FileSlot::Sy5, FileSlot::Ncd}) {
            Need(part && writer.PutFile(*part, slot, ContentOf(mark, version_)), "room for a part");
        }
        number % 3 == 0 ? writer.PutFile(*part, FileSlot::Png, SmallPng()) : true;
    });
}

template <class Action>
void CMonkeyShop::Write(const char* server, const Action& action)
{
    LibraryProblem problem;
    const auto writer = CSqliteWriter::Open(File(server), problem);
    if (writer != nullptr && writer->Begin()) { // it may be away
        action(*writer);
        Need(writer->Commit(), "commit");
    }
}

} // namespace partkeep
