// The top-level window of a dialog: fixed frame, no key handling of its own. It sees each key on its way to any
// widget inside, hosted controls included, before that widget does.
#pragma once

#include "desktop/dialog_request.h"
#include "desktop/spoken_role.h"
#include "desktop/toolkit_texts.h"

#include <QDialog>
#include <QPointer>

class QKeyEvent;

namespace partkeep {

class CDropDownList;

// What a frame tells its dialog.
class IDialogFrameEvents {
public:
    virtual ~IDialogFrameEvents() = default;

    virtual bool KeyDown(const QKeyEvent& event) = 0; // true: used up
    virtual void CloseBox() = 0;
    virtual void Requested(DialogRequest request) = 0; // by a control inside
    virtual void Painted() = 0;                        // outside the paint event, so that a message may follow
    virtual void FrameGoes() = 0;                      // its children still stand
};

class CDialogFrame : public QDialog {
public:
    // `events` must outlive the frame.
    CDialogFrame(IDialogFrameEvents& events, QWidget* owner);
    ~CDialogFrame() override;
    CDialogFrame(const CDialogFrame&) = delete;
    CDialogFrame& operator=(const CDialogFrame&) = delete;

    // Without input the window stays as it looks and ignores its user: another window goes first.
    void SetInputEnabled(bool enabled) { input_enabled_ = enabled; }

    // A paint that has been done is told at once instead of at the loop's next turn.
    void TellPainted();

    bool eventFilter(QObject* watched, QEvent* event) override;

protected:
    bool event(QEvent* event) override;
    void changeEvent(QEvent* event) override;
    void closeEvent(QCloseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    [[nodiscard]] bool IsFirstReceiver(const QWidget& widget, const QKeyEvent& event);
    void Colour(QWidget& widget) const;
    bool FilterKey(QWidget& widget, QKeyEvent& event);
    [[nodiscard]] CDropDownList* OpenListAround(const QWidget& widget) const;

    CSpokenRoles roles_;
    CToolkitTexts texts_;
    IDialogFrameEvents& events_;
    bool input_enabled_ = true;
    bool painted_ = false;                // and not told yet
    const QKeyEvent* last_key_ = nullptr; // compared, never read through
    QPointer<const QWidget> last_receiver_;
};

} // namespace partkeep
