#include "samples/sample_pictures.h"

#include <QBuffer>
#include <QImage>
#include <QPainter>
#include <QPainterPath>

#include <algorithm>
#include <array>
#include <initializer_list>
#include <vector>

namespace partkeep {

namespace {

constexpr int small_extent = 149;
constexpr int large_width = 640;
constexpr int large_height = 480;
constexpr int colours = 256;

const QColor metal(190, 200, 208);
const QColor lit_metal(222, 228, 233);
const QColor shaded_metal(140, 152, 163);
const QColor outline(38, 50, 62);
const QColor bend_line(190, 60, 30);

struct Point3 {
    double x;
    double y;
    double z;
};

bool BendsLongSides(SampleShape shape)
{
    return shape == SampleShape::Channel || shape == SampleShape::Box;
}

// Which sides are bent: left and right, then front and back.
double EndFlange(const SamplePart& part)
{
    return part.shape == SampleShape::Box ? part.flange : 0;
}

double FrontFlange(const SamplePart& part)
{
    return part.shape == SampleShape::Plate ? 0 : part.flange;
}

double BackFlange(const SamplePart& part)
{
    return BendsLongSides(part.shape) ? part.flange : 0;
}

// The outline with notches at the corners where two flanges meet. The origin is a corner of the base.
QPainterPath FlatOutline(const SamplePart& part)
{
    const double ends = EndFlange(part);
    QPainterPath path;
    path.setFillRule(Qt::WindingFill);
    path.addRect(0, -FrontFlange(part), part.length, part.width + FrontFlange(part) + BackFlange(part));
    path.addRect(-ends, 0, part.length + 2 * ends, part.width);
    return path.simplified();
}

QPainterPath Holes(const SamplePart& part)
{
    QPainterPath path;
    const double radius = std::min(part.width, part.length / (part.holes + 1)) * 0.14;
    for (int i = 1; i <= part.holes; ++i) {
        path.addEllipse(QPointF(part.length * i / (part.holes + 1), part.width / 2), radius, radius);
    }
    return path;
}

// As wide in proportion on a large picture as on a small one.
QPen LinePen(const QSize& size, const QColor& colour, Qt::PenStyle style = Qt::SolidLine)
{
    QPen pen(colour, 1.2 * size.height() / small_extent, style);
    pen.setCosmetic(true);
    return pen;
}

void FitInto(QPainter& painter, const QSize& size, const QRectF& area)
{
    constexpr double margin = 0.86;
    const double scale = margin * std::min(size.width() / area.width(), size.height() / area.height());
    painter.translate(size.width() / 2.0, size.height() / 2.0);
    painter.scale(scale, scale);
    painter.translate(-area.center());
}

QImage BlankImage(const QSize& size)
{
    QImage image(size, QImage::Format_RGB32);
    image.fill(Qt::white);
    return image;
}

QImage FlatImage(const SamplePart& part, const QSize& size)
{
    QImage image = BlankImage(size);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    const QPainterPath shape = FlatOutline(part).subtracted(Holes(part));
    FitInto(painter, size, shape.boundingRect());
    painter.setPen(LinePen(size, outline));
    painter.setBrush(metal);
    painter.drawPath(shape);

    painter.setPen(LinePen(size, bend_line, Qt::DashLine));
    if (FrontFlange(part) > 0) {
        painter.drawLine(QPointF(0, 0), QPointF(part.length, 0));
    }
    if (BackFlange(part) > 0) {
        painter.drawLine(QPointF(0, part.width), QPointF(part.length, part.width));
    }
    if (EndFlange(part) > 0) {
        painter.drawLine(QPointF(0, 0), QPointF(0, part.width));
        painter.drawLine(QPointF(part.length, 0), QPointF(part.length, part.width));
    }
    return image;
}

// Seen from the front, right and above.
QPointF Project(const Point3& point)
{
    constexpr double lean = 0.5;
    return {point.x + lean * point.y, -point.z - lean * point.y};
}

QPolygonF Face(const Point3& corner, const Point3& side, const Point3& other)
{
    const auto add = [](const Point3& a, const Point3& b) { return Point3{a.x + b.x, a.y + b.y, a.z + b.z}; };
    return {Project(corner), Project(add(corner, side)), Project(add(add(corner, side), other)),
            Project(add(corner, other))};
}

struct PaintedFace {
    QPolygonF polygon;
    QColor colour;
};

// From the back to the front, so that each face may cover those before it.
std::vector<PaintedFace> BentFaces(const SamplePart& part)
{
    const Point3 along{part.length, 0, 0};
    const Point3 across{0, part.width, 0};
    const Point3 back_height{0, 0, BackFlange(part)};
    const Point3 end_height{0, 0, EndFlange(part)};
    const Point3 front_height{0, 0, FrontFlange(part)};
    return {{Face({0, part.width, 0}, along, back_height), lit_metal},
            {Face({0, 0, 0}, across, end_height), shaded_metal},
            {Face({0, 0, 0}, along, across), metal},
            {Face({part.length, 0, 0}, across, end_height), shaded_metal},
            {Face({0, 0, 0}, along, front_height), lit_metal}};
}

QPainterPath ProjectedHoles(const SamplePart& part)
{
    QPainterPath path;
    for (QPolygonF& hole : Holes(part).toSubpathPolygons()) {
        for (QPointF& point : hole) {
            point = Project({point.x(), point.y(), 0});
        }
        path.addPolygon(hole);
    }
    return path;
}

QImage BentImage(const SamplePart& part, const QSize& size)
{
    QImage image = BlankImage(size);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    const std::vector<PaintedFace> faces = BentFaces(part);
    QRectF area;
    for (const PaintedFace& face : faces) {
        area |= face.polygon.boundingRect();
    }
    FitInto(painter, size, area);
    painter.setPen(LinePen(size, outline));
    for (std::size_t i = 0; i < faces.size(); ++i) {
        painter.setBrush(faces[i].colour);
        painter.drawPolygon(faces[i].polygon);
        if (i == 2) {
            painter.setBrush(Qt::white);
            painter.drawPath(ProjectedHoles(part));
        }
    }
    return image;
}

// A fixed palette of grey and of the bend line's colour faded into white keeps the file at its full size.
QList<QRgb> Palette()
{
    QList<QRgb> palette;
    for (int i = 0; i < colours / 2; ++i) {
        palette += qRgb(i * 2, i * 2, std::min(i * 2 + 6, 255));
    }
    for (int i = 0; i < colours / 2; ++i) {
        const double share = i / (colours / 2.0 - 1);
        const auto fade = [share](int value) { return static_cast<int>(value + (255 - value) * share); };
        palette += qRgb(fade(bend_line.red()), fade(bend_line.green()), fade(bend_line.blue()));
    }
    return palette;
}

QByteArray Encode(const QImage& image, const char* format)
{
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    return image.save(&buffer, format) ? bytes : QByteArray();
}

QByteArray EncodeSmall(const QImage& image)
{
    return Encode(image.convertToFormat(QImage::Format_Indexed8, Palette(), Qt::AvoidDither), "BMP");
}

} // namespace

QByteArray DrawFlatPattern(const SamplePart& part)
{
    return EncodeSmall(FlatImage(part, {small_extent, small_extent}));
}

QByteArray DrawBentView(const SamplePart& part)
{
    return EncodeSmall(BentImage(part, {small_extent, small_extent}));
}

QByteArray DrawLargePicture(const SamplePart& part)
{
    return Encode(FlatImage(part, {large_width, large_height}), "PNG");
}

} // namespace partkeep
