// Whole runs as a host of the C interface has them.

#include "tests/desktop/operator_run.h"

#include "interface/owned_services.h"
#include "partkeep_read.h"

#include <utility>

namespace partkeep {

namespace {

COperatorRun* played = nullptr; // by the C interface

class CPlayedServices : public IOwnedServices {
public:
    HostServices Services() override { return played->services; }
};

} // namespace

// In place of the desktop's services: those of the run.
std::unique_ptr<IOwnedServices> MakeOwnedServices()
{
    return std::make_unique<CPlayedServices>();
}

namespace {

TEST(OperatorRuns, ReachTheHostThroughTheCInterface)
{
    COperatorRun run(SampleLibraries());
    played = &run;
    const std::unique_ptr<partkeep_read, void (*)(partkeep_read*)> object(partkeep_read_create(),
                                                                          partkeep_read_destroy);
    partkeep_read_set_working_folder(object.get(), (run.folder.Path("Work").string() + "/").c_str());
    partkeep_read_set_language_id(object.get(), 1);
    run.Script("filter MARVEN; go 钣金件 机箱\\面板; select 面板1; load");
    EXPECT_EQ(partkeep_read_invoke(object.get()), PARTKEEP_READ_OK);
    run.Script("go PLATES Brackets\\L; select BRK-3 BRK-4; load");
    EXPECT_EQ(partkeep_read_invoke_multi_selection(object.get(), 1), PARTKEEP_READ_OK);

    std::int32_t count = 0;
    EXPECT_EQ(partkeep_read_number_of_parts_selected(object.get(), &count), PARTKEEP_READ_OK);
    EXPECT_EQ(count, 3);
    const std::string stem = run.folder.Path("Work/钣金件机箱面板/面板1").string();
    const std::string comment = "前面板 四边折弯 规格1; ";
    char* out[10] = {};
    const auto taken = [&out] {
        Lines texts;
        for (char*& text : out) {
            texts.emplace_back(text != nullptr ? text : "(none)");
            partkeep_read_free(std::exchange(text, nullptr));
        }
        return Joined(texts);
    };
    std::int32_t type = 0;
    double thickness = 0.0;
    EXPECT_EQ(partkeep_read_get_part_info(object.get(), 0, &out[0], &out[1], &out[2], &out[3], &out[4], &out[5],
                                          &out[6], &out[7], &out[8], &type, &thickness, &out[9]),
              PARTKEEP_READ_OK);
    EXPECT_EQ(taken(), "钣金件; 机箱\\面板; " + stem + ".iga; " + stem + ".SY5; " + stem + ".NCD; 面板1; " + comment +
                           "冷轧钢板; 复合机-15; 1");
    EXPECT_EQ(type, 3);
    EXPECT_EQ(thickness, 1.2);
    EXPECT_EQ(
        partkeep_read_get_selected_part_info(object.get(), &out[0], &out[1], &out[2], &out[3], &thickness, &out[4]),
        PARTKEEP_READ_OK);
    EXPECT_EQ(partkeep_read_get_file_path(object.get(), &out[5]), PARTKEEP_READ_OK);
    EXPECT_EQ(taken(),
              stem + ".iga; 面板1; " + comment + "冷轧钢板; 1; " + stem + ".iga; (none); (none); (none); (none)");
    EXPECT_EQ(partkeep_read_get_part_info(object.get(), 2, nullptr, nullptr, nullptr, nullptr, nullptr, &out[0],
                                          nullptr, nullptr, nullptr, &type, nullptr, nullptr),
              PARTKEEP_READ_OK);
    EXPECT_EQ(taken().substr(0, 5), "BRK-4");
}

} // namespace
} // namespace partkeep
