#include "controls/zan_pic_ctrl.h"
#include "desktop/picture_control.h"
#include "tests/desktop/played_user.h"
#include "tests/support/temporary_folder.h"

#include <QBitmap>
#include <QBuffer>

#include <gtest/gtest.h>

#include <filesystem>

namespace partkeep {
namespace {

std::string Encoded(const QImage& image, const char* format)
{
    QByteArray bytes;
    QBuffer buffer(&bytes);
    image.save(&buffer, format);
    return bytes.toStdString();
}

QImage Red(int width, int height)
{
    QImage image(width, height, QImage::Format_RGB32);
    image.fill(Qt::red);
    return image;
}

class Picture : public ::testing::Test {
protected:
    Picture()
    {
        widget_.resize(149, 149);
        control_.Attach(std::make_unique<CPictureControl>(&widget_));
    }

    CTemporaryFolder folder_;
    CPictureWidget widget_{nullptr};
    CzXZanPicCtrl control_;
};

TEST_F(Picture, FitsThePictureAndKeepsItsProportions)
{
    const std::tuple<const char*, QSize, QRect> rows[] = {
        {"wide", {400, 200}, {0, 37, 149, 74}},
        {"tall", {10, 100}, {67, 0, 14, 149}},
        {"small square grows", {5, 5}, {0, 0, 149, 149}},
    };
    for (const auto& [label, size, area] : rows) {
        SCOPED_TRACE(label);
        WriteBytes(folder_.Path("p.png"), Encoded(Red(size.width(), size.height()), "PNG"));
        control_.SetImagePath(folder_.Core(u"p.PNG"));
        const QImage mask = widget_.grab().toImage().createMaskFromColor(qRgb(255, 0, 0), Qt::MaskOutColor);
        const QRect shown = QRegion(QBitmap::fromImage(mask)).boundingRect();
        EXPECT_LE((shown.topLeft() - area.topLeft()).manhattanLength(), 2);
        EXPECT_LE((shown.bottomRight() - area.bottomRight()).manhattanLength(), 2);
    }
}

TEST_F(Picture, KeepsNoFileOpenAndShowsWhatItReadAfterItHasGone)
{
    const auto path = folder_.Path("p.PNG");
    WriteBytes(path, Encoded(Red(20, 20), "PNG"));
    control_.SetImagePath(folder_.Core(u"p.PNG"));
    for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
        std::error_code ignored;
        EXPECT_NE(std::filesystem::read_symlink(entry, ignored), path);
    }
    std::filesystem::remove(path);
    EXPECT_EQ(widget_.Image().size(), QSize(20, 20));
    EXPECT_EQ(control_.GetImagePath(), folder_.Core(u"p.PNG"));
    control_.SetImagePath(u"");
    EXPECT_TRUE(widget_.Image().isNull());
    EXPECT_EQ(control_.GetImagePath(), u"");
}

TEST_F(Picture, StaysEmptyForWhatItCannotRead)
{
    const std::string png = Encoded(Red(20, 20), "PNG");
    std::filesystem::create_directory(folder_.Path("folder.PNG"));
    WriteBytes(folder_.Path("good.PNG"), png);
    WriteBytes(folder_.Path("empty.PNG"), "");
    WriteBytes(folder_.Path("header.PNG"), png.substr(0, 20));
    WriteBytes(folder_.Path("other.PNG"), Encoded(Red(20, 20), "BMP"));
    WriteBytes(folder_.Path("huge.PNG"), png.substr(0, 16) + "\x7f\xff\xff\xff\x7f\xff\xff\xff" + png.substr(24));
    WriteBytes(folder_.Path("long.PNG"), png);
    std::filesystem::resize_file(folder_.Path("long.PNG"), (64 << 20) + 1);
    for (const char16_t* name :
         {u"long.PNG", u"missing.PNG", u"folder.PNG", u"empty.PNG", u"header.PNG", u"other.PNG", u"huge.PNG"}) {
        control_.SetImagePath(folder_.Core(u"good.PNG"));
        ASSERT_FALSE(widget_.Image().isNull());
        control_.SetImagePath(folder_.Core(name));
        EXPECT_TRUE(widget_.Image().isNull()) << QString::fromUtf16(name).toStdString();
    }
}

} // namespace
} // namespace partkeep
