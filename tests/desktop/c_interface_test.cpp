// The C interface as a host without Qt sees it: through the shared library alone.

#include "partkeep_read.h"

#include "tests/support/temporary_folder.h"

#include <gtest/gtest.h>

#include <cstdlib>

namespace {

using partkeep::CTemporaryFolder;
using partkeep::WriteBytes;

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

    // The result and all that is given out, such as "0|file|name|comment|material|1|15000.000000".
    std::string Read(const char* server, const char* database_folder, const char* part)
    {
        char* texts[5] = {};
        double thickness = 7.0;
        std::string told =
            std::to_string(partkeep_read_read_cad_data(object.get(), server, database_folder, part, nullptr, &texts[0],
                                                       &texts[1], &texts[2], &texts[3], &thickness, &texts[4]));
        for (char* text : texts) {
            told += std::string("|") + (text != nullptr ? text : "(untouched)");
            partkeep_read_free(text);
        }
        return told + "|" + std::to_string(thickness);
    }

    CTemporaryFolder folder;
    std::unique_ptr<partkeep_read, void (*)(partkeep_read*)> object{nullptr, partkeep_read_destroy};
};

TEST_F(CInterface, ReadsAPartIntoNativePaths)
{
    const std::string make = std::string(PARTKEEP_SAMPLES) + " " + folder.Path("libraries").string() + " > /dev/null";
    ASSERT_EQ(std::system(make.c_str()), 0);
    WriteBytes(folder.Path("Work/金具-3.IGA"), "an older copy, spelled otherwise");
    const std::string staged = folder.Path("Work/金具-3.IGA").string(); // as it is spelled on disk
    for (const char* copy : {"the first", "one over its own older copy"}) {
        EXPECT_EQ(Read("板金部品", "取付金具", "金具-3"),
                  "0|" + staged + "|金具-3|取付金具 左右対称 寸法3|SPCC|1|15000.000000")
            << copy;
    }
}

TEST_F(CInterface, AnswersAsToldWhereThereIsNothing)
{
    EXPECT_EQ(Read("nowhere", "", ""), "1||||||0.000000");
    char* texts[2] = {};
    std::int32_t number = 7;
    double thickness = 7.0;
    EXPECT_EQ(partkeep_read_get_file_path(object.get(), &texts[0]), PARTKEEP_READ_FALSE);
    EXPECT_EQ(texts[0], nullptr) << "untouched";
    EXPECT_EQ(partkeep_read_get_part_info(object.get(), 0, &texts[0], &texts[1], nullptr, nullptr, nullptr, nullptr,
                                          nullptr, nullptr, nullptr, &number, &thickness, nullptr),
              PARTKEEP_READ_OK);
    EXPECT_EQ(number, 0);
    for (char* text : texts) {
        EXPECT_STREQ(text, "");
        partkeep_read_free(text);
    }
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
    EXPECT_TRUE(Read(long_text.c_str(), long_text.c_str(), "\xFF\xFE").starts_with("1|"));
}

} // namespace
