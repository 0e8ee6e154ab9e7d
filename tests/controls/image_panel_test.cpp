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
    const SampleFile file = MakeSampleFile(DibSamples()[13]); // top-down
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
}

} // namespace
} // namespace partkeep
