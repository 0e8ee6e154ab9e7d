#include "tests/support/temporary_folder.h"

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <iterator>
#include <random>

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
