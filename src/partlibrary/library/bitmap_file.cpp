#include "partlibrary/library/bitmap_file.h"

#include "controls/dib_view.h"
#include "controls/part_browser_contract.h"

#include <QtEndian>

namespace partkeep {

namespace {

// Offsets in a bitmap file.
//   0  "BM"      2  size of the file    10  offset of the pixels    14  size of the second header
constexpr qsizetype file_size_offset = 2;
constexpr qsizetype pixels_offset = 10;

quint32 Read32(const QByteArray& content, qsizetype offset)
{
    return qFromLittleEndian<quint32>(content.constData() + offset);
}

const char* BitmapFault(const QByteArray& content)
{
    if (content.size() > static_cast<qsizetype>(image_block_bytes)) {
        return "a bitmap of more than 24000 bytes";
    }
    if (content.size() < qsizetype{dib_file_header_bytes + dib_core_header_bytes} || !content.startsWith("BM")) {
        return "not a bitmap file";
    }
    const quint32 size = Read32(content, file_size_offset);
    const quint32 pixels = Read32(content, pixels_offset);
    const quint32 header = Read32(content, qsizetype{dib_file_header_bytes});
    const auto available = static_cast<quint32>(content.size());
    if (size > available || pixels >= available || header < dib_core_header_bytes ||
        header + dib_file_header_bytes > pixels) {
        return "a bitmap file that is cut short";
    }
    return nullptr;
}

} // namespace

const char* PictureFault(FileSlot slot, const QByteArray& content)
{
    switch (slot) {
    case FileSlot::Flat:
    case FileSlot::Bent:
        return BitmapFault(content);
    case FileSlot::Png:
        return content.startsWith("\x89PNG\r\n\x1a\n") ? nullptr : "not a PNG file";
    default:
        return nullptr;
    }
}

} // namespace partkeep
