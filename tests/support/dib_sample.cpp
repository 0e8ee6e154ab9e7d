#include "tests/support/dib_sample.h"

#include "controls/dib_helpers.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>

namespace partkeep {

namespace {

using enum DibCompression;

constexpr std::array samples{
    DibSample{"1 bit", 1},
    DibSample{"4 bits", 4},
    DibSample{"8 bits", 8},
    DibSample{"16 bits", 16},
    DibSample{"24 bits", 24},
    DibSample{"32 bits", 32},
    DibSample{"core, 1 bit", 1, 12},
    DibSample{"core, 4 bits", 4, 12},
    DibSample{"core, 8 bits", 8, 12},
    DibSample{"core, 16 bits", 16, 12},
    DibSample{"core, 24 bits", 24, 12},
    DibSample{"core, 32 bits", 32, 12},
    DibSample{"top-down, 1 bit", 1, 40, -7},
    DibSample{"top-down, 24 bits", 24, 40, -7},
    DibSample{"five colours of 4 bits", 4, 40, 7, None, {}, 5},
    DibSample{"24 bits with a table", 24, 40, 7, None, {}, 9},
    DibSample{"masks 5 6 5", 16, 40, 7, BitFields, {0xF800, 0x7E0, 0x1F}},
    DibSample{"masks 4 4 4, top-down", 16, 40, -7, BitFields, {0xF00, 0xF0, 0xF}},
    DibSample{"masks of swapped bytes", 32, 40, 7, BitFields, {0xFF, 0xFF00, 0xFF0000}},
    DibSample{"masks of ten bits", 32, 40, 7, BitFields, {0x3FF00000, 0xFFC00, 0x3FF}},
    DibSample{"runs of 4 bits", 4, 40, 7, Rle4},
    DibSample{"runs of 8 bits", 8, 40, 7, Rle8},
    DibSample{"masks 3 2 1", 16, 40, 7, BitFields, {0xE00, 0x30, 0x1}},
};

void AppendRandom(std::vector<std::byte>& bytes, std::size_t count, std::mt19937& random)
{
    std::generate_n(std::back_inserter(bytes), count, [&random] { return static_cast<std::byte>(random()); });
}

void AppendPixels(std::vector<std::byte>& bytes, const DibSample& sample, std::mt19937& random)
{
    const auto rows = static_cast<std::size_t>(std::abs(sample.height));
    if (sample.compression != Rle4 && sample.compression != Rle8) {
        AppendRandom(bytes, (DibSample::width * sample.bits + 31U) / 32 * 4 * rows, random);
        return;
    }
    // Each row: three pixels one by one, then a run to the row's end.
    for (std::size_t row = 0; row < rows; ++row) {
        bytes.insert(bytes.end(), {std::byte{0}, std::byte{3}});
        AppendRandom(bytes, sample.bits == 4 ? 2 : 4, random);
        bytes.insert(bytes.end(), {std::byte{DibSample::width - 3}, std::byte{9}, std::byte{0}, std::byte{0}});
    }
}

void PutHeader(SampleFile& file, const DibSample& sample)
{
    const bool core = sample.header_bytes == dib_core_header_bytes;
    file.Put(0, sample.header_bytes);
    file.Put(4, DibSample::width);
    core ? file.Put(6, static_cast<std::uint16_t>(sample.height)) : file.Put(8, sample.height);
    file.Put(core ? 8 : 12, std::uint16_t{1});
    file.Put(core ? 10 : 14, sample.bits);
    if (!core) {
        file.Put(16, sample.compression);
        file.Put(20, static_cast<std::uint32_t>(file.bytes.size() - file.pixel_offset));
        file.Put(32, sample.colors_used);
    }
    if (sample.compression == BitFields) {
        file.Put(40, sample.masks);
    }
}

} // namespace

std::span<const DibSample> DibSamples()
{
    return samples;
}

DibView SampleFile::View() const
{
    const std::span all(bytes);
    return {all.subspan(dib_file_header_bytes, pixel_offset - dib_file_header_bytes), all.subspan(pixel_offset)};
}

SampleFile MakeSampleFile(const DibSample& sample)
{
    std::mt19937 random(sample.bits);
    const std::size_t whole_table = sample.bits <= 8 ? 1U << sample.bits : 0U;
    const std::size_t colors = sample.colors_used != 0 ? sample.colors_used : whole_table;
    const std::size_t between =
        sample.compression == BitFields ? 12 : colors * (sample.header_bytes == dib_core_header_bytes ? 3 : 4);
    SampleFile file{{}, dib_file_header_bytes + sample.header_bytes + between};
    file.bytes.resize(file.pixel_offset - between);
    AppendRandom(file.bytes, between, random);
    AppendPixels(file.bytes, sample, random);
    PutHeader(file, sample);
    return file;
}

TestBlock::TestBlock(std::span<const std::byte> bytes) : handle(AllocateBlock(bytes.size()))
{
    const CBlockLock lock(handle);
    std::copy(bytes.begin(), bytes.end(), static_cast<std::byte*>(lock.Address()));
}

void ExpectShowsAsRaster(std::span<const DibSample> shown_samples, const PaintOnCanvas& paint)
{
    struct Row {
        const char* label;
        Rect target;
        Rect source;
    };
    // The bitmap's size is odd, so that no centre of a target pixel falls between two pixels: devices differ there.
    constexpr Rect whole{0, 0, 11, 7};
    constexpr std::array rows{
        Row{"whole", {2, 3, 13, 10}, whole},          Row{"part", {2, 3, 7, 7}, {3, 1, 8, 5}},
        Row{"off the canvas", {-4, -2, 7, 5}, whole}, Row{"from outside", {1, 1, 12, 8}, {-2, -2, 9, 5}},
        Row{"enlarged", {1, 2, 30, 26}, whole},       Row{"enlarged off the canvas", {-5, -6, 45, 43}, whole},
        Row{"reduced", {4, 4, 15, 10}, whole}, // by one row, where devices still agree
    };
    for (const DibSample& sample : shown_samples) {
        const TestBlock block(MakeSampleFile(sample).bytes);
        for (const Row& row : rows) {
            SCOPED_TRACE(std::string(sample.label) + ", " + row.label);
            RasterContext raster(32, 28);
            PaintDIB(raster, &row.target, block.handle, &row.source, nullptr);
            std::int32_t result = 0;
            const Picture shown = paint(32, 28, [&](IDeviceContext& context) {
                result = PaintDIB(context, &row.target, block.handle, &row.source, nullptr);
            });
            EXPECT_EQ(shown.pixels, raster.canvas.pixels);
            EXPECT_GT(result, 0);
        }
    }
}

} // namespace partkeep
