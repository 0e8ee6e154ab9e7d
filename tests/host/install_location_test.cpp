#include "host/install_location.h"

#include "tests/support/memory_registry.h"

#include <gtest/gtest.h>

#include <utility>

namespace partkeep {
namespace {

TEST(InstallLocation, IsLookedUpTheTwoWaysInTheirOrder)
{
    const std::u16string id = u"{11111111-2222-3333-4444-555555555555}";
    const std::u16string module = u"C:\\Ferrin\\Sel.dll";
    const std::u16string longest(255, u'x');
    const std::u16string too_long(256, u'x');
    const std::u16string no_key = u"no key";
    const std::u16string no_value = u"no value";
    const std::u16string kept = u"before"; // where a key does not open
    // Behind what the registry holds: the install path, and the folder of the code base.
    const std::tuple<const char*, std::u16string, std::u16string, std::u16string, std::u16string, std::u16string>
        cases[] = {
            {"install path wins", u"C:\\ORVIC", id, module, u"C:\\ORVIC", u"C:\\Ferrin"},
            {"taken unchanged", u"C:\\ORVIC\\", no_key, no_value, u"C:\\ORVIC\\", kept},
            {"key absent", no_key, id, module, kept, u"C:\\Ferrin"},
            {"value absent", no_value, id, module, u"", u"C:\\Ferrin"},
            {"value empty", u"", id, module, u"", u"C:\\Ferrin"},
            {"255 characters pass", longest, id, module, longest, u"C:\\Ferrin"},
            {"256 do not", too_long, id, module, u"", u"C:\\Ferrin"},
            {"nothing anywhere", no_key, no_key, no_value, kept, kept},
            {"no key of the class", no_key, id, no_key, kept, kept},
            {"no sibling path", no_value, id, no_value, u"", u""},
            {"no backslash", no_value, id, u"Sel.dll", u"", u""},
            {"long class id is not usable", no_value, too_long, module, u"", kept},
            {"long code base is not usable", no_value, id, u"C:\\" + too_long, u"", u""},
            {"scheme is no path", no_value, id, u"file:///C:/Ferrin/Sel.dll", u"", u""},
        };
    for (const auto& [label, install_path, class_id, code_base, path, folder] : cases) {
        SCOPED_TRACE(label);
        CMemoryRegistry registry;
        const auto set = [&](const std::u16string& key, const std::u16string& name, const std::u16string& value) {
            if (value == no_value) {
                registry.keys[key];
            } else if (value != no_key) {
                registry.Set(key, name, value);
            }
        };
        set(u"HKLM\\software\\Velmar\\ORVIC", u"installpath", install_path);
        set(u"HKCU\\Software\\Classes\\Ferrin.FerrinDataSelectionDialog\\CLSID\\", u"", class_id);
        set(u"HKCU\\Software\\Classes\\CLSID\\" + class_id + u"\\InprocServer32\\", u"CodeBase", code_base);
        std::u16string text = kept;
        EXPECT_EQ(ReadInstallPath(registry, text, u"software\\Velmar\\ORVIC", u"installpath"), path != kept ? 1 : 0);
        EXPECT_EQ(std::exchange(text, kept), path);
        EXPECT_EQ(ReadCodeBaseFolder(registry, text), folder != kept ? 1 : 0);
        EXPECT_EQ(text, folder);
        const std::u16string second = folder != kept ? folder : u"";
        EXPECT_EQ(FindInstallFolder(registry), path != kept && path != u"" ? path : second);
    }
}

} // namespace
} // namespace partkeep
