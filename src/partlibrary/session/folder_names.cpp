#include "partlibrary/session/folder_names.h"

#include "platform/posix/temporary_files.h"
#include "platform/text.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <memory>
#include <sys/inotify.h>
#include <sys/stat.h>
#include <unistd.h>

namespace partkeep {

namespace {

constexpr std::size_t event_bytes = 65536;

struct DirectoryCloser {
    void operator()(DIR* directory) const { closedir(directory); }
};

bool IsAscii(std::string_view text)
{
    return std::all_of(text.begin(), text.end(), [](char byte) { return static_cast<unsigned char>(byte) < 0x80; });
}

// Most names are plain ASCII, for which the detour through wide text costs more than all the rest.
std::string Folded(std::string_view name)
{
    if (!IsAscii(name)) {
        return NarrowText(UpperCase(WidenText(name, utf8_code_page)), utf8_code_page);
    }
    std::string folded(name);
    for (char& byte : folded) {
        byte = byte >= 'a' && byte <= 'z' ? static_cast<char>(byte - 'a' + 'A') : byte;
    }
    return folded;
}

bool Exists(int directory, const std::string& name)
{
    return faccessat(directory, name.c_str(), F_OK, AT_SYMLINK_NOFOLLOW) == 0;
}

} // namespace

CFolderNames::~CFolderNames()
{
    Forget();
}

void CFolderNames::Forget()
{
    if (watch_ >= 0) {
        close(watch_);
    }
    watch_ = -1;
    spellings_.clear();
}

// Watched before it is read, so that nothing falls between. A single file needs no watch, and the system takes longer
// to let one go, 5 to 20 ms, than to read thousands of names.
void CFolderNames::Update(int directory)
{
    struct stat status = {};
    const bool known = fstat(directory, &status) == 0 && status.st_dev == device_ && status.st_ino == inode_;
    inode_ = 0; // should memory run out before all names are there, they are read again
    if (!known || watch_ < 0 || !TakeEvents()) {
        Forget();
        if (known) {
            Watch(directory);
        }
        Read(directory);
    }
    device_ = status.st_dev;
    inode_ = status.st_ino;
}

void CFolderNames::Watch(int directory)
{
    watch_ = inotify_init1(IN_NONBLOCK | IN_CLOEXEC);
    const std::string path = "/proc/self/fd/" + std::to_string(directory);
    if (watch_ >= 0 && inotify_add_watch(watch_, path.c_str(), IN_CREATE | IN_MOVED_TO | IN_ONLYDIR) < 0) {
        close(watch_);
        watch_ = -1;
    }
}

// What dead processes have left goes on this occasion.
void CFolderNames::Read(int directory)
{
    const int copy = openat(directory, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    const std::unique_ptr<DIR, DirectoryCloser> stream(copy >= 0 ? fdopendir(copy) : nullptr);
    if (stream == nullptr) {
        if (copy >= 0) {
            close(copy);
        }
        return;
    }
    while (const dirent* entry = readdir(stream.get())) {
        RemoveIfLeftOver(directory, entry->d_name);
        Add(entry->d_name);
    }
}

void CFolderNames::Add(std::string_view name)
{
    std::vector<std::string>& spellings = spellings_[Folded(name)];
    const auto place = std::lower_bound(spellings.begin(), spellings.end(), name);
    if (place == spellings.end() || *place != name) {
        spellings.emplace(place, name);
    }
}

// False when events were lost or the folder is no longer watched.
bool CFolderNames::TakeEvents()
{
    alignas(inotify_event) std::array<char, event_bytes> buffer;
    for (;;) {
        const ssize_t size = read(watch_, buffer.data(), buffer.size());
        if (size <= 0) {
            return size < 0 && errno == EAGAIN;
        }
        for (ssize_t at = 0; at < size;) {
            inotify_event event = {};
            std::memcpy(&event, buffer.data() + at, sizeof event);
            if ((event.mask & (IN_Q_OVERFLOW | IN_IGNORED | IN_UNMOUNT)) != 0) {
                return false;
            }
            Add(buffer.data() + at + sizeof event);
            at += static_cast<ssize_t>(sizeof event + event.len);
        }
    }
}

// A name may have gone since it was heard of.
std::string CFolderNames::SpellingOf(int directory, std::u16string_view name)
{
    std::string exact = NarrowText(name, utf8_code_page);
    const auto found = spellings_.find(Folded(exact));
    if (found == spellings_.end() || Exists(directory, exact)) {
        return exact;
    }
    std::vector<std::string>& spellings = found->second;
    while (!spellings.empty() && !Exists(directory, spellings.front())) {
        spellings.erase(spellings.begin());
    }
    return spellings.empty() ? exact : spellings.front();
}

} // namespace partkeep
