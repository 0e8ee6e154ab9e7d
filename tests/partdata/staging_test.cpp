#include "partdata/staging.h"

#include "partdata/staged_names.h"
#include "settings/process_values.h"
#include "tests/partdata/shown_message.h"
#include "tests/partdata/staging_model.h"
#include "tests/support/temporary_folder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <set>

namespace partkeep {
namespace {

namespace fs = std::filesystem;

// Everything below a folder, by path with backslashes; folders end in one.
using Tree = std::set<std::u16string>;

// By the file system itself, so that names may differ in case alone.
fs::path Native(std::u16string path)
{
    std::replace(path.begin(), path.end(), u'\\', u'/');
    return path;
}

void Touch(const std::u16string& path)
{
    WriteBytes(Native(path), "x");
}

class Staging : public testing::Test {
protected:
    Staging() { MakeFolders(u"root\\"); }

    void MakeFolders(const std::u16string& root)
    {
        work_ = temporary_.Core(root) + u"W\\";
        stage_ = work_ + u"SF\\";
        TheProcessValues() = {work_, 1};
        folders_ = {work_ + u"Lumora_ForPNG", work_ + u"UnZipFolder\\"};
        for (const std::u16string& folder : {stage_, folders_.previewFolder, folders_.unpackFolder}) {
            fs::create_directories(Native(folder));
        }
    }

    [[nodiscard]] Tree Everything() const
    {
        Tree tree;
        for (const auto& entry : fs::recursive_directory_iterator(temporary_.Path())) {
            std::u16string path = entry.path().generic_u16string() + (entry.is_directory() ? u"/" : u"");
            std::replace(path.begin(), path.end(), u'/', u'\\');
            tree.insert(path);
        }
        return tree;
    }

    CTemporaryFolder temporary_;
    std::u16string work_;
    std::u16string stage_;
    StagingFolders folders_;
    Recorder recorder_;
    CRecordingMessages messages_{recorder_};
};

class StagingByModel : public Staging {
protected:
    std::u16string Any(const std::vector<std::u16string>& texts) { return texts[random_() % texts.size()]; }

    std::u16string Stem()
    {
        return Any({u"", u"", u"", u"", u"B2D", u"B3d", u"b2D", u"B2", u"X"}) +
               Any({u"P", u"p", u"PP", u"P ", u" P", u"\u92FC", u"\uFF41", u"\uFF21", u"\u00E4", u"\u00C4", u"B2D"});
    }

    std::u16string File()
    {
        return Stem() + Any({u".iga", u".IGA", u".bmf", u".SY5", u".sy5", u".NCD", u".ncd", u".xml", u".XMLx",
                             u".SY5.iga", u".BMP", u".bmp", u".sy9", u"", u".1.iga", u".x ", u".", u".."});
    }

    // Adds to what the rounds before have left: making all anew costs a disk more than the test is worth.
    void Fill(int round)
    {
        if (round % 5 == 0) {
            fs::remove_all(Native(root_));
            root_ = temporary_.Core(Any({u"root", u"root", u"root", u"root", u"W.1", u"P.1"}));
        }
        MakeFolders(root_.substr(temporary_.Core(u"").size()) + u"\\");
        const std::u16string other = root_ + u"\\other\\";
        fs::create_directories(Native(other));
        for (const std::u16string& folder : {work_, stage_, work_, stage_, other, folders_.previewFolder + u"\\"}) {
            Touch(folder + File());
            Touch(folder + File());
            if (random_() % 20 == 0) {
                fs::create_directory(Native(folder + Stem() + u".dat"));
            }
        }
        tree_ = Everything();
    }

    template <typename Gone>
    void Drop(const std::u16string& folder, Gone gone)
    {
        std::erase_if(tree_, [&](const std::u16string& path) {
            const bool inside = path.starts_with(folder) && path.size() > folder.size();
            return inside && path.find(u'\\', folder.size()) == path.npos && gone(path);
        });
    }

    void DropTemporary(const std::u16string& folder)
    {
        Drop(folder, [](const std::u16string&) { return true; });
        const auto next = tree_.upper_bound(folder);
        if (next == tree_.end() || !next->starts_with(folder)) {
            tree_.erase(folder);
        }
    }

    // The path if the file was staged, else empty.
    std::u16string Staged(const std::u16string& path)
    {
        return std::any_of(tree_.begin(), tree_.end(),
                           [&path](const auto& candidate) { return model::Upper(candidate) == model::Upper(path); })
                   ? path
                   : u"";
    }

    void CheckFinding(const std::u16string& name, CFileSearch& search)
    {
        PartRecord record;
        record.PartName = name;
        PartRecord expected = record;
        expected.FilePathName = Staged(stage_ + name + u".iga");
        if (expected.FilePathName.empty()) {
            expected.FilePathName = Staged(stage_ + name + u".bmf");
        }
        expected.SYFileName = Staged(stage_ + name + u".SY5");
        expected.NCFileName = Staged(stage_ + name + u".NCD");
        const bool found = expected != record;
        if (!found) {
            Drop(work_, [&name](const std::u16string& path) { return model::Deletes(path, name); });
            DropTemporary(folders_.previewFolder + u"\\");
            DropTemporary(folders_.unpackFolder);
        }
        ASSERT_EQ(FindStagedFiles(stage_, record, folders_, messages_, search), found);
        ASSERT_EQ(record, expected);
        ASSERT_EQ(Everything(), tree_);
        ASSERT_EQ(recorder_.Take().size(), found ? 0U : 1U);
        ++(found ? found_ : missed_);
    }

    std::mt19937 random_{20080};
    std::u16string root_ = temporary_.Core(u"root");
    Tree tree_; // as it should be now
    int found_ = 0;
    int missed_ = 0;
};

TEST_F(StagingByModel, RandomNamesGoAndStay)
{
    for (int round = 0; round < 1000; ++round) {
        SCOPED_TRACE(round);
        Fill(round);
        const std::u16string name = round % 2 == 0 ? u"P" : Stem();
        CFileSearch search; // for several names, as in a Load
        for (const std::u16string& wanted : {name, Stem()}) {
            ASSERT_NO_FATAL_FAILURE(CheckFinding(wanted, search));
        }
        Drop(stage_, [&name](const std::u16string& path) { return model::Clears(path, name); });
        ClearStagedPart(stage_, name);
        ASSERT_EQ(Everything(), tree_);
        Drop(work_, [&name](const std::u16string& path) { return model::Deletes(path, name); });
        DeletePartFiles(name);
        ASSERT_EQ(Everything(), tree_);
    }
    EXPECT_GT(found_, 100);
    EXPECT_GT(missed_, 100);
    DeletePartFiles(u"");
    EXPECT_EQ(Everything(), tree_);
}

TEST_F(Staging, RulesOnNamesAreOdd)
{
    const struct {
        const char16_t* path;
        bool cleared; // for "p"
        bool deleted; // with "P"
    } rows[] = {
        {u"\\W\\P.iga", true, true},     {u"\\W\\B2DP.dat", true, true},   {u"\\W\\b2dp.dat", false, true},
        {u"\\W\\P.xml", false, false},   {u"\\W\\P.SY5", false, false},    {u"\\W\\P.SY9", false, true},
        {u"\\W\\P.BMP", true, false},    {u"\\W\\PP.iga", false, true},    {u"\\W\\PX.iga", false, false},
        {u"\\W\\P.1.iga", true, true},   {u"\\W\\P", false, false},        {u"\\W\\P.", false, false},
        {u"\\W.1\\P.iga", false, false}, {u"\\P.1\\W\\Q.xml", true, true},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(IsClearedBeforeStaging(row.path, u"p"), row.cleared) << Quoted(row.path);
        EXPECT_EQ(IsDeletedWithPart(row.path, u"P"), row.deleted) << Quoted(row.path);
    }
}

TEST_F(Staging, FolderNameHasTheBackslashesOfTheFolderCut)
{
    TheProcessValues().workingFolder = u"C:\\W\\";
    EXPECT_EQ(StagingFolderOf(u"S1", u"A\\B"), u"C:\\W\\S1AB");
    EXPECT_EQ(StagingFolderOf(u"\\\\S1", u"\\Plates\\2008\\"), u"C:\\W\\\\\\S1Plates2008");
    EXPECT_EQ(StagingFolderOf(u"S1", u""), u"C:\\W\\S1");
}

TEST_F(Staging, MissingFileLeavesItsFieldAndAFolderIsNoFile)
{
    fs::create_directory(Native(stage_ + u"P.iga"));
    Touch(stage_ + u"p.ncd");
    PartRecord record;
    record.PartName = u"P";
    record.FilePathName = u"kept";
    CFileSearch search;
    ASSERT_TRUE(FindStagedFiles(stage_, record, folders_, messages_, search));
    EXPECT_EQ(record.FilePathName, u"kept");
    EXPECT_EQ(record.NCFileName, stage_ + u"P.NCD");

    record.PartName = u"Q";
    EXPECT_FALSE(FindStagedFiles(stage_, record, folders_, messages_, search));
    EXPECT_EQ(recorder_.Take(), std::vector{Shown(LoadLocalString(LocalString::NoFilesFound) + u"Q")});
}

TEST_F(Staging, SecondRemovalHitsNoNeighbour)
{
    RemoveTempFolders(folders_);
    MakeFolder(folders_.unpackFolder);
    Touch(work_ + u"UnZipFolder\\a");
    Touch(work_ + u"UnZipFolder2.txt");
    const Tree before = Everything();
    MakeFolder(folders_.unpackFolder);
    RemoveTempFolders(folders_);
    EXPECT_EQ(Everything(), before);
}

} // namespace
} // namespace partkeep
