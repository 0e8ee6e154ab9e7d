#include "desktop/qt_device_context.h"

#include "tests/support/dib_sample.h"

#include <QImage>
#include <gtest/gtest.h>

#include <tuple>

namespace partkeep {
namespace {

TEST(CQtDeviceContext, ShowsEverySamplePixelForPixel)
{
    ExpectShowsAsRaster(DrawnForms(), [](int width, int height, const std::function<void(IDeviceContext&)>& paint) {
        QImage image(width, height, QImage::Format_ARGB32_Premultiplied);
        image.fill(0);
        QPainter painter(&image);
        CQtDeviceContext context(painter);
        paint(context);
        painter.end();
        Picture shown(width, height);
        for (int y = 0; y < height; ++y) {
            for (int x = 0; x < width; ++x) {
                const QRgb pixel = image.pixel(x, y);
                shown.At(x, y) = qAlpha(pixel) != 0 ? pixel & 0xFFFFFF : untouched;
            }
        }
        return shown;
    });
}

TEST(CQtDeviceContext, ResultsAndEdges)
{
    QImage image(20, 20, QImage::Format_RGB32);
    image.fill(0xEEEEEE);
    QPainter painter(&image);
    painter.translate(4, 4);
    CQtDeviceContext context(painter);
    const SampleFile file = MakeSampleFile({});
    const DibView view = file.View();
    Picture picture = DecodePlainly(view);
    constexpr int far = 0x7FFFFFFF;
    EXPECT_EQ(context.SetDIBitsToDevice(0, 0, 11, 7, 0, 0, 0, 3, view), 3);
    EXPECT_EQ(image.pixel(4, 4), 0xFFEEEEEE) << "only the three rows from the bottom";
    EXPECT_EQ(context.SetDIBitsToDevice(0, 0, 11, 7, 0, 0, 0, 99, view), 7);
    EXPECT_EQ(context.SetDIBitsToDevice(0, 0, 11, 7, 0, 7, 0, 7, view), 0) << "source above";
    EXPECT_EQ(context.SetDIBitsToDevice(-4, -4, 11, 7, 0, 0, 0, 7, view), 7);
    EXPECT_EQ(image.pixel(0, 0), 0xFF000000 | picture.At(0, 0));
    EXPECT_EQ(context.SetDIBitsToDevice(-far, -far, far, far, 0, 0, 0, 7, view), 0);
    EXPECT_EQ(context.StretchDIBits({-far, 0, far, 7}, {0, 0, 11, 7}, view), 0);
    for (const auto& [width, height, first] :
         {std::tuple(0, 7, 0U), {11, 0, 0U}, {far, 7, 0U}, {11, far, 0U}, {11, 7, 1U}}) {
        EXPECT_EQ(context.SetDIBitsToDevice(0, 0, width, height, 0, 0, first, 7, view), 0);
    }
    for (const Rect& none : {Rect{0, 0, 0, 7}, {0, 0, 11, 0}, {0, 0, far, 7}}) {
        EXPECT_EQ(context.StretchDIBits(none, {0, 0, 11, 7}, view), 0);
        EXPECT_EQ(context.StretchDIBits({0, 0, 11, 7}, none, view), 0);
    }
    EXPECT_EQ(context.StretchDIBits({0, 0, 11, 7}, {11, 0, 22, 7}, view), 0) << "source beside";
    EXPECT_EQ(context.StretchDIBits({0, 0, 11, 7}, {-11, 0, 0, 7}, view), 0) << "source before";
    EXPECT_EQ(context.StretchDIBits({90, 90, 99, 99}, {0, 0, 11, 7}, view), 7) << "nothing of it is in view";
    EXPECT_EQ(context.GetSysColor(1), 0U) << "no colour that is asked for";
    EXPECT_EQ(context.StretchDIBits({11, 7, 0, 0}, {0, 0, 11, 7}, view), 7) << "mirrored both ways";
    EXPECT_EQ(image.pixel(4, 4), 0xFF000000 | picture.At(10, 6));
    for (const std::int64_t bits : {4, 8}) { // runs that are cut anywhere
        const SampleFile runs = MakeSampleFile({.bits = bits, .compression = bits == 8 ? 1 : 2});
        DibView cut = runs.View();
        for (const auto codes = cut.pixels; !cut.pixels.empty(); cut.pixels = codes.first(cut.pixels.size() - 1)) {
            EXPECT_EQ(context.StretchDIBits({0, 0, 11, 7}, {0, 0, 11, 7}, cut), 7) << cut.pixels.size();
        }
    }
    context.FillSolidRect({1, 1, 3, 2}, 0x030201);
    EXPECT_EQ(image.pixel(6, 5), 0xFF010203);
}

} // namespace
} // namespace partkeep
