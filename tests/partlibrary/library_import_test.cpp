// Filling a library: from a folder of files, whole or not at all.
#include "partlibrary/library_import.h"
#include "tests/partlibrary/library_fixture.h"
#include "tests/support/linux_faults.h"

#include <filesystem>

namespace partkeep {
namespace {

namespace fs = std::filesystem;

class LibraryImport : public LibraryShop {
protected:
    void Write(const std::string& name, std::string_view bytes)
    {
        fs::create_directories(source_.Path(name).parent_path());
        WriteBytes(source_.Path(name), bytes);
    }

    // The reason why it failed; empty when it did not.
    std::string Import(const QString& target = {}, const QString& table = {})
    {
        problem_ = {};
        report_ = {};
        const auto writer = CLibraryWriter::Open(library_file_, problem_);
        ImportFolder(*writer, {QString::fromStdString(source_.Path().string()), target, table}, report_, problem_);
        return ProblemText(problem_);
    }

    // Slots, thickness, comment and the beginning of each file of a part.
    std::string Describe(const QString& folder, const QString& name)
    {
        const auto library = CPartLibrary::Open(library_file_, problem_);
        const auto part = library->FindPart(folder, name).value_or(PartRow{});
        QString text = u"%1 %2 %3"_s.arg(part.slots).arg(part.thickness).arg(part.comment);
        library->ReadFiles(part.id, part.slots, [&text](FileSlot, const QByteArray& content) {
            text += u' ' + QString::fromUtf8(content.left(12));
            return true;
        });
        return text.toStdString();
    }

    CTemporaryFolder source_;
    QString table_ = QString::fromStdString(source_.Path("table.csv").string());
    ImportReport report_;
    LibraryProblem problem_;
};

TEST_F(LibraryImport, NameAndExtensionGivePartAndKind)
{
    Write("A.iga", "a-iga");
    Write("a.SY5", "other part");
    Write("sub/鋼/板.1.ncd", "ncd");
    Write("sub/E.iga", "");
    Write("sub/pic.2d.bmp", SmallBitmap().toStdString());
    Write("sub/notes.txt", "no part");
    Write("table.csv", "folder,part,thickness,comment\nsub\\鋼,板.1,2.3,厚い\n");
    EXPECT_EQ(Import(u"New\\In"_s, table_), "");
    EXPECT_EQ(report_.parts, 5);
    EXPECT_EQ(report_.files, 5);
    ASSERT_EQ(report_.skipped.size(), 2); // the notes and the table itself
    EXPECT_TRUE(report_.skipped.front().endsWith(u"notes.txt"_s));
    EXPECT_EQ(Describe(u"New\\In"_s, u"A"_s), "1 0  a-iga");
    EXPECT_EQ(Describe(u"New\\In"_s, u"a"_s), "4 0  other part");
    EXPECT_EQ(Describe(u"New\\In\\sub\\鋼"_s, u"板.1"_s), "8 23000 厚い ncd");
    EXPECT_EQ(Describe(u"New\\In\\sub"_s, u"E"_s), "1 0  ");
    EXPECT_EQ(Check(), "");
}

TEST_F(LibraryImport, ASecondImportReplacesWhatItBringsAndKeepsTheRest)
{
    Write("P1.iga", "new");
    EXPECT_EQ(Import(u"Plates\\2008"_s), "");
    EXPECT_EQ(Describe(u"Plates\\2008"_s, u"P1"_s).substr(0, 30), "127 15000 取付板 new P1.bmf");
    Write("table.csv", "part,comment\nP1,other\n");
    EXPECT_EQ(Import(u"Plates\\2008"_s, table_), "");
    EXPECT_EQ(Describe(u"Plates\\2008"_s, u"P1"_s).substr(0, 11), "127 0 other");
    const auto other = CLibraryWriter::Open(library_file_, problem_);
    ASSERT_TRUE(other != nullptr && other->Begin());
    EXPECT_NE(Import().find("in use"), std::string::npos) << "another writer";
}

TEST_F(LibraryImport, AFailureLeavesTheLibraryAsItWas)
{
    const struct {
        const char* reason;
        const char* file; // beside "A.iga", which would come first
        std::string content = "x";
        std::string table = "";
    } rows[] = {
        {"device", "nul.iga"},
        {"with a blank", "Z .iga"},
        {"name has one of", "Z\\1.iga"},
        {"or a dot", "Z./P.iga"},
        {"24000", "Z.2D.bmp", SmallBitmap(24001).toStdString()},
        {"cut short", "Z.3D.bmp", SmallBitmap().left(300).toStdString()},
        {"not a PNG", "Z.png", "GIF89a"},
        {"second file", "A.IGA"},
        {"no file of a part ZZ", "Z.iga", "x", "part\nZZ\n"},
        {"line 3", "Z.iga", "x", "part\nZ\nZ\n"},
        {"control", "Z.iga", "x", "part,comment\nZ,a\tb\n"},
        {"too long", "Z.iga", "x", "part,machine\nZ," + std::string(256, '0')},
    };
    const std::string before = ReadBytes(library_file_.toStdString());
    for (const auto& row : rows) {
        fs::remove_all(source_.Path());
        Write("A.iga", "fine");
        Write(row.file, row.content);
        Write("table.csv", row.table);
        const std::string reason = Import({}, row.table.empty() ? QString() : table_);
        EXPECT_NE(reason.find(row.reason), std::string::npos) << row.reason << ": " << reason;
        EXPECT_TRUE(ReadBytes(library_file_.toStdString()) == before) << row.reason;
    }
    EXPECT_NE(Import(u"..\\x"_s), "");
    EXPECT_NE(Import({}, u"/nowhere"_s), "");
    fs::remove_all(source_.Path());
    EXPECT_NE(Import(), "");
}

TEST_F(LibraryImport, NothingIsPassedOverInSilence)
{
    Write("shut/P.iga", "x");
    fs::permissions(source_.Path("shut"), fs::perms::none);
    GiveToUnprivilegedUser(source_.Path("shut"));
    GiveToUnprivilegedUser(source_.Path());
    const auto writer = CLibraryWriter::Open(library_file_, problem_);
    EXPECT_TRUE(RunWithoutPrivileges([&] {
        ImportFolder(*writer, {QString::fromStdString(source_.Path().string()), {}, {}}, report_, problem_);
        return ProblemText(problem_).find("cannot be read") != std::string::npos;
    }));
    fs::permissions(source_.Path("shut"), fs::perms::owner_all);
    fs::create_symlink("gone", source_.Path("Q.iga"));
    EXPECT_NE(Import().find("reading failed"), std::string::npos);
}

} // namespace
} // namespace partkeep
