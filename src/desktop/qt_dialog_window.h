// One dialog window, made from a template. Owns its frame and all widgets in it, from the start of a run or of a
// modeless life to its end; without a frame nothing exists and every call does nothing.
#pragma once

#include "desktop/control_set.h"
#include "desktop/dialog_frame.h"
#include "desktop/hosted_control_factory.h"
#include "desktop/qt_dialog_fields.h"
#include "desktop/qt_dialog_toolbar.h"
#include "desktop/qt_messages.h"
#include "desktop/qt_report_list.h"
#include "platform/dialog_window.h"

#include <QEventLoop>
#include <QIcon>

#include <map>

namespace partkeep {

class CQtDialogWindow : public IDialogWindow, private IDialogFrameEvents {
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
    [[nodiscard]] bool Exists() const override { return events_ != nullptr; }

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

    [[nodiscard]] IDialogFields& Fields() override { return fields_; }
    [[nodiscard]] IReportList& ReportList() override { return list_; }
    [[nodiscard]] IToolbar& Toolbar() override { return toolbar_; }

    [[nodiscard]] std::unique_ptr<IHostedControl> CreateHostedControl(const ClassId& class_id, int id,
                                                                      const Rect& area) override;
    [[nodiscard]] std::unique_ptr<IHostedControl> TemplateControl(int id) override;
    [[nodiscard]] std::unique_ptr<IPanelWindow> CreatePanel(int id, const Rect& area) override;

private:
    // Life
    void Open(IDialogEvents& events, QWidget* owner);
    void MakeControls();
    void Connect(int id, QWidget* widget);
    void RunLoop();
    void Close();
    void BringUp();
    void ActivateOwner();
    void PlaceBesideOwner();

    // Events. Each is counted for as long as it is told: the window may be closed from inside one.
    template <typename Event, typename... Given>
    auto Tell(Event event, Given... given)
    {
        struct CTold {
            int& count;
            ~CTold() { --count; }
        };
        const CTold told{++events_told_};
        return (events_->*event)(given...);
    }
    bool KeyDown(const QKeyEvent& event) override;
    void CloseBox() override { Command(id_cancel); }
    void Painted() override;
    void FrameGoes() override;
    bool DefaultKey(const KeyPress& press);
    void PressDefault();
    void Command(int id);
    void TextChanged(int id);
    void SelectionChanged(int id);
    void GoToNextWindow();

    [[nodiscard]] std::unique_ptr<IHostedControl> MakeHosted(const ClassId& class_id, QWidget*& widget);

    const DialogTemplate& template_;
    IQtControlFactory* factory_;
    IDialogEvents* events_ = nullptr; // null: no window
    QPointer<CDialogFrame> frame_;
    QPointer<QWidget> owner_;
    const CQtDialogWindow* owner_dialog_ = nullptr; // of a modeless window; good for as long as `owner_` is
    CControlSet controls_;
    CQtDialogFields fields_{frame_, controls_};
    CQtReportList list_{controls_};
    CQtDialogToolbar toolbar_{frame_, events_, [this](int command) { Command(command); }};
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
    int events_told_ = 0; // that have not returned
};

} // namespace partkeep
