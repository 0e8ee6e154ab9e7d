// The picture files that a library takes: complete bitmap files that fit the caller's image block, and PNG.
#pragma once

#include "partlibrary/library/file_kinds.h"

#include <QByteArray>

namespace partkeep {

// Why the content cannot stand in the slot; null when it can. Slots that are no pictures take anything.
// BITMAPFILEHEADER and BITMAPINFOHEADER of the Windows headers; the PNG signature of ISO/IEC 15948.
[[nodiscard]] const char* PictureFault(FileSlot slot, const QByteArray& content);

} // namespace partkeep
