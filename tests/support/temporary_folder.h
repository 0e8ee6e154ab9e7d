// A folder of its own for a test, gone with the object. No dot occurs in its path, since a dot in a folder's name
// changes which staged files are found.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace partkeep {

class CTemporaryFolder {
public:
    CTemporaryFolder();
    ~CTemporaryFolder();
    CTemporaryFolder(const CTemporaryFolder&) = delete;
    CTemporaryFolder& operator=(const CTemporaryFolder&) = delete;

    // Native, without a final separator. `name` may be several names with "/" between them, in UTF-8.
    [[nodiscard]] std::filesystem::path Path(std::string_view name = "") const;

    // As the core spells it: joined by backslashes. Core() ends in no separator, Core("") in one.
    [[nodiscard]] std::u16string Core() const;
    [[nodiscard]] std::u16string Core(std::u16string_view name) const { return (Core() + u'\\').append(name); }

private:
    std::filesystem::path path_;
};

// Bytes as they are. WriteBytes makes the file or replaces it; ReadBytes gives "(none)" for a file that cannot be
// read, so that a comparison with it never passes by chance.
void WriteBytes(const std::filesystem::path& path, std::string_view bytes);
[[nodiscard]] std::string ReadBytes(const std::filesystem::path& path);

// While it lives, the system has an error of its own for whoever reads the file: not missing, not forbidden.
class CReadTrouble {
public:
    explicit CReadTrouble(std::filesystem::path file);
    ~CReadTrouble();
    CReadTrouble(const CReadTrouble&) = delete;
    CReadTrouble& operator=(const CReadTrouble&) = delete;

private:
    std::filesystem::path file_;
    void* lock_ = nullptr;
};

// The names in a folder in sorted order, in UTF-8, hidden ones included.
[[nodiscard]] std::vector<std::string> NamesIn(const std::filesystem::path& folder);

} // namespace partkeep
