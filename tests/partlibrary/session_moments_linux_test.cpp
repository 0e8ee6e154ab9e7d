// A load of two parts, and something that happens to the library at each moment of it: before each call and before each
// step that a statement takes, pieces of content included. Every part arrives as it stood in one library, or not at
// all, and what is wrong is told.
#include "tests/partlibrary/library_fixture.h"
#include "tests/support/linux_faults.h"

#include <chrono>
#include <filesystem>
#include <iostream>
#include <tuple>

namespace partkeep {
namespace {

class LoadMoments : public testing::Test {
protected:
    // What the files of both parts hold is the version of their library.
    static std::string MakeLibrary(char version)
    {
        CTestLibraries libraries;
        for (const QString& name : {u"P"_s, u"Q"_s}) {
            libraries.Put({}, name,
                          {{FileSlot::Iga, QByteArray(200000, version)}, {FileSlot::Ncd, QByteArray(70000, version)}});
        }
        return ReadBytes(libraries.FileOf(u"SRV1"_s).toStdString());
    }

    // False for anything but all files of one version, or none.
    bool Arrived(const std::string& part, bool told)
    {
        const std::string iga = told ? ReadBytes(target_.Path(part + ".iga")) : "";
        for (const char version : {'1', '2'}) {
            if (iga == std::string(200000, version)) {
                return ReadBytes(target_.Path(part + ".NCD")) == std::string(70000, version);
            }
        }
        return !told && !fs::exists(target_.Path(part + ".iga")) && !fs::exists(target_.Path(part + ".NCD"));
    }

    // The load, with the event at the given moment, which tells whether it took place. The number of moments; -1 where
    // something is wrong.
    int Load(int moment, const std::function<bool()>& event, LibraryFault told_at_end)
    {
        using std::chrono::steady_clock;
        CCopyingSession session(CLibraryFolder(QString::fromStdString(libraries_.Path().string())), target_);
        int moments = 0;
        bool fine = true;
        bool happened = false;
        const auto pass = [&] { happened = (moments++ == moment && event()) || happened; };
        const auto call = [&](auto&& operation) {
            pass();
            const auto begin = steady_clock::now();
            const auto result = operation();
            fine = fine && steady_clock::now() - begin < std::chrono::milliseconds(3500);
            return result;
        };
        if (call([&] { return session.ConnectServer(u"S"); })) {
            CConnection& connection = dynamic_cast<CSqliteLibrary&>(*session.Library()).Connection();
            connection.SetPatience(std::chrono::milliseconds(100));
            connection.WatchStatements([&](std::string_view) { pass(); });
        }
        for (const std::string part : {"P", "Q"}) {
            const std::u16string path = u"\\" + FromUtf8(part).toStdU16String();
            static_cast<void>(call([&] { return session.ReadPartAttributes(u"S", path).has_value(); }));
            const bool copied = call([&] { return session.CopyPartFiles(u"S", path); });
            fine = fine && Arrived(part, copied) && (copied || session.Problem());
        }
        if (told_at_end == LibraryFault::Busy) { // which a refresh would wait two seconds for
            return fine ? moments : -1;
        }
        session.Refresh();
        const LibraryFault told = session.Problem().fault;
        return fine && told == (happened ? told_at_end : LibraryFault::None) ? moments : -1;
    }

    CTemporaryFolder libraries_;
    CTemporaryFolder target_;
};

TEST_F(LoadMoments, EachPartIsOfOneStateWhateverHappens)
{
    const std::string first = MakeLibrary('1');
    const std::string second = MakeLibrary('2');
    const fs::path file = libraries_.Path("S.kpl");
    std::shared_ptr<CConnection> locker;
    const std::tuple<const char*, std::function<bool()>, LibraryFault> rows[] = {
        // with what is told after a refresh
        {"nothing", [] { return false; }, LibraryFault::None},
        {"replaced",
         [&] {
             WriteBytes(libraries_.Path("new"), second);
             fs::rename(libraries_.Path("new"), file);
             return true;
         },
         LibraryFault::None},
        {"written over", [&] { return WriteBytes(file, second), true; }, LibraryFault::None},
        {"cut short", [&] { return fs::resize_file(file, first.size() / 2), true; }, LibraryFault::Damaged},
        {"emptied", [&] { return fs::resize_file(file, 0), true; }, LibraryFault::NotALibrary},
        {"deleted", [&] { return fs::remove(file); }, LibraryFault::NotFound},
        {"unreadable", [&] { return fs::permissions(file, fs::perms::none), true; }, LibraryFault::CannotOpen},
        {"locked",
         [&] {
             LibraryProblem problem;
             locker = CConnection::Open(QString::fromStdString(file.string()), OpenMode::Write, problem);
             locker->SetPatience({});
             return locker->Execute("BEGIN EXCLUSIVE"); // not while the load reads
         },
         LibraryFault::Busy},
    };
    for (const fs::path& folder : {libraries_.Path(), target_.Path()}) {
        GiveToUnprivilegedUser(folder);
    }
    EXPECT_TRUE(RunWithoutPrivileges([&] {
        int wrong = 0;
        for (const auto& [label, event, told] : rows) {
            for (int moment = 0, moments = 20; moment < moments; ++moment) {
                locker.reset();
                fs::remove(file);
                WriteBytes(file, first);
                for (const fs::path& old : fs::directory_iterator(target_.Path())) {
                    fs::remove(old);
                }
                const int passed = Load(moment, event, told);
                moments = std::max(moments, passed);
                if (passed < 0) {
                    std::cerr << label << " at moment " << moment << '\n';
                    ++wrong;
                }
            }
        }
        return wrong == 0;
    }));
}

} // namespace
} // namespace partkeep
