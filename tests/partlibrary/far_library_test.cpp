// Parts of a database that were loaded before: they come from what the station keeps, right or not at all, and while
// the server is away as well.
#include "tests/partlibrary/library_fixture.h"

#include <algorithm>
#include <filesystem>
#include <functional>

namespace partkeep {
namespace {

namespace fs = std::filesystem;

class FarLibrary : public LibraryShop {
protected:
    [[nodiscard]] CLibraryFolder Far(qint64 most_bytes) const
    {
        return CLibraryFolder({}, {test_service + u"-station"_s}, {contents_, most_bytes});
    }

    static void Open(CBrowserSession& session, CTemporaryFolder& target)
    {
        session.SetTargetFolder(target.Core());
        session.SetDataKind(-1);
        EXPECT_TRUE(session.Go(u"SRV1"_s, u"Plates\\2008"_s));
    }

    // As a Load does. What has arrived, in order; nothing where a part did not.
    std::vector<std::string> Load(CBrowserSession& session)
    {
        std::vector<std::string> names;
        const auto count = static_cast<std::int16_t>(session.GetSelectedPartCount());
        for (std::int16_t i = 0; i < count; ++i) {
            const auto part = session.GetSelectedPart(i);
            const std::u16string path = u"Plates\\2008\\" + (part ? part->name.toStdU16String() : u"?");
            const bool loaded =
                session.ReadPartAttributes(u"SRV1", path).has_value() && session.CopyPartFiles(u"SRV1", path);
            std::vector<std::string> arrived = Take();
            if (!loaded) {
                return arrived;
            }
            names.insert(names.end(), arrived.begin(), arrived.end());
        }
        std::sort(names.begin(), names.end());
        return names;
    }

    std::vector<std::string> LoadAnew(qint64 most_bytes)
    {
        CBrowserSession session{Far(most_bytes)};
        Open(session, target_);
        session.SelectAllParts(1);
        return Load(session);
    }

    void HarmEach(const std::function<void(const fs::path&)>& harm) const
    {
        std::vector<fs::path> files;
        for (const auto& entry : fs::recursive_directory_iterator(contents_)) {
            if (entry.is_regular_file() && entry.path().filename() != "total") {
                files.push_back(entry.path());
            }
        }
        EXPECT_EQ(files.size(), 8U);
        std::for_each(files.begin(), files.end(), harm);
    }

    CTemporaryFolder cache_;
    const std::string contents_ = cache_.Path("contents");
    const std::vector<std::string> all_{"P1.NCD",  "P1.SY5",  "P1.bmf", "P1.iga",
                                        "P10.NCD", "P10.iga", "P2.bmf", "p1.SY5"};
};

TEST_F(FarLibrary, WhatIsKeptComesFromHereAndWhateverIsWrongWithItCostsOnlySpeed)
{
    const struct {
        const char* label;
        std::function<void()> harm;
        qint64 most_bytes;
        bool kept_again;
    } rows[] = {
        {"nothing", [] {}, 1 << 26, true},
        {"damaged",
         [&] { HarmEach([](const fs::path& file) { WriteBytes(file, ReadBytes(file).replace(0, 1, "x")); }); }, 1 << 26,
         true},
        {"cut off", [&] { HarmEach([](const fs::path& file) { fs::resize_file(file, 1); }); }, 1 << 26, true},
        {"links",
         [&] {
             HarmEach([&](const fs::path& file) {
                 fs::rename(file, cache_.Path("elsewhere"));
                 fs::create_symlink(cache_.Path("elsewhere"), file);
             });
         },
         1 << 26, true},
        {"emptied", [&] { fs::remove_all(contents_); }, 1 << 26, true},
        {"nothing kept", [] {}, 0, false},
    };
    RunInDatabase("CREATE TABLE saved AS SELECT * FROM piece");
    for (const auto& row : rows) {
        SCOPED_TRACE(row.label);
        fs::remove_all(contents_);
        EXPECT_EQ(LoadAnew(row.most_bytes), all_);
        row.harm();
        EXPECT_EQ(LoadAnew(row.most_bytes), all_);
        RunInDatabase("DELETE FROM piece");
        EXPECT_EQ(LoadAnew(row.most_bytes), row.kept_again ? all_ : std::vector<std::string>{});
        RunInDatabase("INSERT INTO piece SELECT * FROM saved");
    }
}

TEST_F(FarLibrary, WhatWasLoadedLoadsWhileTheServerIsAway)
{
    CBrowserSession session{Far(1 << 26)};
    Open(session, target_);
    session.SelectAllParts(1);
    EXPECT_EQ(Load(session), all_);
    EXPECT_FALSE(session.Library()->AsOf().isValid());
    ASSERT_TRUE(SignalDatabase("STOP"));
    EXPECT_EQ(Load(session), all_);
    EXPECT_TRUE(session.Library()->AsOf().isValid());
    EXPECT_FALSE(session.CopyPartFiles(u"SRV1", u"Plates\\Top")) << "of which nothing is known";
    EXPECT_EQ(session.Problem().fault, LibraryFault::NoAnswer);
    EXPECT_TRUE(SignalDatabase("CONT") && session.Refresh());
    EXPECT_EQ(Load(session), all_);
}

} // namespace
} // namespace partkeep
