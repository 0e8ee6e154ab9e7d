#include "partdata/staging.h"

#include "partdata/staged_names.h"
#include "platform/text.h"
#include "settings/process_values.h"
#include "tests/support/recorder.h"
#include "tests/support/temporary_folder.h"

#include <gtest/gtest.h>

#ifndef _WIN32
#include "tests/support/linux_faults.h"

#include <unistd.h>
#endif

namespace partkeep {
namespace {

namespace fs = std::filesystem;

// A working folder W with a staging folder and both temporary folders.
class Staging : public testing::Test {
protected:
    Staging() { MakeFolders("W"); }

    void MakeFolders(const std::string& name)
    {
        work_ = folder_.Path(name);
        TheProcessValues() = {folder_.Core(work_.filename().u16string()) + u"\\", 1};
        stage_ = TheProcessValues().workingFolder + u"SF\\";
        folders_ = {TheProcessValues().workingFolder + u"Lumora_ForPNG",
                    TheProcessValues().workingFolder + u"UnZipFolder\\"};
        for (const char* below : {"SF", "Lumora_ForPNG", "UnZipFolder"}) {
            fs::create_directories(work_ / below);
        }
    }

    // Paths below the working folder in sorted order.
    [[nodiscard]] Lines Everything() const
    {
        Lines paths;
        for (const auto& entry : fs::recursive_directory_iterator(work_)) {
            paths.push_back(entry.path().lexically_relative(work_).generic_string());
        }
        std::sort(paths.begin(), paths.end());
        return paths;
    }

    bool Find(const std::u16string& folder, const char16_t* name)
    {
        PartRecord record;
        record.PartName = name;
        return FindStagedFiles(folder, record, folders_, messages_, search_);
    }

    CTemporaryFolder folder_;
    fs::path work_;
    std::u16string stage_;
    StagingFolders folders_;
    Recorder recorder_;
    CRecordingMessages messages_{recorder_};
    CFileSearch search_;
};

TEST_F(Staging, RulesOnNamesAreOdd)
{
    const std::tuple<const char16_t*, const char16_t*, bool, bool> rows[] = {
        {u"\\W\\P.iga", u"p", true, true},
        {u"\\W\\p.iga", u"P", true, true},
        {u"P.iga", u"P", true, true},
        {u"\\W\\P.x ", u"P", true, true},
        {u"\\W\\B2DP.dat", u"p", true, true},
        {u"\\W\\B3dp.bmp", u"P", true, false},
        {u"\\W\\b2dp.dat", u"P", false, true},
        {u"\\W\\B2P.iga", u"P", false, true},
        {u"\\W\\B2D.iga", u"B2D", false, true},
        {u"\\W\\B2dB3D.iga", u"b3d", true, true},
        {u"\\W\\B3DP.iga", u"P", true, true},
        {u"\\W\\.iga", u"P", false, false},
        {u"\\W\\PP.iga", u"P", false, true},
        {u"\\W\\PX.iga", u"P", false, false},
        {u"\\W\\P .iga", u"P", false, false},
        {u"\\W\\P.iga", u"PP", false, false},
        {u"\\W\\P.1.iga", u"P", true, true},
        {u"\\W\\P.SY5.iga", u"P", false, true},
        {u"\\W\\P", u"P", false, false},
        {u"\\W\\P.", u"P", false, false},
        {u"\\W\\P.xMl", u"P", false, false},
        {u"\\W\\P.XMLx", u"P", true, true},
        {u"\\W\\P.sy5", u"P", false, false},
        {u"\\W\\P.SY9", u"P", false, true},
        {u"\\W\\\u00E4.iga", u"\u00C4", true, true},
        {u"\\W\\\uFF21.ncd", u"\uFF41", true, true},
        {u"\\W.1\\P.iga", u"P", false, false},
        {u"\\P.1\\W\\Q.xml", u"P", true, true},
    };
    for (const auto& [path, name, cleared, deleted] : rows) {
        EXPECT_EQ(IsClearedBeforeStaging(path, name), cleared) << Quoted(path);
        EXPECT_EQ(IsDeletedWithPart(path, name), deleted) << Quoted(path);
    }
}

TEST_F(Staging, EachOperationTouchesItsOwnFolders)
{
    const std::string temporary = "Lumora_ForPNG/B2DP.x; Lumora_ForPNG/P.SY5; Lumora_ForPNG/P.iga; Lumora_ForPNG/XP.x; "
                                  "UnZipFolder/B2DP.x; UnZipFolder/P.SY5; UnZipFolder/P.iga; UnZipFolder/XP.x";
    // What is gone of the same four files and a folder in each of the four.
    const std::tuple<const char*, const char*, std::function<void()>, std::string> rows[] = {
        {"clear a staged part", "W", [this] { ClearStagedPart(stage_, u"p"); }, "SF/B2DP.x; SF/P.iga"},
        {"below a dot", "W.1", [this] { ClearStagedPart(stage_, u"p"); }, ""},
        {"no separator", "W", [this] { ClearStagedPart(folders_.previewFolder, u"P"); }, ""},
        {"delete a part", "W", [] { DeletePartFiles(u"p"); }, "B2DP.x; P.iga; XP.x"},
        {"delete no part", "W", [] { DeletePartFiles(u""); }, ""},
        {"temporary folders", "W", [this] { RemoveTempFolders(folders_); }, temporary},
        {"a part that is there", "W", [this] { Find(stage_, u"P"); }, ""},
        {"a part that is not", "W", [this] { Find(stage_, u"DP"); }, "B2DP.x; " + temporary},
    };
    for (const auto& [label, work, operation, gone] : rows) {
        SCOPED_TRACE(label);
        MakeFolders(work);
        for (const char* place : {"", "SF/", "Lumora_ForPNG/", "UnZipFolder/"}) {
            for (const char* name : {"P.iga", "P.SY5", "B2DP.x", "XP.x"}) {
                WriteBytes(work_ / (std::string(place) + name), "x");
            }
            fs::create_directory(work_ / (std::string(place) + "P.dat"));
        }
        Lines expected = Everything();
        for (const std::string& path : Steps(gone)) {
            EXPECT_EQ(std::erase(expected, path), 1U) << path;
        }
        operation();
        EXPECT_EQ(Everything(), expected);
    }
}

TEST_F(Staging, FindsTheFourFilesInAnyCase)
{
    const char* no_files = "message 'No IGA or BMF files found for the part.\n Part Name:P' 'Kolvyn PartkeepRead'";
    // "kept": the field's file is missing, and what it held stays.
    const std::tuple<const char*, const char*, const char*, const char*, const char*, bool> rows[] = {
        {"all", "P.iga; P.bmf; P.SY5; P.NCD", "P.iga", "P.SY5", "P.NCD", true},
        {"second choice", "p.BMF; P.sy5", "P.bmf", "P.SY5", "kept", true},
        {"no main file", "p.ncd", "kept", "kept", "P.NCD", true},
        {"SY5 alone", "p.Sy5", "kept", "P.SY5", "kept", true},
        {"other parts, and a folder", "PP.iga; P.SY9; B2DP.iga", "kept", "kept", "kept", false},
    };
    for (const auto& [label, files, iga, sy, nc, found] : rows) {
        SCOPED_TRACE(label);
        fs::remove_all(work_);
        MakeFolders("W");
        fs::create_directory(work_ / (found ? "SF/P" : "SF/P.iga"));
        for (const std::string& name : Steps(files)) {
            WriteBytes(work_ / "SF" / name, "x");
        }
        const auto path = [this](const std::string& name) {
            return name == "kept" ? u"kept" : stage_ + WidenText(name);
        };
        PartRecord record;
        record.PartName = u"P";
        record.FilePathName = record.SYFileName = record.NCFileName = u"kept";
        search_.Forget();
        EXPECT_EQ(FindStagedFiles(stage_, record, folders_, messages_, search_), found);
        EXPECT_EQ(record.FilePathName, path(iga));
        EXPECT_EQ(record.SYFileName, path(sy));
        EXPECT_EQ(record.NCFileName, path(nc));
        EXPECT_EQ(recorder_.Take(), found ? Lines{} : Lines{no_files});
    }
}

TEST_F(Staging, FolderNameHasTheBackslashesOfTheFolderCut)
{
    TheProcessValues().workingFolder = u"C:\\W\\";
    EXPECT_EQ(StagingFolderOf(u"S1", u"A\\B"), u"C:\\W\\S1AB");
    EXPECT_EQ(StagingFolderOf(u"\\\\S1", u"\\Plates\\2008\\"), u"C:\\W\\\\\\S1Plates2008");
    EXPECT_EQ(StagingFolderOf(u"S1", u""), u"C:\\W\\S1");
}

TEST_F(Staging, SecondRemovalHitsNoNeighbour)
{
    RemoveTempFolders(folders_);
    EXPECT_EQ(Everything(), Lines{"SF"});
    MakeFolder(folders_.unpackFolder);
    WriteBytes(work_ / "UnZipFolder/a", "x");
    WriteBytes(work_ / "UnZipFolder2.txt", "x");
    MakeFolder(folders_.unpackFolder);
    RemoveTempFolders(folders_);
    EXPECT_EQ(Everything(), (Lines{"SF", "UnZipFolder", "UnZipFolder/a", "UnZipFolder2.txt"}));
}

#ifndef _WIN32
TEST_F(Staging, WithoutAWorkingFolderNothingInTheRootIsDeleted)
{
    PARTKEEP_NEEDS_MOUNTS();
    const CMountedDisk disk(work_); // who may mount may also change the root
    WriteBytes(work_ / "P.iga", "x");
    for (const char16_t* nothing : {u"", u"\\"}) {
        TheProcessValues().workingFolder = nothing;
        const auto delete_in_root = [this] {
            const bool inside = chroot(work_.c_str()) == 0;
            DeletePartFiles(u"P");
            _exit(inside && access("/P.iga", F_OK) == 0 ? 0 : 1);
        };
        EXPECT_EXIT(delete_in_root(), testing::ExitedWithCode(0), "");
    }
}
#endif

} // namespace
} // namespace partkeep
