#include "desktop/qt_device_context.h"

#include "desktop/dib_pixels.h"

#include <QGuiApplication>
#include <QImage>
#include <QPalette>

#include <algorithm>
#include <cstdlib>
#include <optional>
#include <utility>
#include <vector>

namespace partkeep {

namespace {

// Beyond any screen, and small enough that a product of two lengths fits in 64 bits.
constexpr std::int64_t max_length = 1 << 28;

// One direction of a transfer: which source coordinate a target coordinate shows.
struct Axis {
    std::int64_t target = 0;
    std::int64_t target_length = 0;
    std::int64_t source = 0;
    std::int64_t source_length = 0;
    bool reversed = false;

    [[nodiscard]] std::int64_t SourceOf(std::int64_t coordinate) const
    {
        const std::int64_t place = reversed ? target_length - 1 - (coordinate - target) : coordinate - target;
        return source + (2 * place + 1) * source_length / (2 * target_length);
    }
    [[nodiscard]] bool Touches(int extent) const { return source < extent && source + source_length > 0; }
};

// Nothing for empty or oversized ranges. `opposed`: the source counts against the target, as rows do.
std::optional<Axis> MakeAxis(std::pair<int, int> target, std::pair<int, int> source, bool opposed)
{
    const auto target_length = std::int64_t{target.second} - target.first;
    const auto source_length = std::int64_t{source.second} - source.first;
    if (target_length == 0 || source_length == 0 || std::abs(target_length) > max_length ||
        std::abs(source_length) > max_length) {
        return {};
    }
    const bool mirrored = (target_length < 0) != (source_length < 0);
    return Axis{std::min(target.first, target.second), std::abs(target_length), std::min(source.first, source.second),
                std::abs(source_length), mirrored != opposed};
}

struct Transfer {
    Axis across;
    Axis up;
};

std::optional<Transfer> MakeTransfer(const Rect& target, const Rect& source)
{
    const auto across = MakeAxis({target.left, target.right}, {source.left, source.right}, false);
    const auto up = MakeAxis({target.top, target.bottom}, {source.top, source.bottom}, true);
    if (!across || !up) {
        return {};
    }
    return Transfer{*across, *up};
}

QRect VisibleArea(const QPainter& painter)
{
    return painter.transform().inverted().mapRect(QRectF(painter.window())).toAlignedRect();
}

// The part of the target that the painter can show.
QRect TargetArea(const Transfer& transfer, const QRect& visible)
{
    const auto clip = [](const Axis& axis, int first, int last) {
        const auto from = std::max<std::int64_t>(axis.target, first);
        const auto to = std::min<std::int64_t>(axis.target + axis.target_length - 1, last);
        return std::pair(static_cast<int>(from), static_cast<int>(std::max(to, from - 1)));
    };
    const auto [left, right] = clip(transfer.across, visible.left(), visible.right());
    const auto [top, bottom] = clip(transfer.up, visible.top(), visible.bottom());
    return {QPoint(left, top), QPoint(right, bottom)};
}

// Where `extent` is met from `from` on, -1 outside of it.
std::vector<int> SourcesOf(const Axis& axis, int from, int count, int extent)
{
    std::vector<int> sources;
    sources.reserve(static_cast<std::size_t>(count));
    for (int step = 0; step < count; ++step) {
        const std::int64_t source = axis.SourceOf(std::int64_t{from} + step);
        sources.push_back(source >= 0 && source < extent ? static_cast<int>(source) : -1);
    }
    return sources;
}

// Transparent where the bitmap has nothing to show. Null when there is no memory for it.
QImage PictureOf(const Transfer& transfer, const QRect& area, const CDibPixels& pixels, int rows_shown)
{
    QImage picture(area.size(), QImage::Format_ARGB32_Premultiplied);
    if (picture.isNull()) {
        return picture;
    }
    picture.fill(0);
    const auto columns = SourcesOf(transfer.across, area.left(), area.width(), pixels.Width());
    const auto rows = SourcesOf(transfer.up, area.top(), area.height(), rows_shown);
    for (int y = 0; y < area.height(); ++y) {
        const int row = rows[static_cast<std::size_t>(y)];
        auto* line = reinterpret_cast<std::uint32_t*>(picture.scanLine(y));
        for (std::size_t x = 0; row >= 0 && x < columns.size(); ++x) {
            line[x] = columns[x] >= 0 ? pixels.At(columns[x], row) : 0;
        }
    }
    return picture;
}

// False when there is nothing of the bitmap in the source, or no memory.
bool Draw(QPainter& painter, const Transfer& transfer, const DibView& bitmap, int rows_shown)
{
    const CDibPixels pixels(bitmap);
    if (!transfer.across.Touches(pixels.Width()) || !transfer.up.Touches(rows_shown)) {
        return false;
    }
    const QRect area = TargetArea(transfer, VisibleArea(painter));
    if (area.isEmpty()) {
        return true;
    }
    const QImage picture = PictureOf(transfer, area, pixels, rows_shown);
    painter.drawImage(area.topLeft(), picture);
    return !picture.isNull();
}

} // namespace

PaletteHandle CQtDeviceContext::SelectPalette(PaletteHandle palette, bool)
{
    return std::exchange(selected_, palette);
}

int CQtDeviceContext::SetDIBitsToDevice(int target_x, int target_y, int width, int height, int source_x, int source_y,
                                        unsigned first_line, unsigned line_count, const DibView& bitmap)
{
    const auto figures = ReadDibFigures(bitmap.header);
    if (!figures || width <= 0 || height <= 0 || width > max_length || height > max_length || first_line != 0) {
        return 0;
    }
    const Axis across{target_x, width, source_x, width, false};
    const Axis up{target_y, height, source_y, height, true};
    const auto lines = static_cast<int>(std::min(line_count, static_cast<unsigned>(figures->height)));
    return Draw(painter_, {across, up}, bitmap, lines) ? lines : 0;
}

int CQtDeviceContext::StretchDIBits(const Rect& target, const Rect& source, const DibView& bitmap)
{
    const auto figures = ReadDibFigures(bitmap.header);
    const auto transfer = MakeTransfer(target, source);
    if (!figures || !transfer) {
        return 0;
    }
    return Draw(painter_, *transfer, bitmap, figures->height) ? figures->height : 0;
}

void CQtDeviceContext::FillSolidRect(const Rect& area, ColorRef color)
{
    const QColor fill(static_cast<int>(color & 0xFF), static_cast<int>(color >> 8 & 0xFF),
                      static_cast<int>(color >> 16 & 0xFF));
    painter_.fillRect(QRect(QPoint(area.left, area.top), QPoint(area.right - 1, area.bottom - 1)), fill);
}

ColorRef CQtDeviceContext::GetSysColor(int index) const
{
    if (index != system_color_3d_face) {
        return 0;
    }
    const QColor face = QGuiApplication::palette().color(QPalette::Window);
    return static_cast<ColorRef>(face.red() | face.green() << 8 | face.blue() << 16);
}

} // namespace partkeep
