#include "windows/gdi_device_context.h"

#include "controls/dib_helpers.h"
#include "tests/support/dib_sample.h"

#include <gtest/gtest.h>

namespace partkeep {
namespace {

constexpr std::uint32_t background = 0xEEEEEE;

// What a painter leaves on a bitmap of 32 bits.
Picture PaintWithGdi(int width, int height, const std::function<void(IDeviceContext&)>& paint)
{
    BITMAPINFO info{{sizeof(BITMAPINFOHEADER), width, -height, 1, 32, BI_RGB, 0, 0, 0, 0, 0}, {}};
    void* bits = nullptr;
    HDC device = CreateCompatibleDC(nullptr);
    HBITMAP bitmap = CreateDIBSection(device, &info, DIB_RGB_COLORS, &bits, nullptr, 0);
    HGDIOBJ previous = SelectObject(device, bitmap);
    Picture shown(width, height);
    auto* pixels = static_cast<std::uint32_t*>(bits);
    std::fill_n(pixels, shown.pixels.size(), background);
    CGdiDeviceContext context(device);
    paint(context);
    GdiFlush();
    for (std::size_t at = 0; at < shown.pixels.size(); ++at) {
        const std::uint32_t color = pixels[at] & 0xFFFFFF;
        shown.pixels[at] = color == background ? untouched : color;
    }
    SelectObject(device, previous);
    DeleteObject(bitmap);
    DeleteDC(device);
    return shown;
}

TEST(CGdiDeviceContext, ShowsEverySamplePixelForPixel)
{
    std::vector<DibForm> forms = DrawnForms();
    // GDI under Wine leaves the low bits of masks below four bits empty.
    std::erase_if(forms, [](const DibForm& form) { return form.bits == 16 && form.masks[2] == 1; });
    ExpectShowsAsRaster(forms, PaintWithGdi);
}

} // namespace
} // namespace partkeep
