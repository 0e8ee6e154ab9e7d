// The seven bitmap functions under the names and with the argument types by which other modules call them.

#include "controls/dib_helpers.h"
#include "windows/gdi_device_context.h"

#include <windows.h>

#include <cstddef>

namespace partkeep {

namespace {

// A palette object of the host's window library: of its layout this much is relied on, that the handle follows
// the pointer to the virtual functions.
struct HostPalette {
    const void* functions;
    HPALETTE handle;
};
static_assert(offsetof(HostPalette, handle) == sizeof(void*));

// Reads and writes the host's object. A palette that it holds already is deleted when a new one comes, so that
// asking twice does not leak.
class CHostPaletteAccess final : public IPalette {
public:
    explicit CHostPaletteAccess(HostPalette& palette) : palette_(palette) {}

    bool CreatePalette(std::span<const PaletteEntry> entries) override
    {
        CGdiPalette made;
        if (!made.CreatePalette(entries)) {
            return false;
        }
        if (palette_.handle != nullptr) {
            DeleteObject(palette_.handle);
        }
        palette_.handle = made.Detach();
        return true;
    }
    [[nodiscard]] PaletteHandle Handle() const override { return palette_.handle; }

private:
    HostPalette& palette_;
};

Rect CoreRect(const RECT& area)
{
    return {static_cast<int>(area.left), static_cast<int>(area.top), static_cast<int>(area.right),
            static_cast<int>(area.bottom)};
}

} // namespace

} // namespace partkeep

using namespace partkeep;

extern "C" {

INT WINAPI ExportedPaintDIB(HDC context, const RECT* target, HANDLE block, const RECT* source, void* palette)
{
    if (target == nullptr || source == nullptr) {
        return 0;
    }
    try {
        CGdiDeviceContext device(context);
        const Rect to = CoreRect(*target);
        const Rect from = CoreRect(*source);
        if (palette == nullptr) {
            return PaintDIB(device, &to, block, &from, nullptr);
        }
        const CHostPaletteAccess host_palette(*static_cast<HostPalette*>(palette));
        return PaintDIB(device, &to, block, &from, &host_palette);
    } catch (...) {
        return 0;
    }
}

INT WINAPI ExportedCreateDIBPalette(HANDLE block, void* palette)
{
    if (palette == nullptr) {
        return 0;
    }
    try {
        CHostPaletteAccess host_palette(*static_cast<HostPalette*>(palette));
        return CreateDIBPalette(block, &host_palette);
    } catch (...) {
        return 0;
    }
}

const void* WINAPI ExportedFindDIBBits(const void* header)
{
    return FindDIBBits(header);
}

DWORD WINAPI ExportedDIBWidth(const void* header)
{
    return DIBWidth(header);
}

DWORD WINAPI ExportedDIBHeight(const void* header)
{
    return DIBHeight(header);
}

WORD WINAPI ExportedPaletteSize(const void* header)
{
    return PaletteSize(header);
}

WORD WINAPI ExportedDIBNumColors(const void* header)
{
    return DIBNumColors(header);
}
}
