#include "desktop/control_set.h"

#include "desktop/caption_fit.h"
#include "desktop/control_widgets.h"
#include "partlibrary/library/library_text.h"

#include <QAbstractButton>
#include <QCheckBox>
#include <QLabel>
#include <QStyle>

#include <algorithm>

namespace partkeep {

namespace {

constexpr int button_margin = 4;       // on either side of a caption, in pixels
constexpr int closed_list_height = 13; // in dialog units, whatever the template tells of the open list

// How far above a picture its label may stand, in pixels.
constexpr int label_reach = 40;

// What the captions of a control may take of its width.
int RoomForCaption(const QWidget& widget)
{
    if (qobject_cast<const QCheckBox*>(&widget) != nullptr) {
        const QStyle& style = *widget.style();
        return widget.width() - style.pixelMetric(QStyle::PM_IndicatorWidth, nullptr, &widget) -
               style.pixelMetric(QStyle::PM_CheckBoxLabelSpacing, nullptr, &widget);
    }
    return qobject_cast<const QLabel*>(&widget) != nullptr ? widget.width() : widget.width() - 2 * button_margin;
}

bool TakesCaption(ControlKind kind)
{
    return kind == ControlKind::Label || kind == ControlKind::PushButton || kind == ControlKind::DefaultPushButton ||
           kind == ControlKind::CheckBox;
}

bool InOneRow(const QRect& left, const QRect& right)
{
    return left.top() <= right.bottom() && right.top() <= left.bottom();
}

} // namespace

void CControlSet::Add(const TemplateControl& control, QWidget* widget)
{
    const int height = control.kind == ControlKind::DropDownList ? closed_list_height : control.height;
    widget->setGeometry(units_.ToPixels(control.x, control.y, control.width, height));
    widget->setObjectName(QString::number(control.id));
    controls_.push_back({control.id, control.kind, widget, {}, control.kind != ControlKind::Label});
    if (control.kind != ControlKind::HostedControl) {
        SetText(control.id, FromWide(control.caption));
    }
}

void CControlSet::AddHosted(int id, QWidget* widget)
{
    widget->setObjectName(QString::number(id));
    controls_.push_back({id, ControlKind::HostedControl, widget, {}, false});
}

void CControlSet::AddLabel(int id, QWidget* widget)
{
    widget->setObjectName(QString::number(id));
    widget->setFont(font_);
    controls_.push_back({id, ControlKind::Label, widget, {}, false});
}

std::vector<QRect> CControlSet::WorkingAreas() const
{
    std::vector<QRect> areas;
    for (const DialogControl& control : controls_) {
        const bool added = control.kind == ControlKind::HostedControl && !control.in_tab_order;
        const bool button = control.kind == ControlKind::PushButton || control.kind == ControlKind::DefaultPushButton;
        if (control.widget != nullptr && control.widget->isVisible() && (added || button)) {
            areas.emplace_back(control.widget->mapToGlobal(QPoint()), control.widget->size());
        }
    }
    return areas;
}

void CControlSet::BindLabels()
{
    for (const DialogControl& control : controls_) {
        if (auto* label = qobject_cast<QLabel*>(control.widget.data()); control.kind == ControlKind::Label && label) {
            label->setBuddy(ControlBeside(label->geometry()));
        }
    }
}

// The nearest field to the right in the same row. A template's own rule is the next control in tab order, but here
// all labels follow one another.
QWidget* CControlSet::ControlBeside(const QRect& label) const
{
    QWidget* nearest = nullptr;
    for (const DialogControl& control : controls_) {
        QWidget* widget = control.widget;
        if (widget == nullptr || TakesCaption(control.kind) || widget->x() < label.right() ||
            !InOneRow(label, widget->geometry())) {
            continue;
        }
        if (nearest == nullptr || widget->x() < nearest->x()) {
            nearest = widget;
        }
    }
    return nearest;
}

const DialogControl* CControlSet::Find(int id) const
{
    const auto control = std::find_if(controls_.begin(), controls_.end(), [id](const DialogControl& candidate) {
        return candidate.id == id && candidate.widget != nullptr;
    });
    return control == controls_.end() ? nullptr : &*control;
}

QWidget* CControlSet::Widget(int id) const
{
    const DialogControl* control = Find(id);
    return control == nullptr ? nullptr : control->widget.data();
}

void CControlSet::SetText(int id, const QString& text)
{
    if (auto* edit = As<CDialogEdit>(id)) {
        edit->SetProgramText(text);
        return;
    }
    for (DialogControl& control : controls_) {
        if (control.id == id && control.widget != nullptr && TakesCaption(control.kind)) {
            control.caption = text;
            ShowCaption(control);
        }
    }
}

QString CControlSet::Text(int id) const
{
    if (const auto* edit = As<CDialogEdit>(id)) {
        return edit->text();
    }
    const DialogControl* control = Find(id);
    return control == nullptr ? QString() : control->caption;
}

void CControlSet::Refit(int id)
{
    if (const DialogControl* control = Find(id)) {
        SetText(id, TakesCaption(control->kind) ? QString(control->caption) : Text(id));
    }
}

void CControlSet::ShowCaption(DialogControl& control)
{
    QWidget& widget = *control.widget;
    const QString shown = FitCaption(widget, font_, control.caption, RoomForCaption(widget));
    if (auto* button = qobject_cast<QAbstractButton*>(&widget)) {
        button->setText(shown);
    } else if (auto* label = qobject_cast<QLabel*>(&widget)) {
        label->setText(shown);
    }
    widget.setAccessibleName(SpokenCaption(control.caption));
}

int CControlSet::IdAround(const QWidget* widget) const
{
    for (; widget != nullptr && !widget->isWindow(); widget = widget->parentWidget()) {
        for (const DialogControl& control : controls_) {
            if (control.widget == widget) {
                return control.id;
            }
        }
    }
    return 0;
}

int CControlSet::NextStop(int id, bool forward) const
{
    std::vector<int> stops;
    for (const DialogControl& control : controls_) {
        const QWidget* widget = control.widget;
        if (widget != nullptr && control.in_tab_order && widget->isEnabled() && !widget->isHidden()) {
            stops.push_back(control.id);
        }
    }
    if (stops.empty()) {
        return 0;
    }
    if (!forward) {
        std::reverse(stops.begin(), stops.end());
    }
    const auto here = std::find(stops.begin(), stops.end(), id);
    return here == stops.end() || here + 1 == stops.end() ? stops.front() : *(here + 1);
}

void CControlSet::NameForAccessibility(const std::vector<QWidget*>& panels) const
{
    for (const DialogControl& control : controls_) {
        const auto* label = qobject_cast<const QLabel*>(control.widget.data());
        if (label != nullptr && label->buddy() != nullptr) {
            label->buddy()->setAccessibleName(SpokenCaption(control.caption));
        }
    }
    std::vector<QWidget*> nameless = panels;
    for (const DialogControl& control : controls_) {
        if (control.widget != nullptr && !TakesCaption(control.kind) && control.widget->accessibleName().isEmpty()) {
            nameless.push_back(control.widget);
        }
    }
    for (QWidget* widget : nameless) {
        const QString above = LabelAbove(widget->geometry());
        widget->setAccessibleName(above.isEmpty() ? widget->window()->windowTitle() : above);
    }
}

QString CControlSet::LabelAbove(const QRect& area) const
{
    const DialogControl* best = nullptr;
    int best_width = 0;
    for (const DialogControl& control : controls_) {
        if (control.kind != ControlKind::Label || control.widget == nullptr) {
            continue;
        }
        const QRect label = control.widget->geometry();
        const int distance = area.top() - label.bottom();
        const int shared = std::min(area.right(), label.right()) - std::max(area.left(), label.left());
        if (distance >= 0 && distance <= label_reach && shared > best_width) {
            best = &control;
            best_width = shared;
        }
    }
    return best == nullptr ? QString() : SpokenCaption(best->caption);
}

} // namespace partkeep
