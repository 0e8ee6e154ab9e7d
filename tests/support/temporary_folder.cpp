#include "tests/support/temporary_folder.h"

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <iterator>
#include <random>
#ifdef _WIN32
#include <windows.h>
#endif

namespace partkeep {

namespace fs = std::filesystem;

CTemporaryFolder::CTemporaryFolder()
{
    const fs::path temporary = fs::temp_directory_path();
    const fs::path base = temporary.u8string().find(u8'.') == std::u8string::npos ? temporary : fs::path("/tmp");
    std::random_device random;
    do {
        path_ = base / ("partkeep-" + std::to_string(random()));
    } while (!fs::create_directory(path_));
    path_ = fs::canonical(path_);
}

CTemporaryFolder::~CTemporaryFolder()
{
    std::error_code error;
    fs::remove_all(path_, error);
    if (error) {
        std::cerr << "left behind: " << path_ << error.message() << '\n';
    }
}

fs::path CTemporaryFolder::Path(std::string_view name) const
{
    return name.empty() ? path_ : path_ / std::u8string(name.begin(), name.end());
}

std::u16string CTemporaryFolder::Core() const
{
    std::u16string core = path_.u16string();
    std::replace(core.begin(), core.end(), u'/', u'\\');
    return core;
}

void WriteBytes(const fs::path& path, std::string_view bytes)
{
    if (!(std::ofstream(path, std::ios::binary) << bytes).flush()) {
        std::cerr << "cannot write " << path << '\n';
        std::abort();
    }
}

std::string ReadBytes(const fs::path& path)
{
    std::ifstream file(path, std::ios::binary);
    return file ? std::string(std::istreambuf_iterator<char>(file), {}) : "(none)";
}

#ifdef _WIN32
// The file is open for somebody who shares it with nobody.
CReadTrouble::CReadTrouble(fs::path file)
    : file_(std::move(file)),
      lock_(CreateFileW(file_.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr))
{
}

CReadTrouble::~CReadTrouble()
{
    CloseHandle(lock_);
}
#else
// The file's place is taken by memory of this process that nothing lies in.
CReadTrouble::CReadTrouble(fs::path file) : file_(std::move(file))
{
    fs::rename(file_, file_.native() + ".aside");
    fs::create_symlink("/proc/self/mem", file_);
}

CReadTrouble::~CReadTrouble()
{
    fs::rename(file_.native() + ".aside", file_);
}
#endif

std::vector<std::string> NamesIn(const fs::path& folder)
{
    std::vector<std::string> names;
    for (const fs::directory_entry& entry : fs::directory_iterator(folder)) {
        const std::u8string name = entry.path().filename().u8string();
        names.emplace_back(name.begin(), name.end());
    }
    std::sort(names.begin(), names.end());
    return names;
}

} // namespace partkeep
