// The controls of one dialog window by id: their widgets, their captions and their order. The widgets belong to
// the window; one that has gone counts as a control that does not exist.
#pragma once

#include "desktop/dialog_font.h"
#include "resources/dialog_templates.h"

#include <QFont>
#include <QPointer>
#include <QRect>
#include <QString>
#include <QWidget>

#include <vector>

namespace partkeep {

struct DialogControl {
    int id;
    ControlKind kind;
    QPointer<QWidget> widget;
    QString caption;   // as set, whatever of it fits
    bool in_tab_order; // false: the dialog's logic gives it its place
};

class CControlSet {
public:
    // Takes in the widgets of a window, placed in its units.
    CControlSet(const QFont& font, const DialogUnits& units) : font_(font), units_(units) {}

    void Add(const TemplateControl& control, QWidget* widget);
    // One made at run time, already in its place.
    void AddHosted(int id, QWidget* widget);
    void AddLabel(int id, QWidget* widget);

    // What the user goes on with while another window is open, on the screen: the hosted controls that were added, and
    // the push buttons.
    [[nodiscard]] std::vector<QRect> WorkingAreas() const;

    // Gives each label the control that it stands before: its access letter goes there.
    void BindLabels();

    // Null for one that does not exist.
    [[nodiscard]] QWidget* Widget(int id) const;
    template <typename T>
    [[nodiscard]] T* As(int id) const
    {
        return dynamic_cast<T*>(Widget(id));
    }

    void SetText(int id, const QString& text);
    [[nodiscard]] QString Text(int id) const;
    // For the captions to fit the control's present size.
    void Refit(int id);

    // The control that a widget is or lies in; 0 for none.
    [[nodiscard]] int IdAround(const QWidget* widget) const;

    // The next control that can take the focus, behind or before `id`; behind none comes the first. 0: there is
    // none at all.
    [[nodiscard]] int NextStop(int id, bool forward) const;

    // Names each control that has no caption of its own after the label before it or above it, else after the window.
    void NameForAccessibility(const std::vector<QWidget*>& panels) const;

private:
    [[nodiscard]] const DialogControl* Find(int id) const;
    void ShowCaption(DialogControl& control);
    [[nodiscard]] QWidget* ControlBeside(const QRect& label) const;
    [[nodiscard]] QString LabelAbove(const QRect& area) const;

    QFont font_;
    DialogUnits units_;
    std::vector<DialogControl> controls_; // in tab order
};

} // namespace partkeep
