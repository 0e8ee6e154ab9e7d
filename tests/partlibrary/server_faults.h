// What a browser does on a database in whose way things come, and what may happen to its server.
#pragma once

#include "tests/partlibrary/tapped_line.h"

#include <chrono>
#include <filesystem>
#include <poll.h>
#include <thread>
#include <unistd.h>

namespace partkeep {

using std::chrono::milliseconds;
using std::chrono::steady_clock;
using namespace std::string_literals;

inline constexpr milliseconds longest_wait{2700};
inline const std::string of_browsers = " FROM pg_stat_activity WHERE application_name = 'partkeep'";

// 0: there is none; -1: there is no answer.
inline pid_t BackendOfBrowser()
{
    FILE* const shell = popen(("psql -qAt service=partkeep -c \"SELECT pid" + of_browsers + " LIMIT 1\"").c_str(), "r");
    int pid = 0;
    const bool read = std::fscanf(shell, "%d", &pid) == 1;
    return pclose(shell) != 0 ? -1 : read ? pid : 0;
}

// Which recovers.
inline void AwaitServer()
{
    EXPECT_TRUE(Comes([] { return BackendOfBrowser() >= 0; }));
}

class ServerFaults : public LibraryShop {
protected:
    ServerFaults()
    {
        for (const QString& name : {u"L1"_s, u"L2"_s, u"L3"_s}) {
            libraries_.Put(u"Load"_s, name,
                           {{FileSlot::Iga, QByteArray(900000, 'i')},
                            {FileSlot::Ncd, QByteArray(300000, 'n')},
                            {FileSlot::Png, SmallPng()}});
        }
        setenv("PGOPTIONS", "-c synchronous_commit=on", 1); // what was told to be there is there after a kill
        RunInDatabase("CHECKPOINT");
    }
    ~ServerFaults() override { unsetenv("PGOPTIONS"); }

    // As the dialog does it, by a role that may only read. No call takes too long, and no half of a part is left.
    bool Load()
    {
        for (const char* old : {"loaded", "kept"}) {
            fs::remove_all(target_.Path(old));
        }
        fs::create_directory(target_.Path("loaded"));
        CBrowserSession session{CLibraryFolder({}, {tapped_station}, {target_.Path("kept"), 1 << 26})};
        session.SetTargetFolder(target_.Core(u"loaded"));
        session.SetDataKind(-1);
        bool complete = Soon([&] { return session.Go(u"SRV1"_s, u"Load"_s); });
        opened_ = complete;
        complete = Soon([&] { return session.SelectAllParts(1) == 1; }) && complete;
        const int count = session.GetSelectedPartCount();
        complete = complete && count == 3;
        std::vector<QString> names(static_cast<std::size_t>(count));
        for (std::int16_t i = 0; i < count; ++i) {
            Soon([&] {
                const auto part = session.GetSelectedPart(i);
                names[static_cast<std::size_t>(i)] = part ? part->name : QString();
                EXPECT_TRUE(!honest_ || (part ? !part->name.isEmpty() : bool(session.Problem()))) << "none has gone";
                return part.has_value();
            });
        }
        for (std::int16_t i = 0; i < count; ++i) {
            const bool known = Soon([&] { return session.GetSelectedPart(i).has_value(); });
            const QString& name = names[static_cast<std::size_t>(i)];
            EXPECT_TRUE(known || name.isEmpty() || !honest_) << "what was told once is told again";
            const bool copied = !name.isEmpty() &&
                                Soon([&] { return session.CopyPartFiles(u"SRV1", u"Load\\" + name.toStdU16String()); });
            EXPECT_TRUE((copied || session.Problem() || !honest_) && IsWhole(name, copied)) << name.toStdString();
            complete = complete && copied;
        }
        EXPECT_TRUE(session.Problem().fault != LibraryFault::Refused || session.FailsSince().isValid());
        return complete;
    }

    // What is shown is right, as far as anything is. Every other time with a cache, for which pictures come.
    bool Browse()
    {
        fs::remove_all(target_.Path("kept"));
        const bool keeps = ++browsed_ % 2 == 0;
        CBrowserSession session{
            CLibraryFolder({}, {tapped_station}, {keeps ? target_.Path("kept") : fs::path(), 1 << 26})};
        bool complete = Soon([&] { return session.Go(u"SRV1"_s, u"Load"_s); });
        opened_ = complete;
        const auto shows = [&](const char* wanted) {
            if (session.Library() == nullptr || session.CurrentFolder().path != u"Load"_s) {
                return false;
            }
            const auto list = session.Library()->List(session.ListView(), session.CurrentFolder().parts, nullptr);
            while (Soon([&] { return list->Step(); })) {
            }
            std::string shown;
            Soon([&] {
                for (const PartRow& row : list->Rows(0, 50)) {
                    shown += row.name.toStdString();
                }
                return true;
            });
            EXPECT_TRUE(!honest_ || list->Failed() || session.Library()->Problem() || session.Problem() ||
                        shown == wanted)
                << shown;
            return shown == wanted;
        };
        complete = shows("L1L2L3") && complete;
        Soon([&] { return session.SearchFor(u"l2"_s), true; });
        complete = shows("L2") && complete;
        Soon([&] { return session.SearchIn(SearchScope::Server), true; });
        complete = shows("L2") && complete;
        Soon([&] { return session.SearchIn(SearchScope::Folder), true; });
        Soon([&] { return session.SearchFor({}), session.SortBy(PartColumn::Name, true), true; });
        complete = shows("L3L2L1") && complete;
        complete = Soon([&] { return session.Folders(u"SRV1"_s, {}).has_value(); }) && complete;
        IPartLibrary* const library = session.Library();
        complete = library != nullptr && complete &&
                   Soon([&] { return library->Values(session.ListView(), PartColumn::Material, 9).has_value(); });
        const auto ids = library != nullptr ? library->Ids(session.ListView()) : std::nullopt;
        for (int look = 0; ids && look < 20; ++look) {
            pollfd changes{library->ChangeSocket(), POLLIN, 0};
            poll(&changes, 1, 2);
            Soon([&] { return look % 4 == 0 ? library->ReadAhead(*ids) : void(), library->LookForChange(); });
            const auto picture = library->PictureAtHand(ids->empty() ? 0 : ids->back(), FileSlot::Png);
            EXPECT_TRUE(!picture || picture->isEmpty() || *picture == SmallPng());
        }
        complete = Soon([&] { return session.ReadPartAttributes(u"SRV1", u"Load\\L2").has_value(); }) && complete;
        Soon([&] { return session.Refresh(); }); // asks for the server once more
        return shows("L3L2L1") && complete;
    }

    // What happens takes a while by itself, in which the line is held.
    bool Soon(const std::function<bool()>& call)
    {
        const auto begin = steady_clock::now();
        const auto held = line_.Held();
        const bool done = call();
        EXPECT_LT(steady_clock::now() - begin, longest_wait + (line_.Held() - held));
        return done;
    }

    bool IsWhole(const QString& name, bool copied)
    {
        const fs::path iga = target_.Path("loaded") / (name.toStdString() + ".iga");
        const fs::path ncd = target_.Path("loaded") / (name.toStdString() + ".NCD");
        return copied ? ReadBytes(iga) == std::string(900000, 'i') && ReadBytes(ncd) == std::string(300000, 'n')
                      : !fs::exists(iga) && !fs::exists(ncd);
    }

    CTappedLine line_;
    int browsed_ = 0;
    bool opened_ = false; // nobody waits for a server that was not there before
    bool honest_ = true;  // what the server tells
};

// Of the server, for what contents take, and full while somebody says so.
class CSmallDisk {
public:
    CSmallDisk()
    {
        fs::create_directory(folder_);
        mounted_ = geteuid() == 0 && std::system(("mount -t tmpfs -o size=16m small " + folder_).c_str()) == 0 &&
                   std::system(("chown --reference=" + folder_ + "/../data " + folder_).c_str()) == 0;
        if (mounted_) {
            RunInDatabase("CREATE TABLESPACE small LOCATION '" + folder_ + "'");
            RunInDatabase("ALTER TABLE piece SET TABLESPACE small");
        }
    }
    ~CSmallDisk()
    {
        if (mounted_) {
            RunInDatabase("ALTER TABLE piece SET TABLESPACE pg_default");
            RunInDatabase("DROP TABLESPACE small");
            EXPECT_EQ(std::system(("umount " + folder_).c_str()), 0);
        }
    }
    CSmallDisk(const CSmallDisk&) = delete;
    CSmallDisk& operator=(const CSmallDisk&) = delete;
    [[nodiscard]] bool IsThere() const { return mounted_; }
    void Fill() const { static_cast<void>(std::system(("cat /dev/zero >" + folder_ + "/filler 2>/dev/null").c_str())); }
    void Empty() const { fs::remove(folder_ + "/filler"); }

private:
    const std::string folder_ = std::string(std::getenv("PARTKEEP_POSTGRES")) + "/small";
    bool mounted_ = false;
};

} // namespace partkeep
