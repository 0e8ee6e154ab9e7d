#include "platform/posix/ini_registry.h"
#include "platform/posix/stderr_messages.h"
#include "platform/text.h"
#include "tests/support/temporary_folder.h"

#include <gtest/gtest.h>

#include <cstdlib>

namespace partkeep {
namespace {

constexpr auto machine = RegistryRoot::LocalMachine;
constexpr auto user = RegistryRoot::CurrentUser;
constexpr char16_t code_page_key[] = u"SYSTEM\\CurrentControlSet\\Control\\Nls\\CodePage";

class IniRegistry : public testing::Test {
protected:
    CTemporaryFolder folder_;
    CIniRegistry registry_{folder_.Path("machine.ini").string(), folder_.Path("user.ini").string()};
};

TEST_F(IniRegistry, AnswersAsARegistry)
{
    WriteBytes(folder_.Path("machine.ini"), "stray=1\r\n"
                                            "[HKEY_LOCAL_MACHINE\\software\\Velmar\\ORVIC]\r\n"
                                            "; installpath=/comment\r\n"
                                            "#installpath=/comment\r\n"
                                            "no sign here\r\n"
                                            "  InstallPath =  /opt/orvic; = 部品 \t\r\n"
                                            "installpath=/second\r\n"
                                            "empty=\r\n"
                                            "[HKEY_LOCAL_MACHINE\\Software\\Velmar\\ORVIC\\]\r\n"
                                            "late=1\r\n"
                                            "[broken\r\n"
                                            "late=2\r\n"
                                            "[HKEY_LOCAL_MACHINE\\both]\r\nown=m\r\nshared=m\r\n");
    WriteBytes(folder_.Path("user.ini"), "\xEF\xBB\xBF[HKEY_CURRENT_USER\\Software\\Classes\\X\\CLSID]\n@={1}\n"
                                         "[HKEY_LOCAL_MACHINE\\both]\nshared=u");
    struct Row {
        const char* label;
        RegistryRoot root;
        std::u16string_view key;
        std::u16string_view name;
        std::optional<std::u16string> value;
    };
    const Row rows[] = {
        {"as it stands", machine, u"software\\Velmar\\ORVIC", u"installpath", u"/opt/orvic; = 部品"},
        {"case and separator", machine, u"SOFTWARE\\velmar\\orvic\\", u"INSTALLPATH", u"/opt/orvic; = 部品"},
        {"empty value", machine, u"software\\Velmar\\ORVIC", u"empty", u""},
        {"no such value", machine, u"software\\Velmar\\ORVIC", u"none", u""},
        {"no default value", machine, u"software\\Velmar\\ORVIC", u"", u""},
        {"section that comes again", machine, u"software\\Velmar\\ORVIC", u"late", u"1"},
        {"no such key", machine, u"software\\Velmar\\ORV", u"installpath", std::nullopt},
        {"other root", user, u"software\\Velmar\\ORVIC", u"installpath", std::nullopt},
        {"key above a section", machine, u"software\\Velmar", u"installpath", u""},
        {"default value", user, u"Software\\Classes\\X\\CLSID\\", u"", u"{1}"},
        {"user before machine", machine, u"both", u"shared", u"u"},
        {"machine behind user", machine, u"both", u"own", u"m"},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(registry_.ReadValue(row.root, row.key, row.name), row.value) << row.label;
    }
}

TEST_F(IniRegistry, IsReadAfresh)
{
    EXPECT_EQ(registry_.ReadValue(machine, u"k", u"v"), std::nullopt) << "no file";
    for (const char* value : {"1", "2"}) {
        WriteBytes(folder_.Path("machine.ini"), std::string("[HKEY_LOCAL_MACHINE\\k]\nv=") + value);
        EXPECT_EQ(registry_.ReadValue(machine, u"k", u"v"), WidenText(value, utf8_code_page));
    }
}

TEST_F(IniRegistry, GivesTheSystemCodePage)
{
    struct Row {
        const char* value;
        bool applied;
    };
    for (const Row& row : {Row{"932", true},
                           {"1252", true},
                           {"12345", false},
                           {"65000", false},
                           {"0", false},
                           {"-1", false},
                           {"932x", false},
                           {"", false},
                           {"99999999999", false}}) {
        SetSystemCodePage(utf8_code_page);
        WriteBytes(folder_.Path("user.ini"),
                   "[HKEY_LOCAL_MACHINE\\" + NarrowText(code_page_key) + "]\nACP=" + row.value);
        EXPECT_EQ(ApplySystemCodePage(registry_), row.applied) << row.value;
        EXPECT_EQ(SystemCodePage() != utf8_code_page, row.applied) << row.value;
    }
    SetSystemCodePage(utf8_code_page);
}

TEST_F(IniRegistry, FollowsTheConventionsOfTheDesktop)
{
    setenv("XDG_CONFIG_DIRS", "/first:/second", 1);
    setenv("XDG_CONFIG_HOME", "relative", 1);
    setenv("HOME", "/home/me", 1);
    EXPECT_EQ(CIniRegistry::AtConventionalPaths().MachineFile(), "/first/partkeep-read/registry.ini");
    EXPECT_EQ(CIniRegistry::AtConventionalPaths().UserFile(), "/home/me/.config/partkeep-read/registry.ini");
    unsetenv("XDG_CONFIG_DIRS");
    setenv("XDG_CONFIG_HOME", "/config", 1);
    EXPECT_EQ(CIniRegistry::AtConventionalPaths().MachineFile(), "/etc/xdg/partkeep-read/registry.ini");
    EXPECT_EQ(CIniRegistry::AtConventionalPaths().UserFile(), "/config/partkeep-read/registry.ini");
}

TEST(StderrMessages, WriteTitleAndTextWithoutSteeringTheTerminal)
{
    testing::internal::CaptureStderr();
    CStderrMessages().Show({u"部品\r\nnext\x1B[2J\x9B", u"Title", MessageKind::Plain});
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "Title: 部品\nnext\uFFFD[2J\uFFFD\n");
}

} // namespace
} // namespace partkeep
