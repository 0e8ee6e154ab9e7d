#include "partlibrary/file_chunks.h"

#include "partlibrary/content_hash.h"

namespace partkeep {

const char* CChunkOrder::Take(const ChunkRow& row)
{
    const bool first = row.id % slot_id_step == 0;
    const bool follows = rest_ > 0 && row.id == next_id_ && row.rest + row.content.size() == rest_;
    if (first ? rest_ > 0 : !follows) {
        return "a piece of a file is missing";
    }
    if (row.rest < 0 || ContentHash(row.content) != row.hash) {
        return "the content of a file has changed";
    }
    next_id_ = row.id + 1;
    rest_ = row.rest;
    return nullptr;
}

} // namespace partkeep
