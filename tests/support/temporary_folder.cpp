#include "tests/support/temporary_folder.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <random>

namespace partkeep {

namespace fs = std::filesystem;

namespace {

fs::path FromUtf8(std::string_view text)
{
    return {std::u8string(text.begin(), text.end())};
}

std::string ToUtf8(const fs::path& path)
{
    const std::u8string text = path.u8string();
    return {text.begin(), text.end()};
}

fs::path BaseFolder()
{
    const fs::path base = fs::temp_directory_path();
    return base.u8string().find(u8'.') == std::u8string::npos ? base : fs::path("/tmp");
}

} // namespace

CTemporaryFolder::CTemporaryFolder(std::string_view suffix)
{
    std::random_device random;
    do {
        path_ = BaseFolder() / FromUtf8("partkeep-" + std::to_string(random()) + std::string(suffix));
    } while (!fs::create_directory(path_));
    path_ = fs::canonical(path_);
}

CTemporaryFolder::~CTemporaryFolder()
{
    std::error_code error;
    fs::remove_all(path_, error);
    if (error) {
        std::fprintf(stderr, "left behind: %s (%s)\n", ToUtf8(path_).c_str(), error.message().c_str());
    }
}

fs::path CTemporaryFolder::Path(std::string_view name) const
{
    return name.empty() ? path_ : path_ / FromUtf8(name);
}

std::u16string CTemporaryFolder::Core() const
{
    std::u16string core = path_.u16string();
    std::replace(core.begin(), core.end(), u'/', u'\\');
    return core;
}

std::u16string CTemporaryFolder::Core(std::u16string_view name) const
{
    return (Core() + u'\\').append(name);
}

void WriteBytes(const fs::path& path, std::string_view bytes)
{
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    file.close();
    if (!file) {
        std::fprintf(stderr, "can't write %s\n", ToUtf8(path).c_str());
        std::abort();
    }
}

std::string ReadBytes(const fs::path& path)
{
    std::ifstream file(path, std::ios::binary);
    if (!file) {
        return "(none)";
    }
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

std::vector<std::string> NamesIn(const fs::path& folder)
{
    std::vector<std::string> names;
    for (const fs::directory_entry& entry : fs::directory_iterator(folder)) {
        names.push_back(ToUtf8(entry.path().filename()));
    }
    std::sort(names.begin(), names.end());
    return names;
}

} // namespace partkeep
