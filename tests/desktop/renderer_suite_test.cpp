#include "desktop/qt_dialog_windows.h"
#include "tests/support/dialog_window_suite.h"

namespace partkeep {
namespace {

TEST(QtWindows, DoWhatEveryFrontEndDoes)
{
    CQtDialogWindows windows(nullptr);
    CheckDialogWindows(windows);
}

} // namespace
} // namespace partkeep
