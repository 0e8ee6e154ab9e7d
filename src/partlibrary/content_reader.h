// Reads the content of files out of a library, on a connection of its own: content that streams through wants few
// pages at hand, look-ups many. Used on the thread that opened it.
#pragma once

#include "partlibrary/content_share.h"
#include "partlibrary/library_connection.h"
#include "partlibrary/part_list.h"

#include <functional>
#include <memory>
#include <span>
#include <vector>

namespace partkeep {

// Takes a block of a file, from `offset` in it, in bytes. Called on the thread that reads the block, so perhaps on
// several at once. What it gives ends the reading, unless it is no problem.
using ContentSink = std::function<LibraryProblem(FileSlot, qint64 offset, std::span<const char> block)>;

class CContentReader {
public:
    // Null on failure, with the reason. `file` is a native path, `mode` ReadContent or ReadAlong.
    [[nodiscard]] static std::unique_ptr<CContentReader> Open(const QString& file, OpenMode mode,
                                                              LibraryProblem& problem);

    // Keeps writers out until Release, so that whatever is read meanwhile, here or by others that hold the library
    // at the same time, is of one state.
    bool Hold();
    void Release();

    // Reads of a part's files what the share gives away, until nothing is left or somebody failed, and puts its
    // own problems there.
    void Read(PartId part, CContentShare& share, const ContentSink& sink);

    [[nodiscard]] CLibraryConnection& Connection() { return *connection_; }

private:
    explicit CContentReader(std::unique_ptr<CLibraryConnection> connection);
    LibraryProblem ReadSpan(PartId part, ContentSpan& span, CContentShare& share, const ContentSink& sink);
    LibraryProblem ReadPiece(qint64 id, ContentSpan& span, CContentShare& share, ChunkRow& row);
    [[nodiscard]] LibraryProblem Damage(const char* detail) const;

    std::unique_ptr<CLibraryConnection> connection_;
    CStatement begin_;
    CStatement lock_;
    CStatement end_;
    CStatement pieces_;       // prepared once for all files
    std::vector<char> block_; // pieces that wait for one large write
};

} // namespace partkeep
