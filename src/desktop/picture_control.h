// The picture control: shows a PNG file, fitted into its window with its proportions kept. The file is read as a
// whole when its path is set and not kept open.
#pragma once

#include "controls/picture_contract.h"

#include <QImage>
#include <QPointer>
#include <QWidget>

#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <string_view>

namespace partkeep {

class CPictureWidget : public QWidget {
public:
    explicit CPictureWidget(QWidget* parent);

    void SetImage(const QImage& image); // null: nothing is shown
    [[nodiscard]] const QImage& Image() const { return image_; }

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QImage image_;
};

class CPictureControl : public IHostedControl {
public:
    explicit CPictureControl(CPictureWidget* widget) : widget_(widget) {}

    ControlResult Invoke(std::int32_t dispatch_id, InvokeKind kind, std::span<const ControlArgument> arguments,
                         ControlType result) override;
    void SetEventSink(std::function<void(std::int32_t)>) override {} // it has no events

    // The contract's operations.
    [[nodiscard]] std::u16string GetImagePath() const { return path_; }
    void SetImagePath(std::u16string_view path);
    static std::int16_t SecondOperation(AutomationObject* /*object*/) { return 0; }
    static void AboutBox() {}

private:
    QPointer<CPictureWidget> widget_;
    std::u16string path_;
};

} // namespace partkeep
