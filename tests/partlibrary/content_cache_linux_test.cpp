// The cache of contents: what it gives is what was kept or nothing, whatever happens to its folder and whoever is
// killed.
#include "partlibrary/cache/content_cache.h"
#include "partlibrary/library/content_hash.h"
#include "tests/support/linux_faults.h"
#include "tests/support/memory_registry.h"
#include "tests/support/temporary_folder.h"

#include <gtest/gtest.h>

#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <functional>
#include <list>
#include <memory>
#include <random>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <tuple>
#include <unistd.h>
#include <vector>

namespace partkeep {
namespace {

namespace fs = std::filesystem;

QByteArray HashOf(const QByteArray& content)
{
    CContentHash hash;
    hash.Add({content.constData(), static_cast<std::size_t>(content.size())});
    return hash.Hash();
}

// One of many that differ, some of several blocks.
QByteArray Content(unsigned number)
{
    return QByteArray::number(number).repeated(static_cast<qsizetype>(number % 7 == 0 ? 200000 : number % 7 * 900));
}

void Put(CContentCache& cache, const QByteArray& content, bool keep = true)
{
    if (const auto made = cache.Begin(content.size())) {
        made->Add({content.constData(), static_cast<std::size_t>(content.size() / 2)});
        made->Add(
            {content.constData() + content.size() / 2, static_cast<std::size_t>(content.size() - content.size() / 2)});
        if (keep) {
            made->Keep(HashOf(content));
        }
    }
}

// By both ways out; -1: wrong bytes, 0: nothing, 1: the content.
int Get(CContentCache& cache, const QByteArray& content, const fs::path& target)
{
    const auto read = cache.Read(HashOf(content), content.size());
    const CFileHandle file = CFileHandle::Open(target.string(), O_RDWR | O_CREAT | O_TRUNC, 0600);
    const bool copied = cache.CopyTo(file.Descriptor(), HashOf(content), content.size());
    const bool right = ReadBytes(target.string()) == (copied ? content.toStdString() : "");
    return !right || (read && *read != content) ? -1 : read || copied ? 1 : 0;
}

qint64 OnDisk(const fs::path& folder)
{
    qint64 total = 0;
    for (const auto& entry : fs::recursive_directory_iterator(folder)) {
        total += entry.is_regular_file() ? static_cast<qint64>((entry.file_size() + 4095) / 4096 * 4096) : 0;
    }
    return total;
}

class ContentCache : public testing::Test {
protected:
    // All that can be done to it, and what is given then.
    void HarmEachWay();

    CTemporaryFolder work_;
    std::string folder_ = work_.Path("cache/contents");
    std::string target_ = work_.Path("target");
};

TEST(ContentCacheSettings, AreTheUsersFolderAndTheLastOfTwoSizes)
{
    // Both folders of the environment, what is set for the machine and the user, and what comes of it, in megabytes.
    const std::tuple<const char*, const char*, const char16_t*, const char16_t*, const char*, qint64> rows[] = {
        {"/caches", "/home/u", nullptr, nullptr, "/caches/partkeep-read/contents", 2048},
        {"caches", "/home/u", u"100", nullptr, "/home/u/.cache/partkeep-read/contents", 100},
        {nullptr, "/home/u", u"100", u"0", "/home/u/.cache/partkeep-read/contents", 0},
        {nullptr, "home", u"many", u"-5", "", 0},
        {nullptr, nullptr, nullptr, u"9999999999", "", qint64{1} << 30},
    };
    const auto set = [](const char* name, const char* value) {
        value != nullptr ? setenv(name, value, 1) : unsetenv(name);
    };
    const std::string home = std::getenv("HOME") != nullptr ? std::getenv("HOME") : "/";
    for (const auto& [cache_home, home_folder, machine, user, folder, megabytes] : rows) {
        CMemoryRegistry registry;
        const auto say = [&](const std::u16string& root, const char16_t* size) {
            size != nullptr ? registry.Set(root + u"\\software\\Velmar\\ORVIC\\PartLibrary", u"cache", size) : void();
        };
        say(u"HKLM", machine);
        say(u"HKCU", user);
        set("XDG_CACHE_HOME", cache_home);
        set("HOME", home_folder);
        const CacheSettings settings = ConfiguredCache(registry);
        EXPECT_EQ(settings.folder, folder);
        EXPECT_EQ(settings.most_bytes >> 20, megabytes);
    }
    set("XDG_CACHE_HOME", nullptr);
    set("HOME", home.c_str());
}

TEST_F(ContentCache, GivesWhatWasKeptOrNothing)
{
    HarmEachWay();
}

// And a copy takes no room where the file system shares blocks.
TEST_F(ContentCache, DoesSoWhereFilesShareTheirBlocks)
{
    PARTKEEP_NEEDS_MOUNTS();
    const auto system_does = [this](const std::string& command) {
        return std::system(("cd " + work_.Path().string() + " && " + command + " 2>/dev/null").c_str()) == 0;
    };
    if (!system_does("truncate -s 400M image && /sbin/mkfs.xfs -q image && mkdir xfs && mount -o loop image xfs")) {
        GTEST_SKIP() << "no file can be a disk here: that takes root and xfsprogs";
    }
    folder_ = work_.Path("xfs/cache");
    target_ = work_.Path("xfs/target");
    HarmEachWay();
    CContentCache cache({work_.Path("xfs/more"), 1 << 26});
    Put(cache, QByteArray(1 << 23, 'x'));
    sync();
    const auto before = fs::space(target_).free;
    EXPECT_EQ(Get(cache, QByteArray(1 << 23, 'x'), target_), 1);
    sync();
    EXPECT_LT(before, fs::space(target_).free + (1 << 20));
    EXPECT_TRUE(system_does("umount -l xfs"));
}

void ContentCache::HarmEachWay()
{
    const QByteArray content = Content(14);
    const std::string place = HashOf(content).toHex().toStdString().insert(2, "/");
    const std::string file = folder_ + '/' + place;
    const auto link = [this](const std::string& path) {
        fs::rename(path, path + "-aside");
        fs::create_symlink(path + "-aside", path);
    };
    // What is done behind the first process's back, and what the second one gets, at once and when it has put it again.
    const std::tuple<const char*, std::function<void()>, int, int> rows[] = {
        {"none", [] {}, 1, 1},
        {"a byte", [&] { WriteBytes(file, content.toStdString().replace(300000, 1, "x")); }, 0, 1},
        {"shorter", [&] { fs::resize_file(file, 5); }, 0, 1},
        {"longer", [&] { fs::resize_file(file, 1 << 20); }, 0, 1},
        {"a link", [&] { link(file); }, 0, 1},
        {"a pipe", [&] { EXPECT_TRUE(fs::remove(file) && mkfifo(file.c_str(), 0600) == 0); }, 0, 1},
        {"writable for others", [&] { chmod(file.c_str(), 0666); }, 0, 1},
        {"folder writable for others", [&] { chmod(folder_.c_str(), 0777); }, 0, 0},
        {"folder a link", [&] { link(folder_); }, 0, 0},
        {"folder gone", [&] { fs::remove_all(folder_); }, 0, 1},
        {"folder a file",
         [&] {
             fs::remove_all(folder_);
             WriteBytes(folder_, "x");
         },
         0, 0},
    };
    for (const auto& [name, harm, got, kept_again] : rows) {
        SCOPED_TRACE(name);
        static_cast<void>(fs::is_symlink(folder_) ? fs::remove(folder_) : fs::remove_all(folder_) > 0);
        CContentCache first({folder_, 1 << 23});
        Put(first, Content(1), false);
        Put(first, content);
        EXPECT_EQ(Get(first, content, target_), 1);
        harm();
        CContentCache second({folder_, 1 << 23});
        EXPECT_EQ(Get(second, content, target_), got);
        EXPECT_EQ(Get(first, Content(1), target_), 0);
        Put(second, content);
        EXPECT_EQ(Get(second, content, target_), kept_again);
    }
    CContentCache none({folder_, 0});
    Put(none, content);
    EXPECT_EQ(Get(none, content, target_), 0);
}

TEST_F(ContentCache, AFullDiskOrOneThatCannotBeWrittenCostsNothingElse)
{
    PARTKEEP_NEEDS_MOUNTS();
    fs::create_directories(folder_);
    CMountedDisk disk(folder_, "1m");
    chmod(folder_.c_str(), 0700);
    CContentCache cache({folder_, 1 << 26});
    for (unsigned number = 0; number < 40; ++number) {
        Put(cache, Content(number));
        EXPECT_GE(Get(cache, Content(number), target_), 0);
        EXPECT_LE(OnDisk(folder_), (1 << 20) / 4) << "the room of others";
    }
    disk.SetReadOnly(true);
    CContentCache again({folder_, 1 << 26});
    Put(again, Content(50));
    EXPECT_EQ(Get(again, Content(39), target_), 1);
    EXPECT_EQ(Get(again, Content(50), target_), 0);
}

// While others have begun and not ended, and whatever was put in the place of the folder meanwhile.
TEST_F(ContentCache, TheLimitHoldsForAllTogetherAndWhatIsOfOthersStays)
{
    constexpr qint64 limit = 1 << 22;
    std::list<CContentCache> others;
    std::vector<std::unique_ptr<CContentCache::CNewContent>> begun;
    for (int other = 0; other < 3; ++other) {
        begun.push_back(others.emplace_back(CacheSettings{folder_, limit}).Begin(limit / 4 - 100));
        EXPECT_TRUE(begun.back() != nullptr);
    }
    CContentCache cache({folder_, limit});
    Put(cache, Content(1));
    const fs::path moved = work_.Path("moved");
    fs::rename(folder_, moved);
    fs::create_directories(work_.Path("theirs/aa"));
    WriteBytes(work_.Path("theirs/aa/file"), std::string(limit, 'x'));
    fs::create_directory_symlink(work_.Path("theirs"), folder_);
    for (unsigned number = 1; number < 40; ++number) {
        Put(cache, Content(number * 7));
        ASSERT_LE(OnDisk(moved), limit * 21 / 20);
    }
    EXPECT_EQ(fs::file_size(work_.Path("theirs/aa/file")), limit);
}

TEST_F(ContentCache, WhatWasUsedLastStays)
{
    CContentCache cache({folder_, 1 << 22});
    for (unsigned number = 1; number < 60; ++number) {
        Put(cache, Content(number * 7));
        const std::string used = folder_ + '/' + HashOf(Content(7)).toHex().toStdString().insert(2, "/");
        const timespec hour_ago[] = {{std::time(nullptr) - 3600, 0}, {std::time(nullptr) - 3600, 0}};
        utimensat(AT_FDCWD, used.c_str(), hour_ago, 0);
        ASSERT_EQ(Get(cache, Content(7), target_), 1) << number;
        ASSERT_LE(OnDisk(folder_), (1 << 22) * 21 / 20);
    }
    EXPECT_GE(OnDisk(folder_), 1 << 21);
}

// PARTKEEP_CACHE_ROUNDS=10000 for a long run of those below.
int Rounds(int usual)
{
    const char* const asked = std::getenv("PARTKEEP_CACHE_ROUNDS");
    return asked != nullptr ? std::atoi(asked) : usual;
}

// Another process that works until it is killed, or until its work ends with something wrong.
pid_t StartOther(const std::function<void()>& work)
{
    const pid_t other = fork();
    if (other == 0) {
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        work();
        _exit(1);
    }
    return other;
}

// False if it had ended by itself.
bool Kill(pid_t other)
{
    int status = 0;
    kill(other, SIGKILL);
    return waitpid(other, &status, 0) == other && WIFSIGNALED(status);
}

// Into an empty cache and into a full one by turns, while another process reads.
TEST_F(ContentCache, AWriterKilledAtAnyOfItsChangesLeavesNothingWrong)
{
    constexpr int limit = 3 << 20;
    const pid_t reader = StartOther([this] {
        unsigned number = 0;
        for (int got = 0; got >= 0; ++number) {
            CContentCache cache({folder_, limit});
            got = Get(cache, Content(number % 60), target_ + "-reader");
        }
    });
    int killed = 0;
    for (unsigned series = 0; series < 2 || killed < Rounds(0); ++series) {
        const auto write = [&] {
            CContentCache cache({folder_, limit});
            for (unsigned number = series; number < series + 4; ++number) {
                Put(cache, Content(number * 5 % 60));
            }
            return Get(cache, Content((series + 3) * 5 % 60), target_) == 1;
        };
        CContentCache cache({folder_, limit});
        for (unsigned number = 0; series % 2 == 1 && number < 60; ++number) {
            Put(cache, Content(number));
        }
        Ended ended = Ended::Killed;
        for (int place = 1; ended == Ended::Killed; ++place, ++killed) {
            SCOPED_TRACE(testing::Message() << "series " << series << ", change " << place);
            if (series % 2 == 0) {
                fs::remove_all(folder_);
            } else {
                WriteBytes(folder_ + "/total", std::to_string(limit) + '\n');
            }
            ended = KillAtChange(place, write);
            for (auto number = unsigned(place % 5); number < 60; number += 5) {
                ASSERT_GE(Get(cache, Content(number), target_), 0);
            }
            ASSERT_LE(fs::exists(folder_) ? OnDisk(folder_) : 0, limit / 20 * 21);
            ASSERT_TRUE(write()) << "as if nobody had been killed";
        }
        --killed;
        ASSERT_EQ(ended, Ended::Well);
    }
    EXPECT_TRUE(Kill(reader)) << "the other process was given wrong bytes";
    EXPECT_GT(killed, 40);
    RecordProperty("killed", killed);
}

// Processes that put and get at the same time, and are killed at any moment.
TEST_F(ContentCache, WhoeverIsKilledNoWrongByteIsGiven)
{
    const int rounds = Rounds(150);
    std::mt19937 random(5);
    CContentCache cache({folder_, 3 << 20});
    for (int round = 0; round < rounds; ++round) {
        pid_t children[2];
        for (pid_t& child : children) {
            child = StartOther([this, seed = random()] {
                std::mt19937 own(seed);
                CContentCache other({folder_, 3 << 20});
                const std::string target = target_ + std::to_string(getpid());
                for (int got = 0; got >= 0;) {
                    Put(other, Content(unsigned(own() % 60)));
                    got = Get(other, Content(unsigned(own() % 60)), target);
                }
            });
        }
        usleep(static_cast<useconds_t>(random() % 8000));
        for (const pid_t child : children) {
            ASSERT_TRUE(Kill(child)) << "wrong bytes, in round " << round;
            fs::remove(target_ + std::to_string(child));
        }
        const auto number = unsigned(random() % 60);
        ASSERT_GE(Get(cache, Content(number), target_), 0);
        ASSERT_LE(OnDisk(folder_), (3 << 20) * 21 / 20) << round;
    }
}

} // namespace
} // namespace partkeep
