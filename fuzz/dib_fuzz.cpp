// Feeds arbitrary blocks to everything that takes one: painting, palette and panel stay inside the block, and the
// decoder that draws on a screen shows what the plain one of the tests shows.
#include "controls/dib_helpers.h"
#include "controls/image_panel.h"
#include "desktop/dib_pixels.h"
#include "tests/support/raster_context.h"

#include <cstdlib>
#include <memory>

namespace partkeep {
namespace {

// The input begins with two rectangles for PaintDIB; the rest is the block.
struct Rects {
    Rect target;
    Rect source;
};

// Decoding a whole picture that a few bytes of runs claim costs too much of a fuzzing minute.
constexpr std::int64_t most_pixels = 1 << 18;

class PlainWindow : public IPanelWindow {
public:
    explicit PlainWindow(std::function<void(IDeviceContext&)>& painter) : painter_(painter) {}
    void SetPainter(std::function<void(IDeviceContext&)> painter) override { painter_ = std::move(painter); }
    [[nodiscard]] Rect ClientRect() const override { return {0, 0, 8, 8}; }
    [[nodiscard]] Rect MapToDialog(const Rect& area) const override { return area; }
    void Move(const Rect&) override {}
    void Show(bool) override {}
    void Invalidate(bool) override {}

private:
    std::function<void(IDeviceContext&)>& painter_;
};

class SummingPalette : public IPalette {
public:
    bool CreatePalette(std::span<const PaletteEntry> entries) override
    {
        for (const PaletteEntry& entry : entries) {
            sum_ += entry.red + entry.green + entry.blue + entry.flags;
        }
        return !entries.empty();
    }
    [[nodiscard]] PaletteHandle Handle() const override { return nullptr; }

private:
    unsigned sum_ = 0;
};

void Require(bool condition)
{
    if (!condition) {
        std::abort();
    }
}

void CompareDecoders(const DibView& view)
{
    Picture plain = DecodePlainly(view);
    const CDibPixels pixels(view);
    for (int y = 0; y < plain.height; ++y) {
        for (int x = 0; x < plain.width; ++x) {
            const std::uint32_t color = pixels.At(x, plain.height - 1 - y);
            Require((color == 0 ? untouched : color & 0xFFFFFF) == plain.At(x, y));
        }
    }
}

void PaintAll(HDIB block, const Rects& rects)
{
    RasterContext raster(8, 8);
    const Rect whole{0, 0, 8, 8};
    PaintDIB(raster, &whole, block, &rects.source, nullptr);
    PaintDIB(raster, &rects.target, block, &rects.source, nullptr);

    std::function<void(IDeviceContext&)> painter;
    CImagePanel panel;
    panel.Attach(std::make_unique<PlainWindow>(painter));
    panel.SetImage(block);
    painter(raster);
}

void FuzzBlock(HDIB block, const Rects& rects)
{
    SummingPalette palette;
    CreateDIBPalette(block, &palette);
    const CLockedDib dib(block);
    const auto view = MakeDibView(dib.From(dib_file_header_bytes));
    if (view) {
        const auto figures = ReadDibFigures(view->header);
        Require(figures.has_value());
        if (std::int64_t{figures->width} * figures->height > most_pixels) {
            return;
        }
        CompareDecoders(*view);
    }
    PaintAll(block, rects);
}

} // namespace
} // namespace partkeep

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    using namespace partkeep;
    Rects rects;
    if (size <= sizeof rects) {
        return 0;
    }
    std::memcpy(&rects, data, sizeof rects);
    HDIB block = AllocateBlock(size - sizeof rects);
    {
        const CBlockLock lock(block);
        std::memcpy(lock.Address(), data + sizeof rects, size - sizeof rects);
    }
    FuzzBlock(block, rects);
    FreeBlock(block);
    return 0;
}
