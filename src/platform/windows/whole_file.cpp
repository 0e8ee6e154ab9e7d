#include "platform/windows/whole_file.h"

#include "platform/windows/file_handle.h"
#include "platform/windows/wide.h"

#include <optional>
#include <random>

namespace partkeep {

namespace {

enum class Outcome { Done, Forbidden, Failed };

// By the error of the call that has just failed.
Outcome WhyItFailed()
{
    const DWORD error = GetLastError();
    return error == ERROR_ACCESS_DENIED || error == ERROR_WRITE_PROTECT ? Outcome::Forbidden : Outcome::Failed;
}

// A name that nobody can foresee. The dot in front keeps it from ever being taken for the file of a part.
std::u16string TemporaryName(const std::u16string& target)
{
    constexpr std::u16string_view digits = u"0123456789abcdef";
    std::random_device random; // the system's own generator
    std::u16string name = target.substr(0, target.rfind(u'\\') + 1) + u".partkeep-";
    for (int word = 0; word < 4; ++word) {
        unsigned bits = random();
        for (int digit = 0; digit < 8; ++digit, bits >>= 4U) {
            name += digits[bits & 0xFU];
        }
    }
    return name + u".tmp";
}

// The file behind all links; the given path where the system cannot tell.
std::u16string FinalPath(const CFileHandle& file, const std::u16string& given)
{
    const DWORD needed = GetFinalPathNameByHandleW(file.Handle(), nullptr, 0, FILE_NAME_NORMALIZED);
    std::u16string path(needed, u'\0');
    const DWORD length = GetFinalPathNameByHandleW(file.Handle(), AsWide(path.data()), needed, FILE_NAME_NORMALIZED);
    path.resize(length < needed ? length : 0);
    return path.empty() ? given : path;
}

// Removes the file unless it took its place.
class CTemporaryFile {
public:
    explicit CTemporaryFile(std::u16string name)
        : name_(std::move(name)), handle_(CFileHandle::Open(name_, GENERIC_WRITE, CREATE_NEW)),
          exists_(handle_.IsOpen())
    {
    }
    ~CTemporaryFile()
    {
        if (exists_) {
            handle_.Close();
            DeleteFileW(AsWide(name_.c_str()));
        }
    }
    CTemporaryFile(const CTemporaryFile&) = delete;
    CTemporaryFile& operator=(const CTemporaryFile&) = delete;

    [[nodiscard]] bool IsOpen() const { return handle_.IsOpen(); }

    bool Fill(std::string_view bytes)
    {
        const bool kept = handle_.WriteAll(bytes) && FlushFileBuffers(handle_.Handle()) != 0;
        return handle_.Close() && kept;
    }

    // The first call keeps access list and attributes but is refused by some file systems; the second works on
    // all. Where even that fails after the first has taken the old file away, the new content is kept.
    Outcome TakePlaceOf(const std::u16string& target, bool target_exists)
    {
        const wchar_t* from = AsWide(name_.c_str());
        const wchar_t* to = AsWide(target.c_str());
        if ((target_exists &&
             ReplaceFileW(to, from, nullptr, REPLACEFILE_IGNORE_MERGE_ERRORS, nullptr, nullptr) != 0) ||
            MoveFileExW(from, to, MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH) != 0) {
            exists_ = false;
            return Outcome::Done;
        }
        const Outcome outcome = WhyItFailed();
        if (target_exists && GetFileAttributesW(to) == INVALID_FILE_ATTRIBUTES) {
            exists_ = false;
            return Outcome::Failed;
        }
        return outcome;
    }

private:
    std::u16string name_;
    CFileHandle handle_;
    bool exists_;
};

Outcome ReplaceFromBeside(const std::u16string& target, bool target_exists, std::string_view bytes)
{
    CTemporaryFile beside(TemporaryName(target));
    if (!beside.IsOpen()) {
        return WhyItFailed();
    }
    if (!beside.Fill(bytes)) {
        return Outcome::Failed;
    }
    return beside.TakePlaceOf(target, target_exists);
}

// Growing the file first leaves the old content alone on a disk that is full.
bool WriteInPlace(const std::u16string& target, std::string_view bytes)
{
    CFileHandle file = CFileHandle::Open(target, GENERIC_WRITE, OPEN_EXISTING);
    LARGE_INTEGER old_size{};
    LARGE_INTEGER new_size{};
    new_size.QuadPart = static_cast<LONGLONG>(bytes.size());
    if (!file.IsOpen() || GetFileSizeEx(file.Handle(), &old_size) == 0) {
        return false;
    }
    const auto resize_to = [&file](LARGE_INTEGER size) {
        return SetFilePointerEx(file.Handle(), size, nullptr, FILE_BEGIN) != 0 && SetEndOfFile(file.Handle()) != 0;
    };
    if (new_size.QuadPart > old_size.QuadPart && !resize_to(new_size)) {
        resize_to(old_size);
        return false;
    }
    const LARGE_INTEGER start{};
    const bool written = SetFilePointerEx(file.Handle(), start, nullptr, FILE_BEGIN) != 0 && file.WriteAll(bytes) &&
                         SetEndOfFile(file.Handle()) != 0 && FlushFileBuffers(file.Handle()) != 0;
    return file.Close() && written;
}

// The name under which the old file stays when its own goes to the new one: a second name for it, which needs no
// reading, or a copy where the file system has no such names. The first number that is free; the last one gives way.
std::optional<std::u16string> KeepBeside(const std::u16string& target)
{
    constexpr char16_t last_number = u'9';
    for (char16_t number = u'1'; number <= last_number; ++number) {
        const std::u16string name = target + u".kept" + number;
        if (number == last_number) {
            DeleteFileW(AsWide(name.c_str()));
        }
        if (CreateHardLinkW(AsWide(name.c_str()), AsWide(target.c_str()), nullptr) != 0 ||
            CopyFileW(AsWide(target.c_str()), AsWide(name.c_str()), TRUE) != 0) {
            return name;
        }
        if (const DWORD error = GetLastError(); error != ERROR_FILE_EXISTS && error != ERROR_ALREADY_EXISTS) {
            return std::nullopt;
        }
    }
    return std::nullopt;
}

} // namespace

// The old file is closed again before it is replaced: the system refuses to replace one that is open.
bool ReplaceWholeFile(const std::u16string& system_path, std::string_view bytes, OldFile old)
{
    std::u16string target = system_path;
    bool target_exists = false;
    {
        const CFileHandle old_file = CFileHandle::Open(system_path, GENERIC_WRITE, OPEN_EXISTING);
        target_exists = old_file.IsOpen();
        if (target_exists ? !old_file.IsDiskFile() : GetLastError() != ERROR_FILE_NOT_FOUND) {
            return false;
        }
        if (target_exists) {
            target = FinalPath(old_file, system_path);
        }
    }
    const bool keeps = old == OldFile::Kept && target_exists;
    const std::optional<std::u16string> kept = keeps ? KeepBeside(target) : std::nullopt;
    if (keeps && !kept) {
        return false;
    }
    const Outcome outcome = ReplaceFromBeside(target, target_exists, bytes);
    if (kept && outcome != Outcome::Done) {
        DeleteFileW(AsWide(kept->c_str()));
        return false;
    }
    if (outcome == Outcome::Forbidden && target_exists) {
        return WriteInPlace(target, bytes);
    }
    return outcome == Outcome::Done;
}

} // namespace partkeep
