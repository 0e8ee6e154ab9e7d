#include "controls/dib_helpers.h"

#include <array>
#include <optional>
#include <utility>

namespace partkeep {

namespace {

bool IsInfoHeader(const void* header)
{
    return ReadField<std::uint32_t>(header, 0) == dib_info_header_bytes;
}

// The old palette comes back when the bitmap is unlocked again: declare this before the lock.
class CBackgroundPalette {
public:
    explicit CBackgroundPalette(IDeviceContext& context) : context_(context) {}
    ~CBackgroundPalette()
    {
        if (previous_ != nullptr) {
            static_cast<void>(context_.SelectPalette(previous_, true));
        }
    }
    CBackgroundPalette(const CBackgroundPalette&) = delete;
    CBackgroundPalette& operator=(const CBackgroundPalette&) = delete;

    void Select(const IPalette& palette) { previous_ = context_.SelectPalette(palette.Handle(), true); }

private:
    IDeviceContext& context_;
    PaletteHandle previous_ = nullptr;
};

std::optional<int> ToInt(std::int64_t value)
{
    return std::in_range<int>(value) ? std::optional(static_cast<int>(value)) : std::nullopt;
}

// Whether width and height can be told in an int; callers hand in any four numbers.
bool HasExtents(const Rect& area)
{
    return ToInt(std::int64_t{area.right} - area.left) && ToInt(std::int64_t{area.bottom} - area.top);
}

// A caller that asks DIBHeight of a top-down bitmap gets a negative number; it means the rows that there are.
Rect UprightSource(const Rect& source, bool top_down)
{
    Rect upright = source;
    if (top_down && source.bottom < source.top) {
        const auto bottom = std::int64_t{source.top} + source.top - source.bottom;
        upright.bottom = ToInt(bottom).value_or(source.bottom);
    }
    return upright;
}

std::int32_t CopyUnscaled(IDeviceContext& context, const Rect& target, const Rect& source, int rows,
                          const DibView& view)
{
    const auto source_end = ToInt(std::int64_t{rows} - source.top);
    const auto source_y = ToInt(std::int64_t{rows} - source.top - source.Height());
    if (!source_end || !source_y) {
        return 0;
    }
    return context.SetDIBitsToDevice(target.left, target.top, target.Width(), target.Height(), source.left, *source_y,
                                     0, static_cast<std::uint16_t>(rows), view);
}

// The source rectangle goes out as it is, so that a part of a bitmap is counted from the bottom row here and
// from the top row when it is copied unscaled. Exported long ago; callers may have come to rely on it.
std::int32_t Copy(IDeviceContext& context, const Rect& target, const Rect& source, int rows, const DibView& view)
{
    if (target.Width() == source.Width() && target.Height() == source.Height()) {
        return CopyUnscaled(context, target, source, rows, view);
    }
    return context.StretchDIBits(target, source, view);
}

// A bare header begins with its own size, which the mark of a file header can never look like.
std::size_t HeaderOffset(const CLockedDib& dib)
{
    const auto bytes = dib.From(0);
    if (bytes.size() < sizeof(std::uint32_t)) {
        return 0;
    }
    const auto first = ReadField<std::uint32_t>(bytes.data(), 0);
    const bool bare = first == dib_info_header_bytes || first == dib_core_header_bytes;
    return bare ? 0 : dib_file_header_bytes;
}

struct ColorTable {
    std::span<const std::byte> bytes;
    std::size_t entry_bytes = 0;

    [[nodiscard]] std::size_t Count() const { return bytes.size() / entry_bytes; }
    [[nodiscard]] PaletteEntry Entry(std::size_t index) const
    {
        const auto bgr = ReadField<std::array<std::uint8_t, 3>>(bytes.data(), index * entry_bytes);
        return {bgr[2], bgr[1], bgr[0], 0};
    }
};

// Nothing for a header of neither kind, without colours, or with more than the bytes hold. The masks of a deep
// bitmap lie in front of its table.
std::optional<ColorTable> FindColorTable(std::span<const std::byte> dib)
{
    const auto figures = ReadDibFigures(dib);
    if (!figures) {
        return {};
    }
    const std::size_t table_bytes = DIBNumColors(dib.data()) * figures->color_bytes;
    if (table_bytes == 0 || dib.size() - figures->header_bytes < figures->mask_bytes + table_bytes) {
        return {};
    }
    return ColorTable{dib.subspan(figures->TableOffset(), table_bytes), figures->color_bytes};
}

// A block that is freed with its scope.
class COwnedBlock {
public:
    explicit COwnedBlock(std::size_t bytes) : block_(AllocateBlock(bytes)) {}
    ~COwnedBlock() { FreeBlock(block_); }
    COwnedBlock(const COwnedBlock&) = delete;
    COwnedBlock& operator=(const COwnedBlock&) = delete;

    [[nodiscard]] MemoryHandle Handle() const { return block_; }

private:
    MemoryHandle block_;
};

// The platform's palette record: version, count and the entries, of which one counts to the record itself.
constexpr std::size_t palette_record_bytes = 8;
constexpr std::size_t palette_entries_offset = 4;

} // namespace

std::uint32_t DIBWidth(const void* header)
{
    return IsInfoHeader(header) ? ReadField<std::uint32_t>(header, 4) : ReadField<std::uint16_t>(header, 4);
}

std::uint32_t DIBHeight(const void* header)
{
    return IsInfoHeader(header) ? ReadField<std::uint32_t>(header, 8) : ReadField<std::uint16_t>(header, 6);
}

std::uint16_t DIBNumColors(const void* header)
{
    const bool info = IsInfoHeader(header);
    const std::uint32_t used = info ? ReadField<std::uint32_t>(header, 32) : 0;
    if (used != 0) {
        return static_cast<std::uint16_t>(used);
    }
    switch (ReadField<std::uint16_t>(header, info ? 14 : 10)) {
    case 1:
        return 2;
    case 4:
        return 16;
    case 8:
        return 256;
    default:
        return 0;
    }
}

std::uint16_t PaletteSize(const void* header)
{
    const unsigned entry_bytes = IsInfoHeader(header) ? 4 : 3;
    return static_cast<std::uint16_t>(DIBNumColors(header) * entry_bytes);
}

const void* FindDIBBits(const void* header)
{
    return static_cast<const std::byte*>(header) + ReadField<std::uint32_t>(header, 0) + PaletteSize(header);
}

std::int32_t PaintDIB(IDeviceContext& context, const Rect* target, HDIB block, const Rect* source,
                      const IPalette* palette)
{
    if (block == nullptr || target == nullptr || source == nullptr) {
        return 0;
    }
    CBackgroundPalette background(context);
    const CLockedDib dib(block);
    const auto view = MakeDibView(dib.From(dib_file_header_bytes));
    const auto figures = ReadDibFigures(dib.From(dib_file_header_bytes));
    if (!view || !HasExtents(*target) || !HasExtents(*source)) {
        return 0;
    }
    if (palette != nullptr) {
        background.Select(*palette);
    }
    context.SetStretchBltMode(stretch_mode_color_on_color);
    return Copy(context, *target, UprightSource(*source, figures->top_down), figures->height, *view);
}

std::int32_t CreateDIBPalette(HDIB block, IPalette* palette)
{
    if (block == nullptr || palette == nullptr) {
        return 0;
    }
    const CLockedDib dib(block);
    const auto table = FindColorTable(dib.From(HeaderOffset(dib)));
    if (!table) {
        return 0;
    }
    const COwnedBlock record(palette_record_bytes + table->Count() * sizeof(PaletteEntry));
    const CBlockLock lock(record.Handle());
    if (lock.Address() == nullptr) {
        return 0;
    }
    auto* first = reinterpret_cast<PaletteEntry*>(static_cast<std::byte*>(lock.Address()) + palette_entries_offset);
    const std::span entries(first, table->Count());
    for (std::size_t index = 0; index < entries.size(); ++index) {
        entries[index] = table->Entry(index);
    }
    return palette->CreatePalette(entries) ? 1 : 0;
}

} // namespace partkeep
