#include "desktop/qt_dialog_toolbar.h"

#include "desktop/qt_toolbar.h"
#include "desktop/qt_values.h"
#include "partlibrary/library/library_text.h"

namespace partkeep {

namespace {

class CQtDialogToolbar final : public IToolbar {
public:
    CQtDialogToolbar(const QPointer<CDialogFrame>& frame, CQtDialogEvents& events) : frame_(frame), events_(events) {}

    bool CreateToolbar(const ToolbarTemplate& toolbar) override
    {
        if (!frame_) {
            return false;
        }
        bar_ = new CQtToolbar(toolbar, frame_, [this](int command) { events_.Command(command); });
        return true;
    }
    [[nodiscard]] Rect ClientRectBesideToolbar() const override
    {
        Rect rest = frame_ ? ToRect(frame_->rect()) : Rect{};
        rest.top += bar_ ? bar_->height() : 0;
        return rest;
    }
    void MoveAllControls(int dx, int dy) override
    {
        if (!frame_) {
            return;
        }
        for (QWidget* child : frame_->findChildren<QWidget*>(QString(), Qt::FindDirectChildrenOnly)) {
            if (!child->isWindow() && child != bar_) {
                child->move(child->x() + dx, child->y() + dy);
            }
        }
    }
    void PlaceToolbar() override
    {
        if (bar_) {
            bar_->move(0, 0);
            bar_->show();
        }
    }
    void EnableToolTips() override
    {
        if (bar_) {
            bar_->EnableToolTips([this](int command) { return FromWide(events_.ToolTipText(command)); });
        }
    }
    void PressTool(int command, bool pressed) override
    {
        if (bar_) {
            bar_->Press(command, pressed);
        }
    }

private:
    const QPointer<CDialogFrame>& frame_;
    CQtDialogEvents& events_;
    QPointer<CQtToolbar> bar_;
};

} // namespace

std::unique_ptr<IToolbar> MakeQtDialogToolbar(const QPointer<CDialogFrame>& frame, CQtDialogEvents& events)
{
    return std::make_unique<CQtDialogToolbar>(frame, events);
}

} // namespace partkeep
