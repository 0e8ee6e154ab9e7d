// Names that are let in, text cut to buffers, and the order and search of text.
#include "partlibrary/attribute_table.h"
#include "partlibrary/file_kinds.h"
#include "partlibrary/library_folder.h"
#include "partlibrary/library_names.h"
#include "partlibrary/narrow_text.h"
#include "partlibrary/sort_text.h"
#include "tests/support/memory_registry.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>

namespace partkeep {
namespace {

class CCodePage {
public:
    explicit CCodePage(CodePage page) : before_(SystemCodePage()) { SetSystemCodePage(page); }
    ~CCodePage() { SetSystemCodePage(before_); }
    CCodePage(const CCodePage&) = delete;
    CCodePage& operator=(const CCodePage&) = delete;

private:
    CodePage before_;
};

TEST(LibraryNames, RefuseWhatCouldLeaveTheFolderOrFitsNoBuffer)
{
    struct Row {
        const char* label;
        QString name;
        NameFault fault;
    };
    const Row rows[] = {
        {"plain", QStringLiteral("P-1 (left).a"), NameFault::None},
        {"japanese", QStringLiteral("取付金具-1"), NameFault::None},
        {"dot inside", QStringLiteral("P.1"), NameFault::None},
        {"like a device", QStringLiteral("CONSOLE"), NameFault::None},
        {"port without a number", QStringLiteral("COM"), NameFault::None},
        {"longest", QString(99, u'x'), NameFault::None},
        {"empty", QString(), NameFault::Empty},
        {"too long", QString(100, u'x'), NameFault::TooLong},
        {"too long in bytes", QString(34, u'板'), NameFault::TooLong},
        {"slash", QStringLiteral("a/b"), NameFault::ReservedCharacter},
        {"backslash", QStringLiteral("a\\b"), NameFault::ReservedCharacter},
        {"drive", QStringLiteral("C:x"), NameFault::ReservedCharacter},
        {"parent", QStringLiteral(".."), NameFault::BadEnd},
        {"trailing dot", QStringLiteral("P."), NameFault::BadEnd},
        {"trailing blank", QStringLiteral("P "), NameFault::BadEnd},
        {"ideographic blank", QStringLiteral("P\u3000"), NameFault::BadEnd},
        {"line end", QStringLiteral("P\n1"), NameFault::ControlCharacter},
        {"nul", QString(QChar(u'\0')), NameFault::ControlCharacter},
        {"device", QStringLiteral("nul"), NameFault::DeviceName},
        {"device with extension", QStringLiteral("Com1.x.y"), NameFault::DeviceName},
        {"device with blank", QStringLiteral("AUX .txt"), NameFault::DeviceName},
        {"superscript port", QStringLiteral("LPT\u00B2"), NameFault::DeviceName},
        {"half a character", QString(QChar(0xD800)), NameFault::NotText},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(CheckName(row.name), row.fault) << row.label;
    }
}

TEST(LibraryNames, CheckEachFolderOfAPath)
{
    EXPECT_EQ(CheckFolderPath(u""), NameFault::None);
    EXPECT_EQ(CheckFolderPath(u"A\\B C\\鋼板"), NameFault::None);
    for (const char16_t* path : {u"\\A", u"A\\", u"A\\\\B", u"A\\..\\B", u"A\\ B", u"A\\con", u"A/B"}) {
        EXPECT_NE(CheckFolderPath(path), NameFault::None) << QString::fromUtf16(path).toStdString();
    }
    EXPECT_EQ(CheckFolderPath(QString(49, u'a') + u'\\' + QString(49, u'b')), NameFault::None);
    EXPECT_EQ(CheckFolderPath(QString(50, u'a') + u'\\' + QString(49, u'b')), NameFault::TooLong);
}

TEST(LibraryNames, FollowTheSystemCodePage)
{
    const CCodePage page(shift_jis_code_page);
    EXPECT_EQ(CheckName(QString(49, u'板')), NameFault::None); // two bytes each
    EXPECT_EQ(CheckName(QString(50, u'板')), NameFault::TooLong);
    EXPECT_EQ(CheckName(u"钣金"), NameFault::NotInCodePage);
}

TEST(NarrowText, IsCutAtACharacter)
{
    struct Row {
        const char* label;
        QString text;
        std::size_t limit;
        std::string narrow;
    };
    const Row rows[] = {
        {"fits", QStringLiteral("abc"), 3, "abc"},
        {"ascii", QStringLiteral("abcd"), 3, "abc"},
        {"inside a character", QStringLiteral("a板b"), 3, "a"},
        {"behind a character", QStringLiteral("a板b"), 4, "a板"},
        {"inside a pair", QStringLiteral("a\U0001F529"), 4, "a"},
        {"pair at the unit limit", QStringLiteral("\U0001F529\U0001F529"), 5, "\U0001F529"},
        {"nothing fits", QStringLiteral("板"), 2, ""},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(NarrowWithin(row.text, row.limit), row.narrow) << row.label;
    }
    std::array<char, 4> buffer{'x', 'x', 'x', 'x'};
    CopyNarrow(QStringLiteral("ab板"), buffer);
    EXPECT_EQ(buffer, (std::array<char, 4>{'a', 'b', '\0', '\0'}));
}

TEST(SortText, OrdersNaturally)
{
    const QStringList ordered{QStringLiteral("2"),   QStringLiteral("10"),    QStringLiteral("P"),
                              QStringLiteral("p1"),  QStringLiteral("P2"),    QStringLiteral("P2A"),
                              QStringLiteral("P10"), QStringLiteral("P10-2"), QStringLiteral("P10-12"),
                              QStringLiteral("Q"),   QStringLiteral("板2"),   QStringLiteral("板１０")};
    for (qsizetype i = 0; i + 1 < ordered.size(); ++i) {
        EXPECT_LT(NaturalKey(FoldText(ordered[i])), NaturalKey(FoldText(ordered[i + 1])))
            << ordered[i].toStdString() << " before " << ordered[i + 1].toStdString();
    }
    EXPECT_EQ(NaturalKey(FoldText(QStringLiteral("ＡＢ００7"))), NaturalKey(FoldText(QStringLiteral("ab7"))));
    EXPECT_EQ(NaturalKey(QStringLiteral("0")), NaturalKey(QStringLiteral("000")));
    EXPECT_LT(NaturalKey(QString(300, u'8')).size(), max_sort_key_bytes + 1);
}

TEST(SortText, AWordFindsItsPairsAmongThoseStored)
{
    const QStringList stored = SearchPairs(FoldText(QStringLiteral("Br-1 取付板 \U0001F529"))).split(u' ');
    for (const char16_t* typed : {u"r-1", u"BR", u"付板", u"板", u"1", u"\U0001F529"}) {
        for (const QString& term : PairQuery(SearchWords(QString::fromUtf16(typed))).split(u' ')) {
            const bool prefix = term.endsWith(u'*');
            const QString pair = QString(term).remove(u'"').remove(u'*');
            const bool found = std::any_of(stored.begin(), stored.end(), [&](const QString& one) {
                return prefix ? one.startsWith(pair) : one == pair;
            });
            EXPECT_TRUE(found) << QString::fromUtf16(typed).toStdString() << " " << term.toStdString();
        }
    }
}

TEST(FileKinds, AMaskSelectsWholeKinds)
{
    using enum FileSlot;
    EXPECT_EQ(SlotsOfMask(24), SetOf(Iga) | SetOf(Bmf));
    EXPECT_EQ(SlotsOfMask(20), SetOf(Sy5));
    EXPECT_EQ(SlotsOfMask(10), SetOf(Ncd));
    EXPECT_EQ(SlotsOfMask(15), SetOf(Sy5) | SetOf(Ncd));
    EXPECT_EQ(SlotsOfMask(-1), SetOf(Iga) | SetOf(Bmf) | SetOf(Sy5) | SetOf(Ncd));
    EXPECT_EQ(SlotsOfMask(0), 0U);
    EXPECT_EQ(SlotOfTag({"2D\0\0", 4}), Flat);
    EXPECT_EQ(SlotOfTag({"PNG", 3}), Png);
    for (const char* tag : {"", "2", "2DX", "png"}) {
        EXPECT_FALSE(SlotOfTag(tag)) << tag;
    }
    EXPECT_EQ(ParseImportName(u"P.1.IGA")->part, u"P.1");
    EXPECT_EQ(ParseImportName(u"P.3d.BMP")->slot, Bent);
    for (const char16_t* name : {u".iga", u"P.bmp", u"P", u"P.iga.bak"}) {
        EXPECT_FALSE(ParseImportName(name)) << QString::fromUtf16(name).toStdString();
    }
}

TEST(AttributeTable, ReadsWhatSpreadsheetsWrite)
{
    LibraryProblem problem;
    const auto rows = ParseAttributeTable("\xEF\xBB\xBFPart,Comment,Thickness,folder\r\n"
                                          "P1,\"a, \"\"b\"\"\",1.5,A/B\r\n\r\nP2,板,,\n",
                                          problem);
    ASSERT_TRUE(rows && rows->size() == 2) << ProblemText(problem);
    EXPECT_EQ((*rows)[0].attributes.comment, QStringLiteral("a, \"b\""));
    EXPECT_EQ((*rows)[0].attributes.thickness, 15000);
    EXPECT_EQ((*rows)[0].folder, QStringLiteral("A\\B"));
    EXPECT_EQ((*rows)[1].attributes.thickness, 0);
    EXPECT_EQ((*rows)[1].line, 4);
}

TEST(AttributeTable, SaysWhichLineCannotBeRead)
{
    const struct {
        const char* table;
        const char* reason;
    } rows[] = {
        {"part\nP1\n\"P2", "line 3"},        {"part\n\"P1\"x\n", "line 2"},
        {"part,colour\nP1,red\n", "colour"}, {"part,thickness\nP1,thick\n", "line 2"},
        {"part,comment\nP1\n", "1 fields"},  {"part,comment\n,x\n", "no part name"},
        {"part\n\xFF\n", "UTF-8"},
    };
    for (const auto& row : rows) {
        LibraryProblem problem;
        EXPECT_FALSE(ParseAttributeTable(row.table, problem)) << row.table;
        EXPECT_NE(ProblemText(problem).find(row.reason), std::string::npos) << ProblemText(problem);
    }
}

TEST(AttributeTable, ThicknessKeepsItsDecimals)
{
    const struct {
        const char16_t* text;
        std::optional<std::int32_t> value;
    } rows[] = {
        {u"1.5", 15000},      {u"-0.0001", -1}, {u"12", 120000}, {u"214748.3647", 2147483647},
        {u"214748.3648", {}}, {u"1.23456", {}}, {u"1.", {}},     {u".5", {}},
        {u"1,5", {}},         {u"", {}},        {u"-", {}},      {u"1e3", {}},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(ParseThickness(row.text), row.value) << QString::fromUtf16(row.text).toStdString();
    }
}

TEST(LibraryFolder, TheUsersSettingComesBeforeTheMachines)
{
    const std::u16string key = u"software\\Velmar\\ORVIC\\PartLibrary";
    CMemoryRegistry registry;
    EXPECT_TRUE(ConfiguredLibraryFolder(registry).isEmpty());
    registry.Set(u"HKLM\\" + key, u"folder", u"/srv/parts");
    EXPECT_EQ(ConfiguredLibraryFolder(registry), QStringLiteral("/srv/parts"));
    registry.Set(u"HKCU\\" + key, u"folder", u"\\home\\parts");
    EXPECT_EQ(ConfiguredLibraryFolder(registry), QStringLiteral("/home/parts"));
}

} // namespace
} // namespace partkeep
