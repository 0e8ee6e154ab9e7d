#include "controls/image_panel.h"

#include "tests/support/dib_sample.h"

#include <gtest/gtest.h>

namespace partkeep {
namespace {

struct PanelModel {
    std::function<void(IDeviceContext&)> painter;
    Rect client{0, 0, 11, 7};
    std::vector<std::string> calls;
};

struct ModelWindow : IPanelWindow {
    explicit ModelWindow(PanelModel& shown) : model(shown) {}
    void SetPainter(std::function<void(IDeviceContext&)> painter) override { model.painter = std::move(painter); }
    Rect ClientRect() const override { return model.client; }
    Rect MapToDialog(const Rect& area) const override
    {
        return {area.left + 5, area.top + 9, area.right + 5, area.bottom + 9};
    }
    void Move(const Rect& area) override { model.client = area; }
    void Show(bool) override {}
    void Invalidate(bool erase) override { model.calls.emplace_back(erase ? "Invalidate erase" : "Invalidate"); }

    PanelModel& model;
};

TEST(ImagePanel, PaintsImageOrBackground)
{
    PanelModel model;
    CImagePanel panel;
    EXPECT_EQ(panel.SetImage(nullptr), 1) << "without window";
    panel.Attach(std::make_unique<ModelWindow>(model));
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
        model.client.bottom = 8;
        EXPECT_EQ(painted(), "StretchDIBits 0 0 11 8 0 0 11 7");
        model.client.bottom = 7;
    }
    EXPECT_EQ(painted(), background) << "freed block";
    panel.SetImage(cut.handle);
    EXPECT_EQ(painted(), background) << "cut block";
    EXPECT_EQ(model.calls, (std::vector<std::string>{"Invalidate erase", "Invalidate erase"}));

    EXPECT_EQ(panel.SetImage(nullptr), 1);
    EXPECT_EQ(painted(), background);
    EXPECT_EQ(model.calls.size(), 2U) << "taking the image away repaints nothing";
    panel.SetClientExtent(149);
    EXPECT_EQ(model.client, (Rect{5, 9, 154, 158}));
}

} // namespace
} // namespace partkeep
