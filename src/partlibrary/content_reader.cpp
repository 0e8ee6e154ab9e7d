#include "partlibrary/content_reader.h"

#include <exception>
#include <utility>

namespace partkeep {

namespace {

// A file system takes a few large writes better than many small ones, on two threads above all.
constexpr std::size_t block_bytes = 8 * chunk_bytes;

} // namespace

std::unique_ptr<CContentReader> CContentReader::Open(const QString& file, OpenMode mode, LibraryProblem& problem)
{
    auto connection = CLibraryConnection::Open(file, mode, problem);
    if (connection == nullptr) {
        return nullptr;
    }
    return std::unique_ptr<CContentReader>(new CContentReader(std::move(connection)));
}

CContentReader::CContentReader(std::unique_ptr<CLibraryConnection> connection)
    : connection_(std::move(connection)), begin_(*connection_, QStringLiteral("BEGIN")),
      lock_(*connection_, QStringLiteral("SELECT 1 FROM sqlite_schema LIMIT 1")),
      end_(*connection_, QStringLiteral("COMMIT")),
      pieces_(*connection_, QStringLiteral("SELECT id, rest, hash, content FROM part_file "
                                           "WHERE id BETWEEN ? AND ? ORDER BY id"))
{
    block_.reserve(block_bytes);
}

// The engine locks a file only once something is read.
bool CContentReader::Hold()
{
    if (!begin_.Run()) {
        return false;
    }
    const bool held = lock_.Run() && lock_.Next();
    lock_.Finish();
    if (!held) {
        Release();
    }
    return held;
}

void CContentReader::Release()
{
    end_.Run();
}

// Running out of memory is a problem like others: what runs on a thread of ours must not end the host.
void CContentReader::Read(PartId part, CContentShare& share, const ContentSink& sink)
{
    try {
        while (ContentSpan* const span = share.Take()) {
            if (const LibraryProblem problem = ReadSpan(part, *span, share, sink)) {
                share.Fail(problem);
            }
        }
    } catch (const std::exception&) {
        share.Fail({LibraryFault::NoMemory, connection_->File(), {}});
    }
    pieces_.Finish();
}

LibraryProblem CContentReader::ReadSpan(PartId part, ContentSpan& span, CContentShare& share, const ContentSink& sink)
{
    const qint64 first = FirstChunk(part, span.slot);
    pieces_.Run({first + span.next, first + slot_id_step - 1});
    qint64 offset = span.next * chunk_bytes;
    block_.clear();
    while (const auto number = share.Next(span)) {
        ChunkRow row;
        if (LibraryProblem problem = ReadPiece(first + *number, span, share, row)) {
            return problem;
        }
        block_.insert(block_.end(), row.content.begin(), row.content.end());
        if (block_.size() < block_bytes) {
            continue;
        }
        if (LibraryProblem problem = sink(span.slot, offset, block_)) {
            return problem;
        }
        offset += static_cast<qint64>(block_.size());
        block_.clear();
    }
    return block_.empty() ? LibraryProblem{} : sink(span.slot, offset, block_);
}

LibraryProblem CContentReader::ReadPiece(qint64 id, ContentSpan& span, CContentShare& share, ChunkRow& row)
{
    if (!pieces_.Next()) {
        return pieces_.Failed() ? connection_->Problem() : Damage("a piece of a file is missing");
    }
    row = {pieces_.Integer(0), pieces_.Integer(1), pieces_.Integer(2), pieces_.Bytes(3)};
    if (row.id != id) {
        return Damage("a piece of a file is missing");
    }
    if (const char* fault = ChunkFault(row); fault != nullptr) {
        return Damage(fault);
    }
    return share.Learn(span, row.FileBytes()) ? LibraryProblem{} : Damage("a piece of a file is missing");
}

LibraryProblem CContentReader::Damage(const char* detail) const
{
    return {LibraryFault::Damaged, connection_->File(), QString::fromLatin1(detail)};
}

} // namespace partkeep
