// Names that are let in, text cut to buffers, the order and search of text, and the table of attributes.
#include "partlibrary/import/attribute_table.h"
#include "partlibrary/library/library_names.h"
#include "partlibrary/library/library_text.h"
#include "partlibrary/library/sort_text.h"
#include "partlibrary/session/library_folder.h"
#include "tests/support/memory_registry.h"

#include <gtest/gtest.h>

#include <array>
#include <cerrno>
#include <set>

namespace partkeep {
namespace {

using namespace Qt::StringLiterals;

TEST(LibraryNames, RefuseWhatCouldLeaveTheFolderOrFitsNoBuffer)
{
    const std::pair<NameFault, QStringList> rows[] = {
        {NameFault::None, {u"P-1 (left).a"_s, u"取付金具-1"_s, u"CONSOLE"_s, u"COM"_s, QString(99, u'x')}},
        {NameFault::Empty, {QString()}},
        {NameFault::TooLong, {QString(100, u'x'), QString(34, u'板')}},
        {NameFault::ReservedCharacter, {u"a/b"_s, u"a\\b"_s, u"C:x"_s}},
        {NameFault::BadEnd, {u".."_s, u"P."_s, u"P "_s, u" P"_s, u"P\u3000"_s}},
        {NameFault::ControlCharacter, {u"P\n1"_s, u"P\u0085"_s, QString(QChar(u'\0'))}},
        {NameFault::DeviceName, {u"nul"_s, u"Com1.x.y"_s, u"AUX .txt"_s, u"LPT\u00B2"_s}},
        {NameFault::NotText, {QString(QChar(0xD800)), u"a\uFFFD"_s}},
    };
    for (const auto& [fault, names] : rows) {
        for (const QString& name : names) {
            EXPECT_EQ(CheckName(name), fault) << name.toStdString();
        }
    }
    EXPECT_EQ(CheckAttribute(QString(255, u'x') + u'x'), NameFault::TooLong);
    EXPECT_EQ(CheckAttribute(QString(85, u'板')), NameFault::None);
    SetSystemCodePage(shift_jis_code_page);
    EXPECT_EQ(CheckName(QString(49, u'板')), NameFault::None); // two bytes each
    EXPECT_EQ(CheckName(QString(50, u'板')), NameFault::TooLong);
    EXPECT_EQ(CheckName(u"钣金"), NameFault::NotInCodePage);
    SetSystemCodePage(utf8_code_page);
}

TEST(LibraryNames, CheckEachFolderOfAPath)
{
    for (const QString& path : {u""_s, u"A\\B C\\鋼板"_s, QString(49, u'a') + u'\\' + QString(49, u'b')}) {
        EXPECT_EQ(CheckFolderPath(path), NameFault::None) << path.toStdString();
    }
    for (const QString& path : {u"\\A"_s, u"A\\"_s, u"A\\\\B"_s, u"A\\..\\B"_s, u"A\\ B"_s, u"A\\con"_s, u"A/B"_s,
                                QString(50, u'a') + u'\\' + QString(49, u'b')}) {
        EXPECT_NE(CheckFolderPath(path), NameFault::None) << path.toStdString();
    }
}

TEST(LibraryText, KeepsEveryUnitAndShowsControlCharacters)
{
    for (const std::u16string text : {u"\uFEFFP", u"\uFFFEP", u"P\uFEFF", u"\uFEFF"}) {
        EXPECT_EQ(ToWide(FromWide(text)), text);
        EXPECT_EQ(FromUtf8(ToUtf8(FromWide(text))), FromWide(text));
    }
    EXPECT_EQ(Printable(u"a\x1B[31m\u0085\u202E板\u2066"_s), "a\\x1B[31m\\x85\\u202E板\\u2066");
}

TEST(LibraryProblem, HasAWordForEachFaultAndAFaultForEachError)
{
    std::set<std::string> words;
    for (int fault = 1; fault <= static_cast<int>(LibraryFault::Failed); ++fault) {
        EXPECT_TRUE(words.insert(ProblemText({static_cast<LibraryFault>(fault), u"x"_s, {}})).second) << fault;
    }
    for (const auto& [error, fault] : {std::pair(EDQUOT, LibraryFault::DiskFull),
                                       {ENOSPC, LibraryFault::DiskFull},
                                       {ENAMETOOLONG, LibraryFault::PathTooLong},
                                       {EEXIST, LibraryFault::AlreadyThere},
                                       {EIO, LibraryFault::WriteFailed}}) {
        EXPECT_EQ(WriteProblem(error, {}).fault, fault) << error;
    }
}

TEST(NarrowText, IsCutAtACharacter)
{
    EXPECT_EQ(NarrowWithin(u"abc"_s, 3), "abc");
    EXPECT_EQ(NarrowWithin(u"a板b"_s, 3), "a");
    EXPECT_EQ(NarrowWithin(u"a板b"_s, 4), "a板");
    EXPECT_EQ(NarrowWithin(u"a\U0001F529"_s, 4), "a") << "half a pair";
    EXPECT_EQ(NarrowWithin(u"\U0001F529\U0001F529"_s, 5), "\U0001F529");
    EXPECT_EQ(NarrowWithin(u"a\U0001F529b"_s, 2), "a") << "where the limit parts a pair";
    EXPECT_EQ(NarrowWithin(u"板"_s, 2), "");
    CopyNarrow(u"ab"_s, {});
    std::array<char, 4> buffer{'x', 'x', 'x', 'x'};
    CopyNarrow(u"ab板"_s, buffer);
    EXPECT_EQ(buffer, (std::array<char, 4>{'a', 'b', '\0', '\0'}));
}

TEST(SortText, OrdersNaturally)
{
    const QStringList ordered{u"2"_s,   u"10"_s,    u"P"_s,      u"p1"_s, u"P2"_s,  u"P2A"_s,
                              u"P10"_s, u"P10-2"_s, u"P10-12"_s, u"Q"_s,  u"板2"_s, u"板１０"_s};
    for (qsizetype i = 0; i + 1 < ordered.size(); ++i) {
        EXPECT_LT(SortKey(ordered[i]), SortKey(ordered[i + 1])) << ordered[i].toStdString();
    }
    EXPECT_EQ(SortKey(u"ＡＢ００7"_s), SortKey(u"ab7"_s));
    EXPECT_EQ(FoldText(u"Müller é ｶﾞ がギ"_s), u"muller e ガ ガギ"_s);
    EXPECT_NE(FoldText(u"か"_s), FoldText(u"が"_s));
    EXPECT_EQ(SortKey(u"0"_s), SortKey(u"000"_s));
    EXPECT_EQ(SortKey(QString(300, u'x')).size(), max_sort_key_bytes);
}

TEST(AttributeTable, SaysWhichLineCannotBeRead)
{
    const std::pair<const char*, const char*> rows[] = {
        {"part\nP1\n\"P2", "line 3"},        {"part\n\"P1\"x\n", "line 2"},
        {"part,colour\nP1,red\n", "colour"}, {"part,thickness\nP1,thick\n", "line 2"},
        {"part,folder\nP1\n", "1 fields"},   {"folder\nA\n", "no part name"},
        {"part\n\xFF\n", "UTF-8"},           {"part,Part\nP,Q\n", "twice"},
        {"part,colour\n", "colour"},         {"part,comment\nP,\nP,\"a\tb\"", "line 3: "},
        {"part\rP\r", "line feed"},          {"part\r\nP\r\n\r\n\"Q\"x\r\n", "line 4"},
    };
    for (const auto& [table, reason] : rows) {
        LibraryProblem problem;
        EXPECT_FALSE(ParseAttributeTable(table, problem)) << table;
        EXPECT_NE(ProblemText(problem).find(reason), std::string::npos) << table << ": " << ProblemText(problem);
    }
    for (const char16_t* wrong : {u"214748.3648", u"1.23456", u"1.", u".5", u"1,5", u"", u"-", u"1e3"}) {
        EXPECT_FALSE(ParseThickness(wrong)) << QString::fromUtf16(wrong).toStdString();
    }
    EXPECT_EQ(ParseThickness(u"214748.3647"), 2147483647);
    EXPECT_EQ(ParseThickness(u"-0.0001"), -1);
    EXPECT_EQ(ParseThickness(u"12"), 120000);
}

TEST(LibraryFolder, TheUsersSettingComesBeforeTheMachines)
{
    const std::u16string key = u"software\\Velmar\\ORVIC\\PartLibrary";
    CMemoryRegistry registry;
    EXPECT_EQ(ConfiguredLibraryFolder(registry), QString());
    registry.Set(u"HKLM\\" + key, u"folder", u"/srv/parts");
    EXPECT_EQ(ConfiguredLibraryFolder(registry), u"/srv/parts"_s);
    registry.Set(u"HKCU\\" + key, u"folder", u"\\home\\parts");
    EXPECT_EQ(ConfiguredLibraryFolder(registry), u"/home/parts"_s);
    EXPECT_EQ(CLibraryFolder::Configured(registry).Services(), nullptr) << "nothing of a database is touched";
    registry.Set(u"HKLM\\" + key, u"services", u"shop, archive");
    EXPECT_EQ(ConfiguredServices(registry), (QStringList{u"shop"_s, u"archive"_s}));
}

} // namespace
} // namespace partkeep
