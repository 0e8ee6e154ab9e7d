// The C interface as a host without Qt sees it: through the shared library alone.

#include "partkeep_read.h"

#include "tests/support/temporary_folder.h"

#include <gtest/gtest.h>

#include <cstdlib>

namespace {

using partkeep::CTemporaryFolder;
using partkeep::WriteBytes;

struct FreeObject {
    void operator()(partkeep_read* object) const { partkeep_read_destroy(object); }
};

struct Outputs {
    char* texts[10] = {};
    double thickness = 7.0;
    std::int32_t number = 7;

    ~Outputs() { Release(); }
    void Release()
    {
        for (char*& text : texts) {
            partkeep_read_free(text);
            text = nullptr;
        }
    }
    [[nodiscard]] std::string Text(int index) const { return texts[index] != nullptr ? texts[index] : "(untouched)"; }
};

class CInterface : public testing::Test {
protected:
    CInterface()
    {
        for (const char* screen : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"}) {
            unsetenv(screen); // messages go to standard error, where nobody has to answer them
        }
        std::filesystem::create_directories(folder.Path("config/partkeep-read"));
        std::filesystem::create_directories(folder.Path("Work"));
        std::filesystem::create_directories(folder.Path("libraries"));
        WriteBytes(folder.Path("config/partkeep-read/registry.ini"),
                   "[HKEY_CURRENT_USER\\software\\Velmar\\ORVIC\\PartLibrary]\nfolder=" +
                       folder.Path("libraries").string() + "\n");
        setenv("XDG_CONFIG_HOME", folder.Path("config").c_str(), 1);
        object.reset(partkeep_read_create());
        partkeep_read_set_working_folder(object.get(), (folder.Path("Work").string() + "/").c_str());
        partkeep_read_set_language_id(object.get(), 1);
    }

    std::int32_t Read(const char* server, const char* database_folder, const char* part, Outputs& out)
    {
        return partkeep_read_read_cad_data(object.get(), server, database_folder, part, nullptr, &out.texts[0],
                                           &out.texts[1], &out.texts[2], &out.texts[3], &out.thickness, &out.texts[4]);
    }

    CTemporaryFolder folder;
    std::unique_ptr<partkeep_read, FreeObject> object;
};

TEST_F(CInterface, ReadsAPartIntoNativePaths)
{
    const std::string make = std::string(PARTKEEP_SAMPLES) + " " + folder.Path("libraries").string() + " > /dev/null";
    ASSERT_EQ(std::system(make.c_str()), 0);
    WriteBytes(folder.Path("Work/金具-3.IGA"), "an older copy, spelled otherwise");
    Outputs out;
    EXPECT_EQ(Read("板金部品", "取付金具", "金具-3", out), PARTKEEP_READ_OK);
    EXPECT_EQ(out.Text(0), folder.Path("Work/金具-3.IGA").string()); // as it is spelled on disk
    EXPECT_EQ(out.Text(1), "金具-3");
    EXPECT_EQ(out.Text(3), "SPCC");
    EXPECT_EQ(out.Text(4), "1");
    EXPECT_EQ(out.thickness, 15000.0);
    out.Release();
    EXPECT_EQ(Read("板金部品", "取付金具", "金具-3", out), PARTKEEP_READ_OK); // over its own older copy
    EXPECT_EQ(out.Text(0), folder.Path("Work/金具-3.IGA").string());
}

TEST_F(CInterface, AnswersAsToldWhereThereIsNothing)
{
    Outputs out;
    EXPECT_EQ(Read("nowhere", "", "", out), PARTKEEP_READ_FALSE);
    EXPECT_EQ(out.Text(0) + out.Text(1) + out.Text(4), "");
    EXPECT_EQ(out.thickness, 0.0);
    out.Release();

    EXPECT_EQ(partkeep_read_get_file_path(object.get(), &out.texts[0]), PARTKEEP_READ_FALSE);
    EXPECT_EQ(out.Text(0), "(untouched)");
    EXPECT_EQ(partkeep_read_get_part_info(object.get(), 0, &out.texts[0], &out.texts[1], nullptr, nullptr, nullptr,
                                          nullptr, nullptr, nullptr, nullptr, &out.number, &out.thickness, nullptr),
              PARTKEEP_READ_OK);
    EXPECT_EQ(out.Text(0) + out.Text(1), "");
    EXPECT_EQ(out.number, 0);
    EXPECT_EQ(partkeep_read_invoke(object.get()), PARTKEEP_READ_FALSE); // nothing is installed
    EXPECT_EQ(partkeep_read_invoke_multi_selection(object.get(), 1), PARTKEEP_READ_FALSE);
}

TEST_F(CInterface, BearsNullEverywhere)
{
    partkeep_read_destroy(nullptr);
    partkeep_read_free(nullptr);
    EXPECT_EQ(partkeep_read_number_of_parts_selected(nullptr, nullptr), PARTKEEP_READ_FALSE);
    EXPECT_EQ(partkeep_read_number_of_parts_selected(object.get(), nullptr), PARTKEEP_READ_OK);
    EXPECT_EQ(partkeep_read_set_working_folder(object.get(), nullptr), PARTKEEP_READ_OK);
    EXPECT_EQ(partkeep_read_read_cad_data(object.get(), nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                                          nullptr, nullptr, nullptr),
              PARTKEEP_READ_FALSE);
    const std::string long_text(1 << 20, 'x');
    Outputs out;
    EXPECT_EQ(Read(long_text.c_str(), long_text.c_str(), "\xFF\xFE", out), PARTKEEP_READ_FALSE);
}

} // namespace
