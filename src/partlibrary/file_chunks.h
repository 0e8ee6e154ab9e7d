// Where the content of files and pictures lies: a row for each piece, so that a piece fits a page of the database
// whole and is read and written while it is still in the processor's cache. All pieces of a file but the last
// have chunk_bytes, so a piece's number tells its place.
//
//   id       part * file_id_step + slot * slot_id_step + number of the piece, from 0
//   rest     bytes of the file behind this piece; 0 in the last one. An empty file is one empty piece.
//   hash     ContentHash of the piece
#pragma once

#include "partlibrary/file_kinds.h"

#include <QByteArray>

#include <optional>

namespace partkeep {

inline constexpr qint64 slot_id_step = 65536;
inline constexpr qint64 file_id_step = 16 * slot_id_step;

// The largest multiple of 64 that a leaf page of 65536 bytes holds beside the row's other values.
inline constexpr qsizetype chunk_bytes = 65408;

// Pieces of a file are numbered by 16 bits.
inline constexpr qint64 max_file_bytes = slot_id_step * chunk_bytes;

[[nodiscard]] constexpr qint64 FirstChunk(qint64 part, FileSlot slot)
{
    return part * file_id_step + static_cast<qint64>(slot) * slot_id_step;
}

// XXH3 with 64 bits (the library xxhash). It finds accidents, not intent.
[[nodiscard]] qint64 ContentHash(QByteArrayView content);

struct ChunkRow {
    qint64 id = 0;
    qint64 rest = 0;
    qint64 hash = 0;
    QByteArray content;

    [[nodiscard]] qint64 Offset() const { return id % slot_id_step * chunk_bytes; }
    [[nodiscard]] qint64 FileBytes() const { return Offset() + content.size() + rest; }
};

// What is wrong with a piece as it stands; null when it is sound.
[[nodiscard]] const char* ChunkFault(const ChunkRow& row);

// Follows the pieces of files in the order of their ids and tells whether each is whole and in its place.
class CChunkOrder {
public:
    // Null when the row is sound; otherwise what is wrong with it.
    [[nodiscard]] const char* Take(const ChunkRow& row);

    // False when the last file seen still lacks pieces.
    [[nodiscard]] bool Complete() const { return rest_ == 0; }

private:
    qint64 next_id_ = 0; // of the piece that must follow while rest_ is above 0
    qint64 rest_ = 0;
};

} // namespace partkeep
