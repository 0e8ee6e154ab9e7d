#include "controls/image_panel.h"

#include "controls/dib_helpers.h"
#include "tests/support/dib_sample.h"
#include "tests/support/scripted_window.h"

namespace partkeep {
namespace {

TEST(ImagePanel, PaintsImageOrBackgroundInEveryForm)
{
    Recorder recorder;
    CScriptedWindows windows(recorder);
    CScriptedWindow window(windows, selection_dialog_template);
    CImagePanel panel;
    EXPECT_EQ(panel.SetImage(nullptr), 1) << "without window";
    panel.Attach(window.CreatePanel(RES_IMAGE_PANEL, {5, 9, 16, 16}));
    const SampleFile file = MakeSampleFile({.height = -7});
    const TestBlock whole(file.bytes);
    const TestBlock cut(std::span(file.bytes).first(file.bytes.size() - 1));
    const std::string background = "FillSolidRect 0 0 11 7 271";
    for (const auto& [image, call] : {std::pair<HDIB, std::string>(nullptr, background),
                                      {whole.handle, "SetDIBitsToDevice 0 0 11 7 0 0 0 7"},
                                      {cut.handle, background},
                                      {nullptr, background}}) {
        EXPECT_EQ(panel.SetImage(image), 1);
        RasterContext raster(11, 7);
        window.controls[-1].painter(raster);
        EXPECT_EQ(raster.calls.back(), call);
    }
    // Taking the image away repaints nothing.
    EXPECT_EQ(recorder.lines, Steps("101: CreatePanel 65535 5,9,16,16; 101: panel 1 Invalidate on; "
                                    "101: panel 1 Invalidate on"));
    constexpr Rect client{0, 0, 11, 7};
    ForEachForm([&](const DibForm& form, bool drawn) {
        SCOPED_TRACE(form.Label());
        SampleFile sample = MakeSampleFile(form);
        const TestBlock block(sample.bytes);
        panel.SetImage(block.handle);
        RasterContext raster(client.right, client.bottom);
        window.controls[-1].painter(raster);
        ASSERT_EQ(raster.calls.back().starts_with("FillSolidRect 0 0 "), !drawn);
        for (int y = 0; y < client.bottom; ++y) {
            for (int x = 0; x < client.right; ++x) {
                const int column = (2 * x + 1) * sample.picture.width / (2 * client.right);
                const int row = (2 * y + 1) * sample.picture.height / (2 * client.bottom);
                ASSERT_EQ(raster.canvas.At(x, y), drawn ? sample.picture.At(column, row) : untouched) << x << ' ' << y;
            }
        }
        RasterContext direct(1, 1);
        EXPECT_EQ(PaintDIB(direct, &client, block.handle, &client, nullptr) != 0, drawn);
        EXPECT_EQ(direct.calls.empty(), !drawn);
    });
    panel.Attach(nullptr);
    recorder.lines.clear();
    panel.SetImage(whole.handle);
    panel.Show(true);
    panel.SetClientExtent(7);
    RasterContext raster(11, 7);
    panel.OnPaint(raster);
    EXPECT_EQ(raster.calls, Lines{}) << "with its window taken away";
    EXPECT_EQ(recorder.lines, Lines{});
}

} // namespace
} // namespace partkeep
