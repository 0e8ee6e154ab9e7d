#include "platform/posix/ini_registry.h"
#include "platform/posix/stderr_messages.h"
#include "platform/text.h"
#include "tests/support/temporary_folder.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <vector>

namespace partkeep {
namespace {

constexpr auto machine = RegistryRoot::LocalMachine;
constexpr auto user = RegistryRoot::CurrentUser;

class IniRegistry : public testing::Test {
protected:
    CTemporaryFolder folder_;
    CIniRegistry registry_{{folder_.Path("user.ini").string(), folder_.Path("machine.ini").string()}};
};

TEST_F(IniRegistry, AnswersAsARegistry)
{
    EXPECT_EQ(registry_.ReadValue(machine, u"both", u"own"), std::nullopt) << "no file yet";
    WriteBytes(folder_.Path("machine.ini"), "stray=1\r\n"
                                            "[HKEY_LOCAL_MACHINE\\software\\Velmar\\ORVIC]\r\n"
                                            "; installpath=/comment\r\n#installpath=/comment\r\nno sign here\r\n"
                                            "  InstallPath =  /opt/orvic; = 部品 \t\r\n"
                                            "installpath=/second\r\nempty=\r\n"
                                            "[HKEY_LOCAL_MACHINE\\Software\\Velmar\\ORVIC\\]\r\nlate=1\r\n"
                                            "[broken\r\nlate=2\r\n"
                                            "[HKEY_LOCAL_MACHINE\\both]\r\nown=m\r\nshared=m\r\n");
    WriteBytes(folder_.Path("user.ini"), "\xEF\xBB\xBF[HKEY_CURRENT_USER\\Software\\Classes\\X\\CLSID]\n@={1}\n"
                                         "[HKEY_LOCAL_MACHINE\\both]\nshared=u");
    const std::tuple<const char*, RegistryRoot, std::u16string_view, std::u16string_view, std::optional<std::u16string>>
        rows[] = {
            {"case and separator", machine, u"SOFTWARE\\velmar\\orvic\\", u"INSTALLPATH", u"\\opt\\orvic; = 部品"},
            {"empty value", machine, u"software\\Velmar\\ORVIC", u"empty", u""},
            {"no default value", machine, u"software\\Velmar\\ORVIC", u"", u""},
            {"section that comes again", machine, u"software\\Velmar\\ORVIC", u"late", u"1"},
            {"no such key", machine, u"software\\Velmar\\ORV", u"installpath", std::nullopt},
            {"other root", user, u"software\\Velmar\\ORVIC", u"installpath", std::nullopt},
            {"key above a section", machine, u"software\\Velmar", u"installpath", u""},
            {"default value", user, u"Software\\Classes\\X\\CLSID\\", u"", u"{1}"},
            {"user before machine", machine, u"both", u"shared", u"u"},
            {"machine behind user", machine, u"both", u"own", u"m"},
        };
    for (const auto& [label, root, key, name, value] : rows) {
        EXPECT_EQ(registry_.ReadValue(root, key, name), value) << label;
    }
}

TEST_F(IniRegistry, GivesTheSystemCodePage)
{
    const std::pair<std::string, CodePage> rows[] = {
        {"932", 932}, {"1252", 1252}, {"12345", 65001}, {"65000", 65001},       {"0", 65001},
        {"", 65001},  {"-1", 65001},  {"932x", 65001},  {"99999999999", 65001},
    };
    for (const auto& [value, page] : rows) {
        SetSystemCodePage(utf8_code_page);
        WriteBytes(folder_.Path("user.ini"),
                   "[HKEY_LOCAL_MACHINE\\SYSTEM\\CurrentControlSet\\Control\\Nls\\CodePage]\nACP=" + value);
        EXPECT_EQ(ApplySystemCodePage(registry_), page != utf8_code_page) << value;
        EXPECT_EQ(SystemCodePage(), page) << value;
    }
    SetSystemCodePage(utf8_code_page);
}

TEST_F(IniRegistry, FollowsTheConventionsOfTheDesktop)
{
    using Files = std::vector<std::string>;
    setenv("XDG_CONFIG_DIRS", "/desktop:relative::/etc/xdg", 1);
    setenv("XDG_CONFIG_HOME", "relative", 1);
    setenv("HOME", "/home/me", 1);
    EXPECT_EQ(CIniRegistry::AtConventionalPaths().Files(),
              (Files{"/home/me/.config/partkeep-read/registry.ini", "/desktop/partkeep-read/registry.ini",
                     "/etc/xdg/partkeep-read/registry.ini"}));
    unsetenv("XDG_CONFIG_DIRS");
    setenv("XDG_CONFIG_HOME", "/config", 1);
    EXPECT_EQ(CIniRegistry::AtConventionalPaths().Files(),
              (Files{"/config/partkeep-read/registry.ini", "/etc/xdg/partkeep-read/registry.ini"}));
}

TEST(StderrMessages, WriteTitleAndTextWithoutSteeringTheTerminal)
{
    testing::internal::CaptureStderr();
    CStderrMessages().Show({u"部品\r\nnext\x1B[2J\x9B", u"Title", MessageKind::Plain});
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "Title: 部品\nnext\uFFFD[2J\uFFFD\n");
}

} // namespace
} // namespace partkeep
