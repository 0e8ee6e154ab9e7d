// Files that arrive in a folder together: each is written beside its place under a name that nobody can
// guess, and all are renamed when the last one is complete. So no half file ever stands under a part's name.
// Nothing is flushed to the disk on the way: a copy can be made again.
#pragma once

#include "partlibrary/folder_names.h"
#include "partlibrary/library_problem.h"

#include <cstddef>
#include <optional>
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

    // Begins a file beside its place, `name` being a plain file name, and gives its number. Nothing on failure.
    [[nodiscard]] std::optional<std::size_t> Begin(std::u16string_view name);

    // Writes into a file, from `offset` in bytes. Several threads may write at once.
    [[nodiscard]] LibraryProblem Write(std::size_t file, qint64 offset, std::span<const char> block) const;

    // Ends all files and puts them in place. A file that stands there in other letter case is replaced.
    bool Commit();

    [[nodiscard]] const LibraryProblem& Problem() const { return problem_; }

private:
    struct Entry {
        std::u16string name;
        std::string temporary;
        int descriptor;
    };

    [[nodiscard]] LibraryProblem ProblemOf(int error) const;
    bool Fail(int error);
    bool EndAll();

    CFolderNames& names_;
    std::string folder_;
    int directory_ = -1;
    std::string prefix_; // of the temporary names
    std::vector<Entry> entries_;
    LibraryProblem problem_;
};

} // namespace partkeep
