#include "windows/gdi_device_context.h"

#include <algorithm>
#include <cstddef>
#include <vector>

namespace partkeep {

namespace {

constexpr WORD palette_version = 0x300;

static_assert(sizeof(PaletteEntry) == sizeof(PALETTEENTRY)); // four bytes in the same order

const BITMAPINFO* HeaderOf(const DibView& bitmap)
{
    return reinterpret_cast<const BITMAPINFO*>(bitmap.header.data());
}

} // namespace

PaletteHandle CGdiDeviceContext::SelectPalette(PaletteHandle palette, bool background)
{
    return ::SelectPalette(context_, static_cast<HPALETTE>(palette), background ? TRUE : FALSE);
}

void CGdiDeviceContext::SetStretchBltMode(int mode)
{
    ::SetStretchBltMode(context_, mode);
}

int CGdiDeviceContext::SetDIBitsToDevice(int target_x, int target_y, int width, int height, int source_x, int source_y,
                                         unsigned first_line, unsigned line_count, const DibView& bitmap)
{
    // The call takes unsigned sizes: a negative one would turn into a huge one.
    if (width <= 0 || height <= 0) {
        return 0;
    }
    return ::SetDIBitsToDevice(context_, target_x, target_y, static_cast<DWORD>(width), static_cast<DWORD>(height),
                               source_x, source_y, first_line, line_count, bitmap.pixels.data(), HeaderOf(bitmap),
                               DIB_RGB_COLORS);
}

int CGdiDeviceContext::StretchDIBits(const Rect& target, const Rect& source, const DibView& bitmap)
{
    return ::StretchDIBits(context_, target.left, target.top, target.Width(), target.Height(), source.left, source.top,
                           source.Width(), source.Height(), bitmap.pixels.data(), HeaderOf(bitmap), DIB_RGB_COLORS,
                           SRCCOPY);
}

void CGdiDeviceContext::FillSolidRect(const Rect& area, ColorRef color)
{
    const RECT opaque{area.left, area.top, area.right, area.bottom};
    SetBkColor(context_, color);
    ExtTextOutW(context_, 0, 0, ETO_OPAQUE, &opaque, nullptr, 0, nullptr);
}

ColorRef CGdiDeviceContext::GetSysColor(int index) const
{
    return ::GetSysColor(index);
}

CGdiPalette::~CGdiPalette()
{
    if (palette_ != nullptr) {
        DeleteObject(palette_);
    }
}

bool CGdiPalette::CreatePalette(std::span<const PaletteEntry> entries)
{
    std::vector<std::byte> record(offsetof(LOGPALETTE, palPalEntry) + entries.size_bytes());
    auto* header = reinterpret_cast<LOGPALETTE*>(record.data());
    header->palVersion = palette_version;
    header->palNumEntries = static_cast<WORD>(entries.size());
    std::copy_n(std::as_bytes(entries).data(), entries.size_bytes(),
                record.begin() + offsetof(LOGPALETTE, palPalEntry));
    HPALETTE made = ::CreatePalette(header);
    if (made == nullptr) {
        return false;
    }
    if (palette_ != nullptr) {
        DeleteObject(palette_);
    }
    palette_ = made;
    return true;
}

} // namespace partkeep
