#include "samples/sample_library.h"

#include "partlibrary/library/library_text.h"
#include "partlibrary/session/library_folder.h"
#include "partlibrary/sqlite/sqlite_writer.h"
#include "samples/sample_pictures.h"

#include <QFile>

#include <array>
#include <cstdint>
#include <initializer_list>
#include <random>

namespace partkeep {

namespace {

constexpr SlotSet Slots(std::initializer_list<FileSlot> list)
{
    SlotSet slots = 0;
    for (const FileSlot slot : list) {
        slots |= SetOf(slot);
    }
    return slots;
}

using enum FileSlot;

// What the parts of a folder have, in turn: everything, and each of the things that can be missing.
constexpr std::array slot_cycle{
    Slots({Iga, Sy5, Ncd, Flat, Bent}),
    Slots({Bmf, Sy5, Flat, Bent}),
    Slots({Iga, Bmf, Sy5, Ncd, Flat, Bent, Png}),
    Slots({Iga, Ncd, Png}),
    Slots({Iga, Sy5, Flat}),
    Slots({Bmf, Bent}),
    Slots({Ncd, Flat}),
    Slots({Iga, Sy5, Ncd}),
};

struct SampleFolder {
    const char16_t* server;
    const char16_t* folder;
    const char16_t* name; // a number follows
    int count;
    SampleShape shape;
    std::int32_t thickness; // 1/10000
    const char16_t* material;
    const char16_t* machine;
    const char16_t* comment; // a number follows
};

constexpr std::array sample_folders{
    SampleFolder{u"PLATES", u"Brackets\\L", u"BRK-", 10, SampleShape::Bracket, 15000, u"SPCC", u"TURRET-30",
                 u"L bracket, size "},
    SampleFolder{u"PLATES", u"Brackets\\U", u"CH-", 8, SampleShape::Channel, 20000, u"SPCC", u"TURRET-30",
                 u"U channel, size "},
    SampleFolder{u"PLATES", u"Panels\\2008\\Steel", u"PNL-", 12, SampleShape::Box, 12000, u"SECC", u"COMBI-15",
                 u"Front panel with four flanges, size "},
    SampleFolder{u"PLATES", u"Panels\\2008\\Aluminium", u"AL-", 6, SampleShape::Plate, 30000, u"A5052", u"LASER-40",
                 u"Blank, laser cut, size "},
    SampleFolder{u"板金部品", u"筐体\\カバー", u"カバー", 8, SampleShape::Box, 16000, u"SUS304", u"複合機-15",
                 u"点検用カバー 寸法"},
    SampleFolder{u"板金部品", u"筐体\\底板", u"底板", 6, SampleShape::Plate, 23000, u"SPHC", u"レーザー-40",
                 u"底板 四隅R付 寸法"},
    SampleFolder{u"板金部品", u"取付金具", u"金具-", 8, SampleShape::Bracket, 15000, u"SPCC", u"タレット-30",
                 u"取付金具 左右対称 寸法"},
    SampleFolder{u"钣金件", u"机箱\\面板", u"面板", 8, SampleShape::Box, 12000, u"冷轧钢板", u"复合机-15",
                 u"前面板 四边折弯 规格"},
    SampleFolder{u"钣金件", u"支架", u"支架-", 8, SampleShape::Channel, 20000, u"镀锌钢板", u"转塔冲床-30",
                 u"安装支架 规格"},
};

SamplePart MeasuresOf(const SampleFolder& folder, int number)
{
    SamplePart part;
    part.shape = folder.shape;
    part.length = 90 + 14 * number;
    part.width = 40 + 9 * ((number * 3) % 8);
    part.flange = 14 + 4 * (number % 4);
    part.holes = 1 + number % 4;
    return part;
}

// Stands in for a CAD file: a readable head and bytes of a size as such files have, from a few KB to about 60.
QByteArray MadeUpContent(const QString& name, FileSlot slot, int number)
{
    QByteArray content = "SAMPLE " + name.toUtf8() + FromWide(KindOf(slot).extension).toUtf8() + "\r\n";
    std::minstd_rand random(static_cast<unsigned>(number * 8 + static_cast<int>(slot) + 1));
    const int lines = 100 + number * 97 % 1500;
    for (int i = 0; i < lines; ++i) {
        content += "N" + QByteArray::number(i * 10) + " X" + QByteArray::number(static_cast<int>(random() % 100000)) +
                   " Y" + QByteArray::number(static_cast<int>(random() % 100000)) + " T" +
                   QByteArray::number(static_cast<int>(random() % 30)) + "\r\n";
    }
    return content;
}

QByteArray ContentOf(const SampleFolder& folder, const QString& name, FileSlot slot, int number)
{
    switch (slot) {
    case Flat:
        return DrawFlatPattern(MeasuresOf(folder, number));
    case Bent:
        return DrawBentView(MeasuresOf(folder, number));
    case Png:
        return DrawLargePicture(MeasuresOf(folder, number));
    default:
        return MadeUpContent(name, slot, number);
    }
}

bool PutSamplePart(CSqliteWriter& writer, qint64 folder_id, const SampleFolder& folder, int number)
{
    const QString digits = QString::number(number);
    const QString name = FromWide(folder.name) + digits;
    const PartAttributes attributes{folder.thickness, FromWide(folder.material), FromWide(folder.machine),
                                    FromWide(folder.comment) + digits};
    const auto part = writer.PutPart(folder_id, name, attributes);
    if (!part) {
        return false;
    }
    const SlotSet slots = slot_cycle[static_cast<std::size_t>(number - 1) % slot_cycle.size()];
    for (const FileKind& kind : file_kinds) {
        if ((slots & SetOf(kind.slot)) != 0 &&
            !writer.PutFile(*part, kind.slot, ContentOf(folder, name, kind.slot, number))) {
            return false;
        }
    }
    return true;
}

bool FillLibrary(CSqliteWriter& writer, const QString& server)
{
    if (!writer.Begin()) {
        return false;
    }
    for (const SampleFolder& folder : sample_folders) {
        if (server != FromWide(folder.server)) {
            continue;
        }
        const auto id = writer.MakeFolder(FromWide(folder.folder));
        for (int number = 1; number <= folder.count; ++number) {
            if (!id || !PutSamplePart(writer, *id, folder, number)) {
                return false;
            }
        }
    }
    return writer.Commit();
}

bool MakeLibrary(const QString& file, const QString& server, LibraryProblem& problem)
{
    if (!CSqliteWriter::Create(file, problem)) {
        return false;
    }
    auto writer = CSqliteWriter::Open(file, problem);
    if (writer != nullptr && FillLibrary(*writer, server)) {
        return true;
    }
    if (writer != nullptr) {
        problem = writer->Problem();
    }
    writer.reset();
    QFile::remove(file);
    return false;
}

} // namespace

bool MakeSampleLibraries(const QString& folder, bool replace, QStringList& made, LibraryProblem& problem)
{
    QStringList servers;
    for (const SampleFolder& row : sample_folders) {
        servers += FromWide(row.server);
    }
    servers.removeDuplicates();
    for (const QString& server : servers) {
        const QString file = CLibraryFolder(folder).FileOf(server);
        if (replace) {
            QFile::remove(file);
        }
        if (!MakeLibrary(file, server, problem)) {
            return false;
        }
        made += file;
    }
    return true;
}

} // namespace partkeep
