#include "partlibrary/library/library_writer.h"

#include "partlibrary/library/part_library.h"

#include <algorithm>
#include <array>

namespace partkeep {

bool ILibraryWriter::PutFile(PartId part, FileSlot slot, const QByteArray& content)
{
    qsizetype at = 0;
    const auto stored = Store(slot, [&](std::span<char> buffer) {
        const auto size = std::min<qsizetype>(content.size() - at, static_cast<qsizetype>(buffer.size()));
        std::copy_n(content.constData() + at, size, buffer.begin());
        at += size;
        return qint64{size};
    });
    return stored && PutFile(part, slot, *stored);
}

bool ILibraryWriter::RemovePart(const QString& folder, const QString& name)
{
    const auto part = Library().FindPart(folder, name);
    return part && RemoveParts(std::array{part->id});
}

} // namespace partkeep
