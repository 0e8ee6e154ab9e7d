// Whole runs on the real windows with the real part browser, by real mouse and key events, from the host's call to
// the host's records: the fixture, and steps of an operator.
#pragma once

#include "desktop/pane/part_browser_factory.h"
#include "desktop/qt_dialog_windows.h"
#include "desktop/qt_messages.h"
#include "partlibrary/session/session_control.h"
#include "resources/resource_ids.h"
#include "tests/desktop/played_pane.h"
#include "tests/support/host_side.h"
#include "tests/support/memory_registry.h"

#include <QTreeWidget>

namespace partkeep {
inline constexpr int dialog = RES_SELECTION_DIALOG;
inline constexpr int keypad = RES_QUANTITY_KEYPAD;
inline constexpr int list_window = RES_SELECTED_PARTS_DIALOG;

inline CBrowserPane& Pane()
{
    return *dynamic_cast<CBrowserPane*>(ControlOf(dialog, RES_BROWSER));
}

inline UserStep Folder(const char* name)
{
    return [name] {
        ClickInTree(Pane(), u"SRV1"_s, QString::fromUtf8(name));
        Pressing(dialog, Qt::Key_Right)(); // opens the branch
    };
}

inline UserStep Row(int row, Qt::KeyboardModifiers modifiers = {})
{
    return [=] { ClickRow(Pane(), row, modifiers); };
}

inline UserStep ListRow(int row, Qt::KeyboardModifiers modifiers = {})
{
    return [=] {
        auto& list = *dynamic_cast<QTreeWidget*>(ControlOf(list_window, RES_PART_LIST));
        ClickAt(*list.viewport(), list.visualItemRect(list.topLevelItem(row)).center(), modifiers);
    };
}

inline UserStep DoubleClick(int row)
{
    return [row] {
        ClickRow(Pane(), row);
        QTest::mouseDClick(Pane().List().viewport(), Qt::LeftButton, {}, PlaceOfRow(Pane(), row));
        Settle(); // what it asks for is posted
    };
}

inline UserStep Focusing(int id)
{
    return [id] { ControlOf(dialog, id)->setFocus(); };
}

inline UserStep Expecting(const char* shown)
{
    return [shown] {
        Settle(Pane());
        EXPECT_EQ(NamesUnder(Pane().Model()), shown);
    };
}

class WholeDialog : public PaneTest {
protected:
    explicit WholeDialog(int language = 1)
    {
        registry_.Set(u"HKLM\\software\\Velmar\\ORVIC", u"installpath", folder_.Core());
        TheProcessValues() = {folder_.Core(u"Work\\"), language};
    }

    // "P1 x2 0": name, quantity and machine type of each part that the host got, or "cancelled".
    std::string Run(bool several, std::vector<UserStep> steps)
    {
        PartkeepReadImpl host({registry_, messages_, controls_, windows_});
        std::filesystem::remove(folder_.Path("ZanPartkeepConfig.xml")); // a Load writes it
        steps.insert(steps.begin(), {Folder("SRV1"), Folder("Plates"), Folder("2008")});
        PlayWhile(std::move(steps), [&] { host.InvokePartkeepMultiSelection(several ? 1 : 0); });
        QStringList records;
        for (std::int32_t i = 0; i < CountOf(host); ++i) {
            const PartRecord part = RecordOf(host, i);
            records += QString::fromStdU16String(part.PartName + u" x" + part.Qty) + u" %1"_s.arg(part.MachineType);
        }
        const bool loaded = std::filesystem::exists(folder_.Path("ZanPartkeepConfig.xml"));
        return loaded ? records.join(u", ").toStdString() : "cancelled";
    }

    CHostFolders folder_;
    CMemoryRegistry registry_;
    CPartBrowserControls controls_{CLibraryFolder(libraries_.Folder())};
    CPartBrowserFactory browsers_{CLibraryFolder(libraries_.Folder()), [] { return TheProcessValues().languageId; },
                                  libraries_.Folder() + u"/places.json"_s};
    CQtDialogWindows windows_{&browsers_};
    CQtMessages messages_;
};

} // namespace partkeep
