// A sunken child window that the dialog's logic paints.
#pragma once

#include "platform/dialog_window.h"

#include <QFrame>
#include <QPointer>

#include <functional>

namespace partkeep {

class CPanelFrame : public QFrame {
public:
    explicit CPanelFrame(QWidget* parent);

    std::function<void(IDeviceContext&)> painter;

protected:
    void paintEvent(QPaintEvent* event) override;
};

// Owns its frame, unless that has gone with its window.
class CQtPanelWindow : public IPanelWindow {
public:
    explicit CQtPanelWindow(CPanelFrame* frame) : frame_(frame) {}
    ~CQtPanelWindow() override { delete frame_; }
    CQtPanelWindow(const CQtPanelWindow&) = delete;
    CQtPanelWindow& operator=(const CQtPanelWindow&) = delete;

    void SetPainter(std::function<void(IDeviceContext&)> painter) override;
    [[nodiscard]] Rect ClientRect() const override;
    [[nodiscard]] Rect MapToDialog(const Rect& area) const override;
    void Move(const Rect& area) override;
    void Show(bool visible) override;
    void Invalidate(bool erase) override;

private:
    QPointer<CPanelFrame> frame_;
};

} // namespace partkeep
