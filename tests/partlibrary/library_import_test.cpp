// Filling a library: from a folder of files, whole or not at all.
#include "partlibrary/library_check.h"
#include "partlibrary/library_import.h"
#include "partlibrary/library_schema.h"
#include "tests/partlibrary/library_fixture.h"

#include <gtest/gtest.h>

#include <filesystem>

namespace partkeep {
namespace {

class LibraryImport : public testing::Test {
protected:
    void SetUp() override { libraries_.MakeShop(); }

    void Write(const std::string& name, std::string_view bytes)
    {
        std::filesystem::create_directories(source_.Path(name).parent_path());
        WriteBytes(source_.Path(name), bytes);
    }

    // The reason why it failed; empty when it did not.
    std::string Import(const QString& target = {}, const QString& table = {})
    {
        LibraryProblem problem;
        const auto writer = CLibraryWriter::Open(file_, problem);
        if (writer != nullptr) {
            report_ = {};
            ImportFolder(*writer, {QString::fromStdString(source_.Path().string()), target, table}, report_, problem);
        }
        return ProblemText(problem);
    }

    std::string TablePath() { return source_.Path("table.csv").string(); }

    // Folder, name, slots, thickness and comment of a part; "(none)" where there is none.
    std::string Describe(const QString& folder, const QString& name)
    {
        LibraryProblem problem;
        const auto library = CPartLibrary::Open(file_, problem);
        const auto part = library != nullptr ? library->FindPart(folder, name) : std::nullopt;
        if (!part) {
            return "(none)";
        }
        std::string text =
            std::to_string(part->slots) + " " + std::to_string(part->thickness) + " " + part->comment.toStdString();
        library->ReadFiles(part->id, part->slots, [&text](FileSlot, const QByteArray& content) {
            text += " " + content.left(12).toStdString();
            return true;
        });
        return text;
    }

    CTestLibraries libraries_;
    CTemporaryFolder source_;
    QString file_ = libraries_.FileOf(QStringLiteral("SRV1"));
    ImportReport report_;
};

TEST_F(LibraryImport, NameAndExtensionGivePartAndKind)
{
    Write("A.iga", "a-iga");
    Write("a.SY5", "other part");
    Write("sub/鋼/板.1.ncd", "ncd");
    Write("sub/E.iga", "");
    Write("sub/pic.2d.bmp", SmallBitmap().toStdString());
    Write("sub/notes.txt", "no part");
    WriteBytes(TablePath(), "folder,part,thickness,comment\nsub\\鋼,板.1,2.3,厚い\n");
    EXPECT_EQ(Import(QStringLiteral("New\\In"), QString::fromStdString(TablePath())), "");
    EXPECT_EQ(report_.parts, 5);
    EXPECT_EQ(report_.files, 5);
    ASSERT_EQ(report_.skipped.size(), 2); // the notes and the table itself
    EXPECT_TRUE(report_.skipped.front().endsWith(QStringLiteral("notes.txt")));
    EXPECT_EQ(Describe(QStringLiteral("New\\In"), QStringLiteral("A")), "1 0  a-iga");
    EXPECT_EQ(Describe(QStringLiteral("New\\In"), QStringLiteral("a")), "4 0  other part");
    EXPECT_EQ(Describe(QStringLiteral("New\\In\\sub\\鋼"), QStringLiteral("板.1")), "8 23000 厚い ncd");
    EXPECT_EQ(Describe(QStringLiteral("New\\In\\sub"), QStringLiteral("E")), "1 0  ");
    EXPECT_TRUE(CheckLibrary(file_, *std::make_unique<LibraryProblem>())->findings.isEmpty());
}

TEST_F(LibraryImport, ASecondImportReplacesWhatItBringsAndKeepsTheRest)
{
    Write("P1.iga", "new");
    EXPECT_EQ(Import(QStringLiteral("Plates\\2008")), "");
    EXPECT_EQ(Describe(QStringLiteral("Plates\\2008"), QStringLiteral("P1")).substr(0, 30),
              "127 15000 取付板 new P1.bmf");
    WriteBytes(TablePath(), "part,comment\nP1,other\n");
    EXPECT_EQ(Import(QStringLiteral("Plates\\2008"), QString::fromStdString(TablePath())), "");
    EXPECT_EQ(Describe(QStringLiteral("Plates\\2008"), QStringLiteral("P1")).substr(0, 11), "127 0 other");
}

TEST_F(LibraryImport, AFailureLeavesTheLibraryAsItWas)
{
    const struct {
        const char* label;
        const char* file; // beside "A.iga", which would come first
        std::string content;
        const char* table;
        const char* reason;
    } rows[] = {
        {"device name", "nul.iga", "x", nullptr, "device"},
        {"trailing blank", "Z .iga", "x", nullptr, "blank"},
        {"reserved character", "Z:1.iga", "x", nullptr, "name has one of"},
        {"backslash", "Z\\1.iga", "x", nullptr, "name has one of"},
        {"folder with trailing dot", "Z./P.iga", "x", nullptr, "blank or a dot"},
        {"bitmap too large", "Z.2D.bmp", SmallBitmap(24001).toStdString(), nullptr, "24000"},
        {"bitmap cut short", "Z.3D.bmp", SmallBitmap().left(300).toStdString(), nullptr, "cut short"},
        {"not a bitmap", "Z.2D.bmp", std::string(400, 'x'), nullptr, "not a bitmap"},
        {"not a png", "Z.png", "GIF89a", nullptr, "not a PNG"},
        {"same kind twice", "A.IGA", "x", nullptr, "second file"},
        {"unknown part in the table", "Z.iga", "x", "part\nZZ\n", "no file of a part ZZ"},
        {"control character", "Z.iga", "x", "part,comment\nZ,a\tb\n", "control"},
        {"long comment", "Z.iga", "x",
         "part,machine\nZ,"
         "0123456789012345678901234567890123456789012345678901234567890123"
         "0123456789012345678901234567890123456789012345678901234567890123"
         "0123456789012345678901234567890123456789012345678901234567890123"
         "0123456789012345678901234567890123456789012345678901234567890123\n",
         "too long"},
    };
    const std::string before = ReadBytes(file_.toStdString());
    for (const auto& row : rows) {
        std::filesystem::remove_all(source_.Path());
        Write("A.iga", "fine");
        Write(row.file, row.content);
        if (row.table != nullptr) {
            WriteBytes(TablePath(), row.table);
        }
        const std::string reason = Import({}, row.table != nullptr ? QString::fromStdString(TablePath()) : QString());
        EXPECT_NE(reason.find(row.reason), std::string::npos) << row.label << ": " << reason;
        EXPECT_TRUE(ReadBytes(file_.toStdString()) == before) << row.label;
    }
    EXPECT_NE(Import(QStringLiteral("..\\x")), "");
    EXPECT_NE(Import({}, QStringLiteral("/nowhere")), "");
    std::filesystem::remove_all(source_.Path());
    EXPECT_NE(Import(), "");
}

TEST_F(LibraryImport, AWriterWaitsNoLongerThanItShouldForAnother)
{
    Write("A.iga", "fine");
    LibraryProblem problem;
    auto other = CLibraryWriter::Open(file_, problem);
    ASSERT_TRUE(other != nullptr && other->Begin());
    EXPECT_NE(Import().find("in use"), std::string::npos);
    other.reset();
    EXPECT_EQ(Import(), "");
}

TEST_F(LibraryImport, CreateLeavesWhatIsThere)
{
    LibraryProblem problem;
    EXPECT_FALSE(CLibraryWriter::Create(file_, problem));
    EXPECT_EQ(problem.fault, LibraryFault::AlreadyThere);
    EXPECT_FALSE(CLibraryWriter::Create(QStringLiteral("/nowhere/x.kpl"), problem));
    EXPECT_EQ(problem.fault, LibraryFault::CannotOpen);
    EXPECT_EQ(NamesIn(libraries_.Folder().toStdString()).size(), 2U);
}

} // namespace
} // namespace partkeep
