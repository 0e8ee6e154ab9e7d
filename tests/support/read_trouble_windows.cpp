// The file is open for somebody who shares it with nobody.
#include "tests/support/temporary_folder.h"

#include <windows.h>

namespace partkeep {

CReadTrouble::CReadTrouble(std::filesystem::path file)
    : file_(std::move(file)),
      lock_(CreateFileW(file_.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr))
{
}

CReadTrouble::~CReadTrouble()
{
    CloseHandle(lock_);
}

} // namespace partkeep
