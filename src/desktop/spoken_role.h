// What a screen reader calls the widgets that the toolkit has no role for.
#pragma once

#include <QAccessible>

class QWidget;

namespace partkeep {

void SetSpokenRole(QWidget& widget, QAccessible::Role role);

// While one of these lives, the roles count. The last one takes the toolkit's way into this library back, since the
// library may be unloaded before the toolkit.
class CSpokenRoles {
public:
    CSpokenRoles();
    ~CSpokenRoles();
    CSpokenRoles(const CSpokenRoles&) = delete;
    CSpokenRoles& operator=(const CSpokenRoles&) = delete;
};

} // namespace partkeep
