// Reads a part's files on the calling thread and on a helper beside it: a part has several, and what is done with
// a piece besides copying it (finding, comparing with its hash, handing on) is as much work again.
#pragma once

#include "partlibrary/content_helper.h"
#include "partlibrary/content_reader.h"

#include <functional>
#include <memory>

namespace partkeep {

class CContentCopy {
public:
    // Null on failure, with the reason. `file` is a native path.
    [[nodiscard]] static std::unique_ptr<CContentCopy> Open(const QString& file, LibraryProblem& problem);

    // Gives the sink all pieces of the files, each one once and in no certain order, on this thread and another.
    // No problem when that was done. Each file in `files` must be there.
    [[nodiscard]] LibraryProblem ReadShared(PartId part, SlotSet files, const ContentSink& sink);

    // The same on this thread alone: file after file, in the order of the slots, from its beginning to its end.
    [[nodiscard]] LibraryProblem ReadInOrder(PartId part, SlotSet files, const ContentSink& sink);

    [[nodiscard]] CLibraryConnection& Connection() { return reader_->Connection(); }

private:
    using Reading = std::function<void(CContentShare&)>;

    CContentCopy(std::unique_ptr<CContentReader> reader, const QString& file)
        : reader_(std::move(reader)), helper_(file)
    {
    }

    LibraryProblem ReadHeld(SlotSet files, const Reading& reading);

    std::unique_ptr<CContentReader> reader_;
    CContentHelper helper_;
};

} // namespace partkeep
