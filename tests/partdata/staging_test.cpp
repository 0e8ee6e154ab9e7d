#include "partdata/staging.h"

#include "platform/files.h"
#include "settings/process_values.h"
#include "tests/partdata/shown_message.h"
#include "tests/partdata/staging_model.h"
#include "tests/support/recorder.h"
#include "tests/support/temporary_folder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <random>
#include <set>
#include <vector>

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

class Staging : public testing::Test {
protected:
    Staging() { TheProcessValues() = {work_, 1}; }

    void MakeFolders()
    {
        folders_ = {work_ + u"Lumora_ForPNG", work_ + u"UnZipFolder\\"};
        for (const std::u16string& folder : {stage_, other_, folders_.previewFolder, folders_.unpackFolder}) {
            fs::create_directories(Native(folder));
        }
    }

    static void Touch(const std::u16string& path) { WriteBytes(Native(path), "x"); }

    [[nodiscard]] Tree Everything() const
    {
        Tree tree;
        for (const auto& entry : fs::recursive_directory_iterator(Native(root_))) {
            std::u16string path = entry.path().generic_u16string() + (entry.is_directory() ? u"/" : u"");
            std::replace(path.begin(), path.end(), u'/', u'\\');
            tree.insert(path);
        }
        return tree;
    }

    CTemporaryFolder temporary_;
    std::u16string root_ = temporary_.Core(u"root\\");
    std::u16string work_ = root_ + u"W\\";
    std::u16string stage_ = work_ + u"SF\\";
    std::u16string other_ = root_ + u"other\\";
    StagingFolders folders_;
    Recorder recorder_;
    CRecordingMessages messages_{recorder_};
};

class CRandomNames {
public:
    std::size_t Below(std::size_t count) { return std::uniform_int_distribution<std::size_t>(0, count - 1)(engine_); }

    std::u16string Stem()
    {
        static const std::vector<std::u16string> prefixes{u"", u"", u"", u"B2D", u"B3d", u"b2D", u"B2", u"X", u"P"};
        static const std::vector<std::u16string> stems{
            u"P",      u"p",      u"PP",     u"P ",     u" P",  u"\u92FC\u677F",
            u"\uFF41", u"\uFF21", u"\u00E4", u"\u00C4", u"B2D", u"P\u8868"};
        return Any(prefixes) + Any(stems);
    }

    std::u16string File()
    {
        static const std::vector<std::u16string> extensions{u".iga", u".IGA", u".bmf",   u".SY5",     u".sy5", u".NCD",
                                                            u".ncd", u".xml", u".XMLx",  u".SY5.iga", u".BMP", u".bmp",
                                                            u".sy9", u"",     u".1.iga", u".x ",      u".",    u".."};
        return Stem() + Any(extensions);
    }

private:
    const std::u16string& Any(const std::vector<std::u16string>& texts) { return texts[Below(texts.size())]; }

    std::mt19937 engine_{20080};
};

// The rules applied to whole trees, by the plain model.
class StagingByModel : public Staging {
protected:
    // Adds to what the rounds before have left: making all anew costs a disk more than the test is worth.
    void Fill(int round)
    {
        if (round % 5 == 0) {
            fs::remove_all(Native(root_));
        }
        MakeFolders();
        for (const std::u16string& folder : {work_, stage_, work_, stage_, other_, folders_.previewFolder + u"\\"}) {
            Touch(folder + random_.File());
            Touch(folder + random_.File());
            if (random_.Below(20) == 0) {
                fs::create_directory(Native(folder + random_.Stem() + u".dat"));
            }
        }
        tree_ = Everything();
    }

    template <typename Gone>
    static void Drop(Tree& tree, const std::u16string& folder, Gone gone)
    {
        std::erase_if(tree, [&](const std::u16string& path) {
            const bool inside = path.starts_with(folder) && path.size() > folder.size();
            return inside && path.find(u'\\', folder.size()) == path.npos && gone(path);
        });
    }

    static void DropTemporary(Tree& tree, const std::u16string& folder)
    {
        Drop(tree, folder, [](const std::u16string&) { return true; });
        const auto next = tree.upper_bound(folder);
        if (next == tree.end() || !next->starts_with(folder)) {
            tree.erase(folder);
        }
    }

    void CheckClearing(const std::u16string& name)
    {
        Drop(tree_, stage_, [&name](const std::u16string& path) { return model::Clears(path, name); });
        ClearStagedPart(stage_, name);
        ASSERT_EQ(Everything(), tree_);
    }

    void CheckDeleting(const std::u16string& name)
    {
        Drop(tree_, work_, [&name](const std::u16string& path) { return model::Deletes(path, name); });
        DeletePartFiles(name);
        ASSERT_EQ(Everything(), tree_);
    }

    void CheckFinding(const std::u16string& name)
    {
        const auto staged = [this, path = stage_ + name](const char16_t* extension) {
            const bool exists = std::any_of(tree_.begin(), tree_.end(), [&](const std::u16string& candidate) {
                return model::Upper(candidate) == model::Upper(path + extension);
            });
            return exists ? path + extension : std::u16string();
        };
        PartRecord record;
        record.PartName = name;
        PartRecord whole = record;
        whole.FilePathName = staged(u".iga").empty() ? staged(u".bmf") : staged(u".iga");
        whole.SYFileName = staged(u".SY5");
        whole.NCFileName = staged(u".NCD");
        const bool found = whole != record;
        if (!found) {
            Drop(tree_, work_, [&name](const std::u16string& path) { return model::Deletes(path, name); });
            DropTemporary(tree_, folders_.previewFolder + u"\\");
            DropTemporary(tree_, folders_.unpackFolder);
        }
        ASSERT_EQ(FindStagedFiles(stage_, record, folders_, messages_), found);
        ASSERT_EQ(record, whole);
        ASSERT_EQ(Everything(), tree_);
        ASSERT_EQ(recorder_.Take().size(), found ? 0U : 1U);
        ++(found ? found_ : missed_);
    }

    CRandomNames random_;
    Tree tree_; // as it should be now
    int found_ = 0;
    int missed_ = 0;
};

TEST_F(StagingByModel, RandomNamesGoAndStay)
{
    for (int round = 0; round < 1000; ++round) {
        SCOPED_TRACE(round);
        Fill(round);
        const std::u16string name = random_.Below(2) == 0 ? u"P" : random_.Stem();
        ASSERT_NO_FATAL_FAILURE(CheckFinding(name));
        ASSERT_NO_FATAL_FAILURE(CheckClearing(name));
        ASSERT_NO_FATAL_FAILURE(CheckDeleting(name));
    }
    EXPECT_GT(found_, 100);
    EXPECT_GT(missed_, 100);
}

TEST_F(Staging, FolderNameHasTheBackslashesOfTheFolderCut)
{
    TheProcessValues().workingFolder = u"C:\\W\\";
    EXPECT_EQ(StagingFolderOf(u"S1", u"A\\B"), u"C:\\W\\S1AB");
    EXPECT_EQ(StagingFolderOf(u"\\\\S1", u"\\Plates\\2008\\"), u"C:\\W\\\\\\S1Plates2008");
    EXPECT_EQ(StagingFolderOf(u"S1", u""), u"C:\\W\\S1");
}

TEST_F(Staging, RulesOnNamesAreOdd)
{
    using Names = std::vector<std::string>;
    const struct {
        const char* label;
        const char16_t* folder; // below the root, cleared for "p"; null: the working folder, deleted for "P"
        Names go;
        Names stay;
    } rows[] = {
        {"cleared",
         u"W\\SF\\",
         {"P.iga", "B2DP.dat", "B3dp.1.iga", "P.NCD"},
         {"P.xml", "P.SY5", "P.SY9", "PP.iga", "b2dp.x", "P"}},
        {"nothing below a dot", u"W.1\\SF\\", {}, {"P.iga", "B2DP.dat"}},
        {"the folder's own name below a dot", u"P.1\\SF\\", {"Q.iga", "P.xml"}, {}},
        {"deleted", nullptr, {"P.iga", "XP.iga", "P.SY9", "B2DXp.dat"}, {"P.BMP", "P.xml", "P.SY5", "PX.iga", "P"}},
    };
    for (const auto& row : rows) {
        fs::remove_all(Native(root_));
        MakeFolders();
        const std::u16string folder = row.folder != nullptr ? root_ + row.folder : work_;
        fs::create_directories(Native(folder + u"P.dir"));
        Names expected = NamesIn(Native(folder));
        expected.insert(expected.end(), row.stay.begin(), row.stay.end());
        std::sort(expected.begin(), expected.end());
        for (const Names& names : {row.go, row.stay}) {
            for (const std::string& name : names) {
                WriteBytes(Native(folder) / name, "x");
            }
        }
        DeletePartFiles(u"");
        row.folder != nullptr ? ClearStagedPart(folder, u"p") : DeletePartFiles(u"P");
        EXPECT_EQ(NamesIn(Native(folder)), expected) << row.label;
    }
}

TEST_F(Staging, MissingFileLeavesItsFieldAndAFolderIsNoFile)
{
    MakeFolders();
    fs::create_directory(Native(stage_ + u"P.iga"));
    Touch(stage_ + u"p.ncd");
    PartRecord record;
    record.PartName = u"P";
    record.FilePathName = u"kept";
    ASSERT_TRUE(FindStagedFiles(stage_, record, folders_, messages_));
    EXPECT_EQ(record.FilePathName, u"kept");
    EXPECT_EQ(record.NCFileName, stage_ + u"P.NCD");

    record.PartName = u"Q";
    Touch(work_ + u"XQ.iga");
    EXPECT_FALSE(FindStagedFiles(stage_, record, folders_, messages_));
    const std::u16string text = LoadLocalString(LocalString::NoFilesFound) + u"Q";
    EXPECT_EQ(recorder_.Take(), std::vector<std::string>{Shown(text)});
    EXPECT_EQ(NamesIn(Native(work_)), std::vector<std::string>{"SF"});
}

TEST_F(Staging, SecondRemovalHitsNoNeighbour)
{
    MakeFolders();
    Touch(folders_.unpackFolder + u"a");
    RemoveTempFolders(folders_);
    EXPECT_EQ(folders_.unpackFolder, work_ + u"UnZipFolder");
    MakeFolder(folders_.unpackFolder);
    Touch(folders_.unpackFolder + u"\\a");
    Touch(work_ + u"UnZipFolder2.txt");
    const Tree before = Everything();
    MakeFolder(folders_.unpackFolder);
    RemoveTempFolders(folders_);
    EXPECT_EQ(Everything(), before);
}

} // namespace
} // namespace partkeep
