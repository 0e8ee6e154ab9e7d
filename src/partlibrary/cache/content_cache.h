// What a station keeps of the contents that it has fetched from servers far away, a file each, named by the SHA-256 of
// what is in it (FIPS 180-4) and with a sum of both behind it. All processes of a user share one folder. Whatever is
// wrong with it, with its disk or with what lies in it costs speed and nothing else: a content is looked over as it is
// read, and never believed.
#pragma once

#include "platform/posix/file_handle.h"

#include <QByteArray>
#include <QtGlobal>

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace partkeep {

class IRegistry;

struct CacheSettings {
    std::string folder;    // native path; empty for none
    qint64 most_bytes = 0; // on the disk; 0 for none
};

// The user's folder for such things ($XDG_CACHE_HOME, or ~/.cache), and the value `cache` of the key
// `software\Velmar\ORVIC\PartLibrary`, in megabytes: the user's before the machine's, 2048 where neither is there.
[[nodiscard]] CacheSettings ConfiguredCache(const IRegistry& registry);

class CContentCache {
public:
    // A content on its way into the cache.
    class CNewContent {
    public:
        void Add(std::span<const char> block);

        // All of it was added, and has this hash, which whoever fetched it has made sure of.
        void Keep(const QByteArray& hash);

        ~CNewContent();
        CNewContent(const CNewContent&) = delete;
        CNewContent& operator=(const CNewContent&) = delete;

    private:
        friend class CContentCache;
        class CSumOfIt;
        explicit CNewContent(CContentCache& cache);
        void Write(std::string_view bytes);

        CContentCache& cache_;
        std::unique_ptr<CSumOfIt> sum_;
        std::string name_;
        CFileHandle file_;
    };

    explicit CContentCache(CacheSettings settings) : settings_(std::move(settings)) {}

    // Whether it is kept, as far as that can be told without reading it.
    [[nodiscard]] bool Has(const QByteArray& hash, qint64 bytes) { return OpenContent(hash, bytes).IsOpen(); }

    // Whether one of so many bytes would be kept, as far as that can be told before it comes.
    [[nodiscard]] bool Takes(qint64 bytes)
    {
        return Clock::now() >= rests_until_ && bytes <= settings_.most_bytes / 4 && OpenFolder();
    }

    // Writes a content at the end of an open file that has nothing in it yet; where the file system can, both share
    // their blocks. False where it is not kept, or not sound; the file is empty then.
    [[nodiscard]] bool CopyTo(int target, const QByteArray& hash, qint64 bytes);
    [[nodiscard]] std::optional<QByteArray> Read(const QByteArray& hash, qint64 bytes);

    // Room for a content of so many bytes: what was not used for longest goes. Null where nothing is kept; after a
    // failure that is so for a minute.
    [[nodiscard]] std::unique_ptr<CNewContent> Begin(qint64 bytes);

private:
    using Clock = std::chrono::steady_clock;

    bool OpenFolder();
    [[nodiscard]] CFileHandle OpenContent(const QByteArray& hash, qint64 bytes);
    void Drop(const QByteArray& hash);
    [[nodiscard]] bool ReadSound(int descriptor, int kept, const QByteArray& hash, qint64 bytes,
                                 const std::function<bool(std::string_view block)>& each);
    [[nodiscard]] CFileHandle MakeRoom(qint64 bytes);
    [[nodiscard]] qint64 Limit(qint64 total) const;
    [[nodiscard]] std::optional<qint64> Trim(qint64 most_bytes);
    void RestAfterFailure() { rests_until_ = Clock::now() + std::chrono::minutes(1); }

    CacheSettings settings_;
    std::optional<CFileHandle> folder_; // not open where it cannot be used
    Clock::time_point rests_until_;
    std::vector<char> buffer_;
};

} // namespace partkeep
