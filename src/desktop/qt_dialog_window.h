// One dialog window, made from a template. Owns its frame and all widgets in it, from the start of a run or of a
// modeless life to its end; without a frame nothing exists and every call does nothing.
#pragma once

#include "desktop/control_set.h"
#include "desktop/dialog_frame.h"
#include "desktop/hosted_control_factory.h"
#include "desktop/qt_dialog_events.h"
#include "desktop/qt_dialog_fields.h"
#include "desktop/qt_dialog_toolbar.h"
#include "desktop/qt_messages.h"
#include "desktop/qt_report_list.h"
#include "platform/dialog_window.h"

#include <QEventLoop>
#include <QIcon>
#include <QPointer>

#include <map>
#include <memory>
#include <string>
#include <vector>

namespace partkeep {

class CQtDialogWindow : public IDialogWindow {
public:
    // `controls` may be null.
    CQtDialogWindow(const DialogTemplate& dialog, IQtControlFactory* controls);
    ~CQtDialogWindow() override;
    CQtDialogWindow(const CQtDialogWindow&) = delete;
    CQtDialogWindow& operator=(const CQtDialogWindow&) = delete;

    int RunModal(IDialogEvents& events) override;
    bool CreateModeless(IDialogEvents& events, IDialogWindow* owner) override;
    void EndModal(int result) override;
    void Destroy() override;
    [[nodiscard]] bool Exists() const override { return events_.IsBegun(); }

    void SetTitle(std::u16string_view title) override;
    [[nodiscard]] IconHandle ParentSmallIcon() const override;
    void SetSmallIcon(IconHandle icon) override;
    void Show(bool visible) override;
    void EnableOwner(bool enabled) override;
    void Invalidate() override;
    void UpdateNow() override;
    void BeginWait() override;
    void EndWait() override;
    [[nodiscard]] Rect ClientRect() const override;
    [[nodiscard]] IMessages& OwnerMessages() override { return messages_; }

    [[nodiscard]] IDialogFields& Fields() override { return *fields_; }
    [[nodiscard]] IReportList& ReportList() override { return *list_; }
    [[nodiscard]] IToolbar& Toolbar() override { return *toolbar_; }

    [[nodiscard]] std::unique_ptr<IHostedControl> CreateHostedControl(const ClassId& class_id, int id,
                                                                      const Rect& area) override;
    [[nodiscard]] std::unique_ptr<IHostedControl> TemplateControl(int id) override;
    void CreateLabel(int id, const Rect& area) override;
    [[nodiscard]] std::unique_ptr<IPanelWindow> CreatePanel(int id, const Rect& area) override;

private:
    // Life
    void Open(IDialogEvents& events, QWidget* owner);
    void MakeControls();
    void RunLoop();
    void Close();
    void BringUp();
    void ActivateOwner();
    void PlaceBesideOwner();

    [[nodiscard]] std::unique_ptr<IHostedControl> MakeHosted(const ClassId& class_id, QWidget*& widget);

    const DialogTemplate& template_;
    IQtControlFactory* factory_;
    QPointer<CDialogFrame> frame_;
    QPointer<QWidget> owner_;
    const CQtDialogWindow* owner_dialog_ = nullptr; // of a modeless window; good for as long as `owner_` is
    CControlSet controls_;
    std::unique_ptr<IDialogFields> fields_ = MakeQtDialogFields(frame_, controls_);
    CQtDialogEvents events_{frame_, owner_, controls_, *fields_};
    std::unique_ptr<IReportList> list_ = MakeQtReportList(controls_);
    std::unique_ptr<IToolbar> toolbar_ = MakeQtDialogToolbar(frame_, events_);
    CQtMessages messages_;
    mutable QIcon parent_icon_;                                        // what the handle of ParentSmallIcon points to
    std::map<int, std::unique_ptr<IHostedControl>> template_controls_; // until they are asked for
    std::vector<QPointer<QWidget>> panels_;
    QEventLoop* loop_ = nullptr; // null: no modal run
    bool ended_ = false;
    bool modeless_ = false;
    bool placed_ = false;
    int result_ = id_cancel;
    int waits_ = 0;
};

} // namespace partkeep
