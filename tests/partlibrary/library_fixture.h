// Small libraries in a temporary folder, and a browser session on them. The suites run once more on libraries in a
// database, where one has been started for them.
#pragma once

#include "partlibrary/library/library_admin.h"
#include "partlibrary/session/browser_session.h"
#include "partlibrary/sqlite/sqlite_library.h"
#include "partlibrary/sqlite/sqlite_writer.h"
#include "tests/support/temporary_folder.h"

#include <QtEndian>

#include <gtest/gtest.h>

#include <filesystem>
#include <functional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace partkeep {

using namespace Qt::StringLiterals;
namespace fs = std::filesystem;
using Names = std::vector<std::string>;

// Whether a state comes, of so many looks each a moment after the other.
[[nodiscard]] bool Comes(const std::function<bool()>& state, int looks = 1000);

// A bitmap file of `size` bytes as far as a library looks.
[[nodiscard]] QByteArray SmallBitmap(qsizetype size = 400);
[[nodiscard]] QByteArray SmallPng();

// Adds a part with the given files; a file's content is "<name><extension>" but for pictures.
void PutTestPart(ILibraryWriter& writer, const QString& folder, const QString& name, SlotSet slots,
                 const PartAttributes& attributes = {});

// Parts by number, each with a file: `name` has "%1" in the number's place.
void PutTestParts(
    ILibraryWriter& writer, const QString& folder, const QString& name, int first, int end,
    const std::function<PartAttributes(int)>& attributes = [](int) { return PartAttributes(); });

// Whether the libraries are in a database.
[[nodiscard]] bool InDatabase();

// The service of it, by this name.
inline const QString test_service = u"partkeep"_s;

// Runs SQL there, in the schema SRV1.
void RunInDatabase(const std::string& sql);

// Another service, which stands before one that had its name. What is not set is the database's, for a station.
void AddService(const std::string& name, const std::string& settings);

// Stops the server ("STOP"), lets it go on ("CONT"), or ends it: as an administrator does ("INT"), or as if its machine
// had gone ("KILL").
[[nodiscard]] bool SignalDatabase(const std::string& signal);

// The server starts anew, whether it still runs or was ended.
void RestartDatabase();

// A list that has come to its end.
[[nodiscard]] std::unique_ptr<IPartListing> WholeList(IPartLibrary& library, const PartListView& view, qint64 parts = 0,
                                                      const IPartListing* wider = nullptr);

// How a command of the tool has ended, and what it has said.
struct ToolRun {
    int end = 0;
    std::string out;
    std::string err;
};

[[nodiscard]] ToolRun RunTool(const std::vector<std::string>& words, bool watched = false);

// Of a line, parted by blanks.
[[nodiscard]] Names Words(const std::string& line);

// Copies every kind of file into a folder.
struct CCopyingSession : CBrowserSession {
    CCopyingSession(CLibraryFolder places, const CTemporaryFolder& target) : CBrowserSession(std::move(places))
    {
        SetTargetFolder(target.Core());
        SetDataKind(-1);
    }
};

class CTestLibraries {
public:
    CTestLibraries();
    [[nodiscard]] CLibraryFolder Places() const;
    [[nodiscard]] QString PlaceOf(const QString& server) const; // as the tool has it
    [[nodiscard]] std::unique_ptr<ILibraryAdmin> At(const QString& server) const;
    [[nodiscard]] QString Folder() const { return QString::fromStdString(folder_.Path().string()); }
    [[nodiscard]] QString FileOf(const QString& server) const { return Folder() + u'/' + server + u".kpl"_s; }

    // Makes the library if need be and runs `fill` in one transaction; ends the test when anything fails.
    void Fill(const QString& server, const std::function<void(ILibraryWriter&)>& fill);

    // A part of SRV1 with these files, besides what it has.
    void Put(const QString& folder, const QString& part, const std::vector<std::pair<FileSlot, QByteArray>>& files);

    // "SRV1" with the folders Plates and Plates\2008, the latter with the parts P1 (everything), P2 (.bmf),
    // P10 (.iga, .NCD), p1 (.SY5) and Bare (nothing); Plates with Top (.iga). "板金" with 筐体 and カバー1.
    void MakeShop();

private:
    CTemporaryFolder folder_;
    CTemporaryFolder cache_; // of what comes from a database
};

// As an engine's page and a server's message have a number.
[[nodiscard]] inline std::string BigEndian(std::size_t number)
{
    const quint32 bytes = qToBigEndian(static_cast<quint32>(number));
    return {reinterpret_cast<const char*>(&bytes), sizeof bytes};
}

// A test on the shop. What is copied arrives in a folder of its own.
class LibraryShop : public testing::Test {
protected:
    LibraryShop();

    [[nodiscard]] bool Copy(std::u16string_view part) { return session_.CopyPartFiles(u"SRV1", part); }
    [[nodiscard]] bool CopyP1() { return Copy(u"Plates\\2008\\P1"); }

    // Takes what has arrived out of the folder. A file that is not a test part's as stored is marked by "!".
    Names Take();

    // Changes SRV1 behind the back of whoever reads it.
    void Forge(const QString& sql);

    // Makes the part P1, or the folder Plates, one of this name, as a library from elsewhere may have it: its row is
    // sound but for the name.
    void ForgePart(const QString& name);
    void ForgeFolder(const QString& path);

    // Where the first page of a table or an index begins in the file.
    qint64 RootOf(const QString& name);

    // Two entries in the first page of a table or an index change places.
    void SwapEntries(const QString& name, qsizetype first, qsizetype second);

    // To its file.
    [[nodiscard]] std::shared_ptr<CConnection> Forger() const;

    // All folders and parts with what tells an edit: "[Plates]P1=SPCC7/15000 " has seven files and is 1.5 mm thick.
    static std::string All(IPartLibrary& library, const QString& folder = {});

    // What the tool's check has to say of SRV1, in lines; nothing for a sound library.
    [[nodiscard]] std::string Check() const;

    CTestLibraries libraries_;
    CTemporaryFolder target_;
    QString library_file_ = libraries_.FileOf(u"SRV1"_s);
    CCopyingSession session_{libraries_.Places(), target_};
    LibraryProblem problem_; // that was told last
};

} // namespace partkeep
