#include "partlibrary/content_copy.h"

namespace partkeep {

std::unique_ptr<CContentCopy> CContentCopy::Open(const QString& file, LibraryProblem& problem)
{
    auto reader = CContentReader::Open(file, OpenMode::ReadContent, problem);
    if (reader == nullptr) {
        return nullptr;
    }
    return std::unique_ptr<CContentCopy>(new CContentCopy(std::move(reader), file));
}

LibraryProblem CContentCopy::ReadHeld(SlotSet files, const Reading& reading)
{
    CContentShare share(files);
    if (!reader_->Hold()) {
        return Connection().Problem();
    }
    reading(share);
    reader_->Release();
    return share.Problem();
}

// The helper begins once the library is held here, or the two could read two states of it.
LibraryProblem CContentCopy::ReadShared(PartId part, SlotSet files, const ContentSink& sink)
{
    return ReadHeld(files, [&](CContentShare& share) {
        const CContentHelper::Job job = [&](CContentReader& reader) { reader.Read(part, share, sink); };
        helper_.Offer(job);
        job(*reader_);
        helper_.Recall();
    });
}

LibraryProblem CContentCopy::ReadInOrder(PartId part, SlotSet files, const ContentSink& sink)
{
    return ReadHeld(files, [&](CContentShare& share) { reader_->Read(part, share, sink); });
}

} // namespace partkeep
