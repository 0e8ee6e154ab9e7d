// A list file that can't be written, on a disk and for a user that really forbid it.
#include "settings/server_list_file.h"
#include "tests/support/linux_faults.h"
#include "tests/support/temporary_folder.h"

#include <gtest/gtest.h>

#include <filesystem>

namespace partkeep {
namespace {

const std::string old_bytes = "OLD\r\n-9999\r\nmetric\r\n-9999\r\n0\r\n";
const std::string new_bytes = "-9999\r\nF\r\ninch\r\n-9999\r\n0\r\n";

// Without a control the browser answers nothing, so that the state's own folder and unit are what is new.
void Save(const CTemporaryFolder& folder)
{
    CKPDKeyManager no_browser;
    ServerListState state{u"", u"F", 1, {}, {}};
    SaveServerList(state, folder.Core(), no_browser);
}

TEST(ServerListFileFaults, FullOrReadOnlyDiskKeepsTheOldFile)
{
    const CTemporaryFolder folder;
    CMountedDisk disk(folder.Path());
    WriteBytes(folder.Path("kpdservers.ini"), old_bytes);
    disk.Fill();
    const auto names = NamesIn(folder.Path());
    Save(folder);
    EXPECT_EQ(ReadBytes(folder.Path("kpdservers.ini")), old_bytes);
    EXPECT_EQ(NamesIn(folder.Path()), names);
    disk.MakeRoom();
    disk.SetReadOnly(true);
    Save(folder);
    EXPECT_EQ(ReadBytes(folder.Path("kpdservers.ini")), old_bytes);
    disk.SetReadOnly(false);
    Save(folder);
    EXPECT_EQ(ReadBytes(folder.Path("kpdservers.ini")), new_bytes);
}

TEST(ServerListFileFaults, PermissionDecidesForAnOrdinaryUser)
{
    namespace fs = std::filesystem;
    const struct {
        const char* label;
        int file_mode;
        int folder_mode;
        std::string expected;
    } rows[] = {
        {"read-only file", 0444, 0755, old_bytes},
        {"unreadable file", 0000, 0755, old_bytes},
        {"writable file in a read-only folder", 0644, 0555, new_bytes},
        {"all allowed", 0644, 0755, new_bytes},
    };
    for (const auto& row : rows) {
        const CTemporaryFolder folder;
        WriteBytes(folder.Path("kpdservers.ini"), old_bytes);
        for (const fs::path& path : {folder.Path("kpdservers.ini"), folder.Path()}) {
            GiveToUnprivilegedUser(path);
        }
        fs::permissions(folder.Path("kpdservers.ini"), fs::perms(row.file_mode));
        fs::permissions(folder.Path(), fs::perms(row.folder_mode));
        const bool kept_default = RunWithoutPrivileges([&folder] {
            CKPDKeyManager no_browser;
            ServerListState state;
            LoadServerList(state, folder.Core(), no_browser);
            Save(folder);
            return state.currentServer.empty();
        });
        EXPECT_EQ(kept_default, row.file_mode == 0) << row.label;
        EXPECT_EQ(ReadBytes(folder.Path("kpdservers.ini")), row.expected) << row.label;
    }
}

} // namespace
} // namespace partkeep
