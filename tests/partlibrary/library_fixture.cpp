#include "tests/partlibrary/library_fixture.h"

#include <QFile>

#include <cstdlib>
#include <iostream>

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

void PutTestPart(CLibraryWriter& writer, const QString& folder, const QString& name, SlotSet slots,
                 const PartAttributes& attributes)
{
    const auto folder_id = writer.MakeFolder(folder);
    const auto part = folder_id ? writer.PutPart(*folder_id, name, attributes) : std::nullopt;
    Require(part.has_value(), writer.Problem());
    for (const FileKind& kind : file_kinds) {
        if ((slots & SetOf(kind.slot)) == 0) {
            continue;
        }
        QByteArray content = (name + QString::fromUtf16(kind.extension)).toUtf8();
        if (!kind.tag.empty()) {
            content = kind.slot == FileSlot::Png ? SmallPng() : SmallBitmap();
        }
        Require(writer.PutFile(*part, kind.slot, content), writer.Problem());
    }
}

void CTestLibraries::Fill(const QString& server, const std::function<void(CLibraryWriter&)>& fill)
{
    LibraryProblem problem;
    const QString file = FileOf(server);
    Require(QFile::exists(file) || CLibraryWriter::Create(file, problem), problem);
    const auto writer = CLibraryWriter::Open(file, problem);
    Require(writer != nullptr, problem);
    Require(writer->Begin(), writer->Problem());
    fill(*writer);
    Require(writer->Commit(), writer->Problem());
}

void CTestLibraries::MakeShop()
{
    using enum FileSlot;
    Fill(QStringLiteral("SRV1"), [](CLibraryWriter& writer) {
        const QString folder = QStringLiteral("Plates\\2008");
        const SlotSet everything = SlotsOfMask(-1) | SetOf(Flat) | SetOf(Bent) | SetOf(Png);
        PutTestPart(writer, QStringLiteral("Plates"), QStringLiteral("Top"), SetOf(Iga));
        PutTestPart(writer, folder, QStringLiteral("P10"), SetOf(Iga) | SetOf(Ncd), {-1, {}, {}, {}});
        PutTestPart(writer, folder, QStringLiteral("P2"), SetOf(Bmf));
        PutTestPart(writer, folder, QStringLiteral("P1"), everything,
                    {15000, QStringLiteral("SPCC"), QStringLiteral("タレット"), QStringLiteral("取付板")});
        PutTestPart(writer, folder, QStringLiteral("p1"), SetOf(Sy5));
        PutTestPart(writer, folder, QStringLiteral("Bare"), 0);
    });
    Fill(QStringLiteral("板金"), [](CLibraryWriter& writer) {
        PutTestPart(writer, QStringLiteral("筐体"), QStringLiteral("カバー1"), SetOf(Iga));
    });
}

std::vector<std::string> NamesOf(const std::vector<PartRow>& rows)
{
    std::vector<std::string> names;
    for (const PartRow& row : rows) {
        names.push_back(row.name.toStdString());
    }
    return names;
}

} // namespace partkeep
