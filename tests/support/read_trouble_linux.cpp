// The file's place is taken by memory of this process that nothing lies in.
#include "tests/support/temporary_folder.h"

namespace partkeep {

static std::filesystem::path Aside(std::filesystem::path file)
{
    return file += ".aside";
}

CReadTrouble::CReadTrouble(std::filesystem::path file) : file_(std::move(file))
{
    std::filesystem::rename(file_, Aside(file_));
    std::filesystem::create_symlink("/proc/self/mem", file_);
}

CReadTrouble::~CReadTrouble()
{
    std::filesystem::rename(Aside(file_), file_);
}

} // namespace partkeep
