// Makes the controls that dialogs host. Handed to the window renderer by whoever knows the controls.
#pragma once

#include "platform/control.h"

#include <memory>

class QKeyEvent;
class QWidget;

namespace partkeep {

// The widget of a control that has keys of its own wherever the focus is in its dialog.
class IWindowKeys {
public:
    virtual ~IWindowKeys() = default;

    virtual bool TakeWindowKey(const QKeyEvent& event) = 0; // true: used up
};

class IQtControlFactory {
public:
    virtual ~IQtControlFactory() = default;

    // Null when there is no such control. Otherwise `widget` is the control's window, a child of `parent`, which
    // owns it: the control outlives its widget when the dialog's window goes first, and must bear that.
    [[nodiscard]] virtual std::unique_ptr<IHostedControl> Create(const ClassId& class_id, QWidget* parent,
                                                                 QWidget*& widget) = 0;
};

} // namespace partkeep
