#include "host/install_location.h"

#include "tests/support/memory_registry.h"

#include <gtest/gtest.h>

namespace partkeep {
namespace {

const std::u16string orvic_key = u"HKLM\\software\\Velmar\\ORVIC";
const std::u16string sibling_key = u"HKCU\\Software\\Classes\\Ferrin.FerrinDataSelectionDialog\\CLSID\\";

std::u16string ServerKey(const std::u16string& class_id)
{
    return u"HKCU\\Software\\Classes\\CLSID\\" + class_id + u"\\InprocServer32\\";
}

struct LookupCase {
    const char* label;
    std::optional<std::u16string> install_path; // nothing: the key has no such value
    bool install_key;
    std::optional<std::u16string> class_id; // nothing: the key is absent
    std::optional<std::u16string> code_base;
    std::u16string found;
};

TEST(InstallLocation, IsLookedUpTheTwoWaysInTheirOrder)
{
    const std::u16string id = u"{11111111-2222-3333-4444-555555555555}";
    const std::u16string module = u"C:\\Ferrin\\Sel.dll";
    const std::u16string longest(255, u'x');
    const std::u16string too_long(256, u'x');
    const LookupCase cases[] = {
        {"install path wins", u"C:\\ORVIC", true, id, module, u"C:\\ORVIC"},
        {"taken unchanged", u"C:\\ORVIC\\", true, {}, {}, u"C:\\ORVIC\\"},
        {"key absent", {}, false, id, module, u"C:\\Ferrin"},
        {"value absent", {}, true, id, module, u"C:\\Ferrin"},
        {"value empty", u"", true, id, module, u"C:\\Ferrin"},
        {"255 characters pass", longest, true, id, module, longest},
        {"256 do not", too_long, true, id, module, u"C:\\Ferrin"},
        {"nothing anywhere", {}, false, {}, {}, u""},
        {"no sibling path", {}, true, id, {}, u""},
        {"no backslash", {}, true, id, u"Sel.dll", u""},
        {"long class id is not usable", {}, true, too_long, module, u""},
        {"long code base is not usable", {}, true, id, u"C:\\" + too_long, u""},
        {"scheme is no path", {}, true, id, u"file:///C:/Ferrin/Sel.dll", u""},
    };
    for (const LookupCase& row : cases) {
        SCOPED_TRACE(row.label);
        CMemoryRegistry registry;
        if (row.install_key) {
            registry.keys[orvic_key];
        }
        if (row.install_path) {
            registry.Set(orvic_key, u"installpath", *row.install_path);
        }
        if (row.class_id) {
            registry.Set(sibling_key, u"", *row.class_id);
        }
        if (row.class_id && row.code_base) {
            registry.Set(ServerKey(*row.class_id), u"CodeBase", *row.code_base);
        }
        EXPECT_EQ(FindInstallFolder(registry), row.found);
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
}

} // namespace
} // namespace partkeep
