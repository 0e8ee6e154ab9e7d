#include "platform/text.h"

#include <gtest/gtest.h>

namespace partkeep {
namespace {

using namespace std::string_view_literals;

enum Way { Both, Widens, Narrows };

const std::tuple<const char*, Way, CodePage, std::u16string_view, std::string_view> pairs[] = {
    {"empty", Both, 932, u"", ""},
    {"NUL inside", Both, 65001, u"a\0b"sv, "a\0b"sv},
    {"UTF-8 of every length", Both, 65001, u"aé部\U0001F600 and a long ASCII run",
     "a\xC3\xA9\xE9\x83\xA8\xF0\x9F\x98\x80 and a long ASCII run"},
    {"UTF-8 at its edges", Both, 65001, u"\x7F\x80\x7FF\x800\xFFFF\U00010000\U0010FFFF",
     "\x7F\xC2\x80\xDF\xBF\xE0\xA0\x80\xEF\xBF\xBF\xF0\x90\x80\x80\xF4\x8F\xBF\xBF"},
    {"932 single and double", Both, 932, u"A\\~ｱ部品ソ", "A\\~\xB1\x95\x94\x95\x69\x83\x5C"},
    {"932 vendor rows", Both, 932, u"①㈱髙∥～－￠", "\x87\x40\x87\x8A\xFB\xFC\x81\x61\x81\x60\x81\x7C\x81\x91"},
    {"932 private use and odd singles", Both, 932, u"\uE000\uE757\x80\uF8F0\uF8F3", "\xF0\x40\xF9\xFC\x80\xA0\xFF"},
    {"UTF-7 run and plus", Both, 65000, u"a+b 部品.x~", "a+-b +kOhUwQ-.x+AH4-"},
    {"UTF-7 pair, padding, control", Both, 65000, u"\U0001F600x\x01\t\0"sv, "+2D3eAA-x+AAE-\t\0"sv},
    {"byte that opens nothing", Widens, 65001, u"\uFFFDxyz567812345678", "\xFFxyz567812345678"},
    {"cut before a letter", Widens, 65001, u"\uFFFDx", "\xE3\x81x"},
    {"cut at the end", Widens, 65001, u"\uFFFD", "\xF0\x9F\x98"},
    {"overlong slash", Widens, 65001, u"\uFFFD\uFFFD", "\xC0\xAF"},
    {"overlong three", Widens, 65001, u"\uFFFD\uFFFD", "\xE0\x9F\x80"},
    {"surrogate", Widens, 65001, u"\uFFFD\uFFFD", "\xED\xA0\x80"},
    {"above the last", Widens, 65001, u"\uFFFD\uFFFD\uFFFD", "\xF4\x90\x80\x80"},
    {"932 lead byte at the end", Widens, 932, u"a\u30FB", "a\x81"},
    {"932 lead byte takes its trail along", Widens, 932, u"\u30FBx", "\x81 x"},
    {"932 lead byte leaves a NUL", Widens, 932, u"\u30FB\0b"sv, "\x81\0b"sv},
    {"932 second code of one sign", Widens, 932, u"∵", "\xFA\x5B"},
    {"UTF-7 without an end", Widens, 65000, u"部品", "+kOhUwQ"},
    {"UTF-7 ended by a dot", Widens, 65000, u"部品.a", "+kOhUwQ.a"},
    {"UTF-7 bits left over", Widens, 65000, u"部x", "+kOhU-x"},
    {"UTF-7 high byte", Widens, 65000, u"\x80x", "\x80x"},
    {"unknown page", Widens, 12345, u"", "abc"},
    {"unpaired high", Narrows, 65001, u"a\xD800x", "a\xEF\xBF\xBDx"},
    {"unpaired low ones", Narrows, 65001, u"\xDC00\xDC00", "\xEF\xBF\xBD\xEF\xBF\xBD"},
    {"932 without a form", Narrows, 932, u"가✓", "??"},
    {"932 counts units", Narrows, 932, u"\U0001F600x", "??x"},
    {"932 plain letters", Narrows, 932, u"Éßñ¥×", "Esn\\\x81\x7E"},
    {"932 wave dash and minus", Narrows, 932, u"〜−", "??"},
    {"932 one sign of two codes", Narrows, 932, u"∵Ⅰ", "\x81\xE6\x87\x54"},
    {"unknown page", Narrows, 12345, u"abc", ""},
};

TEST(Text, ConvertsAndReplacesWhatHasNoForm)
{
    for (const auto& [label, way, page, wide, narrow] : pairs) {
        EXPECT_TRUE(way == Narrows || WidenText(narrow, page) == wide) << label;
        EXPECT_TRUE(way == Widens || NarrowText(wide, page) == narrow) << label;
    }
}

TEST(Text, SystemPageStandsForItsNumber)
{
    const CodePage before = SystemCodePage();
    for (const CodePage page : {932U, 65001U}) {
        SetSystemCodePage(page);
        EXPECT_EQ(NarrowText(u"部品"), NarrowText(u"部品", SystemCodePage()));
        EXPECT_EQ(WidenText("\x95\x94"), WidenText("\x95\x94", SystemCodePage()));
#ifndef _WIN32
        EXPECT_EQ(SystemCodePage(), page);
#endif
    }
    SetSystemCodePage(before);
}

TEST(Text, UpperCaseMapsUnitToUnit)
{
    const std::pair<std::u16string_view, std::u16string_view> rows[] = {
        {u"az{`_09", u"AZ{`_09"},
        {u"éÿžαωяё", u"ÉŸŽΑΩЯЁ"},
        {u"ａｚⅻ", u"ＡＺⅫ"},
        {u"ßŉ", u"ßŉ"},       // would grow
        {u"ıſµςǅ", u"ıſµςǅ"}, // do not lead back
        {u"\U00010428\xD801\xDC28", u"\U00010428\xD801\xDC28"},
    };
    for (const auto& [from, to] : rows) {
        EXPECT_EQ(UpperCase(from), to);
        EXPECT_TRUE(EqualNoCase(from, to));
    }
    EXPECT_FALSE(EqualNoCase(u"file", u"fıle") || EqualNoCase(u"ab", u"abc"));
}

} // namespace
} // namespace partkeep
