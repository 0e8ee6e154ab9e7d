#include "host/install_location.h"

#include "tests/support/memory_registry.h"

#include <gtest/gtest.h>

namespace partkeep {
namespace {

const std::u16string orvic_key = u"HKLM\\software\\Velmar\\ORVIC";
const std::u16string sibling_key = u"HKCU\\Software\\Classes\\Ferrin.FerrinDataSelectionDialog\\CLSID\\";

TEST(InstallLocation, IsLookedUpTheTwoWaysInTheirOrder)
{
    const std::u16string id = u"{11111111-2222-3333-4444-555555555555}";
    const std::u16string module = u"C:\\Ferrin\\Sel.dll";
    const std::u16string longest(255, u'x');
    const std::u16string too_long(256, u'x');
    const std::u16string no_key = u"no key";
    const std::u16string no_value = u"no value";
    const std::tuple<const char*, std::u16string, std::u16string, std::u16string, std::u16string> cases[] = {
        {"install path wins", u"C:\\ORVIC", id, module, u"C:\\ORVIC"},
        {"taken unchanged", u"C:\\ORVIC\\", no_key, no_value, u"C:\\ORVIC\\"},
        {"key absent", no_key, id, module, u"C:\\Ferrin"},
        {"value absent", no_value, id, module, u"C:\\Ferrin"},
        {"value empty", u"", id, module, u"C:\\Ferrin"},
        {"255 characters pass", longest, id, module, longest},
        {"256 do not", too_long, id, module, u"C:\\Ferrin"},
        {"nothing anywhere", no_key, no_key, no_value, u""},
        {"no sibling path", no_value, id, no_value, u""},
        {"no backslash", no_value, id, u"Sel.dll", u""},
        {"long class id is not usable", no_value, too_long, module, u""},
        {"long code base is not usable", no_value, id, u"C:\\" + too_long, u""},
        {"scheme is no path", no_value, id, u"file:///C:/Ferrin/Sel.dll", u""},
    };
    for (const auto& [label, install_path, class_id, code_base, found] : cases) {
        SCOPED_TRACE(label);
        CMemoryRegistry registry;
        const auto set = [&](const std::u16string& key, const std::u16string& name, const std::u16string& value) {
            if (value == no_value) {
                registry.keys[key];
            } else if (value != no_key) {
                registry.Set(key, name, value);
            }
        };
        set(orvic_key, u"installpath", install_path);
        set(sibling_key, u"", class_id);
        set(u"HKCU\\Software\\Classes\\CLSID\\" + class_id + u"\\InprocServer32\\", u"CodeBase", code_base);
        EXPECT_EQ(FindInstallFolder(registry), found);
    }
}

TEST(InstallLocation, LeavesTheTextAloneWhereAKeyDoesNotOpen)
{
    CMemoryRegistry registry;
    std::u16string text = u"before";
    EXPECT_EQ(ReadInstallPath(registry, text, u"software\\Velmar\\ORVIC", u"installpath"), 0);
    EXPECT_EQ(ReadCodeBaseFolder(registry, text), 0);
    registry.Set(sibling_key, u"", u"{1}");
    EXPECT_EQ(ReadCodeBaseFolder(registry, text), 0);
    EXPECT_EQ(text, u"before");

    registry.keys[orvic_key];
    EXPECT_EQ(ReadInstallPath(registry, text, u"software\\Velmar\\ORVIC", u"installpath"), 1);
    EXPECT_EQ(text, u"");
    registry.Set(u"HKCU\\Software\\Classes\\CLSID\\{1}\\InprocServer32\\", u"CodeBase", u"C:\\Sel.dll");
    EXPECT_EQ(ReadCodeBaseFolder(registry, text), 1);
}

} // namespace
} // namespace partkeep
