// Gets the process out alive when its display server goes: the toolkit would end it, and the process is the host's.
#pragma once

#include <QtGlobal>

namespace partkeep {

// What leaves a wait for the user then.
class CScreenLost {};

// For the life of an application of the component's own. Once the server has gone, the application has the property
// that says so.
class CScreenWatch {
public:
    CScreenWatch();
    ~CScreenWatch();
    CScreenWatch(const CScreenWatch&) = delete;
    CScreenWatch& operator=(const CScreenWatch&) = delete;

    // Behind the making of the application.
    static void KeepXlibFromExit();

private:
    QtMessageHandler before_;
};

} // namespace partkeep
