// Files that arrive in a folder together: each is written beside its place under a name that nobody can
// guess, and all are renamed when the last one is complete. So no half file ever stands under a part's name.
// Nothing is flushed to the disk on the way: a copy can be made again.
#pragma once

#include "partlibrary/library_problem.h"

#include <QByteArrayView>

#include <string>
#include <string_view>
#include <vector>

namespace partkeep {

class CStagedFiles {
public:
    // `folder` is a core path, with or without a separator at its end; empty is the current folder.
    explicit CStagedFiles(std::u16string_view folder);
    ~CStagedFiles(); // removes what was not committed
    CStagedFiles(const CStagedFiles&) = delete;
    CStagedFiles& operator=(const CStagedFiles&) = delete;

    // Writes one file beside its place. `name` is a plain file name.
    bool Add(std::u16string_view name, QByteArrayView content);

    // Puts all files in place. A file that stands there in other letter case is replaced.
    bool Commit();

    [[nodiscard]] const LibraryProblem& Problem() const { return problem_; }

private:
    struct Entry {
        std::u16string name;
        std::string temporary;
        std::string target; // empty until the spelling on disk is known
    };

    bool WriteTemporary(const std::string& temporary, QByteArrayView content);
    bool WriteAll(int file, QByteArrayView content);
    void FindSpellings();
    bool Fail(int error);

    std::string folder_;
    int directory_ = -1;
    std::string prefix_; // of the temporary names
    std::vector<Entry> entries_;
    LibraryProblem problem_;
};

} // namespace partkeep
