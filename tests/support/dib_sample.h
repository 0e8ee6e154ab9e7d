// Bitmaps of every kind with random colours, and the one check that a device context shows each of them.
#pragma once

#include "tests/support/raster_context.h"

#include <array>
#include <functional>

namespace partkeep {

struct DibSample {
    const char* label;
    std::uint16_t bits;
    std::uint32_t header_bytes = dib_info_header_bytes;
    int height = 7;
    DibCompression compression = DibCompression::None;
    std::array<std::uint32_t, 3> masks{};
    std::uint32_t colors_used = 0;

    static constexpr int width = 11;
};

[[nodiscard]] std::span<const DibSample> DibSamples();

struct SampleFile {
    std::vector<std::byte> bytes; // a BMP file
    std::size_t pixel_offset;

    [[nodiscard]] DibView View() const;
    template <typename T>
    void Put(std::size_t offset, T value) // behind the file header
    {
        std::memcpy(bytes.data() + dib_file_header_bytes + offset, &value, sizeof value);
    }
};

[[nodiscard]] SampleFile MakeSampleFile(const DibSample& sample);

// A block that goes with its scope.
struct TestBlock {
    explicit TestBlock(std::span<const std::byte> bytes);
    ~TestBlock() { FreeBlock(handle); }
    TestBlock(const TestBlock&) = delete;
    TestBlock& operator=(const TestBlock&) = delete;

    const HDIB handle;
};

// Runs a painter on an untouched canvas and gives what is then to be seen.
using PaintOnCanvas =
    std::function<Picture(int width, int height, const std::function<void(IDeviceContext&)>& painter)>;

// Paints each sample whole, in part, enlarged and reduced: the same pixels and a result above 0.
void ExpectShowsAsRaster(std::span<const DibSample> shown_samples, const PaintOnCanvas& paint);

} // namespace partkeep
