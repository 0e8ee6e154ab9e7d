// Bitmaps of every kind, sound and not, with the picture that a decoder of the tests reads from them, and the one check
// that a device context shows them.
#pragma once

#include "tests/support/raster_context.h"

#include <array>
#include <functional>

namespace partkeep {

// What a header says. All fields alike, so that a table can name any of them.
struct DibForm {
    std::int64_t bits = 24;
    std::int64_t header_bytes = dib_info_header_bytes;
    std::int64_t height = 7;
    std::int64_t colors_used = 0;
    std::int64_t compression = 0;
    std::int64_t width = 11;
    std::int64_t planes = 1;
    std::int64_t image_bytes = -1; // -1 for as many as there are
    std::array<std::uint32_t, 3> masks{};

    [[nodiscard]] std::string Label() const;
};

// Every kind that is drawn: header, depth, compression, masks, order of rows, size of the colour table.
[[nodiscard]] std::vector<DibForm> DrawnForms();

// Each of these with each field in turn at the edge of what is drawn, or beyond.
void ForEachForm(const std::function<void(const DibForm& form, bool drawn)>& use);

struct SampleFile {
    std::vector<std::byte> bytes; // a BMP file
    std::size_t pixel_offset = 0;
    Picture picture{11, 7}; // what it shows, where it is drawn

    [[nodiscard]] DibView View() const;
    template <typename T>
    void Put(std::size_t offset, T value) // behind the file header
    {
        std::memcpy(bytes.data() + dib_file_header_bytes + offset, &value, sizeof value);
    }
};

[[nodiscard]] SampleFile MakeSampleFile(const DibForm& form);

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

// Paints each form whole, in part, enlarged and reduced: the same pixels and a result above 0. That the decoder reads
// them right is held against bitmaps whose pixels are written out; the device context shows these as well.
void ExpectShowsAsRaster(std::span<const DibForm> shown_forms, const PaintOnCanvas& paint);

} // namespace partkeep
