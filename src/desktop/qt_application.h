// The Qt application of the process: the host's own where it has one, otherwise one that the component makes when
// the first window or message is wanted and takes away again with the last object that asked for it.
#pragma once

#include <memory>

class QApplication;

namespace partkeep {

class CQtApplication {
public:
    // Makes sure of an application on this thread, as far as there is a screen. Cheap when repeated.
    void Ensure();

private:
    std::shared_ptr<QApplication> made_; // null: the host's, or none
};

// True when a window could be shown: Qt ends the whole process where it cannot reach the screen that it is told,
// so the screen is tried before Qt is asked.
[[nodiscard]] bool ScreenCanBeReached();

} // namespace partkeep
