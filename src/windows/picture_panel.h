// Stands in for the picture control where that is not installed: one property, the path of a PNG file, whose
// picture fills the site. The file is read at once and never kept open.
#pragma once

#include "windows/site_window.h"

#include <memory>

namespace partkeep {

[[nodiscard]] std::shared_ptr<CSiteContent> MakePicturePanel(HWND site);

} // namespace partkeep
