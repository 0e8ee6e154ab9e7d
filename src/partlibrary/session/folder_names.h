// The names in one folder by their form without letter case, for a run of files that arrive there one after the
// other: from the second file on the folder is watched, since reading thousands of names again for each part costs
// as much as copying it. Where a folder cannot be watched it is read each time.
//
// On a network the watch hears of this machine's changes alone. A file that another machine adds there in
// another spelling at the same time stays beside the new one, as it would have a moment later.
#pragma once

#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include <sys/types.h>

namespace partkeep {

class CFolderNames {
public:
    CFolderNames() = default;
    ~CFolderNames();
    CFolderNames(const CFolderNames&) = delete;
    CFolderNames& operator=(const CFolderNames&) = delete;

    // Brings the names up to date for the folder behind this descriptor.
    void Update(int directory);

    // The spelling under which a file of this name stands in the folder: the exact one, else the first in
    // sorted order, else the name itself. Update comes first; `directory` is the same folder.
    [[nodiscard]] std::string SpellingOf(int directory, std::u16string_view name);

private:
    void Read(int directory);
    void Watch(int directory);
    void Forget();
    bool TakeEvents();
    void Add(std::string_view name);

    int watch_ = -1; // an inotify instance; -1: none
    dev_t device_ = 0;
    ino_t inode_ = 0;
    std::unordered_map<std::string, std::vector<std::string>> spellings_; // by folded name
};

} // namespace partkeep
