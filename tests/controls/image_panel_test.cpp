#include "controls/image_panel.h"

#include "tests/support/dib_sample.h"
#include "tests/support/scripted_window.h"

namespace partkeep {
namespace {

TEST(ImagePanel, PaintsImageOrBackground)
{
    Recorder recorder;
    CScriptedWindows windows(recorder);
    CScriptedWindow window(windows, selection_dialog_template);
    CImagePanel panel;
    EXPECT_EQ(panel.SetImage(nullptr), 1) << "without window";
    panel.Attach(window.CreatePanel(RES_IMAGE_PANEL, {5, 9, 16, 16}));
    recorder.lines.clear();
    ControlModel& model = window.controls[-1];
    const auto painted = [&model] {
        RasterContext raster(11, 7);
        model.painter(raster);
        return raster.calls.back();
    };
    const std::string background = "FillSolidRect 0 0 11 7 271";
    EXPECT_EQ(painted(), background);

    const SampleFile file = MakeSampleFile(DibSamples()[13]); // top-down
    const TestBlock cut(std::span(file.bytes).first(file.bytes.size() - 1));
    {
        const TestBlock block(file.bytes);
        EXPECT_EQ(panel.SetImage(block.handle), 1);
        EXPECT_EQ(painted(), "SetDIBitsToDevice 0 0 11 7 0 0 0 7");
        model.area.bottom = 17;
        EXPECT_EQ(painted(), "StretchDIBits 0 0 11 8 0 0 11 7");
        model.area.bottom = 16;
    }
    EXPECT_EQ(painted(), background) << "freed block";
    panel.SetImage(cut.handle);
    EXPECT_EQ(painted(), background) << "cut block";
    EXPECT_EQ(panel.SetImage(nullptr), 1);
    EXPECT_EQ(painted(), background);
    panel.SetClientExtent(149);
    // Taking the image away repaints nothing.
    EXPECT_EQ(recorder.lines,
              Steps("101: panel 1 Invalidate on; 101: panel 1 Invalidate on; 101: panel 1 Move 5,9,154,158"));
}

} // namespace
} // namespace partkeep
