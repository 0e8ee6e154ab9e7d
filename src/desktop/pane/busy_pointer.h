// Shows the busy pointer for a scope; scopes nest.
#pragma once

#include <QCursor>
#include <QGuiApplication>

namespace partkeep {

class CBusyPointer {
public:
    CBusyPointer() { QGuiApplication::setOverrideCursor(Qt::WaitCursor); }
    ~CBusyPointer() { QGuiApplication::restoreOverrideCursor(); }
    CBusyPointer(const CBusyPointer&) = delete;
    CBusyPointer& operator=(const CBusyPointer&) = delete;
};

} // namespace partkeep
