#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "xml/xml_code_page.h"
#include "xml_test_support.h"

using namespace partkeep;
using namespace xml_test;

namespace {

template <class T>
CXmlElement Number(XmlKind kind, T value)
{
    const std::string_view bytes(reinterpret_cast<const char*>(&value), sizeof value);
    return CXmlElement(MakeFixedBlock("n", kind, bytes, 65001));
}

TEST(XmlValue, ReadsEveryScalarKindAsEachType)
{
    const std::tuple<const char*, CXmlElement, bool, int, std::string> rows[] = {
        {"text true", TextLeaf("t", "true"), true, 0, "true"},
        {"text true with more", TextLeaf("t", "true "), false, 0, "true "},
        {"text 70000", TextLeaf("t", "70000"), false, 4464, "70000"},
        {"text -1", TextLeaf("t", "-1"), false, -1, "-1"},
        {"text 12abc", TextLeaf("t", "12abc"), false, 12, "12abc"},
        {"text in space", TextLeaf("t", "\t\r\n +5 6"), false, 5, "\t\r\n +5 6"},
        {"text of two signs", TextLeaf("t", "+-5"), false, 0, "+-5"},
        {"text too long for any type", TextLeaf("t", "1180591620717411303425"), false, 1, "1180591620717411303425"},
        {"empty text", TextLeaf("t", ""), false, 0, ""},
        {"text behind no space", TextLeaf("t", "\x95 5"), false, 0, "\x95 5"},
        {"bool false", Number(XmlKind::Boolean, std::uint8_t{0}), false, 0, "false"},
        {"bool of another byte", Number(XmlKind::Boolean, std::uint8_t{200}), true, 200, "true"},
        {"u8", Number(XmlKind::Unsigned8, std::uint8_t{255}), true, 255, "255"},
        {"s8", Number(XmlKind::Signed8, std::int8_t{-1}), true, -1, "-1"},
        {"u16", Number(XmlKind::Unsigned16, std::uint16_t{65535}), true, -1, "65535"},
        {"s16", Number(XmlKind::Signed16, std::int16_t{-32768}), true, -32768, "-32768"},
        {"u32", Number(XmlKind::Unsigned32, std::uint32_t{4294967295U}), true, -1, "4294967295"},
        {"s32", Number(XmlKind::Signed32, std::int32_t{-65536}), true, 0, "-65536"},
        {"f32", Number(XmlKind::Float32, 0.1F), true, 0, "0.1000000014901161"},
        {"f64 zero", Number(XmlKind::Float64, -0.0), false, 0, "0.0"},
        {"f64", Number(XmlKind::Float64, -2.9), true, -2, "-2.8999999999999999"},
        {"f64 cut", Number(XmlKind::Float64, 70000.75), true, 4464, "70000.75"},
        {"f64 out of range", Number(XmlKind::Float64, -0x1p63), true, 0, "-9223372036854775808.0"},
        {"f64 too large", Number(XmlKind::Float64, 0x1p63), true, 0, "9223372036854775808.0"},
        {"f64 infinite", Number(XmlKind::Float64, -HUGE_VAL), true, 0, "0.0"},
        {"f64 no number", Number(XmlKind::Float64, std::nan("")), true, 0, "0.0"},
    };
    for (const auto& [label, leaf, as_bool, as_short, as_string] : rows) {
        SCOPED_TRACE(label);
        EXPECT_EQ(leaf.AsBool().has + leaf.AsShort().has + leaf.AsString().has, 3);
        EXPECT_EQ(leaf.AsBool().value, as_bool);
        EXPECT_EQ(leaf.AsShort().value, as_short);
        EXPECT_EQ(leaf.AsString().value.View(), as_string);
        EXPECT_EQ(leaf.AsStringList().has, 0);
    }
    const CXmlElement element("e", 65001);
    EXPECT_EQ(element.AsBool().has + element.AsShort().has + element.AsString().has + element.AsStringList().has, 0);
}

TEST(XmlValue, FormatsFixedNotation)
{
    const std::tuple<double, int, int, const char*> rows[] = {
        {-2.25, 16, 1, "-2.25"}, {0.05, 4, 3, "0.050"}, {-1e-20, 16, 3, "0.000"}, {-0.0, 16, 0, "0"},
        {100, 16, 0, "100"},     {100, 0, 1, "100"},    {99.96, 1, 1, "100.0"},   {0.1, 16, 1, "0.1"},
        {100, 0, 0, "100"},      {0.5, 1000, 1, "0.5"}, {0.4, 0, 1, "0.0"},       {0.5, -1, 0, "0"},
        {0.0, 1, 4, "0.0000"}};
    for (const auto& [value, precision, least, text] : rows) {
        EXPECT_STREQ(FormatFixed(value, precision, least), text);
    }
    EXPECT_EQ(FormatFixed(0, 1, 40), "0." + std::string(32, '0'));
    const std::string largest = FormatFixed(-std::numeric_limits<double>::max(), 32, 32);
    EXPECT_EQ(largest.size(), 1U + 309 + 1 + 32);
    EXPECT_EQ(largest.substr(0, 6), "-17976");
}

TEST(XmlCodePage, TranscodesNamesAndTexts)
{
    const CXmlString same("x");
    EXPECT_EQ(TranscodeName(same, 932, 932).Text(), same.Text());
    EXPECT_EQ(TranscodeName(CXmlString("\xE2\x99\x9E"), 65001, 932).View(), "?");
    EXPECT_EQ(TranscodeText("x", 932, 932).Bytes(), nullptr);
    EXPECT_EQ(TranscodeText("x", 932, 932).Size(), 0U);
    EXPECT_EQ(TranscodeText("", 932, 65001).Size(), 4U);
    const CXmlTextCell cell = TranscodeText({"\x95\x94\0b", 4}, 932, 65001);
    EXPECT_EQ(std::string(reinterpret_cast<const char*>(cell.Bytes()), cell.Size()), std::string("\5\0\0\0部\0b", 9));
}

} // namespace
