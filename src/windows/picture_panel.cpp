#include "windows/picture_panel.h"

#include "controls/picture_contract.h"
#include "platform/windows/wide_text.h"
#include "windows/com_ptr.h"
#include "windows/live_counts.h"

#include <wincodec.h>

#include <algorithm>
#include <cstdint>
#include <span>

namespace partkeep {

namespace {

constexpr UINT max_extent = 8192; // per direction: a file must not decide how much memory goes

class CPictureBitmap {
public:
    CPictureBitmap() = default;
    ~CPictureBitmap() { Clear(); }
    CPictureBitmap(const CPictureBitmap&) = delete;
    CPictureBitmap& operator=(const CPictureBitmap&) = delete;

    // The pixels, top row first, 32 bits each; null when there is no memory.
    void* Allocate(LONG width, LONG height)
    {
        Clear();
        BITMAPINFO format{};
        format.bmiHeader = {sizeof(BITMAPINFOHEADER), width, -height, 1, 32, BI_RGB, 0, 0, 0, 0, 0};
        void* pixels = nullptr;
        bitmap_ = CreateDIBSection(nullptr, &format, DIB_RGB_COLORS, &pixels, nullptr, 0);
        if (bitmap_ != nullptr) {
            ++TheLiveCounts().gdi_objects;
            size_ = {width, height};
        }
        return pixels;
    }
    void Clear()
    {
        if (bitmap_ != nullptr) {
            DeleteObject(bitmap_);
            bitmap_ = nullptr;
            --TheLiveCounts().gdi_objects;
        }
    }
    [[nodiscard]] HBITMAP Handle() const { return bitmap_; }
    [[nodiscard]] SIZE Size() const { return size_; }

private:
    HBITMAP bitmap_ = nullptr;
    SIZE size_{};
};

// A PNG file as premultiplied colours; null where it is none or cannot be read. No other decoder is asked: a stranger
// who made the file does not choose one.
CComPtr<IWICBitmapSource> DecodeFile(const std::wstring& path)
{
    CComPtr<IWICImagingFactory> factory;
    CComPtr<IWICStream> stream;
    CComPtr<IWICBitmapDecoder> decoder;
    CComPtr<IWICBitmapFrameDecode> frame;
    CComPtr<IWICFormatConverter> converter;
    const bool decoded =
        SUCCEEDED(CoCreateInstance(CLSID_WICImagingFactory, nullptr, CLSCTX_INPROC_SERVER, IID_IWICImagingFactory,
                                   factory.PutVoid())) &&
        SUCCEEDED(factory->CreateStream(stream.Put())) &&
        SUCCEEDED(stream->InitializeFromFilename(path.c_str(), GENERIC_READ)) &&
        SUCCEEDED(factory->CreateDecoder(GUID_ContainerFormatPng, nullptr, decoder.Put())) &&
        SUCCEEDED(decoder->Initialize(stream.Get(), WICDecodeMetadataCacheOnLoad)) &&
        SUCCEEDED(decoder->GetFrame(0, frame.Put())) && SUCCEEDED(factory->CreateFormatConverter(converter.Put())) &&
        SUCCEEDED(converter->Initialize(frame.Get(), GUID_WICPixelFormat32bppPBGRA, WICBitmapDitherTypeNone, nullptr,
                                        0.0, WICBitmapPaletteTypeCustom));
    return CComPtr<IWICBitmapSource>(decoded ? converter.Get() : nullptr);
}

// Laid over the panel's own colour: the system keeps all lines of a picture that it makes smaller where none of it
// shows through. A pixel's colour is multiplied by how much of it covers already.
void LayOverPanel(std::span<std::uint32_t> pixels)
{
    const COLORREF panel = GetSysColor(COLOR_3DFACE);
    const std::uint32_t under[]{GetBValue(panel), GetGValue(panel), GetRValue(panel)};
    for (std::uint32_t& pixel : pixels) {
        const std::uint32_t shows_through = 255 - (pixel >> 24);
        std::uint32_t over = 0xFF000000;
        for (int part = 0; part < 3; ++part) {
            const std::uint32_t colour = (pixel >> (8 * part)) & 0xFF;
            over |= std::min(colour + under[part] * shows_through / 255, 255U) << (8 * part);
        }
        pixel = over;
    }
}

bool ReadPicture(const std::wstring& path, CPictureBitmap& bitmap)
{
    const CComPtr<IWICBitmapSource> source = DecodeFile(path);
    UINT width = 0;
    UINT height = 0;
    if (!source || FAILED(source->GetSize(&width, &height)) || width == 0 || height == 0 || width > max_extent ||
        height > max_extent) {
        return false;
    }
    void* pixels = bitmap.Allocate(static_cast<LONG>(width), static_cast<LONG>(height));
    if (pixels == nullptr ||
        FAILED(source->CopyPixels(nullptr, width * 4, width * height * 4, static_cast<BYTE*>(pixels)))) {
        return false;
    }
    LayOverPanel({static_cast<std::uint32_t*>(pixels), std::size_t{width} * height});
    return true;
}

// The largest place in the middle of the client area that keeps the picture's shape.
RECT FitInto(const RECT& client, SIZE picture)
{
    const bool wide = MulDiv(picture.cx, client.bottom, std::max(picture.cy, 1L)) > client.right;
    const LONG width = wide ? client.right : MulDiv(picture.cx, client.bottom, picture.cy);
    const LONG height = wide ? MulDiv(picture.cy, client.right, picture.cx) : client.bottom;
    const LONG left = (client.right - width) / 2;
    const LONG top = (client.bottom - height) / 2;
    return {left, top, left + width, top + height};
}

class CPicturePanel final : public CSiteContent {
public:
    explicit CPicturePanel(HWND site) : site_(site)
    {
        SetWindowLongPtrW(site, GWL_STYLE, GetWindowLongPtrW(site, GWL_STYLE) & ~WS_TABSTOP); // nothing to do in it
    }

    ControlResult Invoke(std::int32_t dispatch_id, InvokeKind kind, std::span<const ControlArgument> arguments,
                         ControlType result) override
    {
        return Dispatch(picture::contract, MemberCalls<CPicturePanel>{*this}, {dispatch_id, kind, arguments, result});
    }
    void SetEventSink(std::function<void(std::int32_t)>) override {}

    void OnPaint(HDC context, const RECT& client) override
    {
        FillRect(context, &client, GetSysColorBrush(COLOR_3DFACE));
        HDC memory = picture_.Handle() != nullptr ? CreateCompatibleDC(context) : nullptr;
        if (memory == nullptr) {
            return;
        }
        HGDIOBJ previous = SelectObject(memory, picture_.Handle());
        const RECT place = FitInto(client, picture_.Size());
        SetStretchBltMode(context, HALFTONE);
        SetBrushOrgEx(context, 0, 0, nullptr);
        StretchBlt(context, place.left, place.top, place.right - place.left, place.bottom - place.top, memory, 0, 0,
                   picture_.Size().cx, picture_.Size().cy, SRCCOPY);
        SelectObject(memory, previous);
        DeleteDC(memory);
    }
    void OnSize(const RECT&) override { InvalidateRect(site_, nullptr, FALSE); }
    void OnDestroy() override { picture_.Clear(); }

    // The contract's operations.
    [[nodiscard]] std::u16string GetImagePath() const { return path_; }
    static std::int16_t SecondOperation(AutomationObject* /*object*/) { return 0; }
    static void AboutBox() {}
    void SetImagePath(std::u16string_view path)
    {
        path_ = path;
        if (path_.empty() || !ReadPicture(WideText(path_), picture_)) {
            picture_.Clear();
        }
        InvalidateRect(site_, nullptr, FALSE);
    }

private:
    HWND site_;
    std::u16string path_;
    CPictureBitmap picture_;
};

} // namespace

std::shared_ptr<CSiteContent> MakePicturePanel(HWND site)
{
    return std::make_shared<CPicturePanel>(site);
}

} // namespace partkeep
