// How content reaches a library, and which part it belongs to.
#include "partlibrary/library/bitmap_file.h"
#include "partlibrary/library/content_hash.h"
#include "partlibrary/sqlite/library_rows.h"
#include "partlibrary/sqlite/schema.h"
#include "partlibrary/sqlite/sqlite_writer.h"

#include <algorithm>

namespace partkeep {

namespace {

constexpr qint64 early_bytes = 64 << 20; // of content, that are kept in memory at most

} // namespace

bool CSqliteWriter::PutPieces(qint64 content, FileSlot slot, const ContentSource& source, StoredContent& stored)
{
    CContentHash hash;
    CStatement put(*connection_, "INSERT INTO piece(id, sum, content) VALUES(?, ?, ?)");
    for (qint64 id = content * pieces_per_content;; ++id) {
        const qint64 size = source(piece_);
        const char* const fault =
            stored.bytes == 0 ? PictureFault(slot, QByteArray::fromRawData(piece_.data(), std::max<qint64>(size, 0)))
                              : nullptr;
        if (size < 0 || fault != nullptr) {
            return Refuse(size < 0 ? LibraryFault::ReadFailed : LibraryFault::BadInput, {}, QString::fromLatin1(fault));
        }
        if (size > 0 && stored.bytes + size > max_file_bytes) {
            return Refuse(LibraryFault::BadInput, {}, QStringLiteral("a file of more than 4 GB"));
        }
        const std::span<const char> piece(piece_.data(), static_cast<std::size_t>(size));
        hash.Add({piece.data(), piece.size()});
        stored.bytes += size;
        if (size > 0 && !put.With(id, PieceSum(connection_->Salt(), id, {piece.data(), piece.size()}), piece).Done()) {
            return false;
        }
        if (size < qint64{piece_bytes}) {
            break;
        }
    }
    stored.hash = hash.Hash();
    return true;
}

std::optional<StoredContent> CSqliteWriter::Store(FileSlot slot, const ContentSource& source)
{
    if (unsaved_bytes_ > early_bytes && !changed_ && !Flush()) {
        return std::nullopt;
    }
    StoredContent stored;
    stored.id = next_content_++;
    if (!PutPieces(stored.id, slot, source, stored)) {
        return std::nullopt;
    }
    unsaved_bytes_ += stored.bytes;
    return stored;
}

// Files by their ids, with their content.
bool CSqliteWriter::RemoveFiles(qint64 first, qint64 last)
{
    CStatement find(*connection_, "SELECT content FROM part_file WHERE id BETWEEN ? AND ?");
    for (find.With(first, last); find.Next();) {
        const qint64 piece = find.Integer(0) * pieces_per_content;
        if (!connection_->Execute("DELETE FROM piece WHERE id BETWEEN ? AND ?", piece,
                                  piece + pieces_per_content - 1)) {
            return false;
        }
    }
    return !find.Failed() && connection_->Execute("DELETE FROM part_file WHERE id BETWEEN ? AND ?", first, last);
}

bool CSqliteWriter::PutFile(PartId part, FileSlot slot, const StoredContent& content)
{
    changed_ = true;
    if (!Take(part)) {
        return false;
    }
    const qint64 id = part * slots_per_part + static_cast<qint64>(slot);
    const bool there = (pending_->row.slots & SetOf(slot)) != 0;
    pending_->row.slots |= SetOf(slot);
    const std::string_view hash(content.hash.constData(), static_cast<std::size_t>(content.hash.size()));
    return (!there || RemoveFiles(id, id)) &&
           connection_->Execute("INSERT INTO part_file VALUES(?, ?, ?, ?, ?)", id, content.id, content.bytes,
                                content.hash, FileSum(connection_->Salt(), id, content.id, content.bytes, hash));
}

} // namespace partkeep
