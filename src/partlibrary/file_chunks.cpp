#include "partlibrary/file_chunks.h"

// Compiled in: nothing more is needed where the component is installed.
#define XXH_INLINE_ALL
#include <xxhash.h>

namespace partkeep {

qint64 ContentHash(QByteArrayView content)
{
    return static_cast<qint64>(XXH3_64bits(content.data(), static_cast<std::size_t>(content.size())));
}

const char* ChunkFault(const ChunkRow& row)
{
    const bool last = row.rest == 0;
    const bool fits = row.rest >= 0 && row.rest <= max_file_bytes && row.FileBytes() <= max_file_bytes;
    const bool full = row.content.size() == chunk_bytes || (last && row.content.size() < chunk_bytes);
    return fits && full && ContentHash(row.content) == row.hash ? nullptr : "the content of a file has changed";
}

const char* CChunkOrder::Take(const ChunkRow& row)
{
    const bool first = row.id % slot_id_step == 0;
    const bool follows = rest_ > 0 && row.id == next_id_ && row.rest + row.content.size() == rest_;
    if (first ? rest_ > 0 : !follows) {
        return "a piece of a file is missing";
    }
    if (const char* fault = ChunkFault(row); fault != nullptr) {
        return fault;
    }
    next_id_ = row.id + 1;
    rest_ = row.rest;
    return nullptr;
}

} // namespace partkeep
