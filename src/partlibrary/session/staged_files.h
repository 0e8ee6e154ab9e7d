// Files that arrive in a folder together: each is written beside its place under a name that nobody can
// guess, and all are renamed when the last one is complete. So no half file ever stands under a part's name.
// Nothing is flushed to the disk on the way: a copy can be made again.
#pragma once

#include "partlibrary/library/library_problem.h"
#include "partlibrary/session/folder_names.h"

#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace partkeep {

class CStagedFiles {
public:
    // `folder` is a core path, with or without a separator at its end; empty is the current folder. `names` may
    // serve one run of copies after another and is borrowed.
    CStagedFiles(std::u16string_view folder, CFolderNames& names);
    ~CStagedFiles(); // removes what was not committed
    CStagedFiles(const CStagedFiles&) = delete;
    CStagedFiles& operator=(const CStagedFiles&) = delete;

    // Begins a file beside its place, `name` being a plain file name. False on failure.
    [[nodiscard]] bool Begin(std::u16string_view name);

    // The file begun last, to be written to at its end; -1: none is.
    [[nodiscard]] int File() const { return entries_.empty() ? -1 : entries_.back().descriptor; }

    // Writes on in the file begun last.
    [[nodiscard]] LibraryProblem Write(std::span<const char> block) const;

    // Ends all files and puts them in place. A file that stands there in other letter case is replaced.
    bool Commit();

    [[nodiscard]] const LibraryProblem& Problem() const { return problem_; }

private:
    struct Entry {
        std::u16string name;
        std::string temporary;
        int descriptor;
    };

    bool Fail(int error);
    bool EndAll();

    CFolderNames& names_;
    std::string folder_;
    int directory_ = -1;
    std::vector<Entry> entries_;
    LibraryProblem problem_;
};

} // namespace partkeep
