#include "controls/dib_helpers.h"

#include "tests/support/dib_sample.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace partkeep {
namespace {

constexpr Rect whole{0, 0, 11, 7};

struct KeptPalette : IPalette {
    bool CreatePalette(std::span<const PaletteEntry> made) override
    {
        entries.assign(made.begin(), made.end());
        return answer;
    }
    PaletteHandle Handle() const override { return RasterContext::Palette(7); }

    std::vector<PaletteEntry> entries;
    bool answer = true;
};

TEST(DibHelpers, ReadBothKindsOfHeader)
{
    for (const auto& [label, header_bytes, bits, colors_used, colors, palette_bytes] : std::initializer_list<
             std::tuple<const char*, std::uint32_t, std::uint16_t, std::uint32_t, unsigned, unsigned>>{
             {"core, 1 bit", 12, 1, 0, 2, 6},
             {"core, 24 bits", 12, 24, 0, 0, 0},
             {"core by any other size", 124, 8, 99, 256, 768},
             {"8 bits", 40, 8, 0, 256, 1024},
             {"five of 4 bits", 40, 4, 5, 5, 20},
             {"24 bits", 40, 24, 0, 0, 0},
             {"16 bits with a table", 40, 16, 3, 3, 12},
             {"count of more than 16 bits", 40, 8, 0x10002, 2, 8},
             {"size of more than 16 bits", 40, 8, 0x4001, 0x4001, 4},
         }) {
        SCOPED_TRACE(label);
        SampleFile file{std::vector<std::byte>(200), 0};
        const bool info = header_bytes == 40;
        file.Put(32, colors_used);
        file.Put(4, std::uint32_t{0x87654321});
        file.Put(8, std::uint32_t{0xFFFFFFFC});
        file.Put(0, header_bytes);
        file.Put(info ? 14 : 10, bits);
        const std::byte* header = file.bytes.data() + dib_file_header_bytes;
        EXPECT_EQ(DIBWidth(header), info ? 0x87654321 : 0x4321U);
        EXPECT_EQ(DIBHeight(header), info ? 0xFFFFFFFC : 0x8765U);
        EXPECT_EQ(DIBNumColors(header), colors);
        EXPECT_EQ(PaletteSize(header), palette_bytes);
        EXPECT_EQ(FindDIBBits(header), header + header_bytes + palette_bytes);
    }
}

TEST(PaintDib, ShowsEachPartAndScaleOfEveryForm)
{
    for (const DibForm& form : DrawnForms()) {
        SampleFile file = MakeSampleFile(form);
        const TestBlock block(file.bytes);
        for (const int scale : {1, 3}) {
            const Rect source = scale == 1 ? Rect{2, 1, 10, 5} : whole;
            RasterContext raster(source.right * scale, source.bottom * scale);
            const Rect target{source.left, source.top, source.right * scale, source.bottom * scale};
            EXPECT_EQ(PaintDIB(raster, &target, block.handle, &source, nullptr), 7) << form.Label();
            for (int y = target.top; y < target.bottom; ++y) {
                for (int x = target.left; x < target.right; ++x) {
                    ASSERT_EQ(raster.canvas.At(x, y), file.picture.At(x / scale, y / scale))
                        << form.Label() << ": " << x << ' ' << y;
                }
            }
        }
    }
}

TEST(PaintDib, CallsTheDeviceInOrder)
{
    const TestBlock block(MakeSampleFile({.bits = 8}).bytes);
    const TestBlock upside(MakeSampleFile({.bits = 1, .height = -7}).bytes);
    SampleFile lines = MakeSampleFile({.bits = 1});
    lines.bytes.resize(lines.pixel_offset + std::size_t{4} * 65538);
    lines.Put(8, 65538); // rows, whose count is cut to 16 bits
    const TestBlock tall(lines.bytes);
    const KeptPalette palette;
    const std::string mode = "SetStretchBltMode 3";
    for (const auto& [bitmap, target, source, copy] : std::initializer_list<std::tuple<HDIB, Rect, Rect, std::string>>{
             {block.handle, {5, 6, 16, 13}, whole, "SetDIBitsToDevice 5 6 11 7 0 0 0 7"},
             {block.handle, {5, 6, 9, 8}, {2, 1, 6, 3}, "SetDIBitsToDevice 5 6 4 2 2 4 0 7"},
             {block.handle, {5, 6, 17, 13}, whole, "StretchDIBits 5 6 17 13 0 0 11 7"},
             {block.handle, {5, 6, 16, 14}, whole, "StretchDIBits 5 6 16 14 0 0 11 7"},
             {upside.handle, {0, 0, 4, 2}, {2, 1, 6, 3}, "SetDIBitsToDevice 0 0 4 2 2 4 0 7"},
             {upside.handle, whole, {0, 0, 11, -7}, "SetDIBitsToDevice 0 0 11 7 0 0 0 7"},
             {tall.handle, {0, 0, 1, 65538}, {0, 0, 1, 65538}, "SetDIBitsToDevice 0 0 1 65538 0 0 0 2"},
         }) {
        RasterContext raster(1, 1);
        PaintDIB(raster, &target, bitmap, &source, nullptr);
        EXPECT_EQ(raster.calls, (std::vector{mode, copy}));
        raster.calls.clear();
        PaintDIB(raster, &target, bitmap, &source, &palette);
        EXPECT_EQ(raster.calls,
                  (std::vector<std::string>{"SelectPalette background 7", mode, copy, "SelectPalette background 3"}));
    }
}

TEST(PaintDib, RefusesBlocksCutAnywhereAndAbsurdArguments)
{
    RasterContext raster(16, 16);
    KeptPalette palette;
    for (const DibForm& form : DrawnForms()) {
        const SampleFile file = MakeSampleFile(form);
        for (std::size_t size = 0; size < file.bytes.size(); ++size) {
            const TestBlock cut(std::span(file.bytes).first(size));
            ASSERT_EQ(PaintDIB(raster, &whole, cut.handle, &whole, nullptr), 0) << form.Label() << ' ' << size;
            ASSERT_EQ(CreateDIBPalette(cut.handle, &palette) != 0,
                      size >= file.pixel_offset && DIBNumColors(file.View().header.data()) != 0)
                << form.Label() << ' ' << size;
        }
    }
    SampleFile runs = MakeSampleFile({.bits = 8, .compression = 1});
    for (const int side : {4096, 4097}) { // a picture of 2^24 pixels is the largest
        runs.Put(4, std::array{4096, side});
        EXPECT_EQ(MakeDibView(std::span(runs.bytes).subspan(dib_file_header_bytes)).has_value(), side == 4096);
    }
    const TestBlock block(MakeSampleFile({}).bytes);
    constexpr int least = -0x7FFFFFFF;
    const Rect lowest{0, least, 11, least + 7};
    const Rect deepest{0, 0, 11, least};
    EXPECT_EQ(PaintDIB(raster, &whole, nullptr, &whole, nullptr), 0);
    EXPECT_EQ(PaintDIB(raster, nullptr, block.handle, &whole, nullptr), 0);
    EXPECT_EQ(PaintDIB(raster, &whole, block.handle, nullptr, nullptr), 0);
    EXPECT_EQ(PaintDIB(raster, &whole, block.handle, &lowest, nullptr), 0);
    EXPECT_EQ(PaintDIB(raster, &deepest, block.handle, &deepest, nullptr), 0);
    for (const Rect& vast : {Rect{least, 0, 0x7FFFFFFF, 7}, {0x7FFFFFFF, 0, least, 7}, {0, least, 11, 0x7FFFFFFF}}) {
        EXPECT_EQ(PaintDIB(raster, &vast, block.handle, &whole, nullptr), 0);
        EXPECT_EQ(PaintDIB(raster, &whole, block.handle, &vast, nullptr), 0);
    }
}

TEST(CreateDibPalette, CopiesTheTableOfFileAndBareBitmap)
{
    for (const auto& [form, colors] :
         std::initializer_list<std::pair<DibForm, std::size_t>>{{{.bits = 1}, 2},
                                                                {{.bits = 8}, 256},
                                                                {{}, 0},
                                                                {{.bits = 8, .height = 0}, 0},
                                                                {{.bits = 4, .header_bytes = 12}, 16},
                                                                {{.bits = 24, .header_bytes = 12}, 0},
                                                                {{.bits = 4, .colors_used = 5}, 5},
                                                                {{.bits = 24, .colors_used = 9}, 9}}) {
        const SampleFile file = MakeSampleFile(form);
        const DibView view = file.View();
        for (const std::size_t skipped : {std::size_t{0}, dib_file_header_bytes}) {
            const TestBlock block(std::span(file.bytes).subspan(skipped));
            KeptPalette palette;
            EXPECT_EQ(CreateDIBPalette(block.handle, &palette), colors != 0 ? 1 : 0);
            ASSERT_EQ(palette.entries.size(), colors) << form.Label();
            palette.answer = false;
            EXPECT_EQ(CreateDIBPalette(block.handle, &palette), 0);
            for (std::size_t index = 0; index < colors; ++index) {
                const std::size_t at = form.header_bytes == 12 ? 12 + 3 * index : 40 + 4 * index;
                const auto& [red, green, blue, flags] = palette.entries[index];
                EXPECT_EQ((std::array{std::byte{blue}, std::byte{green}, std::byte{red}, std::byte{flags}}),
                          (std::array{view.header[at], view.header[at + 1], view.header[at + 2], std::byte{0}}));
            }
        }
    }
}

TEST(CreateDibPalette, FailsWithoutMemoryAndWithoutArguments)
{
    const TestBlock block(MakeSampleFile({.bits = 8}).bytes);
    KeptPalette palette;
    EXPECT_EQ(CreateDIBPalette(nullptr, &palette), 0);
    EXPECT_EQ(CreateDIBPalette(block.handle, nullptr), 0);
    std::vector<MemoryHandle> held;
    while (MemoryHandle handle = AllocateBlock(1)) {
        held.push_back(handle);
    }
    EXPECT_EQ(CreateDIBPalette(block.handle, &palette), 0);
    FreeBlock(held.back());
    EXPECT_NE(CreateDIBPalette(block.handle, &palette), 0);
    held.back() = AllocateBlock(1); // the palette's own block was freed
    EXPECT_NE(held.back(), nullptr);
    std::ranges::for_each(held, FreeBlock);
}

} // namespace
} // namespace partkeep
