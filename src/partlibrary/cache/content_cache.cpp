#include "partlibrary/cache/content_cache.h"

#include "partlibrary/library/content_hash.h"
#include "partlibrary/library/library_text.h"
#include "platform/posix/temporary_files.h"
#include "platform/registry.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <dirent.h>
#include <fcntl.h>
#include <filesystem>
#include <linux/fs.h>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

#define XXH_INLINE_ALL
#include <xxhash.h>

namespace partkeep {

namespace {

namespace fs = std::filesystem;

constexpr std::u16string_view cache_key = u"software\\Velmar\\ORVIC\\PartLibrary";
constexpr std::u16string_view cache_value = u"cache";
constexpr qint64 default_megabytes = 2048;
constexpr qint64 megabyte = 1 << 20;
constexpr qint64 disk_block = 4096;
constexpr std::size_t block_bytes = 1 << 16;
constexpr qint64 sum_bytes = 8;             // behind the content
constexpr time_t fresh_seconds = 60;        // for so long a content needs no new time of its last use
constexpr const char* total_file = "total"; // what lies in the folder, at least; its lock is for whoever changes that

qint64 OnDisk(qint64 bytes)
{
    return (bytes + disk_block - 1) / disk_block * disk_block;
}

// Two digits of the hash are the folder, so that none grows long.
std::string PlaceOf(const QByteArray& hash)
{
    const std::string digits = hash.toHex().toStdString();
    return digits.substr(0, 2) + '/' + digits.substr(2);
}

// Ours, and nobody else's to write in.
bool IsOwn(int descriptor, mode_t kind)
{
    struct stat status {};
    return fstat(descriptor, &status) == 0 && (status.st_mode & S_IFMT) == kind && status.st_uid == geteuid() &&
           (status.st_mode & (S_IWGRP | S_IWOTH)) == 0;
}

// Of a content and its hash. It finds accidents, ten times as fast as the hash would.
class CSum {
public:
    CSum() { XXH3_64bits_reset(&state_); }
    void Add(std::string_view block) { XXH3_64bits_update(&state_, block.data(), block.size()); }
    [[nodiscard]] std::string Bytes(const QByteArray& hash) const
    {
        std::uint64_t sum = 0;
        std::memcpy(&sum, hash.constData(), std::min<std::size_t>(sizeof sum, static_cast<std::size_t>(hash.size())));
        sum ^= XXH3_64bits_digest(&state_);
        std::string bytes(sizeof sum, '\0');
        std::memcpy(bytes.data(), &sum, sizeof sum);
        return bytes;
    }

private:
    XXH3_state_t state_;
};

} // namespace

// The content, block by block: true when all came and it is as it was kept. `kept` is the file that has the sum. The
// buffer stays, and fits the processor's own memory: new pages for each content cost as much as reading it.
bool CContentCache::ReadSound(int descriptor, int kept, const QByteArray& hash, qint64 bytes,
                              const std::function<bool(std::string_view block)>& each)
{
    buffer_.resize(block_bytes);
    CSum sum;
    for (qint64 done = 0; done < bytes;) {
        const auto wanted = static_cast<std::size_t>(std::min<qint64>(block_bytes, bytes - done));
        const ssize_t got = pread(descriptor, buffer_.data(), wanted, done);
        const std::string_view block(buffer_.data(), static_cast<std::size_t>(std::max<ssize_t>(got, 0)));
        sum.Add(block);
        if (got <= 0 || !each(block)) {
            return false;
        }
        done += got;
    }
    std::string told(sum_bytes, '\0');
    return pread(kept, told.data(), told.size(), bytes) == sum_bytes && told == sum.Bytes(hash);
}

namespace {

struct KeptFile {
    timespec used;
    qint64 bytes;
    std::string place;
};

// Nothing where it cannot be told.
std::optional<std::vector<KeptFile>> KeptFiles(const std::string& folder)
{
    std::vector<KeptFile> files;
    std::error_code error;
    fs::recursive_directory_iterator entry(folder, error);
    for (; !error && entry != fs::recursive_directory_iterator(); entry.increment(error)) {
        struct stat status {};
        if (lstat(entry->path().c_str(), &status) == 0 && !S_ISDIR(status.st_mode)) {
            files.push_back({status.st_mtim, OnDisk(status.st_size), entry->path().string()});
        }
    }
    return error ? std::nullopt : std::optional(std::move(files));
}

} // namespace

CacheSettings ConfiguredCache(const IRegistry& registry)
{
    const char* const given = std::getenv("XDG_CACHE_HOME");
    const char* const home = std::getenv("HOME");
    const std::string folder = given != nullptr && *given == '/' ? given
                               : home != nullptr && *home == '/' ? std::string(home) + "/.cache"
                                                                 : std::string();
    qint64 megabytes = default_megabytes;
    for (const RegistryRoot root : {RegistryRoot::LocalMachine, RegistryRoot::CurrentUser}) {
        const auto value = registry.ReadValue(root, cache_key, cache_value);
        const std::string text = value ? ToUtf8(FromWide(*value)) : std::string();
        std::from_chars(text.data(), text.data() + text.size(), megabytes);
    }
    return {folder.empty() ? folder : folder + "/partkeep-read/contents",
            std::clamp<qint64>(megabytes, 0, qint64{1} << 30) * megabyte};
}

// Looked at once: what is wrong then stays so for this process.
bool CContentCache::OpenFolder()
{
    if (settings_.folder.empty() || settings_.most_bytes <= 0) {
        return false;
    }
    if (!folder_) {
        std::error_code ignored;
        fs::create_directories(fs::path(settings_.folder).parent_path(), ignored);
        mkdir(settings_.folder.c_str(), S_IRWXU);
        folder_.emplace(CFileHandle::Open(settings_.folder, O_RDONLY | O_DIRECTORY | O_NOFOLLOW));
        if (folder_->IsOpen() && !IsOwn(folder_->Descriptor(), S_IFDIR)) {
            folder_->Close();
        }
    }
    return folder_->IsOpen();
}

CFileHandle CContentCache::OpenContent(const QByteArray& hash, qint64 bytes)
{
    if (hash.size() != hash_bytes || !OpenFolder()) { // as a server told it
        return CFileHandle();
    }
    CFileHandle file(
        openat(folder_->Descriptor(), PlaceOf(hash).c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
    struct stat status {};
    if (!file.IsOpen() || fstat(file.Descriptor(), &status) != 0) {
        return CFileHandle();
    }
    if (!IsOwn(file.Descriptor(), S_IFREG) || status.st_size != bytes + sum_bytes) {
        Drop(hash);
        return CFileHandle();
    }
    if (std::time(nullptr) - status.st_mtime > fresh_seconds) {
        futimens(file.Descriptor(), nullptr);
    }
    return file;
}

void CContentCache::Drop(const QByteArray& hash)
{
    unlinkat(folder_->Descriptor(), PlaceOf(hash).c_str(), 0);
}

// A shared block cannot change behind the target's back, so the target is what is looked over.
bool CContentCache::CopyTo(int target, const QByteArray& hash, qint64 bytes)
{
    const CFileHandle file = OpenContent(hash, bytes);
    if (!file.IsOpen()) {
        return false;
    }
    bool written = true;
    const auto write_block = [&](std::string_view block) {
        while (!block.empty() && written) {
            const ssize_t count = write(target, block.data(), block.size());
            written = count >= 0 || errno == EINTR;
            block.remove_prefix(static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
        }
        return written;
    };
    const bool shared = ioctl(target, FICLONE, file.Descriptor()) == 0 && ftruncate(target, bytes) == 0;
    const CFileHandle copy =
        shared ? CFileHandle::Open("/proc/self/fd/" + std::to_string(target), O_RDONLY) : CFileHandle();
    if (shared ? ReadSound(copy.Descriptor(), file.Descriptor(), hash, bytes, [](std::string_view) { return true; })
               : ReadSound(file.Descriptor(), file.Descriptor(), hash, bytes, write_block)) {
        return true;
    }
    if (written) { // else it is the target that fails
        Drop(hash);
    }
    static_cast<void>(ftruncate(target, 0) == 0 && lseek(target, 0, SEEK_SET) == 0);
    return false;
}

std::optional<QByteArray> CContentCache::Read(const QByteArray& hash, qint64 bytes)
{
    const CFileHandle file = OpenContent(hash, bytes);
    if (!file.IsOpen()) {
        return std::nullopt;
    }
    QByteArray content;
    content.reserve(bytes);
    const auto add = [&content](std::string_view block) {
        content.append(block.data(), static_cast<qsizetype>(block.size()));
        return true;
    };
    if (!ReadSound(file.Descriptor(), file.Descriptor(), hash, bytes, add)) {
        Drop(hash);
        return std::nullopt;
    }
    return content;
}

std::unique_ptr<CContentCache::CNewContent> CContentCache::Begin(qint64 bytes)
{
    const CFileHandle room = Takes(bytes) ? MakeRoom(OnDisk(bytes + sum_bytes)) : CFileHandle();
    if (!room.IsOpen()) {
        return nullptr;
    }
    std::unique_ptr<CNewContent> content(new CNewContent(*this));
    const int file = content->file_.Descriptor(); // has its size from now on, for whoever looks at all
    return content->file_.IsOpen() && ftruncate(file, bytes + sum_bytes) == 0 ? std::move(content) : nullptr;
}

// The disk is for others as well: a quarter at most of what they leave.
qint64 CContentCache::Limit(qint64 total) const
{
    struct statvfs disk {};
    if (fstatvfs(folder_->Descriptor(), &disk) != 0) {
        return settings_.most_bytes;
    }
    const auto free = static_cast<qint64>(disk.f_bavail) * static_cast<qint64>(disk.f_frsize);
    return std::min(settings_.most_bytes, (free + total) / 4);
}

// The total is raised before anything is written, so that whoever is killed on the way leaves it too high and never too
// low. Who holds the lock is soon done; when not, nothing is kept for now. It is given to the caller, not open where
// there is no room.
CFileHandle CContentCache::MakeRoom(qint64 bytes)
{
    CFileHandle total_held(
        openat(folder_->Descriptor(), total_file, O_RDWR | O_CREAT | O_NOFOLLOW | O_CLOEXEC, S_IRUSR | S_IWUSR));
    if (!total_held.IsOpen() || flock(total_held.Descriptor(), LOCK_EX | LOCK_NB) != 0) {
        return CFileHandle();
    }
    std::array<char, 24> digits{};
    const ssize_t size = pread(total_held.Descriptor(), digits.data(), digits.size() - 1, 0);
    qint64 total = settings_.most_bytes;
    std::from_chars(digits.data(), digits.data() + std::max<ssize_t>(size, 0), total);
    qint64 limit = Limit(std::clamp<qint64>(total, 0, settings_.most_bytes));
    if (bytes > limit / 4 + disk_block) {
        return CFileHandle();
    }
    for (int look = 0; look < 2 && (total < 0 || total > limit - bytes); ++look) {
        total = Trim(limit / 10 * 9 - bytes).value_or(limit);
        limit = Limit(total);
    }
    if (total > limit - bytes) {
        RestAfterFailure();
        return CFileHandle();
    }
    const std::string text = std::to_string(total + bytes) + '\n';
    const bool told = pwrite(total_held.Descriptor(), text.data(), text.size(), 0) == static_cast<ssize_t>(text.size());
    if (!told || ftruncate(total_held.Descriptor(), static_cast<off_t>(text.size())) != 0) {
        RestAfterFailure();
        return CFileHandle();
    }
    return total_held;
}

// What is left, by a look at all. The folder is the one that is held, whatever stands in its place by now.
std::optional<qint64> CContentCache::Trim(qint64 most_bytes)
{
    const std::string folder = "/proc/self/fd/" + std::to_string(folder_->Descriptor());
    RemoveLeftOvers(folder);
    auto kept = KeptFiles(folder);
    if (!kept) {
        return std::nullopt;
    }
    std::vector<KeptFile>& files = *kept;
    std::sort(files.begin(), files.end(), [](const KeptFile& left, const KeptFile& right) {
        return std::pair(left.used.tv_sec, left.used.tv_nsec) < std::pair(right.used.tv_sec, right.used.tv_nsec);
    });
    qint64 total = 0;
    for (const KeptFile& file : files) {
        total += file.bytes;
    }
    for (const KeptFile& file : files) {
        if (total <= most_bytes) {
            break;
        }
        const bool in_its_folder = file.place.rfind('/') > folder.size(); // else on its way, or no content
        total -= in_its_folder && unlink(file.place.c_str()) == 0 ? file.bytes : 0;
    }
    return total;
}

class CContentCache::CNewContent::CSumOfIt : public CSum {};

CContentCache::CNewContent::CNewContent(CContentCache& cache)
    : cache_(cache), sum_(std::make_unique<CSumOfIt>()), name_(NewTemporaryName()),
      file_(openat(cache.folder_->Descriptor(), name_.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC,
                   S_IRUSR | S_IWUSR))
{
    HoldTemporaryFile(file_.Descriptor());
}

CContentCache::CNewContent::~CNewContent()
{
    if (!name_.empty()) {
        unlinkat(cache_.folder_->Descriptor(), name_.c_str(), 0);
    }
}

void CContentCache::CNewContent::Add(std::span<const char> block)
{
    sum_->Add({block.data(), block.size()});
    Write({block.data(), block.size()});
}

void CContentCache::CNewContent::Write(std::string_view bytes)
{
    if (file_.IsOpen() && !file_.WriteAll(bytes)) {
        cache_.RestAfterFailure();
        file_.Close();
    }
}

void CContentCache::CNewContent::Keep(const QByteArray& hash)
{
    Write(sum_->Bytes(hash));
    const std::string place = PlaceOf(hash);
    const int folder = cache_.folder_->Descriptor();
    const auto move = [&] { return renameat(folder, name_.c_str(), folder, place.c_str()) == 0; };
    const bool whole = file_.IsOpen();
    if (whole && (move() || (mkdirat(folder, place.substr(0, 2).c_str(), S_IRWXU) == 0 && move()))) {
        name_.clear();
    }
}

} // namespace partkeep
