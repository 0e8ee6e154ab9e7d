// Parts of a database that were loaded before: they come from what the station keeps, right or not at all, and while
// the server is away as well, or from a standby.
#include "platform/text.h"
#include "tests/partlibrary/tapped_line.h"

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <numeric>
#include <string>
#include <thread>
#include <tuple>

namespace partkeep {
namespace {

class FarLibrary : public LibraryShop {
protected:
    [[nodiscard]] CLibraryFolder Far(qint64 most_bytes) const
    {
        return CLibraryFolder({}, {test_service + u"-station"_s}, {contents_, most_bytes});
    }

    // With all parts of the shop's folder selected.
    struct FarSession : CCopyingSession {
        FarSession(const CLibraryFolder& places, const CTemporaryFolder& target) : CCopyingSession(places, target)
        {
            EXPECT_TRUE(Go(u"SRV1"_s, u"Plates\\2008"_s));
            SelectAllParts(1);
        }
    };

    // As a Load does. What has arrived, in order; nothing where a part did not.
    Names Load(CBrowserSession& session)
    {
        Names names;
        const auto count = static_cast<std::int16_t>(session.GetSelectedPartCount());
        for (std::int16_t i = 0; i < count; ++i) {
            const auto part = session.GetSelectedPart(i);
            const std::u16string path = u"Plates\\2008\\" + (part ? part->name.toStdU16String() : u"?");
            const bool loaded =
                session.ReadPartAttributes(u"SRV1", path).has_value() && session.CopyPartFiles(u"SRV1", path);
            Names arrived = Take();
            if (!loaded) {
                return arrived;
            }
            names.insert(names.end(), arrived.begin(), arrived.end());
        }
        std::sort(names.begin(), names.end());
        return names;
    }

    Names LoadAnew(qint64 most_bytes)
    {
        FarSession session(Far(most_bytes), target_);
        return Load(session);
    }

    void DamageEach() const
    {
        int files = 0;
        for (const auto& entry : fs::recursive_directory_iterator(contents_)) {
            if (entry.is_regular_file() && entry.path().filename() != "total") {
                WriteBytes(entry.path(), ReadBytes(entry.path()).replace(0, 1, "x"));
                ++files;
            }
        }
        EXPECT_EQ(files, 8);
    }

    CTemporaryFolder cache_;
    const std::string contents_ = cache_.Path("contents");
    const Names all_{"P1.NCD", "P1.SY5", "P1.bmf", "P1.iga", "P10.NCD", "P10.iga", "P2.bmf", "p1.SY5"};
};

TEST_F(FarLibrary, WhatIsKeptComesFromHereAndWhateverIsWrongWithItCostsOnlySpeed)
{
    const std::tuple<const char*, std::function<void()>, qint64, bool> rows[] = {
        {"nothing", [] {}, 1 << 26, true},
        {"damaged", [&] { DamageEach(); }, 1 << 26, true}, // as by any harm, the cache then has nothing of it
        {"emptied", [&] { fs::remove_all(contents_); }, 1 << 26, true},
        {"nothing kept", [] {}, 0, false},
    };
    RunInDatabase("CREATE TABLE saved AS SELECT * FROM piece");
    for (const auto& [label, harm, most_bytes, kept_again] : rows) {
        SCOPED_TRACE(label);
        fs::remove_all(contents_);
        EXPECT_EQ(LoadAnew(most_bytes), all_);
        harm();
        EXPECT_EQ(LoadAnew(most_bytes), all_);
        RunInDatabase("DELETE FROM piece");
        EXPECT_EQ(LoadAnew(most_bytes), kept_again ? all_ : Names{});
        RunInDatabase("INSERT INTO piece SELECT * FROM saved");
    }
}

TEST_F(FarLibrary, WhatHasChangedSinceItWasSelectedIsNotCopiedFromHere)
{
    EXPECT_EQ(LoadAnew(1 << 26), all_);
    // What happens to a part after it was selected, and what arrives then.
    const std::tuple<std::u16string, std::function<bool(ILibraryWriter&, qint64, PartId)>, Names> rows[] = {
        {u"P1",
         [](auto& writer, auto, auto part) { return writer.PutFile(part, FileSlot::Iga, QByteArray("new")); },
         {"P1.NCD", "P1.SY5", "P1.bmf", "!P1.iga"}},
        {u"P1", [](auto& writer, auto folder, auto part) { return writer.MovePart(part, folder, u"Q"_s); }, {}},
        {u"p1",
         [](auto& writer, auto, auto part) {
             return writer.RemoveParts({&part, 1});
         },
         {}},
    };
    for (const auto& [part, since, arrive] : rows) {
        FarSession session(Far(1 << 26), target_);
        const std::u16string path = u"Plates\\2008\\" + part;
        EXPECT_TRUE(session.ReadPartAttributes(u"SRV1", path).has_value());
        libraries_.Fill(u"SRV1"_s, [&, &since = since](ILibraryWriter& writer) {
            EXPECT_TRUE(since(writer, session.CurrentFolder().id, session.Selection()[1]));
        });
        EXPECT_EQ(session.ReadPartAttributes(u"SRV1", path).has_value(), !arrive.empty());
        session.CopyPartFiles(u"SRV1", path);
        EXPECT_EQ(Take(), arrive) << NarrowText(path);
    }
}

TEST_F(FarLibrary, EachContentComesOverTheLineOnce)
{
    constexpr int parts = 24;
    constexpr long size = 100000;
    for (int i = 0; i < parts; ++i) { // three of which have the same .iga, and each has one twice
        const auto of = [](const QString& text) { return text.toLatin1().repeated(size / 4); };
        const QByteArray twice = of(u"s%1"_s.arg(i, 3));
        libraries_.Put(u"Far"_s, u"F%1"_s.arg(i),
                       {{FileSlot::Iga, of(u"i%1"_s.arg(i / 3, 3))},
                        {FileSlot::Bmf, of(u"b%1"_s.arg(i, 3))},
                        {FileSlot::Sy5, twice},
                        {FileSlot::Ncd, twice}});
    }
    // What is shown; the kinds, one after the other for each part; the most that is kept, and the contents that come.
    const std::tuple<const char*, std::int16_t, std::vector<std::int16_t>, qint64, long> rows[] = {
        {"all at once", all_data_kinds, {all_data_kinds}, 1 << 26, parts / 3 + 2 * parts},
        {"loaded again", all_data_kinds, {all_data_kinds}, 1 << 26, 0},
        {"its own, then the machine's", 15, {part_data_kind, 15}, 1 << 26, parts / 3 + 2 * parts},
        {"the same, nothing kept", 15, {part_data_kind, 15}, 0, 4L * parts},
        {"its own alone", part_data_kind, {part_data_kind}, 1 << 26, parts / 3 + parts},
    };
    const CTappedLine line(std::chrono::milliseconds(20));
    for (const auto& [label, filter, kinds, most_bytes, contents] : rows) {
        SCOPED_TRACE(label);
        if (contents != 0) {
            fs::remove_all(contents_);
        }
        const long before = line.Bytes();
        CCopyingSession session(CLibraryFolder({}, {tapped_station}, {contents_, most_bytes}), target_);
        session.SetPartFilter(filter);
        ASSERT_TRUE(session.Go(u"SRV1"_s, u"Far"_s));
        const long asked = line.Questions();
        session.SelectAllParts(1);
        ASSERT_EQ(session.GetSelectedPartCount(), parts);
        for (std::int16_t i = 0; i < parts; ++i) {
            const std::u16string path = u"Far\\" + session.GetSelectedPart(i)->name.toStdU16String();
            EXPECT_TRUE(session.ReadPartAttributes(u"SRV1", path).has_value());
            for (const std::int16_t kind : kinds) {
                session.SetDataKind(kind);
                EXPECT_TRUE(session.CopyPartFiles(u"SRV1", path));
            }
        }
        const long came = line.Bytes() - before;
        EXPECT_GE(came, contents * size);
        EXPECT_LT(came, contents * size + size) << "what tells of them, and nothing twice";
        EXPECT_TRUE(contents != 0 || line.Questions() - asked <= 4) << "which parts, what they have, and that again";
    }
}

// As a list asks for what it shows, of a server that does not answer at first.
TEST_F(FarLibrary, PicturesInViewComeOnceAndAreNotWaitedForWhateverIsKept)
{
    constexpr int parts = 40;
    const auto picture = [](PartId part) { return SmallPng() + QByteArray::number(part).repeated(50000); };
    libraries_.Fill(u"SRV1"_s, [&](ILibraryWriter& writer) {
        for (int i = 0; i < parts; ++i) {
            const auto part = writer.PutPart(*writer.MakeFolder(u"Far"_s), u"F%1"_s.arg(i), std::nullopt);
            EXPECT_TRUE(part && writer.PutFile(*part, FileSlot::Png, picture(*part)));
        }
    });
    WriteBytes(cache_.Path("file"), "x");
    const CTappedLine line(std::chrono::milliseconds(20));
    for (const CacheSettings& cache : {CacheSettings{contents_, 1 << 26}, {cache_.Path("file"), 1 << 26}, {{}, 0}}) {
        SCOPED_TRACE(cache.folder);
        const auto library =
            OpenPgLibrary({tapped_station, u"SRV1"_s}, CLibraryFolder({}, {tapped_station}, cache).Cache(), problem_);
        const auto folder = library->FindFolder(u"Far"_s);
        PartListView view;
        view.folder = folder->id;
        std::vector<PartId> wanted = *library->Ids(view);
        ASSERT_EQ(std::ssize(wanted), parts);
        const long all = std::transform_reduce(wanted.begin(), wanted.end(), 0L, std::plus<>(),
                                               [&](PartId part) { return static_cast<long>(picture(part).size()); });
        for (int look = 0; look < 30; ++look) { // until there is a line
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
            static_cast<void>(library->LookForChange());
        }
        const long before = line.Bytes();
        long bytes = 0;
        const auto ask = [&] {
            std::erase_if(wanted, [&](PartId part) {
                const auto content = library->PictureAtHand(part, FileSlot::Png);
                EXPECT_TRUE(!content || *content == picture(part));
                bytes += content ? std::ssize(*content) : 0;
                return content.has_value();
            });
        };
        ASSERT_TRUE(SignalDatabase("STOP"));
        library->ReadAhead(std::span(wanted).first(parts / 2));
        static_cast<void>(library->LookForChange()); // asks about these, and not about the rest
        library->ReadAhead(wanted);
        if (cache.folder != contents_) { // otherwise they come without that as well
            ask();
        }
        EXPECT_TRUE(std::ssize(wanted) == parts && !library->SilentSince().isValid()) << "they were waited for";
        ASSERT_TRUE(SignalDatabase("CONT"));
        EXPECT_TRUE(Comes(
            [&] {
                static_cast<void>(library->LookForChange());
                const bool came = library->PicturesCame() && (cache.folder != contents_ || line.Bytes() - before > all);
                came ? ask() : void();
                return wanted.empty();
            },
            3000));
        EXPECT_LT(line.Bytes() - before, bytes + bytes / 4) << "some came twice";
    }
}

// A pause is no silence of the server's, nor does what was asked for before it come as it was then. A second connection
// that is refused only costs speed.
TEST_F(FarLibrary, WhoeverPausesGetsAllAndAsItIsByThen)
{
    constexpr int parts = 8;
    const auto put = [this](int first, char version) {
        for (int i = first; i < parts; ++i) {
            libraries_.Put(u"Far"_s, u"F%1"_s.arg(i), {{FileSlot::Iga, QByteArray(i == 0 ? 3 << 20 : 9, version)}});
        }
    };
    for (const char* const limit : {"-1", "1"}) {
        put(0, '1');
        RunInDatabase(std::string("ALTER ROLE station CONNECTION LIMIT ") + limit);
        CCopyingSession session(Far(0), target_);
        ASSERT_TRUE(session.Go(u"SRV1"_s, u"Far"_s));
        session.SelectAllParts(1);
        for (int i = 0; i < parts; ++i) {
            if (i == 1 || i == 2) {
                std::this_thread::sleep_for(std::chrono::milliseconds(1200));
            }
            const auto began = std::chrono::steady_clock::now();
            EXPECT_TRUE(session.CopyPartFiles(u"SRV1", u"Far\\F" + FromUtf8(std::to_string(i)).toStdU16String()));
            EXPECT_LT(std::chrono::steady_clock::now() - began, std::chrono::milliseconds(1800)) << limit;
            EXPECT_EQ(ReadBytes(target_.Path("F" + std::to_string(i) + ".iga")),
                      std::string(i == 0 ? 3 << 20 : 9, i < 2 ? '1' : '2'));
            if (i == 0) {
                put(2, '2');
            }
        }
    }
    RunInDatabase("ALTER ROLE station CONNECTION LIMIT -1; UPDATE part SET changed_by = 'nobody'");
    put(0, '3');
    RunInDatabase(
        "DO $$ BEGIN ASSERT (SELECT bool_and((path = 'Far') <> (changed_by = 'nobody')) FROM part JOIN folder "
        "ON folder.id = part.folder), 'who has changed a part last'; END $$");
    EXPECT_NE(std::system("psql -q service=partkeep-station -c 'DELETE FROM \"SRV1\".part' 2>/dev/null"), 0);
    const auto library = OpenPgLibrary({test_service, u"SRV1"_s}, nullptr, problem_);
    const auto part = library->FindPart(u"Far"_s, u"F0"_s);
    qint64 bytes = 0;
    EXPECT_TRUE(part && library->CopyFiles(part->id, part->slots, [&bytes](FileSlot, std::span<const char> block) {
        std::this_thread::sleep_for(std::chrono::milliseconds(bytes == 0 ? 2200 : 0)); // as a slow disk does
        bytes += std::ssize(block);
        return LibraryProblem{};
    }));
    EXPECT_EQ(bytes, 3 << 20);
    EXPECT_TRUE(OpenPgLibrary({test_service, u"$user"_s}, nullptr, problem_) == nullptr);
    EXPECT_EQ(problem_.fault, LibraryFault::NotFound);
}

TEST_F(FarLibrary, WhatWasLoadedLoadsWhileTheServerIsAway)
{
    FarSession session(Far(1 << 26), target_);
    EXPECT_EQ(Load(session), all_);
    EXPECT_FALSE(session.Library()->AsOf().isValid());
    FarSession selected(Far(0), target_);
    std::this_thread::sleep_for(std::chrono::milliseconds(2100)); // a moment ago is as good as now
    ASSERT_TRUE(SignalDatabase("STOP"));
    EXPECT_EQ(selected.GetSelectedPart(4).value_or(SelectedPart()).name, u"P10"_s) << "which nobody has asked for yet";
    EXPECT_EQ(Load(session), all_);
    EXPECT_TRUE(session.Library()->AsOf().isValid());
    EXPECT_FALSE(session.CopyPartFiles(u"SRV1", u"Plates\\Top")) << "of which nothing is known";
    EXPECT_EQ(session.Problem().fault, LibraryFault::NoAnswer);
    EXPECT_TRUE(SignalDatabase("CONT") && session.Refresh());
    EXPECT_EQ(Load(session), all_);
}

// A station whose server is a standby, which follows another one and takes no LISTEN, and what is left of both when the
// other one goes.
TEST_F(FarLibrary, AStandbyServesStationsFollowsAndTakesOver)
{
    if (std::getenv("PARTKEEP_POSTGRES_STANDBY") == nullptr) {
        GTEST_SKIP() << "no standby here";
    }
    EXPECT_NE(std::system("psql -q service=partkeep-standby -c 'LISTEN partkeep' 2>/dev/null"), 0);
    CCopyingSession beside(CLibraryFolder({}, {u"partkeep-standby"_s}, {contents_, 1 << 26}), target_);
    CCopyingSession station(CLibraryFolder({}, {u"partkeep-both"_s}, {contents_, 1 << 26}), target_);
    const auto enter = [](CBrowserSession& session) { return session.Go(u"SRV1"_s, u"Plates\\2008"_s); };
    EXPECT_TRUE(enter(station));
    EXPECT_TRUE(Comes([&] { return enter(beside); }, 3000)) << "it may be a little behind";
    // Looks as a pane does, and records how long it took.
    const auto follow = [](const char* record, CBrowserSession& session, const std::function<bool()>& state) {
        const auto begin = std::chrono::steady_clock::now();
        const bool came = Comes(
            [&] {
                session.Library() != nullptr&& session.Library()->LookForChange() ? session.Follow() : void();
                return state();
            },
            3000);
        const std::chrono::duration<double, std::milli> took = std::chrono::steady_clock::now() - begin;
        RecordProperty(record, static_cast<int>(took.count()));
        return came;
    };
    const auto parts = [](CBrowserSession& session) { return session.CurrentFolder().parts; };
    const auto loads = [this](CBrowserSession& session) {
        return session.CopyPartFiles(u"SRV1", u"Plates\\2008\\P1") && Take() == Names(all_.begin(), all_.begin() + 4);
    };
    EXPECT_EQ(parts(beside), 5);
    EXPECT_TRUE(loads(beside));
    EXPECT_TRUE(!fs::is_empty(contents_) && loads(beside) && loads(station));

    libraries_.Fill(u"SRV1"_s, [](ILibraryWriter& writer) { PutTestPart(writer, u"Plates\\2008"_s, u"New"_s, 0); });
    EXPECT_TRUE(follow("beside_ms", beside, [&] { return parts(beside) == 6; }));
    EXPECT_TRUE(follow("station_ms", station, [&] { return parts(station) == 6; }));

    kill(std::stoi(std::getenv("PARTKEEP_POSTGRES_PID")), SIGQUIT);
    EXPECT_TRUE(follow("from_standby_ms", station, [&] { return loads(station); }) && loads(beside));
    const auto remove = [] { return RunTool({"remove", "partkeep-both:SRV1", "Plates\\2008\\New"}).err; };
    EXPECT_TRUE(Comes([] { return WEXITSTATUS(std::system("pg_isready -q -d service=partkeep")) == 2; }))
        << "a server on its way out breaks lines off, of which the other one knows nothing";
    const std::string refused = remove();
    EXPECT_NE(refused.find("recovery"), std::string::npos) << refused;
    EXPECT_EQ(std::system("psql -qAt service=partkeep-both -c 'SELECT pg_promote()' >/dev/null"), 0);
    EXPECT_EQ(remove(), "");
    EXPECT_TRUE(follow("promoted_ms", station, [&] { return parts(station) == 5; }));
    EXPECT_TRUE(follow("promoted_beside_ms", beside, [&] { return parts(beside) == 5; }));
    EXPECT_TRUE(loads(beside) && loads(station));
}

} // namespace
} // namespace partkeep
