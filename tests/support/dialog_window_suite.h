// What every front end's window makes of the calls of a dialog's logic: one suite for all that implement the window
// interface. Nothing here needs a user, a loop or a way into the window.
#pragma once

#include "platform/dialog_window.h"
#include "resources/dialog_templates.h"

#include <gtest/gtest.h>

#include <utility>

namespace partkeep {

struct SuiteHandler : IDialogEvents {
    void OnInitDialog() noexcept override { init(); }
    bool PreTranslateMessage(const KeyPress&) noexcept override { return false; }
    void OnPaint() noexcept override {}
    [[nodiscard]] std::u16string ToolTipText(int) noexcept override { return {}; }
    void OnCommand(int id) noexcept override { notes += " command" + std::to_string(id); }
    void OnSelectionChange(int id) noexcept override { notes += " selection" + std::to_string(id); }
    void OnTextChange(int id) noexcept override { notes += " text" + std::to_string(id); }
    void OnDestroy() noexcept override { notes += " destroy"; }

    std::function<void()> init = [] {};
    std::string notes;
};

// What is asked of a control that is not there, be it for its id or for its window, is passed over.
inline void CheckNone(IDialogWindow& window, int id)
{
    IDialogFields& fields = window.Fields();
    fields.SetText(id, u"x");
    fields.Enable(id, false);
    fields.ShowControl(id, false);
    fields.SetReadOnly(id);
    fields.LimitText(id, 3);
    fields.ClearSelectedText(id);
    fields.SetCheck(id, 1);
    fields.MoveControl(id, {0, 0, 1, 1});
    fields.Focus(id);
    fields.ResetEntries(id);
    fields.InsertEntry(id, 0, u"x");
    fields.SelectEntry(id, 0);
    EXPECT_EQ(fields.Text(id), u"");
    EXPECT_EQ(fields.Check(id), 0);
    EXPECT_EQ(fields.SelectedEntry(id), -1);
    EXPECT_EQ(fields.ControlClientRect(id), Rect());
    EXPECT_EQ(fields.MapToDialog(id, {0, 0, 5, 5}), Rect());
    IReportList& list = window.ReportList();
    list.InsertColumn(id, 0, u"x", 90);
    list.SetFullRowSelect(id);
    list.InsertRow(id, 0, u"x");
    list.SetCell(id, 0, 0, u"x");
    list.DeleteRow(id, 0);
    list.SelectAllRows(id);
    list.FocusRow(id, 0);
    EXPECT_EQ(list.Cell(id, 0, 0), u"");
    EXPECT_EQ(list.SelectedRowCount(id), 0);
    EXPECT_EQ(list.NextSelectedRow(id, -1), -1);
}

// While there is no window, with a panel of one that has gone.
inline void CheckNoWindow(IDialogWindow& window, IPanelWindow& panel)
{
    window.Destroy();
    window.EndModal(9);
    window.SetTitle(u"x");
    window.SetSmallIcon(nullptr);
    window.Show(true);
    window.Show(false);
    window.EnableOwner(true);
    window.Invalidate();
    window.UpdateNow();
    window.EndWait();
    window.Fields().MoveFocusByOrder(true);
    window.Toolbar().MoveAllControls(1, 1);
    window.Toolbar().PlaceToolbar();
    window.Toolbar().EnableToolTips();
    window.Toolbar().PressTool(RES_FILTER_PART, true);
    window.CreateLabel(RES_PARTS_COLLECTED, {0, 0, 9, 9});
    panel.SetPainter({});
    panel.Move({0, 0, 9, 9});
    panel.Show(true);
    panel.Invalidate(true);
    EXPECT_FALSE(window.Exists() || window.Toolbar().CreateToolbar(filter_toolbar_template));
    EXPECT_EQ(window.ParentSmallIcon(), nullptr);
    EXPECT_EQ(window.Fields().FocusedControl(), 0);
    EXPECT_EQ(window.TemplateControl(RES_BROWSER), nullptr);
    EXPECT_EQ(window.CreateHostedControl({1, 2, 3, {}}, RES_BROWSER, {0, 0, 9, 9}), nullptr);
    for (const Rect& area : {window.ClientRect(), window.Toolbar().ClientRectBesideToolbar(), panel.ClientRect(),
                             panel.MapToDialog({0, 0, 5, 5})}) {
        EXPECT_EQ(area, Rect());
    }
}

inline void CheckControls(IDialogWindow& window, SuiteHandler& handler)
{
    constexpr int absent = 999;
    window.Fields().LimitText(RES_PART_NAME, 3);
    window.Fields().SetText(RES_PART_NAME, u"部品 & text");
    EXPECT_EQ(window.Fields().Text(RES_PART_NAME), u"部品 & text") << "the limit is for typed text";
    EXPECT_EQ(std::exchange(handler.notes, ""), " text203");
    window.Fields().SetCheck(RES_ASK_QUANTITY, 1);
    EXPECT_EQ(window.Fields().Check(RES_ASK_QUANTITY), 1);
    window.Fields().InsertEntry(RES_UNIT, 0, u"Inch");
    window.Fields().InsertEntry(RES_UNIT, 0, u"Metric");
    window.Fields().SelectEntry(RES_UNIT, 1);
    EXPECT_EQ(window.Fields().SelectedEntry(RES_UNIT), 1);
    window.Fields().ResetEntries(RES_UNIT);
    EXPECT_EQ(window.Fields().SelectedEntry(RES_UNIT), -1);
    window.Fields().MoveControl(RES_ADD, {12, 20, 112, 44}); // multiples of four are whole pixels on denser screens too
    EXPECT_EQ(window.Fields().MapToDialog(RES_ADD, window.Fields().ControlClientRect(RES_ADD)),
              (Rect{12, 20, 112, 44}));
    CheckNone(window, absent);
    EXPECT_EQ(window.CreateHostedControl({1, 2, 3, {}}, absent, {0, 0, 9, 9}), nullptr) << "no such class";
    EXPECT_EQ(handler.notes, "") << "only the user's changes are told";
}

inline std::unique_ptr<IPanelWindow> CheckToolbarAndPanel(IDialogWindow& window)
{
    EXPECT_EQ(window.Toolbar().ClientRectBesideToolbar(), window.ClientRect());
    EXPECT_TRUE(window.Toolbar().CreateToolbar(filter_toolbar_template));
    EXPECT_GT(window.Toolbar().ClientRectBesideToolbar().top, 15);
    EXPECT_EQ(window.Toolbar().ClientRectBesideToolbar().bottom, window.ClientRect().bottom);
    std::unique_ptr<IPanelWindow> panel = window.CreatePanel(RES_IMAGE_PANEL, {5, 379, 155, 529});
    EXPECT_LT(panel->ClientRect().Width(), 150) << "sunken";
    panel->Move(panel->MapToDialog({0, 0, 149, 149}));
    EXPECT_EQ(panel->ClientRect(), (Rect{0, 0, 149, 149}));
    const Rect place = panel->MapToDialog({});
    window.Toolbar().MoveAllControls(4, 20);
    EXPECT_EQ(window.Fields().MapToDialog(RES_ADD, {}), (Rect{16, 40, 16, 40}));
    EXPECT_EQ(panel->MapToDialog({}), (Rect{place.left + 4, place.top + 20, place.left + 4, place.top + 20}));
    window.Toolbar().PlaceToolbar();
    return panel;
}

inline void CheckList(IDialogWindow& window)
{
    const std::u16string long_text(600, u'x');
    for (int column = 0; column < 2; ++column) {
        window.ReportList().InsertColumn(RES_PART_LIST, column, u"header", 90);
    }
    for (int row = 0; row < 3; ++row) {
        window.ReportList().InsertRow(RES_PART_LIST, row, std::u16string(1, static_cast<char16_t>(u'C' - row)));
        window.ReportList().SetCell(RES_PART_LIST, row, 1, long_text);
    }
    window.ReportList().DeleteRow(RES_PART_LIST, 1);
    EXPECT_EQ(window.ReportList().Cell(RES_PART_LIST, 0, 0), u"C") << "in the order of adding";
    EXPECT_EQ(window.ReportList().Cell(RES_PART_LIST, 1, 0), u"A");
    EXPECT_EQ(window.ReportList().Cell(RES_PART_LIST, 1, 1), long_text);
    EXPECT_EQ(window.ReportList().SelectedRowCount(RES_PART_LIST), 0);
    EXPECT_EQ(window.ReportList().NextSelectedRow(RES_PART_LIST, -1), -1);
}

inline void CheckDialogWindows(IDialogWindows& windows)
{
    SuiteHandler handler;
    const std::unique_ptr<IDialogWindow> window = windows.Make(selection_dialog_template);
    const std::unique_ptr<IDialogWindow> list = windows.Make(selected_parts_dialog_template);
    ASSERT_TRUE(window->CreateModeless(handler, nullptr));
    ASSERT_TRUE(list->CreateModeless(handler, window.get()));
    EXPECT_FALSE(window->CreateModeless(handler, nullptr)) << "it is there";
    EXPECT_EQ(window->RunModal(handler), -1);
    handler.notes.clear();
    CheckControls(*window, handler);
    const std::unique_ptr<IPanelWindow> panel = CheckToolbarAndPanel(*window);
    CheckList(*list);
    list->Destroy();
    window->Destroy();
    CheckNoWindow(*window, *panel);
    for (const int id : {RES_PART_NAME, RES_ASK_QUANTITY, RES_UNIT, RES_PART_LIST}) {
        CheckNone(*window, id);
    }
    EXPECT_FALSE(list->Exists());
    EXPECT_EQ(std::exchange(handler.notes, ""), " destroy destroy");
    handler.init = [&] { window->EndModal(7); };
    EXPECT_EQ(window->RunModal(handler), 7) << "ends before it shows";
    EXPECT_EQ(handler.notes, " destroy");
}

} // namespace partkeep
