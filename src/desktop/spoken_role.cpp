#include "desktop/spoken_role.h"

#include <QAccessibleWidget>
#include <QVariant>
#include <QWidget>

namespace partkeep {

namespace {

constexpr char role_property[] = "partkeepSpokenRole";

int users = 0;

QAccessibleInterface* MakeAccessible(const QString& /*class_name*/, QObject* object)
{
    const QVariant role = object->property(role_property);
    return role.isValid() && object->isWidgetType()
               ? new QAccessibleWidget(static_cast<QWidget*>(object), static_cast<QAccessible::Role>(role.toInt()))
               : nullptr;
}

} // namespace

void SetSpokenRole(QWidget& widget, QAccessible::Role role)
{
    widget.setProperty(role_property, static_cast<int>(role));
}

CSpokenRoles::CSpokenRoles()
{
    if (users++ == 0) {
        QAccessible::installFactory(MakeAccessible);
    }
}

CSpokenRoles::~CSpokenRoles()
{
    if (--users == 0) {
        QAccessible::removeFactory(MakeAccessible);
    }
}

} // namespace partkeep
